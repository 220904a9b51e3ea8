// Completes the headers of traces whose run was killed.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace ls {

/// What vx_sac tells of a trace's samples in its header.
struct FoundStatistics {
    float least = 0.0F, most = 0.0F, mean = 0.0F;
};

/// Running sums over samples in the order of the file, kept as vx_sac keeps them.
struct Sums {
    double sum = 0.0, least, most;
    uint64_t count = 0;

    Sums();
    void add(float sample);
    FoundStatistics result() const;
};

struct Finishing {
    bool force = false;   ///< also of traces that somebody may still be writing
    bool dry_run = false; ///< only told, nothing is written
};

/// Finishes every unfinished trace of the paths and tells of each on standard output; others stay untouched.
/// False when something could not be read or finished; standard error tells what.
bool finish_traces(const std::vector<std::string>& paths, const Finishing& how);

} // namespace ls
