// Reads an input front to back, block by block, from any descriptor, also a pipe. Blocks around the current
// one stay in memory, so that a shifted recording can be recognised.
#pragma once

#include "packet/layout.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace check {

class BlockReader {
public:
    static constexpr size_t Look_ahead = 8 * Packet_size;

    explicit BlockReader(int descriptor);

    /// The next whole block, valid until the next call; null at the end.
    const uint8_t* next();

    /// What is in memory from the current block on: Look_ahead bytes, or all up to the end of the input.
    std::span<const uint8_t> from_here() const { return {buffer_.data() + at_, filled_ - at_}; }

    /// The first bytes of the input. Valid before the first call of next().
    std::span<const uint8_t> beginning();

    uint64_t bytes() const { return bytes_; }          ///< read so far
    size_t left_over() const { return filled_ - at_; } ///< after the end: bytes behind the last whole block
    int error() const { return error_; }               ///< errno of a read that failed, or 0

private:
    void fill();

    int descriptor_;
    std::vector<uint8_t> buffer_;
    size_t at_ = 0, filled_ = 0;
    bool begun_ = false, ended_ = false;
    uint64_t bytes_ = 0;
    int error_ = 0;
};

} // namespace check
