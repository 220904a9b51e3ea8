// The ring that units, events and channels are linked in.
#include "model/record/ring.h"

#include <gtest/gtest.h>

#include <string>

namespace {

struct Member {
    char name;
    Member* prv = nullptr;
    Member* nxt = nullptr;
};

/// Names once round, by `nxt`; then, behind a blank, by `prv`.
std::string names(Member* start)
{
    std::string all;
    Member* at = start;
    do all += at->name;
    while ((at = at->nxt) != start && all.size() < 20);
    all += ' ';
    do all += at->name;
    while ((at = at->prv) != start && all.size() < 40);
    return all;
}

struct Ring : testing::Test {
    Member a{'a'}, b{'b'}, c{'c'}, d{'d'};
};

TEST_F(Ring, one_member_is_its_own_neighbour)
{
    ring_join<Member>(nullptr, &a);
    EXPECT_EQ(names(&a), "a a");
}

TEST_F(Ring, a_member_joins_right_behind_the_current_one)
{
    ring_join<Member>(nullptr, &a);
    ring_join(&a, &b);
    EXPECT_EQ(names(&a), "ab ab");
    ring_join(&a, &c);
    EXPECT_EQ(names(&a), "acb abc");
    ring_join(&b, &d);
    EXPECT_EQ(names(&a), "acbd adbc");
}

TEST_F(Ring, leaving_gives_the_predecessor_back)
{
    ring_join<Member>(nullptr, &a);
    ring_join(&a, &b);
    ring_join(&b, &c);
    EXPECT_EQ(ring_leave(&b), &a);
    EXPECT_EQ(names(&a), "ac ac");
    EXPECT_EQ(ring_leave(&a), &c);
    EXPECT_EQ(names(&c), "c c");
    EXPECT_EQ(ring_leave(&c), nullptr);
}

TEST_F(Ring, finding_begins_with_the_current_member_and_ends_after_one_turn)
{
    ring_join<Member>(nullptr, &a);
    ring_join(&a, &b);
    ring_join(&b, &c);
    std::string asked;
    const auto never = [&](const Member& m) {
        asked += m.name;
        return false;
    };
    EXPECT_EQ(ring_find(&b, never), nullptr);
    EXPECT_EQ(asked, "bca");
    EXPECT_EQ(ring_find(&b, [](const Member& m) { return m.name != 'b'; }), &c);
    EXPECT_EQ(ring_find(static_cast<Member*>(nullptr), never), nullptr);
}

TEST_F(Ring, each_member_comes_once)
{
    ring_join<Member>(nullptr, &a);
    ring_join(&a, &b);
    ring_join(&b, &c);
    std::string seen;
    ring_each(&c, [&](Member& m) { seen += m.name; });
    EXPECT_EQ(seen, "cab");
    ring_each(static_cast<Member*>(nullptr), [&](Member&) { seen += '!'; });
    EXPECT_EQ(seen, "cab");
}

} // namespace
