// Copies of traces with B and E set, for programs that insist on them.
#pragma once

#include <string>
#include <vector>

namespace ls {

/// Copies every whole trace of the paths into `dir`, which is made if missing, in the same tree, with B = 0
/// and E = (NPTS - 1) * DELTA. What stands there already is not touched. False when a trace was not copied;
/// standard error tells which and why.
bool copy_with_begin(const std::string& dir, const std::vector<std::string>& paths);

} // namespace ls
