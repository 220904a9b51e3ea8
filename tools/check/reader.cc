#include "check/reader.h"

#include <cerrno>
#include <cstring>
#include <unistd.h>

namespace check {

static constexpr size_t Buffer_len = 512 * 1024;

BlockReader::BlockReader(int descriptor) : descriptor_(descriptor), buffer_(Buffer_len) {}

/// Moves what is left to the front, and reads on until the buffer is full or the input ends.
void BlockReader::fill()
{
    memmove(buffer_.data(), buffer_.data() + at_, filled_ - at_);
    filled_ -= at_;
    at_ = 0;
    while (filled_ < buffer_.size() && !ended_) {
        const ssize_t n = read(descriptor_, buffer_.data() + filled_, buffer_.size() - filled_);
        if (n > 0) {
            filled_ += static_cast<size_t>(n);
            bytes_ += static_cast<uint64_t>(n);
        } else if (n == 0 || errno != EINTR) {
            ended_ = true;
            if (n < 0) error_ = errno;
        }
    }
}

std::span<const uint8_t> BlockReader::beginning()
{
    if (filled_ == 0 && !ended_) fill();
    return {buffer_.data(), filled_};
}

const uint8_t* BlockReader::next()
{
    if (begun_) at_ += Packet_size;
    begun_ = true;
    if (filled_ - at_ < Look_ahead && !ended_) fill();
    if (filled_ - at_ >= static_cast<size_t>(Packet_size)) return buffer_.data() + at_;
    begun_ = false; // the end stays the end
    return nullptr;
}

} // namespace check
