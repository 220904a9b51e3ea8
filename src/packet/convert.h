// The main loop.
#pragma once

#include <cstdint>

/// Converts the whole input. Returns 0 at its end, or a packet's first two bytes (the first one low) when a
/// unit, event or channel cannot be had.
uint16_t vx_cvt();
