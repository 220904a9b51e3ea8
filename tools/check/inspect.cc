#include "check/inspect.h"

#include "check/damage.h"
#include "check/event_watch.h"
#include "check/looks_like.h"
#include "check/sequence.h"
#include "model/record/records.h"
#include "model/unit.h"

#include <algorithm>

namespace check {

namespace {

constexpr uint64_t Progress_every = 4096; // packets
constexpr uint64_t Shift_searches = 64;   // blocks of a row of lost ones in which packets are looked for

/// A row of blocks that are no packets.
struct LostRow {
    uint64_t first = 0, blocks = 0;
    bool zeros = false;
    std::optional<size_t> shift;
};

/// What is kept of a recorder while the file is read.
struct Recorder {
    UNIT_T& unit;
    UnitTally& tally;
    Sequence sequence;
    EventWatch events;
};

class Inspection {
public:
    Inspection(BlockReader& reader, Report& report)
        : reader_(reader), report_(report), shared_{report, {}, {}}
    {
    }

    void take(const uint8_t* block);
    void finish();

    bool only_zeros() const { return only_zeros_; } ///< the input has no other byte

private:
    void lost(const uint8_t* block);
    void tell_lost();
    Recorder& recorder_of(const PACKET& pkt);
    void check_order(Recorder& recorder, const PACKET& pkt);
    void file(Recorder& recorder, const PACKET& pkt);
    void header(Recorder& recorder, const PACKET& pkt);
    void clock(Recorder& recorder, const PACKET& pkt);
    void health(Recorder& recorder, const PACKET& pkt);

    BlockReader& reader_;
    Report& report_;
    Shared shared_;
    LatestPackets latest_;
    std::map<uint16_t, Recorder> recorders_;
    Recorder* current_ = nullptr;
    LostRow row_;
    bool is_recording_ = false, only_zeros_ = true;
};

void Inspection::lost(const uint8_t* block)
{
    const bool zeros = all_zeros(block);
    only_zeros_ = only_zeros_ && zeros;
    if (row_.blocks > 0 && row_.zeros != zeros) tell_lost();
    const bool searched = zeros || row_.shift || row_.blocks >= Shift_searches;
    const auto shift = searched ? std::nullopt : shift_of(reader_.from_here());
    if (shift) {
        tell_lost();
        is_recording_ = true;
    }
    if (row_.blocks == 0) row_ = {report_.packets, 0, zeros, shift};
    ++row_.blocks;
}

void Inspection::tell_lost()
{
    if (row_.blocks == 0) return;
    const Place place{.packet = row_.first};
    const std::string blocks = std::to_string(row_.blocks) + (row_.blocks == 1 ? " block" : " blocks");
    if (row_.zeros)
        report_.findings.add(Code::zeros, place, blocks + " of zero bytes");
    else if (row_.shift)
        report_.findings.add(Code::shifted, place,
                             "the recording continues at byte " +
                                 std::to_string((row_.first - 1) * Packet_size + *row_.shift) + ", " +
                                 std::to_string(*row_.shift) + " bytes into a block; " + blocks +
                                 " from here on are not converted");
    else
        report_.findings.add(Code::unknown_type, place, blocks + " of unknown type, not converted");
    row_ = {};
}

Recorder& Inspection::recorder_of(const PACKET& pkt)
{
    UNIT_T& unit = Unit_find(pkt);
    if (current_ && &current_->unit == &unit) return *current_;
    const auto found = recorders_.find(unit.unit_id);
    if (found != recorders_.end()) return *(current_ = &found->second);
    UnitTally& tally = report_.units[unit.unit_id];
    const Position& p = unit.position;
    if (p.lat != 0 || p.lon != 0 || p.alt != 0) tally.position = {p.lat, p.lon, p.alt, false};
    current_ =
        &recorders_.try_emplace(unit.unit_id, Recorder{unit, tally, {}, EventWatch(shared_, unit, tally)})
             .first->second;
    return *current_;
}

void Inspection::check_order(Recorder& recorder, const PACKET& pkt)
{
    const uint64_t packet = report_.packets;
    if (latest_.has(pkt.bytes))
        report_.findings.add(Code::duplicate, place_of(pkt, packet, moment_of(pkt)),
                             "the same packet was among the thousand before");
    if (!recorder.sequence.takes(pkt))
        report_.findings.add(Code::sequence, place_of(pkt, packet, moment_of(pkt)),
                             "number " + std::to_string(pkt.seq) +
                                 " follows neither the event's packet before nor " +
                                 std::to_string(recorder.sequence.before()) + ", the recorder's");
}

void Inspection::clock(Recorder& recorder, const PACKET& pkt)
{
    const EVT_T& evt = *recorder.unit.evt;
    ClockTold told{moment_of(pkt), static_cast<char>(byte(pkt, EH::Time_src)), std::nullopt};
    const bool unsure = text(pkt, EH::Pll_days) == "?";
    if (evt.pll_days <= 9) told.days = evt.pll_days;
    auto& clock = recorder.tally.clock;
    const bool changed = clock.empty() || !(clock.back() == told);
    if (changed && clock.size() < UnitTally::Most_told) clock.push_back(told);
    if (flags(pkt) & FLAG::Second_bank || (!unsure && told.days.value_or(0) == 0)) return;
    report_.findings.add(Code::clock, place_of(pkt, report_.packets, told.at),
                         unsure ? "the clock's last lock is unknown"
                                : "the clock was locked " + std::to_string(*told.days) + " days before");
}

void Inspection::header(Recorder& recorder, const PACKET& pkt)
{
    recorder.events.header(pkt, report_.packets);
    clock(recorder, pkt);
    const char first = text(pkt, EH::Position).front();
    const Position& p = recorder.unit.position;
    if (first != ' ' && first != '\0') recorder.tally.position = {p.lat, p.lon, p.alt, true};
}

void Inspection::health(Recorder& recorder, const PACKET& pkt)
{
    if (recorder.tally.health.size() >= UnitTally::Most_told) return;
    const int len = std::clamp(bcd(pkt, HDR::Byte_cnt) - SH::Text, 0, Packet_size - SH::Text);
    std::string told(before_nul(text(pkt, {SH::Text, len})));
    std::erase(told, '\r');
    while (!told.empty() && (told.back() == '\n' || told.back() == ' ')) told.pop_back();
    recorder.tally.health.push_back({moment_of(pkt), report_.packets, std::move(told)});
}

void Inspection::file(Recorder& recorder, const PACKET& pkt)
{
    switch (pkt.kind) {
    case PKT_EH: header(recorder, pkt); break;
    case PKT_DT: recorder.events.data(pkt, report_.packets); break;
    case PKT_ET:
        if (recorder.events.trailer(pkt, report_.packets)) recorder.sequence.end_event(pkt.event);
        break;
    case PKT_SH: health(recorder, pkt); break;
    default: break;
    }
}

void Inspection::take(const uint8_t* block)
{
    ++report_.packets;
    const PACKET pkt(block);
    ++report_.types[pkt.kind];
    if (pkt.kind == PKT_UNKNOWN) {
        lost(block);
        return;
    }
    tell_lost();
    only_zeros_ = false;
    if (!is_recording_) is_recording_ = is_plausible(block);
    Recorder& recorder = recorder_of(pkt);
    check_order(recorder, pkt);
    file(recorder, pkt);
}

void Inspection::finish()
{
    tell_lost();
    for (auto& [id, recorder] : recorders_) {
        recorder.events.finish();
        recorder.tally.station = station_of(recorder.unit, recorder.unit.stn_name.view());
    }
    Unit_forget_all();
    const auto tail = reader_.from_here();
    only_zeros_ = only_zeros_ && std::all_of(tail.begin(), tail.end(), [](uint8_t b) { return b == 0; });
    report_.bytes = reader_.bytes();
    report_.left_over = reader_.left_over();
    report_.error = reader_.error();
    if (report_.left_over > 0)
        report_.findings.add(Code::cut_tail, {.packet = report_.packets + 1},
                             "the last " + std::to_string(report_.left_over) + " bytes are no whole packet");
    report_.kind = report_.bytes == 0 ? FileKind::empty
                   : is_recording_    ? FileKind::recording
                                      : FileKind::other;
}

/// Forgets what chance letters of another kind of file gave.
void forget_contents(Report& report)
{
    report.units.clear();
    report.metrics.clear();
    report.findings.clear();
    report.first = report.last = No_moment;
    report.samples = 0;
}

} // namespace

void inspect(BlockReader& reader, Report& report, const std::function<void(uint64_t)>& on_way)
{
    const auto start = reader.beginning();
    const std::vector<uint8_t> beginning(start.begin(), start.end());
    Inspection inspection(reader, report);
    while (const uint8_t* block = reader.next()) {
        inspection.take(block);
        if (report.packets % Progress_every == 0) on_way(reader.bytes());
    }
    inspection.finish();
    if (report.kind != FileKind::other) return;
    forget_contents(report);
    report.looks_like = inspection.only_zeros() ? "zeros" : looks_like(beginning);
}

} // namespace check
