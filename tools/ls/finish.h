// Completes the headers of traces whose run was killed.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace ls {

/// The statistics that vx_sac writes to the header of a trace.
struct FoundStatistics {
    float least = 0.0F, most = 0.0F, mean = 0.0F;
};

/// Sums over samples in the order of the file, computed as vx_sac does.
struct Sums {
    double sum = 0.0, least, most;
    uint64_t count = 0;

    Sums();
    void add(float sample);
    FoundStatistics result() const;
};

struct Finishing {
    bool force = false;   ///< finish also traces that may still be written
    bool dry_run = false; ///< only print what would be done
};

/// Finishes every unfinished trace of the paths and prints a line for each; other files are not changed.
/// Returns false if something could not be read or finished; a message on standard error says what.
bool finish_traces(const std::vector<std::string>& paths, const Finishing& how);

} // namespace ls
