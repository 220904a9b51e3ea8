// A recorder (unit) writes its settings first, then its events, then a directory of them.
#include "mkrec/recording.h"

#include "mkrec/event_part.h"
#include "mkrec/packet_output.h"
#include "mkrec/parameter_packets.h"

#include <string_view>

namespace mkrec {

namespace {

constexpr std::string_view Start_text =
    "ACQUISITION STARTED\r\nCLOCK LOCKED, 1 PPS\r\nBATTERY 12.6V, 31C INSIDE\r\n";
constexpr std::string_view Stop_text = "ACQUISITION STOPPED\r\nMEMORY 83% FREE\r\n";
constexpr int64_t Setting_up_ms = 300000; // from power-on to the first event

class Recorder {
public:
    Recorder(const Survey& survey, int unit, PacketOutput& out)
        : survey_(survey), unit_(unit), out_(out), parameters_(survey, unit)
    {
    }

    void open();
    /// Writes the event's next packet. At the end, adds the event to the directory and returns false.
    bool record(EventPart& part);
    void close();

private:
    void write(const TextPage& page)
    {
        out_.write(page);
        ++blocks_;
    }
    void note(const EventPart& part);

    const Survey& survey_;
    int unit_;
    PacketOutput& out_;
    ParameterPages parameters_;
    std::vector<DirectoryEntry> directory_;
    MadeTimes last_times_{};
    LinePlace last_event_;
    uint32_t blocks_ = 0;
};

void Recorder::open()
{
    if (!survey_.options.parameters) return;
    TextPage page;
    parameters_.health(page, Start_text, survey_start_ms(survey_) - Setting_up_ms);
    write(page);
    for (int i = 0; i < sc_packets(survey_); ++i) parameters_.stations(page, i), write(page);
    for (int i = 0; i < ds_packets(survey_); ++i) parameters_.streams(page, i), write(page);
    parameters_.operation(page);
    write(page);
    parameters_.auxiliary(page);
    write(page);
    parameters_.calibration(page);
    write(page);
    parameters_.filter(page);
    write(page);
    const LinePlace first{.unit = unit_};
    const int64_t begin = first_sample_ms(survey_, first);
    parameters_.network(page, "NH", first, {begin, begin, -1, -1});
    write(page);
}

bool Recorder::record(EventPart& part)
{
    TextPage page;
    if (!part.next(page)) {
        note(part);
        return false;
    }
    write(page);
    return true;
}

void Recorder::note(const EventPart& part)
{
    last_event_ = part.event();
    last_times_ = part.times();
    if (directory_.size() == Directory_most) return;
    directory_.push_back({last_event_, last_times_, blocks_ - part.packets(), part.packets()});
}

void Recorder::close()
{
    if (!survey_.options.parameters) return;
    TextPage page;
    parameters_.network(page, "NT", last_event_, last_times_);
    write(page);
    parameters_.health(page, Stop_text, last_times_.last + 1000);
    write(page);
    parameters_.directory(page, directory_, blocks_, last_times_.last + 2000);
    write(page);
}

/// Records the same event of all streams of these recorders; they write their packets in turn.
bool record_side_by_side(const Survey& survey, std::vector<Recorder>& recorders, int64_t event,
                         const PacketOutput& out)
{
    std::vector<EventPart> parts;
    parts.reserve(static_cast<size_t>(survey.options.streams * survey.options.units));
    for (int s = 0; s < survey.options.streams; ++s)
        for (int u = 0; u < survey.options.units; ++u) parts.emplace_back(survey, LinePlace{u, s, event, 0});
    std::vector<EventPart*> going;
    going.reserve(parts.size());
    for (EventPart& part : parts) going.push_back(&part);
    while (!going.empty() && !out.failed())
        std::erase_if(going, [&](EventPart* part) {
            return !recorders[static_cast<size_t>(part->event().unit)].record(*part);
        });
    for (const EventPart& part : parts)
        if (part.not_encodable()) return false;
    return true;
}

bool record_events(const Survey& survey, int unit, Recorder& recorder, const PacketOutput& out)
{
    for (int64_t e = 0; e < survey.options.events; ++e)
        for (int s = 0; s < survey.options.streams; ++s) {
            EventPart part(survey, {unit, s, e, 0});
            while (!out.failed() && recorder.record(part)) {
            }
            if (part.not_encodable()) return false;
        }
    return true;
}

bool write_interleaved(const Survey& survey, PacketOutput& out)
{
    std::vector<Recorder> recorders;
    recorders.reserve(static_cast<size_t>(survey.options.units));
    for (int u = 0; u < survey.options.units; ++u) recorders.emplace_back(survey, u, out);
    for (Recorder& recorder : recorders) recorder.open();
    for (int64_t e = 0; e < survey.options.events && !out.failed(); ++e)
        if (!record_side_by_side(survey, recorders, e, out)) return false;
    for (Recorder& recorder : recorders) recorder.close();
    return true;
}

} // namespace

bool write_recording(const Survey& survey, RecordingFile& file)
{
    PacketOutput out(survey.options, file);
    if (survey.options.interleave) return write_interleaved(survey, out);
    for (int u = 0; u < survey.options.units && !out.failed(); ++u) {
        Recorder recorder(survey, u, out);
        recorder.open();
        if (!record_events(survey, u, recorder, out)) return false;
        recorder.close();
    }
    return true;
}

} // namespace mkrec
