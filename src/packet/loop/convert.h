// The main loop.
#pragma once

/// Converts the whole input (FdIn): every packet is taken in, and what no trailer ended is finished at its
/// end.
void vx_cvt();
