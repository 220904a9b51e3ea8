// A thread that writes what files have collected while the run goes on.
//
// Storing what a packet becomes takes the system longer than converting it; side by side the two take two
// thirds of the time. Pieces are written one after the other, in the order in which they were handed over,
// and who writes by himself waits for them first: the system sees the same writes in the same order as it
// would without the thread.
#pragma once

#include <cstddef>
#include <cstdint>

struct OUT_FILE;

inline constexpr uint32_t Piece_max = 65536;

/// Hands over what a file has collected, Piece_max bytes at most; its buffer is empty then. Waits while too
/// much is on its way. False, and nothing has changed, when no thread can be had, or when a piece was lost
/// that finish_pieces has to tell of first.
bool hand_over(OUT_FILE& file);

/// Waits until all pieces are written. Then tells of each that was lost, the oldest first: it could not be
/// written, or an earlier one of the same file could not, so that what is there stays a whole prefix.
void finish_pieces(void (*tell_loss)(OUT_FILE& file));

/// Ends the thread once all pieces are written, as the end of the process does; the next piece starts
/// another. For tests: a fork takes only the thread along that calls it.
void end_pieces();

/// Writes all n bytes. False when that cannot be.
bool write_all(int fd, const char* bytes, size_t n);
