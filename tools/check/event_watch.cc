#include "check/event_watch.h"

#include "check/damage.h"
#include "check/metrics.h"
#include "check/printed.h"
#include "model/event.h"
#include "model/record/records.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace check {

namespace {

/// What a compressed packet contradicts.
std::string contradiction(const PACKET& pkt, const Decoded& decoded, uint32_t made)
{
    if (decoded.calc_last != decoded.read_last)
        return "its last sample is " + std::to_string(static_cast<int32_t>(decoded.calc_last)) +
               ", and it tells " + std::to_string(static_cast<int32_t>(decoded.read_last));
    if (pkt.samples != made)
        return "it has " + std::to_string(made) + " samples, and its header tells " +
               std::to_string(pkt.samples);
    return "its first sample does not continue the packet before";
}

double rounded(double seconds)
{
    return std::round(seconds * 1e6) / 1e6;
}

} // namespace

std::string station_of(const UNIT_T& unit, std::string_view name)
{
    Text<5> unnamed;
    unnamed.print("%05hX", unit.unit_id);
    const size_t from = name.find_first_not_of(' ');
    if (from == std::string_view::npos || name == unnamed.view()) return "";
    return std::string(name.substr(from, name.find_last_not_of(' ') - from + 1));
}

Place place_of(const PACKET& pkt, uint64_t packet, Moment at)
{
    Place place{.packet = packet, .unit = pkt.unit_id ? pkt.unit_id : 0xFFFF, .at = at};
    if (!belongs_to_event(pkt)) return place;
    place.event = pkt.event;
    place.stream = pkt.stream + 1;
    if (pkt.kind == PKT_DT) place.channel = pkt.channel + 1;
    return place;
}

Place EventWatch::place_of(const Flow& flow, uint64_t packet, Moment at) const
{
    return {packet, unit_.unit_id, flow.event->event, flow.key.stream + 1, flow.key.channel + 1, at};
}

EventWatch::OpenEvent& EventWatch::enter(const PACKET& pkt, uint64_t packet)
{
    const auto [found, is_new] = open_.try_emplace(pkt.event);
    OpenEvent& open = found->second;
    open.latest_packet = packet;
    if (is_new && pkt.kind != PKT_EH)
        shared_.report.findings.add(Code::no_header, check::place_of(pkt, packet, moment_of(pkt)),
                                    "the event begins without a header");
    return open;
}

EventTally& EventWatch::part_of(OpenEvent& open, const PACKET& pkt)
{
    EventTally*& part = open.parts[pkt.stream];
    if (!part) {
        part = tally_.events.emplace_back(std::make_unique<EventTally>()).get();
        part->event = pkt.event;
        part->stream = pkt.stream;
        part->rate = open.rate;
        part->told_first = open.told_first;
        part->station = station_of(unit_, unit_.evt->stn_name.view());
    }
    return *part;
}

void EventWatch::header(const PACKET& pkt, uint64_t packet)
{
    OpenEvent& open = enter(pkt, packet);
    const EVT_T& evt = Evt_find(unit_, pkt);
    open.headed = true;
    open.latest = moment_of(pkt);
    const double rate = static_cast<double>(evt.smp_rate);
    if (std::isfinite(rate) && rate > 0) open.rate = rate;
    TIMESTR first;
    first.put(text(pkt, EH::T_first));
    const Moment told = moment_of(first);
    if (told != No_moment) open.told_first = told;
    EventTally& part = part_of(open, pkt);
    part.rate = open.rate;
    part.told_first = open.told_first;
    part.station = station_of(unit_, evt.stn_name.view());
}

bool EventWatch::trailer(const PACKET& pkt, uint64_t packet)
{
    OpenEvent& open = enter(pkt, packet);
    EVT_T& evt = Evt_find(unit_, pkt);
    EventTally& part = part_of(open, pkt);
    TIMESTR last;
    last.put(text(pkt, EH::T_last));
    part.told_last = moment_of(last);
    if (flags(pkt) & FLAG::Second_bank) return false;
    const double rate = static_cast<double>(evt.smp_rate);
    close(open);
    if (part.rate > 0 && rate > 0 && std::abs(rate / part.rate - 1) > 0.001)
        shared_.report.findings.add(
            Code::rate, check::place_of(pkt, packet, moment_of(pkt)),
            printed("the trailer tells %g samples per second, and the event has %g", rate, part.rate));
    open_.erase(pkt.event);
    Evt_remove(evt);
    return true;
}

void EventWatch::late_start(const OpenEvent& open, const PACKET& pkt, Moment at, uint64_t packet)
{
    if (open.told_first == No_moment || at == No_moment || open.rate <= 0) return;
    const double late = static_cast<double>(at - open.told_first) / Second;
    if (late <= pkt.samples / open.rate + 0.001) return;
    shared_.report.findings.add(Code::late_start, late < 1 ? Severity::note : Severity::error,
                                check::place_of(pkt, packet, at),
                                printed("the channel begins %.3f s behind the event's first sample", late));
}

EventWatch::Flow& EventWatch::flow_of(OpenEvent& open, const PACKET& pkt, uint64_t packet)
{
    const uint32_t id = static_cast<uint32_t>(pkt.stream) << 16 | pkt.channel;
    const auto found = open.flows.find(id);
    if (found != open.flows.end()) return found->second;
    EventTally& part = part_of(open, pkt);
    Line& line = open.lines[pkt.channel];
    if (!line.trace)
        line.trace =
            shared_.paths.next({pkt.time, unit_.evt->stn_name, unit_.unit_id, pkt.stream, pkt.channel});
    ChannelTally& told = part.channels[pkt.channel];
    told.format = byte(pkt, EVT::Format);
    told.trace = line.trace;
    late_start(open, pkt, moment_of(pkt), packet);
    Flow& flow = open.flows[id];
    flow.event = &part;
    flow.told = &told;
    flow.key = {unit_.unit_id, part.station, pkt.stream, pkt.channel, 0};
    return flow;
}

void EventWatch::check_count(const PACKET& pkt, Encoding encoding, Moment at, uint64_t packet)
{
    Findings& findings = shared_.report.findings;
    const auto eaten = byte_46_of(pkt, encoding);
    if (eaten)
        findings.add(Code::byte_46, eaten->eats ? Severity::error : Severity::note,
                     check::place_of(pkt, packet, at), eaten->text);
    if (eaten && eaten->eats) return;
    if (const auto held = held_if_too_many(pkt, encoding))
        findings.add(Code::too_many_samples, check::place_of(pkt, packet, at),
                     "its header tells " + std::to_string(pkt.samples) + " samples, and it has room for " +
                         std::to_string(*held));
}

/// Returns the number of samples that the converter makes of the packet.
uint32_t EventWatch::decode(Line& line, ChannelTally& told, const PACKET& pkt, Moment at, uint64_t packet)
{
    Findings& findings = shared_.report.findings;
    const uint8_t format = byte(pkt, EVT::Format);
    const Encoding encoding = encoding_of(format);
    if (encoding == Encoding::none) {
        char text[64];
        snprintf(text, sizeof text, "samples of format %02x are not converted", format);
        findings.add(Code::unknown_format, check::place_of(pkt, packet, at), text);
        return 0;
    }
    check_count(pkt, encoding, at, packet);
    const Decoded decoded = decode_samples(pkt, encoding, line.last, shared_.samples);
    if (!decoded.sound) {
        ++told.bad_packets;
        findings.add(Code::bad_check, check::place_of(pkt, packet, at),
                     contradiction(pkt, decoded, shared_.samples.count));
    }
    return shared_.samples.count;
}

void EventWatch::data(const PACKET& pkt, uint64_t packet)
{
    OpenEvent& open = enter(pkt, packet);
    Evt_find(unit_, pkt);
    Flow& flow = flow_of(open, pkt, packet);
    const Moment at = moment_of(pkt);
    open.latest = at;
    fine_ = fine_ || micros_of(pkt) != 0;
    const uint32_t made = decode(open.lines[pkt.channel], *flow.told, pkt, at, packet);
    ++flow.told->packets;
    flow.told->samples += made;
    shared_.report.samples += made;
    const bool known = encoding_of(byte(pkt, EVT::Format)) != Encoding::none;
    take_time(open, flow, {at, pkt.samples, known ? made : pkt.samples, packet, fine_});
}

void EventWatch::take_time(OpenEvent& open, Flow& flow, const Arrival& arrival)
{
    flow.time.take(
        arrival, open.rate, [&](const Break& what) { on_break(flow, what); },
        [&](const Arrival& a, double rate) { on_packet(flow, a, rate); });
}

void EventWatch::on_break(Flow& flow, const Break& what)
{
    const double rate = flow.time.rate();
    const double seconds = rounded(what.micros / Second);
    const Place place = place_of(flow, what.arrival.packet, what.due);
    Findings& findings = shared_.report.findings;
    if (what.kind == Break::Kind::drift) {
        findings.add(Code::drift, place, printed("packets that fit one by one ran off by %.6g s", seconds));
        return;
    }
    count_present(flow);
    flow.stretch_from = flow.stretch_to = later(what.arrival.time, flow.stretch_to);
    const Gap gap{what.due, what.arrival.packet, seconds, std::llround(seconds * rate)};
    if (flow.told->gaps.size() < ChannelTally::Most_gaps) flow.told->gaps.push_back(gap);
    add_gap(shared_.report, flow.key, gap);
    if (seconds > 0)
        findings.add(Code::gap, place, printed("%.6g s are missing before it", seconds));
    else
        findings.add(Code::overlap, place,
                     printed("it begins %.6g s before the packet before it ends", -seconds));
}

void EventWatch::on_packet(Flow& flow, const Arrival& arrival, double rate)
{
    if (arrival.time == No_moment) return;
    const uint32_t n = arrival.made ? arrival.made : arrival.told;
    const double sample = rate > 0 ? Second / rate : 0.0;
    const Moment last = arrival.time + std::llround(sample * (n > 0 ? n - 1 : 0));
    const Moment end = arrival.time + std::llround(sample * n);
    if (flow.stretch_from == No_moment) flow.stretch_from = arrival.time;
    flow.stretch_to = later(flow.stretch_to, end);
    flow.told->first = earlier(flow.told->first, arrival.time);
    flow.told->last = later(flow.told->last, last);
}

void EventWatch::count_present(Flow& flow)
{
    if (flow.stretch_from != No_moment)
        add_present(shared_.report, flow.key, flow.stretch_from, flow.stretch_to);
}

/// A header's time that differs from the packets' by no more than a sample means the same.
static Moment unless_near(Moment told, Moment seen, double sample)
{
    const bool near =
        told != No_moment && std::abs(static_cast<double>(told - seen)) <= std::max(sample, 1000.0);
    return near || told == No_moment ? seen : told;
}

void EventWatch::close_flow(Flow& flow)
{
    flow.time.finish([&](const Break& what) { on_break(flow, what); },
                     [&](const Arrival& a, double rate) { on_packet(flow, a, rate); });
    count_present(flow);
    EventTally& event = *flow.event;
    const double rate = flow.time.rate();
    if (event.rate <= 0) event.rate = rate;
    event.first = earlier(event.first, flow.told->first);
    event.last = later(event.last, flow.told->last);
    if (rate <= 0 || flow.told->first == No_moment) return;
    const double sample = Second / rate;
    const Moment told_end = event.told_last == No_moment ? No_moment : event.told_last + std::llround(sample);
    const Moment from = earlier(unless_near(event.told_first, flow.told->first, sample), flow.told->first);
    const Moment to = later(unless_near(told_end, flow.stretch_to, sample), flow.stretch_to);
    add_span(shared_.report, flow.key, from, to);
}

void EventWatch::close(OpenEvent& open)
{
    for (auto& [id, flow] : open.flows) close_flow(flow);
    for (const auto& [stream, part] : open.parts) {
        shared_.report.first = earlier(shared_.report.first, part->first);
        shared_.report.last = later(shared_.report.last, part->last);
    }
}

void EventWatch::finish()
{
    for (auto& [number, open] : open_) {
        close(open);
        for (const auto& [stream, part] : open.parts)
            shared_.report.findings.add(
                Code::no_trailer,
                {open.latest_packet, unit_.unit_id, number, stream + 1, Nowhere, part->last},
                "the event has no trailer");
    }
    open_.clear();
    while (unit_.evt) Evt_remove(*unit_.evt);
}

} // namespace check
