// Looks through a recording once, front to back, and says what is in it and what is wrong with it.
#pragma once

#include "check/reader.h"
#include "check/report.h"

#include <functional>

namespace check {

/// Fills `report`, whose `file` is set. `on_way` is called now and then with the bytes read so far.
void inspect(BlockReader& reader, Report& report, const std::function<void(uint64_t)>& on_way);

} // namespace check
