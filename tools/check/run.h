// A run of vx_check: its settings, its output, and the way from file to file.
#pragma once

#include "check/options.h"

#include <cstdio>
#include <string>
#include <vector>

namespace check {

/// Takes the switches of vx_sac that the user gave. After a mistake in them the run ends with the usage of
/// vx_sac and status 2.
void take_switches(const std::vector<std::string>& switches);

/// Chooses the station file.
void settle_station_file(const Options& options, const char* argv0);

/// Standard output for this tool alone. The packet library prints complaints there, which are no part of a
/// report: while this exists they go to /dev/null.
class OwnOutput {
public:
    OwnOutput();
    ~OwnOutput();
    OwnOutput(const OwnOutput&) = delete;
    OwnOutput& operator=(const OwnOutput&) = delete;

    bool opened() const { return file_ != nullptr; }
    bool is_terminal() const;
    int columns() const; ///< of the terminal; 0: none
    void write(const std::string& text);
    /// False when anything was lost; errno says why.
    bool close();

private:
    FILE* file_ = nullptr;
    int error_ = 0;
};

/// Looks through all files. Returns the highest status of one.
int check_files(const Options& options, OwnOutput& out);

} // namespace check
