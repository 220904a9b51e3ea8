// The listing: as a table for people, or as JSON for programs.
#pragma once

#include "ls/entry.h"

#include <vector>

namespace ls {

/// Columns under a header line, an empty line, and the count.
void print_table(const std::vector<Entry>& entries);

/// One array, one object per trace.
void print_json(const std::vector<Entry>& entries);

} // namespace ls
