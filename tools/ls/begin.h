// Makes copies of traces with B and E, for programs that need them.
#pragma once

#include <string>
#include <vector>

namespace ls {

/// Copies every complete trace of the paths into the same tree below `dir`, which is made if missing, with
/// B = 0 and E = (NPTS - 1) * DELTA. Existing files are not overwritten. Returns false if a trace was not
/// copied; a message on standard error says which and why.
bool copy_with_begin(const std::string& dir, const std::vector<std::string>& paths);

} // namespace ls
