// carried: channel-list. The channel numbers of an event in ascending order.
#include "model/event.h"
#include "model/record/records.h"
#include "model/record/ring.h"

#include <utility>

void Evt_chn_sort(EVT_T& evt)
{
    constexpr int room = static_cast<int>(sizeof evt.list / sizeof evt.list[0]);
    int used = 0;
    ring_each(evt.chn, [&](const CHN_T& chn) {
        if (used < evt.chn_cnt && used < room) evt.list[used++] = chn.id.channel;
    });
    for (int i = 0; i < used; ++i)
        for (int j = i; j < used; ++j)
            if (evt.list[i] > evt.list[j]) std::swap(evt.list[i], evt.list[j]);
}
