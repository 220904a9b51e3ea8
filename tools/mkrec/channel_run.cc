#include "mkrec/channel_run.h"

#include <algorithm>
#include <cstring>

namespace mkrec {

namespace {

constexpr int Ahead_len = 4096;
static_assert(Ahead_len > 2 * Steim2_most);
constexpr int Xn_low_byte = 11; // of the first frame

void put_samples(const int32_t* x, int n, int bytes_each, uint8_t* to)
{
    for (int i = 0; i < n; ++i)
        for (int shift = 8 * (bytes_each - 1); shift >= 0; shift -= 8)
            *to++ = static_cast<uint8_t>(static_cast<uint32_t>(x[i]) >> shift);
}

} // namespace

ChannelRun::ChannelRun(const Survey& survey, const LinePlace& place)
    : format_(format_of(survey, place.unit, place.stream)), bad_check_(survey.options.bad_check),
      signal_(signal_plan(survey, place)), samples_left_(samples_of(survey, place)),
      blocks_left_(survey.options.size ? blocks_of(survey, place) : -1), ahead_(Ahead_len)
{
}

/// Takes from the signal as many samples as one block can hold, or fewer at the end of the event.
void ChannelRun::look_ahead()
{
    const int want = most_samples(format_);
    if (to_ - from_ >= want) return;
    if (from_ + want > Ahead_len) {
        memmove(ahead_.data(), ahead_.data() + from_, static_cast<size_t>(to_ - from_) * sizeof ahead_[0]);
        to_ -= from_;
        from_ = 0;
    }
    int n = std::min(Ahead_len - to_, want);
    if (blocks_left_ < 0) {
        n = static_cast<int>(std::min<int64_t>(n, samples_left_));
        samples_left_ -= n;
    }
    signal_.fill(ahead_.data() + to_, n);
    to_ += n;
}

void ChannelRun::pack(SampleBlock& block)
{
    const int32_t* x = ahead_.data() + from_;
    const int n = to_ - from_;
    if (format_ == SampleFormat::int16 || format_ == SampleFormat::int32) {
        const int bytes_each = format_ == SampleFormat::int16 ? 2 : 4;
        block.samples = std::min(n, most_samples(format_));
        block.used = block.samples * bytes_each;
        put_samples(x, block.samples, bytes_each, block.payload);
        memset(block.payload + block.used, 0, static_cast<size_t>(Steim_len - block.used));
        return;
    }
    // The first block has no sample before it: its first difference is 0.
    const SteimLevel level = format_ == SampleFormat::steim1 ? SteimLevel::level1 : SteimLevel::level2;
    const SteimFill fill = steim_encode(level, x, n, given_ ? previous_ : x[0], block.payload);
    block.samples = fill.samples;
    block.used = fill.frames * Steim_frame_len;
    not_encodable_ = fill.too_wide;
    if (bad_check_) block.payload[Xn_low_byte] ^= 1;
}

bool ChannelRun::next(SampleBlock& block)
{
    if (blocks_left_ == 0 || not_encodable_) return false;
    look_ahead();
    if (from_ == to_) return false;
    pack(block);
    if (not_encodable_) return false;
    block.first = given_;
    given_ += block.samples;
    from_ += block.samples;
    previous_ = ahead_[static_cast<size_t>(from_) - 1];
    if (blocks_left_ > 0) --blocks_left_;
    return true;
}

} // namespace mkrec
