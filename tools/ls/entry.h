// What one file is, and what a user must know about it.
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
    not_sac = 1 << 1,    ///< no SAC file
    unfinished = 1 << 2, ///< the header counts no samples, yet there are some: its run did not end
    empty = 1 << 3,      ///< no samples, neither counted nor there
    cut = 1 << 4,        ///< shorter than a header, shorter than the header says, or with a part of a sample
    extra = 1 << 5,      ///< longer than the header says
    no_rate = 1 << 6,    ///< no sample rate
    no_time = 1 << 7,    ///< no start time
    qc_reset = 1 << 8,   ///< the statistics went to the QC files
    gap = 1 << 9,        ///< begins later than the trace of the channel before it ended
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
    bool has_header = false; ///< else nothing below is known
    int error = 0;           ///< errno of a file that could not be read
    uint64_t data_len = 0;   ///< bytes behind the header
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
    /// Whole samples in the file, but no more than the header says of a finished one.
    uint64_t samples_there() const;
};

/// The flags of a file by itself: all but gap and overlap.
Entry make_entry(const std::string& path, trace::Found found, const trace::InputFile& input,
                 const trace::TraceHeader& trace);
Entry read_entry(const std::string& path);

/// Marks the traces that do not begin where the one before of the same network, station, component, stream
/// and channel ended. A trace may be off by half a sample, and by the millisecond that start times are told
/// in.
void mark_gaps(std::vector<Entry>& entries);

} // namespace ls
