// What is known of one file, and its flags.
#pragma once

#include "trace/file.h"
#include "trace/walk.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ls {

enum class TraceFlag : uint16_t {
    unreadable = 1 << 0, ///< could not be opened or read
    not_sac = 1 << 1,    ///< not a SAC file
    unfinished = 1 << 2, ///< NPTS is 0, but samples follow: the run did not end
    empty = 1 << 3,      ///< NPTS is 0 and no samples follow
    cut = 1 << 4,        ///< shorter than a header or than NPTS says, or ends within a sample
    extra = 1 << 5,      ///< longer than NPTS says
    no_rate = 1 << 6,    ///< no sample rate
    no_time = 1 << 7,    ///< no start time
    qc_reset = 1 << 8,   ///< the statistics are in the QC files
    gap = 1 << 9,        ///< begins later than the channel's previous trace ended
    overlap = 1 << 10,   ///< begins earlier than that
};

struct FlagName {
    TraceFlag flag;
    const char* word;
};
inline constexpr FlagName Flag_names[] = {
    {TraceFlag::unreadable, "unreadable"},
    {TraceFlag::not_sac, "not-sac"},
    {TraceFlag::unfinished, "unfinished"},
    {TraceFlag::empty, "empty"},
    {TraceFlag::cut, "cut"},
    {TraceFlag::extra, "extra"},
    {TraceFlag::no_rate, "no-rate"},
    {TraceFlag::no_time, "no-time"},
    {TraceFlag::qc_reset, "qc-reset"},
    {TraceFlag::gap, "gap"},
    {TraceFlag::overlap, "overlap"},
};

struct Entry {
    std::string path;
    uint16_t flags = 0;
    bool has_header = false; ///< if false, the values below are unknown
    int error = 0;           ///< errno of a file that could not be read
    uint64_t data_len = 0;   ///< bytes after the header
    uint64_t file_len = 0;
    float delta = Undefined_f, depmin = Undefined_f, depmax = Undefined_f, depmen = Undefined_f;
    bool has_statistics = false;
    std::optional<double> rate;   ///< samples per second
    std::optional<int64_t> start; ///< milliseconds since 1970
    std::optional<uint32_t> npts; ///< as the header says
    std::optional<std::string> kstnm, kcmpnm, knetwk;

    bool has(TraceFlag flag) const { return flags & static_cast<uint16_t>(flag); }
    void set(TraceFlag flag) { flags = static_cast<uint16_t>(flags | static_cast<uint16_t>(flag)); }
    /// Nothing of the trace could be read.
    bool is_lost() const { return !has_header; }
    /// Complete samples in the file; for a finished trace not more than NPTS.
    uint64_t samples_there() const;
};

/// The flags that need this file only: all but gap and overlap.
Entry make_entry(const std::string& path, trace::Found found, const trace::InputFile& input,
                 const trace::TraceHeader& trace);
Entry read_entry(const std::string& path);

/// Sets gap or overlap for traces that do not begin where the previous one of the same network, station,
/// component, stream and channel ended. Half a sample interval, or one millisecond if that is more (the
/// resolution of start times), is allowed.
void mark_gaps(std::vector<Entry>& entries);

} // namespace ls
