// SAC traces: the header, the samples behind it, the finishing.
#pragma once

#include "output/sac_layout.h"

#include <cstdint>

struct CHN_T;

/// Fills a header from the channel and its event and unit; numbers in host order.
void Sac_dhdr_init(const CHN_T* chn, SACHDR_T* header);

/// The header of the channel as it stands in the file: Sac_header_len bytes.
void Sac_dhdr_bytes(const CHN_T* chn, char* bytes);

/// Appends the provisional header to the channel's new trace.
void Sac_dhdr_out(CHN_T* chn);

/// Appends samples, with the channel's trash count and Smp_limit applied, and keeps its statistics.
void Sac_data_out(CHN_T* chn, const int32_t* samples, uint16_t count);

/// Finishes the channel's trace: closes it, opens it again and writes the final header over the provisional
/// one. When that fails: a message, and the channel's debugging dump.
void Sac_data_close(CHN_T* chn);

/// The IBM System/360 single-precision bits of an integer. A zero fraction (0, multiples of 2^24) gives 0.
/// Nothing calls it.
uint32_t IBM_float(int32_t value);
