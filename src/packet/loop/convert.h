// The main loop.
#pragma once

/// Converts the whole input (FdIn). Events without a trailer are finished at its end.
void vx_cvt();
