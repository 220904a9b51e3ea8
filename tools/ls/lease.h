// Finds out whether another program is writing a trace: by a lease of the kernel, and by the time of change.
#pragma once

#include <string>
#include <sys/stat.h>

namespace ls {

/// A file that changed within this number of seconds counts as being written.
inline constexpr int Quiet_seconds = 10;

/// Takes a read lease on a descriptor that is open for reading only. This fails if any program has the file
/// open for writing. The lease lasts until the descriptor is closed. Returns an empty text, or the reason of
/// the failure. A program that opens the file for writing meanwhile waits for the close, at most 45 seconds;
/// the kernel then sends SIGIO, which this process must ignore.
std::string take_lease(int fd);

/// True if the lease is still held and no program waits for its end.
bool holds_lease(int fd);

/// Checks the time of change, because a file that is written now and then is not open all the time. Returns
/// an empty text, or why the file counts as being written.
std::string why_not_quiet(const struct stat& file);

} // namespace ls
