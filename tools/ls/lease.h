// Whether somebody else is writing to a trace: asked of the kernel, which knows, and of the clock.
#pragma once

#include <string>
#include <sys/stat.h>

namespace ls {

/// Seconds that a file must have been left in peace.
inline constexpr int Quiet_seconds = 10;

/// Takes a read lease on a descriptor that is open for reading only, which is possible while nobody has the
/// file open for writing, and lasts until the descriptor is closed. An empty text, or why there is none.
/// Whoever opens the file for writing meanwhile has to wait for the close, 45 seconds at most, and SIGIO
/// tells of it: the process must ignore that signal.
std::string take_lease(int fd);

/// The lease is still there, and nobody waits for its end.
bool holds_lease(int fd);

/// A file that somebody writes to now and then is not open all the time. An empty text, or why the file does
/// not pass for one that is left in peace.
std::string why_not_quiet(const struct stat& file);

} // namespace ls
