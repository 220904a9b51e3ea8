// Makes and writes the recording packet by packet: memory does not grow with its size.
#pragma once

#include "mkrec/output.h"
#include "mkrec/survey.h"

namespace mkrec {

/// Writes every packet. Returns false if the format cannot hold the samples. Write errors are remembered by
/// the output.
bool write_recording(const Survey& survey, RecordingFile& file);

} // namespace mkrec
