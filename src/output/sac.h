// SAC traces: the header, the samples behind it, the finishing.
#pragma once

#include "output/sac_layout.h"

#include <cstdint>

struct CHN_T;

/// Fills a header from the channel and its event and unit; numbers in host order.
void Sac_dhdr_init(const CHN_T& chn, SACHDR_T& header);

/// The header of the channel as it stands in the file: Sac_header_len bytes.
void Sac_dhdr_bytes(const CHN_T& chn, char* bytes);

/// Creates the channel's trace under its name. False when that fails; errno is EEXIST when the name was taken
/// meanwhile.
bool Chn_file_open(CHN_T& chn);

/// Writes what is collected of the channel's trace and closes it.
void Chn_file_close(CHN_T& chn);

/// Appends the provisional header to the channel's new trace.
void Sac_dhdr_out(CHN_T& chn);

/// Appends samples, with the channel's trash count and Smp_limit applied, and keeps its statistics.
void Sac_data_out(CHN_T& chn, const int32_t* samples, uint16_t count);

/// Finishes the channel's trace: closes it, opens it again and writes the final header over the provisional
/// one. When that fails: a message, and the channel's debugging dump.
void Sac_data_close(CHN_T& chn);

/// carried: ibm-float. The IBM System/360 single-precision bits of an integer. A zero fraction (0, multiples
/// of 2^24) gives 0.
uint32_t IBM_float(int32_t value);
