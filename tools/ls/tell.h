// Messages that several tasks print.
#pragma once

#include "ls/entry.h"
#include "trace/walk.h"

#include <string>
#include <string_view>

namespace ls {

/// "vx_ls: PATH: WHY" on standard error.
void complain(std::string_view path, std::string_view why);

/// Prints a message for each path that could not be read; returns false if there was any.
bool tell_troubles(const trace::Walk& walk);

/// Why no header could be read from a file.
std::string why_lost(const Entry& entry);

} // namespace ls
