// Writes the same data as 1024-byte miniSEED-2 records, for converters that read those.
#pragma once

#include "mkrec/channel_run.h"
#include "mkrec/output.h"

namespace mkrec {

inline constexpr int Record_len = 1024;

/// Writes one record: header, blockette 1000, and from byte 64 on the same block as in a data packet.
/// `number` counts the records of the file from 1.
void write_record(uint8_t* record, const Survey& survey, const LinePlace& place, const SampleBlock& block,
                  int64_t number);

/// Writes the whole survey, one channel after another, each in the order of time. Returns false if
/// the format cannot hold the samples.
bool write_mseed(const Survey& survey, RecordingFile& out);

} // namespace mkrec
