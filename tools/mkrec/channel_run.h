// One channel during one event: its samples, cut into the payloads of data packets.
#pragma once

#include "mkrec/steim_encode.h"
#include "mkrec/survey.h"

#include <vector>

namespace mkrec {

struct SampleBlock {
    uint8_t payload[Steim_len]; ///< what follows the header and extension of a data packet
    int used;                   ///< bytes of it that hold data
    int samples;
    int64_t first; ///< number of the first sample within the event, from 0
};

class ChannelRun {
public:
    ChannelRun(const Survey& survey, const LinePlace& place);

    /// Makes the next block; returns false at the end.
    bool next(SampleBlock& block);

    /// True if the channel's format cannot hold the samples; then there are no more blocks.
    bool not_encodable() const { return not_encodable_; }

private:
    void look_ahead();
    void pack(SampleBlock& block);

    SampleFormat format_;
    bool bad_check_;
    SignalMaker signal_;
    int64_t samples_left_; ///< samples still to be taken from the signal; not used if blocks_left_ is
    int64_t blocks_left_;  ///< -1: not used
    std::vector<int32_t> ahead_;
    int from_ = 0, to_ = 0; ///< the samples of it that wait for a block
    int32_t previous_ = 0;  ///< the last sample of the previous block
    int64_t given_ = 0;     ///< samples given in all
    bool not_encodable_ = false;
};

} // namespace mkrec
