// Complaints, and what several tasks tell alike.
#pragma once

#include "ls/entry.h"
#include "trace/walk.h"

#include <string>
#include <string_view>

namespace ls {

/// "vx_ls: PATH: WHY" on standard error.
void complain(std::string_view path, std::string_view why);

/// Complains of what could not be looked at on the way; false when there was something.
bool tell_troubles(const trace::Walk& walk);

/// Why a file without a readable header has none.
std::string why_lost(const Entry& entry);

} // namespace ls
