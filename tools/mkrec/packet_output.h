// Packets on their way into the recording: numbered, and those left out, doubled or damaged that the user
// wants so.
#pragma once

#include "mkrec/options.h"
#include "mkrec/output.h"

namespace mkrec {

class PacketOutput {
public:
    PacketOutput(const Options& options, RecordingFile& out) : options_(options), out_(out) {}

    void write(const TextPage& page);
    bool failed() const { return out_.failed(); }

private:
    bool is_damaged(DamageKind kind) const;

    const Options& options_;
    RecordingFile& out_;
    int64_t number_ = 0; ///< of the latest packet, counted from 1
    bool cut_ = false;
};

} // namespace mkrec
