// A ring of records, linked both ways by `prv` and `nxt`, for units, events and channels. It has no head and
// owns nothing. The owner points at its current member, and every walk starts there.
#pragma once

/// Inserts a record after `current`. Without a current one it becomes a ring of one.
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

/// Removes a record from its ring. Returns its predecessor, or null when it was the only one.
template <class R>
R* ring_leave(R* left)
{
    if (left->nxt == left) return nullptr;
    left->prv->nxt = left->nxt;
    left->nxt->prv = left->prv;
    return left->prv;
}

/// Returns the first member for which `answers` is true, looking once around from `start`; null when there is
/// none or no ring.
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

/// Calls `does` for each member once, from `start` on. Meanwhile the ring must not change.
template <class R, class Does>
void ring_each(R* start, Does does)
{
    ring_find(start, [&](R& member) {
        does(member);
        return false;
    });
}
