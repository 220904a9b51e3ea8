// Finds the traces of a tree: all files below a directory whose names end in ".sac", in upper or lower case.
#pragma once

#include <string>
#include <string_view>
#include <sys/stat.h>
#include <vector>

namespace trace {

struct TracePath {
    std::string path;
    size_t below = 0; ///< where in `path` the part below the directory of the command line begins

    std::string_view relative() const { return std::string_view(path).substr(below); }
};

/// A directory or file that could not be read, with its errno.
struct Trouble {
    std::string path;
    int error = 0;
};

struct Walk {
    std::vector<TracePath> files; ///< sorted by path, without duplicates
    std::vector<Trouble> troubles;
};

/// True if the name ends in ".sac", in upper or lower case.
bool is_trace_name(std::string_view name);

/// Collects the traces of all paths. A path that is not a directory is taken whatever its name is. Links to
/// directories are followed only where they are one of the paths. Below them, the directory `leave_out`
/// (null: none) is not entered.
Walk find_traces(const std::vector<std::string>& paths, const struct stat* leave_out = nullptr);

} // namespace trace
