// A recorder (unit) opens with its settings, records its events and closes with a directory of them.
#include "mkrec/recording.h"

#include "mkrec/event_part.h"
#include "mkrec/parameter_packets.h"

#include <string_view>

namespace mkrec {

namespace {

constexpr std::string_view Start_text =
    "ACQUISITION STARTED\r\nCLOCK LOCKED, 1 PPS\r\nBATTERY 12.6V, 31C INSIDE\r\n";
constexpr std::string_view Stop_text = "ACQUISITION STOPPED\r\nMEMORY 83% FREE\r\n";
constexpr int64_t Setting_up_ms = 300000; // from power-on to the first event

class RECORDER {
public:
    RECORDER(const SURVEY& survey, int unit, OUTPUT& out)
        : survey_(survey), unit_(unit), out_(out), parameters_(survey, unit)
    {
    }

    void open();
    /// Writes the event's next packet; at its end notes it in the directory and gives false.
    bool record(EVENT_PART& part);
    void close();

private:
    void write(const PAGE& page)
    {
        out_.write(page.bytes, sizeof page.bytes);
        ++blocks_;
    }
    void note(const EVENT_PART& part);

    const SURVEY& survey_;
    int unit_;
    OUTPUT& out_;
    PARAMETER_PAGES parameters_;
    std::vector<DIRECTORY_ENTRY> directory_;
    EVENT_TIMES last_times_{};
    PLACE last_event_;
    uint32_t blocks_ = 0;
};

void RECORDER::open()
{
    if (!survey_.options.parameters) return;
    PAGE page;
    parameters_.health(page, Start_text, survey_start_ms() - Setting_up_ms);
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
    const PLACE first{.unit = unit_};
    const int64_t begin = first_sample_ms(survey_, first);
    parameters_.network(page, "NH", first, {begin, begin, -1, -1});
    write(page);
}

bool RECORDER::record(EVENT_PART& part)
{
    PAGE page;
    if (!part.next(page)) {
        note(part);
        return false;
    }
    write(page);
    return true;
}

void RECORDER::note(const EVENT_PART& part)
{
    last_event_ = part.event();
    last_times_ = part.times();
    if (directory_.size() == Directory_most) return;
    directory_.push_back({last_event_, last_times_, blocks_ - part.packets(), part.packets()});
}

void RECORDER::close()
{
    if (!survey_.options.parameters) return;
    PAGE page;
    parameters_.network(page, "NT", last_event_, last_times_);
    write(page);
    parameters_.health(page, Stop_text, last_times_.last + 1000);
    write(page);
    parameters_.directory(page, directory_, blocks_, last_times_.last + 2000);
    write(page);
}

/// Records the same event of all streams of these recorders, each packet from another one.
bool record_side_by_side(const SURVEY& survey, std::vector<RECORDER>& recorders, int64_t event,
                         const OUTPUT& out)
{
    std::vector<EVENT_PART> parts;
    parts.reserve(static_cast<size_t>(survey.options.streams * survey.options.units));
    for (int s = 0; s < survey.options.streams; ++s)
        for (int u = 0; u < survey.options.units; ++u) parts.emplace_back(survey, PLACE{u, s, event, 0});
    std::vector<EVENT_PART*> going;
    going.reserve(parts.size());
    for (EVENT_PART& part : parts) going.push_back(&part);
    while (!going.empty() && !out.failed())
        std::erase_if(going, [&](EVENT_PART* part) {
            return !recorders[static_cast<size_t>(part->event().unit)].record(*part);
        });
    for (const EVENT_PART& part : parts)
        if (part.not_encodable()) return false;
    return true;
}

bool record_events(const SURVEY& survey, int unit, RECORDER& recorder, const OUTPUT& out)
{
    for (int64_t e = 0; e < survey.options.events; ++e)
        for (int s = 0; s < survey.options.streams; ++s) {
            EVENT_PART part(survey, {unit, s, e, 0});
            while (!out.failed() && recorder.record(part)) {
            }
            if (part.not_encodable()) return false;
        }
    return true;
}

bool write_interleaved(const SURVEY& survey, OUTPUT& out)
{
    std::vector<RECORDER> recorders;
    recorders.reserve(static_cast<size_t>(survey.options.units));
    for (int u = 0; u < survey.options.units; ++u) recorders.emplace_back(survey, u, out);
    for (RECORDER& recorder : recorders) recorder.open();
    for (int64_t e = 0; e < survey.options.events && !out.failed(); ++e)
        if (!record_side_by_side(survey, recorders, e, out)) return false;
    for (RECORDER& recorder : recorders) recorder.close();
    return true;
}

} // namespace

bool write_recording(const SURVEY& survey, OUTPUT& out)
{
    if (survey.options.interleave) return write_interleaved(survey, out);
    for (int u = 0; u < survey.options.units && !out.failed(); ++u) {
        RECORDER recorder(survey, u, out);
        recorder.open();
        if (!record_events(survey, u, recorder, out)) return false;
        recorder.close();
    }
    return true;
}

} // namespace mkrec
