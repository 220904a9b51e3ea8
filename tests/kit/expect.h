// The texts and files that a run must write, coded a second time without the program's own code. One function
// masks the clock in texts, another one in SAC files; the scratch path is a field of Settings.
#pragma once

#include "kit/run.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kit {

inline constexpr std::string_view Banner = "PASSCAL packets to SAC traces, packet logs and QC statistics";
inline constexpr std::string_view Yes = "YES", No = "NO";

/// The values in the run summary and in the header of the logs.
struct Settings {
    std::string file_in, file_ini, dir_org, dir_out, file_log, file_qcc, cmd_line;
    unsigned path_option = 0;
    std::string name_option = "Auto";
    bool log_on = true, log_dt = false, qcc_on = false;
    std::string rate = "100.0000", max_samples = "4294967295", skip_samples = "0";
};

/// The settings of a run by convert() with default switches; a test changes the fields of its switches.
Settings settings_of(const Converted& run);

std::string console_banner();                   ///< the first two lines on the console
std::string usage(std::string_view skip = "0"); ///< the usage text
std::string run_summary(const Settings& s);     ///< console, from "Input File" to the invitation to abort
std::string table_start();                      ///< console, the two opening lines of the progress table
std::string log_header(const Settings& s);      ///< header of every .vxl, the clock masked
std::string qcc_header(const Settings& s);      ///< header of every .qcc, the clock masked
/// The whole console of a run by convert() with status 0: banner, summary, table, these lines, closing line.
std::string whole_console(const Settings& s, std::string_view progress);

/// Progress lines; `block` counts from 1, streams and channels too.
std::string progress_eh(unsigned block, std::string_view unit, unsigned event, unsigned stream,
                        std::string_view trigger3, std::string_view rate, std::string_view type = "EH");
std::string progress_et(unsigned block, std::string_view unit, unsigned event, unsigned stream,
                        std::string_view trigger3, std::string_view rate);
std::string progress_dt(unsigned block, std::string_view unit, unsigned event, unsigned stream,
                        unsigned channel);
std::string progress_sh(unsigned block, std::string_view unit);
std::string progress_params(unsigned block, std::string_view type); ///< SC DS CD OM AD DR FD
std::string progress_net(unsigned block, std::string_view type, std::string_view unit, unsigned number);

/// One packet's line in the logs. `block` counts from 0; event, counts and times are the digits shown.
struct HeadLine {
    std::string type = "DT", mark = " ", time = "04:123:10:15:30.250", experiment = "07", unit = "9A2F";
    std::string event = "0000", stream = "1", channel = "1", samples = "0000", format = "32", flags = "00";
    std::string length = "1024", seq = "0000", micros = "000";
    unsigned block = 0;
};
std::string head_line(const HeadLine& h);

/// The values of a SAC header; fields that are not set keep the undefined value.
struct Sac {
    float delta = -12345.0f, odelta = -12345.0f;
    float depmin = 2147483647.0f, depmax = -2147483647.0f, depmen = 0.0f; ///< as reset
    float o = 0.0f, cmpaz = 0.0f, cmpinc = 0.0f;
    int32_t year = 2004, day = 123, hour = 10, min = 15, sec = 30, ms = 250;
    int32_t npts = 0;
    std::string kstnm = "STA01", kcmpnm = "9A2F-1-1", knetwk = "-12345  ";

    Sac& rate(float samples_per_second);
    Sac& stats(float least, float most, float mean);
};
std::string sac_header(const Sac& s);                                    ///< 632 bytes, run date masked
std::string sac_file(const Sac& s, const std::vector<int32_t>& samples); ///< NPTS is the number of samples
std::string sac_samples(const std::vector<int32_t>& samples);            ///< big-endian floats
std::vector<float> samples_of(std::string_view sac_bytes);               ///< read back
int32_t header_int(std::string_view sac_bytes, int word);                ///< a numeric word of the header
uint32_t header_bits(std::string_view sac_bytes, int word);
std::string header_text(std::string_view sac_bytes, int offset, int len);

/// In texts: replaces the 24 characters after every "System time: " by stars.
std::string mask_clock(std::string text);
/// In SAC files: replaces the run date (bytes 616 to 623) by question marks.
std::string mask_run_date(std::string sac_bytes);
/// In a whole tree, each file by its name's ending.
Tree masked(Tree tree);

/// Compares two texts; the message shows the first difference and the text around it.
testing::AssertionResult same_bytes(std::string_view actual, std::string_view expected);
/// Compares two trees after masking both: no file more, none less, every byte equal.
testing::AssertionResult same_tree(const Tree& actual, const Tree& expected);

} // namespace kit
