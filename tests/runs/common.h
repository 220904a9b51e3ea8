// Recordings and expected pieces that several whole-run tests share.
#pragma once

#include "kit/expect.h"
#include "kit/run.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

namespace runs {

inline constexpr const char* Name_1_1 =
    "2004123101530250_STA01_1_1.sac"; ///< stream 1, channel 1, default time

/// A whole event of one trace. Sequence numbers stay 0, so nothing is ever out of sequence.
inline kit::Recording one_event(unsigned event, const std::vector<int32_t>& samples, unsigned unit = 0x9A2F)
{
    return kit::Eh().unit(unit).event(event).usual() + kit::Dt().unit(unit).event(event).samples(samples) +
           kit::Et().unit(unit).event(event).usual();
}

/// The dump of an Eh() or Et() with usual() values in a unit's log, with the empty line behind it.
inline std::string usual_dump()
{
    return "   Station Name           : STA01\r\n"
           "   Station Comment        : " +
           std::string(40, ' ') + "\r\n" + "   Position               : " + std::string(26, ' ') + "\r\n" +
           "   Stream Name            : " + std::string(24, ' ') + "\r\n" +
           "   Sample rate            : 100 \r\n"
           "   Trigger type           : EVT \r\n"
           "   Time Source            : Unknown   Days since PLL  \r\n"
           "   Trigger time           : 2004:123:10:15:30.250   \r\n"
           "   First sample time      : 2004:123:10:15:30.250   \r\n"
           "   Detrigger time         : \r\n"
           "   Last sample time       : \r\n"
           "   Filter list            : " +
           std::string(16, ' ') + "\r\n" +
           "   Installed channels     :   \r\n"
           "   Channel Info :  BitWght   TruWght    Gain  R  FSV  SEED  SFSV   SVPU   U\r\n"
           "\r\n";
}

inline kit::HeadLine event_line(const std::string& type, const std::string& event, unsigned block,
                                const std::string& unit = "9A2F")
{
    kit::HeadLine h;
    h.type = type, h.event = event, h.block = block, h.unit = unit;
    if (type != "DT") h.format = "00";
    return h;
}

inline kit::HeadLine data_line(const std::string& event, unsigned samples, unsigned block,
                               const std::string& unit = "9A2F")
{
    kit::HeadLine h = event_line("DT", event, block, unit);
    char digits[8];
    snprintf(digits, sizeof digits, "%04u", samples);
    h.samples = digits;
    return h;
}

inline kit::HeadLine plain_line(const std::string& type, unsigned block, const std::string& unit = "9A2F")
{
    kit::HeadLine h;
    h.type = type, h.block = block, h.unit = unit;
    return h;
}

inline constexpr const char* Qc_head =
    "\r\n                        Min          Max        Range         Mean       St Dev";
inline constexpr const char* Qc_no_event =
    " 0000000.0000 0000000.0000 0000000.0000 0000000.0000 0000000.0000";
inline constexpr const char* Qc_no_samples =
    " 00000000.0000 00000000.0000 00000000.0000 00000000.0000 00000000.0000";

inline std::string qc_numbers(double least, double most, double range, double mean, double deviation)
{
    char line[160];
    snprintf(line, sizeof line, " %12.4f %12.4f %12.4f %12.4f %12.4f", least, most, range, mean, deviation);
    return line;
}

inline bool ends_with(const std::string& text, const std::string& tail)
{
    return text.size() >= tail.size() && text.compare(text.size() - tail.size(), tail.size(), tail) == 0;
}

inline size_t count(const std::string& text, const std::string& what)
{
    size_t n = 0;
    for (size_t at = text.find(what); at != text.npos; at = text.find(what, at + what.size())) ++n;
    return n;
}

} // namespace runs
