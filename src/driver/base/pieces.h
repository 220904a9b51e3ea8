// A thread that writes full buffers while the run goes on.
//
// The system takes longer to store the samples of a packet than the converter takes to decode them. With a
// thread for writing both happen at the same time. The thread writes pieces in the order in which they were
// handed over, and the run waits for it before it writes to a file itself. So the system sees the same writes
// in the same order as without a thread. A piece consists of bytes, a descriptor and a number; this room
// knows nothing of files.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

inline constexpr uint32_t Piece_max = 65536; ///< bytes of a piece

/// Capacity of the queue. With 16 pieces neither side waits often; with 2 both waited at every piece.
inline constexpr uint32_t Pieces = 16;

/// Queues at most Piece_max bytes to be written to `fd`; `number` names the file in reports. Waits while the
/// queue is full. False, and nothing is queued, when no thread can be started, or when finish_pieces has to
/// report a loss first.
bool hand_over(int fd, std::string_view bytes, uint32_t number);

/// Waits until the queue is empty, then calls report_loss for each lost piece, the oldest first. A piece is
/// lost when writing it fails, or when an earlier piece of the same number was lost, so that no file has a
/// gap.
void finish_pieces(void (*report_loss)(uint32_t number));

/// Ends the thread when all pieces are written. The next piece starts another thread.
void end_pieces();

/// Writes all n bytes. False when a write fails.
bool write_all(int fd, const char* bytes, size_t n);
