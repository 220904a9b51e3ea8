// The gaps and overlaps as tab-separated values, and what the report as a whole is worth.
#include "check/write.h"

#include "ls/text.h"

#include <cstdio>
#include <cstring>

namespace check {

const char Gaps_header[] =
    "file\tunit\tstation\tevent\tstream\tchannel\tat\tpacket\tseconds\tsamples\ttrace\n";

static void add_line(std::string& out, const Report& report, uint16_t unit, const EventTally& event,
                     uint16_t number, const ChannelTally& channel, const Gap& gap)
{
    char text[160];
    snprintf(text, sizeof text, "\t%04X\t", unit);
    out += ls::printable(report.file) + text + ls::printable(event.station);
    snprintf(text, sizeof text, "\t%u\t%u\t%u\t%s\t%llu\t%.6f\t%lld\t", event.event, event.stream + 1U,
             number + 1U, iso(gap.at).c_str(), static_cast<unsigned long long>(gap.packet), gap.seconds,
             static_cast<long long>(gap.samples));
    out += text + ls::printable(channel.trace.value_or("")) + "\n";
}

std::string as_gaps(const Report& report)
{
    std::string out;
    for (const auto& [unit, told] : report.units)
        for (const auto& event : told.events)
            for (const auto& [number, channel] : event->channels)
                for (const Gap& gap : channel.gaps) add_line(out, report, unit, *event, number, channel, gap);
    return out;
}

std::string kind_text(const Report& report)
{
    if (report.error) return strerror(report.error);
    if (report.kind == FileKind::empty) return "empty";
    if (report.kind == FileKind::recording) return "recording";
    return report.looks_like ? "not a recording (" + *report.looks_like + ")" : "not a recording";
}

int status_of(const Report& report, const Options& options)
{
    if (report.error || report.kind != FileKind::recording) return 3;
    for (const CodeInfo& info : Codes)
        if (options.shows(info.code) && report.findings.errors(info.code) > 0) return 1;
    return 0;
}

} // namespace check
