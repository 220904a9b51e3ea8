// A thread that writes full buffers while the run goes on.
//
// The system takes longer to store the samples of a packet than the converter takes to decode them. A thread
// that only writes makes the two overlap. It writes pieces one after the other, in the order in which they
// were handed over; the run waits for it before it writes to a file itself. So the system sees the same
// writes in the same order as without a thread. Pieces are bytes, a descriptor and a number; the thread knows
// no file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

inline constexpr uint32_t Piece_max = 65536; ///< bytes of a piece

/// Capacity of the queue. With 16 pieces neither side waits often; with 2 both waited at every piece.
inline constexpr uint32_t Pieces = 16;

/// Hands over bytes, Piece_max at most, to be written through `fd`; `number` names the file in reports. Waits
/// while the queue is full. False, with nothing changed, when no thread can be started, or when a piece was
/// lost that finish_pieces has to report first.
bool hand_over(int fd, std::string_view bytes, uint32_t number);

/// Waits until all pieces are written. Then reports the number of each that was lost, the oldest first: it
/// could not be written, or an earlier one of the same number could not, so that a file always holds a whole
/// prefix.
void finish_pieces(void (*report_loss)(uint32_t number));

/// Ends the thread once all pieces are written; the next piece starts another one.
void end_pieces();

/// Writes all n bytes. False when that fails.
bool write_all(int fd, const char* bytes, size_t n);
