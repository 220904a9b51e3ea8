// The station file as its author sees it, held against what the converter makes of it.
#pragma once

#include "check/report.h"

#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace check {

/// What is wrong with a station file, whatever the recording.
class StationFile {
public:
    /// Reads the file. Returns errno when that fails; then nothing is known.
    int read(const std::string& path);

    bool is_there() const { return there_; }
    const std::set<uint16_t>& sections() const { return sections_; }
    const std::vector<Finding>& findings() const { return findings_; }

private:
    void take_text(std::string_view text);
    void take_line(std::string_view line);
    void take_head(std::string_view line);
    void take_key(std::string_view line);
    void add(Code code, const std::string& what);

    bool there_ = false;
    std::set<uint16_t> sections_;
    std::vector<Finding> findings_;
    uint64_t line_ = 0;   ///< number of the current one
    int unit_ = Nowhere;  ///< of the current section
    bool in_use_ = false; ///< the current section is the recorder's first
};

/// Adds the file's findings to those of a recording, and recorders without a section and sections without a
/// recorder.
void check_station_file(const StationFile& file, Report& report);

} // namespace check
