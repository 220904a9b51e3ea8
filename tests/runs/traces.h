// What the tests about traces, statistics and logs have in common: events that are in sequence, and the
// pieces of their logs.
#pragma once

#include "runs/common.h"

#include <cmath>
#include <vector>

namespace runs {

/// The word of a number that nobody has told: -12345.0.
inline constexpr uint32_t Undefined = 0xC640E400;

/// The header of event 12, with usual() values.
inline kit::Eh usual_header()
{
    return kit::Eh().event(12).usual();
}

/// Packets between the header and the trailer of event 12, both with usual() values.
inline kit::Recording in_event(const kit::Recording& middle)
{
    return usual_header() + middle + kit::Et().event(12).usual();
}

/// A data packet of event 12.
inline kit::Dt data(const std::vector<int32_t>& samples)
{
    return kit::Dt().event(12).samples(samples);
}

/// The one trace of a run that made no other.
inline const std::string& only_trace(const kit::Converted& run)
{
    static const std::string nothing;
    const std::vector<std::string> names = run.sac_names();
    EXPECT_EQ(names.size(), 1U) << kit::names(run.tree);
    return names.size() == 1 ? run.file(names[0]) : nothing;
}

/// What a trace holds behind its header.
inline std::string samples_in(const std::string& trace)
{
    return trace.size() < 632 ? "no header" : trace.substr(632);
}

/// The log of unit 9A2F behind its header.
inline std::string unit_log(const kit::Converted& run, const std::string& name = "ID9A2F.vxl")
{
    const std::string log = run.file(name);
    const size_t at = log.find("   Command Line : ");
    const size_t end = at == log.npos ? at : log.find("\r\n\r\n", at);
    if (end != log.npos) return log.substr(end + 4);
    ADD_FAILURE() << name << " has no header";
    return log;
}

/// The run-wide log behind its header.
inline std::string run_log(const kit::Converted& run)
{
    return unit_log(run, "rec.vxl");
}

/// What the unit's log says of in_event(middle), around what it says of `middle`; the trailer is block
/// `last`.
inline std::string event_log(const std::string& middle, unsigned last)
{
    return kit::head_line(event_line("EH", "0012", 0)) + usual_dump() + middle +
           kit::head_line(event_line("ET", "0012", last)) + usual_dump();
}

/// The header of a trace of in_event().
inline kit::Sac usual_trace()
{
    return kit::Sac().rate(100.0f);
}

inline std::vector<int32_t> repeated_sample(int32_t value, size_t times)
{
    return std::vector<int32_t>(times, value);
}

inline std::vector<int32_t> joined(std::vector<int32_t> a, const std::vector<int32_t>& b)
{
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

} // namespace runs
