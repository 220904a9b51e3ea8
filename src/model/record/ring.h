// The one ring. Units, events and channels are linked alike: no head, no ownership; the owner points at its
// current member and every walk starts there.
#pragma once

/// Joins a record to the ring of `current`, right behind it; alone when there is none.
template <class R>
void ring_join(R* current, R* added)
{
    if (!current) {
        added->prv = added->nxt = added;
        return;
    }
    added->prv = current;
    added->nxt = current->nxt;
    current->nxt->prv = added;
    current->nxt = added;
}

/// Takes a record out of its ring. Returns its predecessor, or null when it was alone.
template <class R>
R* ring_leave(R* left)
{
    if (left->nxt == left) return nullptr;
    left->prv->nxt = left->nxt;
    left->nxt->prv = left->prv;
    return left->prv;
}

/// The first member, from `start` onward and once round, that answers; null when none does or there is no
/// ring.
template <class R, class Asks>
R* ring_find(R* start, Asks answers)
{
    if (!start) return nullptr;
    R* at = start;
    do {
        if (answers(*at)) return at;
        at = at->nxt;
    } while (at != start);
    return nullptr;
}

/// Does something with each member once, from `start` onward. The ring must not change meanwhile.
template <class R, class Does>
void ring_each(R* start, Does does)
{
    ring_find(start, [&](R& member) {
        does(member);
        return false;
    });
}
