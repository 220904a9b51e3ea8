// The report as a table for people: one block per recorder, one line per event and stream, findings grouped.
#include "check/printed.h"
#include "check/write.h"

#include "ls/text.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <set>

namespace check {

namespace {

constexpr size_t Shown_each = 3; // findings of a code
constexpr size_t Events_shown = 40;

/// The lines of a table, folded at blanks where the terminal is too narrow for them.
class Table {
public:
    explicit Table(const TableStyle& style) : style_(style) {}

    void line(const std::string& text, const char* colour = nullptr)
    {
        const bool painted = colour && style_.colour;
        if (painted) all_ += colour;
        all_ += folded(ls::printable(text));
        if (painted) all_ += "\033[0m";
        all_ += '\n';
    }
    bool is_narrow() const { return style_.columns > 0 && style_.columns < Full_width; }
    const std::string& all() const { return all_; }

private:
    static constexpr int Full_width = 130;
    static constexpr std::string_view Hanging = "      "; ///< before what is folded
    static constexpr size_t Least_width = 40;

    std::string folded(std::string text) const
    {
        std::string out;
        if (style_.columns <= 0) return text;
        const size_t most = std::max(static_cast<size_t>(style_.columns), Least_width);
        while (ls::width(text) > most) {
            const size_t blank = text.rfind(' ', most);
            if (blank == std::string::npos || blank <= Hanging.size()) break;
            out += text.substr(0, blank) + "\n";
            text = std::string(Hanging) + text.substr(blank + 1);
        }
        return out + text;
    }

    TableStyle style_;
    std::string all_;
};

constexpr char Bold[] = "\033[1m", Red[] = "\033[31m", Yellow[] = "\033[33m", Green[] = "\033[32m";

std::string shown(Moment at)
{
    return at == No_moment ? "-" : iso(at);
}

void add_head(Table& table, const Report& report)
{
    table.line(report.file + ": " + kind_text(report), Bold);
    if (report.error || report.kind == FileKind::empty) return;
    std::string types;
    for (size_t kind = 0; kind < report.types.size(); ++kind)
        if (report.types[kind])
            types += ", " + letters_of(kind) +
                     printed(" %llu", static_cast<unsigned long long>(report.types[kind]));
    table.line(printed("%llu bytes, %llu packets", static_cast<unsigned long long>(report.bytes),
                       static_cast<unsigned long long>(report.packets)) +
               (report.kind == FileKind::recording ? types : ""));
    if (report.first != No_moment)
        table.line(shown(report.first) + " to " + shown(report.last) +
                   printed(", %llu samples", static_cast<unsigned long long>(report.samples)));
}

void add_event(Table& table, const EventTally& event)
{
    unsigned long long packets = 0, samples = 0;
    size_t gaps = 0;
    std::set<uint8_t> formats;
    for (const auto& [number, channel] : event.channels) {
        packets += channel.packets;
        samples += channel.samples;
        gaps += channel.gaps.size();
        formats.insert(channel.format);
    }
    std::string told;
    for (const uint8_t format : formats) told += printed("%s%02x", told.empty() ? "" : ",", format);
    if (table.is_narrow())
        return table.line(printed("  %5u %6u %7.6g %8zu %11llu %4zu  %.19s  %s", event.event,
                                  event.stream + 1U, event.rate, event.channels.size(), samples, gaps,
                                  shown(event.first).c_str(), told.c_str()));
    table.line(printed("  %5u %6u %8.7g %8zu %8llu %11llu %4zu  %-27s  %-27s  %s", event.event,
                       event.stream + 1U, event.rate, event.channels.size(), packets, samples, gaps,
                       shown(event.first).c_str(), shown(event.last).c_str(), told.c_str()));
}

std::string clock_text(const UnitTally& unit)
{
    if (unit.clock.empty()) return "";
    int worst = 0;
    bool unknown = true;
    for (const ClockTold& told : unit.clock)
        if (told.days) {
            unknown = false;
            worst = std::max(worst, *told.days);
        }
    return unknown ? ", clock's last lock unknown" : printed(", clock locked %d days before at most", worst);
}

void add_unit(Table& table, uint16_t id, const UnitTally& unit)
{
    std::string head = printed("%04X", id) + (unit.station.empty() ? "" : "  " + unit.station);
    if (unit.position)
        head += printed(", %.5f %.5f, %g m (%s)", unit.position->lat, unit.position->lon, unit.position->elev,
                        unit.position->by_header ? "header" : "station file");
    table.line("");
    table.line(head + clock_text(unit), Bold);
    if (unit.events.empty()) return;
    table.line(table.is_narrow()
                   ? "  event stream    rate channels     samples gaps  first                format"
                   : "  event stream     rate channels  packets     samples gaps  first                "
                     "        last                         format");
    for (size_t i = 0; i < std::min(unit.events.size(), Events_shown); ++i) add_event(table, *unit.events[i]);
    if (unit.events.size() > Events_shown)
        table.line(printed("  and %zu more events", unit.events.size() - Events_shown));
}

std::string place_text(const Place& place)
{
    std::string text;
    if (place.packet) text += printed("packet %llu ", static_cast<unsigned long long>(place.packet));
    if (place.unit != Nowhere) text += printed("%04X ", static_cast<unsigned>(place.unit));
    if (place.event != Nowhere) text += printed("event %d ", place.event);
    if (place.stream != Nowhere) text += printed("stream %d ", place.stream);
    if (place.channel != Nowhere) text += printed("channel %d ", place.channel);
    if (place.at != No_moment) text += iso(place.at) + " ";
    if (!text.empty()) text.back() = ':';
    return text.empty() ? text : text + " ";
}

void add_code(Table& table, const Report& report, const CodeInfo& info)
{
    const uint64_t count = report.findings.count(info.code);
    if (count == 0) return;
    const bool error = report.findings.errors(info.code) > 0;
    table.line(printed("%s, %llu %s%s: %s", std::string(info.name).c_str(),
                       static_cast<unsigned long long>(count), error ? "error" : "note",
                       count == 1 ? "" : "s", info.sentence),
               error ? Red : Yellow);
    size_t told = 0;
    for (const Finding& f : report.findings.list())
        if (f.code == info.code && told++ < Shown_each) table.line("    " + place_text(f.place) + f.text);
    if (count > Shown_each)
        table.line(printed("    and %llu more", static_cast<unsigned long long>(count - Shown_each)));
}

void add_findings(Table& table, const Report& report, const Options& options)
{
    table.line("");
    uint64_t all = 0;
    for (const CodeInfo& info : Codes) {
        if (!options.shows(info.code)) continue;
        all += report.findings.count(info.code);
        add_code(table, report, info);
    }
    if (all == 0) table.line("nothing found", Green);
}

} // namespace

std::string as_table(const Report& report, const Options& options, const TableStyle& style)
{
    Table table(style);
    add_head(table, report);
    if (report.kind == FileKind::recording && !report.error) {
        for (const auto& [id, unit] : report.units) add_unit(table, id, unit);
        add_findings(table, report, options);
    }
    table.line("");
    return table.all();
}

} // namespace check
