// One channel during one event: its samples, cut into the payloads of data packets.
#pragma once

#include "mkrec/steim_encode.h"
#include "mkrec/survey.h"

#include <vector>

namespace mkrec {

struct SampleBlock {
    uint8_t payload[Steim_len]; ///< what stands behind a data packet's header and extension
    int used;                   ///< bytes of it that hold data
    int samples;
    int64_t first; ///< number of the first of them in the event, from 0
};

class ChannelRun {
public:
    ChannelRun(const Survey& survey, const LinePlace& place);

    /// Gives the next block; false at the end.
    bool next(SampleBlock& block);

    /// True when the samples cannot be told in the channel's format; there are no more blocks then.
    bool not_encodable() const { return not_encodable_; }

private:
    void look_ahead();
    void pack(SampleBlock& block);

    SampleFormat format_;
    bool bad_check_;
    SignalMaker signal_;
    int64_t samples_left_; ///< not yet asked of the signal; meaningless while blocks are counted
    int64_t blocks_left_;  ///< -1: not counted
    std::vector<int32_t> ahead_;
    int from_ = 0, to_ = 0; ///< what of it is waiting
    int32_t previous_ = 0;  ///< the last sample of the block before
    int64_t given_ = 0;     ///< samples given in all
    bool not_encodable_ = false;
};

} // namespace mkrec
