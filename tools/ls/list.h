// Prints the listing as a table or as JSON.
#pragma once

#include "ls/entry.h"

#include <vector>

namespace ls {

/// A header line, a line per trace, an empty line, and the count.
void print_table(const std::vector<Entry>& entries);

/// An array with an object for each trace.
void print_json(const std::vector<Entry>& entries);

} // namespace ls
