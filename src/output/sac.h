// Writes SAC traces: a provisional header, the samples, the final header.
#pragma once

#include "output/sac_layout.h"

#include <cstdint>

struct CHN_T;

/// Fills a header from the channel, its event and its unit. Numbers are in host order.
void Sac_dhdr_init(const CHN_T& chn, SACHDR_T& header);

/// Writes the channel's header as the file has it, Sac_header_len bytes.
void Sac_dhdr_bytes(const CHN_T& chn, char* bytes);

/// Creates the channel's trace under its name. False when that fails; errno is EEXIST when another file has
/// the name by now.
bool Chn_file_open(CHN_T& chn);

/// Writes the rest of the channel's trace and closes it.
void Chn_file_close(CHN_T& chn);

/// Appends the provisional header to the channel's new trace.
void Sac_dhdr_out(CHN_T& chn);

/// Appends samples and updates the statistics. Drops samples while the channel's `trash` is not 0, and those
/// beyond Smp_limit.
void Sac_data_out(CHN_T& chn, const int32_t* samples, uint16_t count);

/// Finishes the channel's trace: closes it, opens it again and overwrites the provisional header with the
/// final one. If it cannot be opened: a message and the channel's debugging dump.
void Sac_data_close(CHN_T& chn);

/// carried: ibm-float. The IBM System/360 single-precision bits of an integer. A zero fraction (0, multiples
/// of 2^24) gives 0.
uint32_t IBM_float(int32_t value);
