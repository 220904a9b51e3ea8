#include "mkrec/event_part.h"

#include <algorithm>

namespace mkrec {

EventPart::EventPart(const Survey& survey, const LinePlace& event)
    : survey_(survey), event_(event), headers_left_(banks(survey)),
      trailers_left_(survey.options.trailers ? banks(survey) : 0)
{
    lanes_.reserve(static_cast<size_t>(survey.options.channels));
    for (int c = 0; c < survey.options.channels; ++c) {
        lanes_.push_back({ChannelRun(survey, {event.unit, event.stream, event.event, c}), {}, false});
        Lane& lane = lanes_.back();
        lane.waiting = lane.run.next(lane.block);
    }
}

MadeTimes EventPart::times() const
{
    const int64_t trigger = trigger_sample(survey_, event_);
    const int64_t shaking = survey_.options.seconds * rate_of(survey_, event_.stream) * 4 / 5;
    const int64_t calm = std::clamp(shaking, std::min(trigger, last_sample_), last_sample_);
    const auto at = [&](int64_t sample) { return sample_ms(survey_, event_, sample); };
    return {.first = at(0), .trigger = at(trigger), .detrigger = at(calm), .last = at(last_sample_)};
}

bool EventPart::not_encodable() const
{
    return std::any_of(lanes_.begin(), lanes_.end(), [](const Lane& l) { return l.run.not_encodable(); });
}

/// The channel whose waiting packet was full first.
EventPart::Lane* EventPart::first_full()
{
    Lane* first = nullptr;
    for (Lane& lane : lanes_) {
        const auto end = [](const Lane& l) { return l.block.first + l.block.samples; };
        if (lane.waiting && (!first || end(lane) < end(*first))) first = &lane;
    }
    return first;
}

/// The sequence numbers of an event start at 0, so that the first packet is in sequence.
int EventPart::next_sequence()
{
    return static_cast<int>(packets_++ % 10000);
}

/// True for a packet that begins in the missing seconds amid the event.
bool EventPart::is_missing(const SampleBlock& block) const
{
    const Options& o = survey_.options;
    const int64_t rate = rate_of(survey_, event_.stream);
    const int64_t from = o.seconds * rate / 2;
    return block.first >= from && block.first < from + o.gap * rate;
}

void EventPart::pass_on(Lane& lane)
{
    last_sample_ = std::max(last_sample_, lane.block.first + lane.block.samples - 1);
    lane.waiting = lane.run.next(lane.block);
}

/// The channel whose packet comes next.
EventPart::Lane* EventPart::next_lane()
{
    Lane* lane = first_full();
    while (lane && is_missing(lane->block)) {
        pass_on(*lane);
        lane = first_full();
    }
    return lane;
}

bool EventPart::next(TextPage& page)
{
    if (headers_left_ > 0) {
        const int bank = banks(survey_) - headers_left_--;
        MadeTimes times = this->times();
        times.detrigger = times.last = -1;
        write_event_page(page, survey_, event_, times, false, bank, next_sequence());
        return true;
    }
    if (Lane* lane = next_lane()) {
        LinePlace place = event_;
        place.channel = static_cast<int>(lane - lanes_.data());
        write_data_page(page, survey_, place, lane->block, next_sequence());
        pass_on(*lane);
        return true;
    }
    if (trailers_left_ > 0) {
        // The first bank's trailer ends the event, so it comes last.
        write_event_page(page, survey_, event_, times(), true, --trailers_left_, next_sequence());
        return true;
    }
    return false;
}

} // namespace mkrec
