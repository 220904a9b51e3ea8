// The sorted list of an event's channels.
#include "model/event.h"
#include "model/record/records.h"
#include "model/record/ring.h"

#include <gtest/gtest.h>

#include <deque>
#include <vector>

namespace {

struct NumberedEvent : EVT_T {
    /// Channels in the ring in this order, the first one current.
    explicit NumberedEvent(const std::vector<int>& numbers)
    {
        CHN_T* last = nullptr;
        for (const int number : numbers) {
            CHN_T& added = channels.emplace_back();
            added.id.channel = static_cast<uint16_t>(number);
            ring_join(last, &added);
            last = &added;
        }
        chn = channels.empty() ? nullptr : &channels.front();
        chn_cnt = static_cast<uint16_t>(numbers.size());
    }
    std::deque<CHN_T> channels;
};

std::vector<int> sorted(NumberedEvent& evt, size_t count)
{
    Evt_chn_sort(evt);
    return {evt.list, evt.list + count};
}

TEST(Evt_chn_sort, lists_the_channels_in_ascending_order)
{
    NumberedEvent evt({5, 2, 9, 0, 31});
    EXPECT_EQ(sorted(evt, 7), (std::vector<int>{0, 2, 5, 9, 31, 0, 0}));
}

TEST(Evt_chn_sort, one_channel_is_a_list)
{
    NumberedEvent evt({7});
    EXPECT_EQ(sorted(evt, 2), (std::vector<int>{7, 0}));
}

TEST(Evt_chn_sort, without_channels_the_list_stays)
{
    NumberedEvent evt({});
    evt.list[0] = 4;
    EXPECT_EQ(sorted(evt, 1), (std::vector<int>{4}));
}

TEST(Evt_chn_sort, fills_the_entries_of_the_channel_count_only)
{
    NumberedEvent evt({5, 2, 9});
    evt.chn_cnt = 2;
    EXPECT_EQ(sorted(evt, 3), (std::vector<int>{2, 5, 0}));
    evt.chn_cnt = 10;
    EXPECT_EQ(sorted(evt, 4), (std::vector<int>{2, 5, 9, 0}));
}

TEST(Evt_chn_sort, stops_at_thirty_two_channels)
{
    std::vector<int> falling, first_32;
    for (int i = 165; i >= 100; --i) falling.push_back(i);
    for (int i = 134; i <= 165; ++i) first_32.push_back(i);
    NumberedEvent evt(falling);
    EXPECT_EQ(sorted(evt, 32), first_32);
    EXPECT_FALSE(evt.bad); // what follows the list in the record
    EXPECT_FALSE(evt.wrap);
}

} // namespace
