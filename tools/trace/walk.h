// The traces of a tree: all files below a directory whose names end in ".sac", in letters of either case.
#pragma once

#include <string>
#include <string_view>
#include <sys/stat.h>
#include <vector>

namespace trace {

struct TracePath {
    std::string path;
    size_t below = 0; ///< where in `path` the part below the directory begins that was asked for

    std::string_view relative() const { return std::string_view(path).substr(below); }
};

/// A directory or file that could not be looked at, with the errno of it.
struct Trouble {
    std::string path;
    int error = 0;
};

struct Walk {
    std::vector<TracePath> files; ///< sorted by path, each once
    std::vector<Trouble> troubles;
};

/// The name ends as those of traces do.
bool is_trace_name(std::string_view name);

/// Collects the traces of all paths. A path that is no directory is taken whatever its name is. Links to
/// directories are followed only where they are one of the paths. Below them, the directory `leave_out`
/// (null: none) is not entered.
Walk find_traces(const std::vector<std::string>& paths, const struct stat* leave_out = nullptr);

} // namespace trace
