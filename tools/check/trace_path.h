// The paths that vx_sac gives its traces in an empty folder.
#pragma once

#include "model/trace_name.h"

#include <optional>
#include <string>
#include <unordered_set>

namespace check {

class TracePaths {
public:
    /// The path of the next trace below the output folder. Nothing when vx_sac makes none: no samples are
    /// wanted, or it ended before, since all names of a trace were taken.
    std::optional<std::string> next(const TraceName& name);

private:
    std::unordered_set<std::string> taken_;
    bool ended_ = false;
};

} // namespace check
