// Which traces are open, who gives way to whom. "Open" here is a state of the model: the bytes, buffers and
// descriptors belong to the writer, which keeps them as long as it sees fit.
#pragma once

#include <cstdint>

struct CHN_T;
struct EVT_T;

extern uint16_t N_opn_fls; ///< traces open.  Set to 0: convert.

enum class TRACE_MODE : uint8_t { create, append };

/// Opens the channel's trace unless it is open: creates it (errno EEXIST when its name was taken meanwhile),
/// or goes on behind what this run has written to it. Returns `file_open`.
uint8_t Chn_file_open(CHN_T* chn, TRACE_MODE mode);

/// Marks the channel's trace as closed.
void Chn_file_close(CHN_T* chn);

/// Closes every open trace of the event's channels. Null does nothing.
void Evt_close_files(EVT_T* evt);

/// With more than 32 traces open, closes one of the event: the first open one from `from` backward, before
/// reaching `at_hand`, which belongs to the event too. Null as `from` does nothing.
void make_room(CHN_T* from, const CHN_T* at_hand);
