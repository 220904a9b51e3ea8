// The whole recording, written as it is made: memory does not grow with its size.
#pragma once

#include "mkrec/output.h"
#include "mkrec/survey.h"

namespace mkrec {

/// Writes every packet. False when the samples cannot be told in the format asked for; a file that cannot
/// be written is the output's to tell.
bool write_recording(const Survey& survey, RecordingFile& out);

} // namespace mkrec
