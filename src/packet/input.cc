#include "packet/input.h"

#include "driver/base/fatal.h"
#include "driver/base/pulse.h"
#include "driver/base/run_files.h"

#include <cerrno>
#include <cstddef>
#include <unistd.h>

uint32_t Blk_cnt;

namespace {

constexpr size_t Read_ahead = 256 * 1024;
static_assert(Read_ahead % Packet_size == 0);

uint8_t Ahead[Read_ahead];
size_t Filled;    ///< bytes read into Ahead
size_t Taken;     ///< bytes of Ahead in packets already returned
bool At_end;      ///< the input has no bytes after those in Ahead
bool Read_failed; ///< reading ended with an error

/// Fills Ahead, or reads up to the end of the input.
void read_on()
{
    Filled = Taken = 0;
    write_once_a_second();
    while (Filled < Read_ahead && !At_end) {
        const ssize_t n = read(fileno(FdIn), Ahead + Filled, Read_ahead - Filled);
        if (n > 0) Filled += static_cast<size_t>(n);
        if (n == 0) At_end = true;
        if (n < 0 && errno != EINTR) At_end = Read_failed = true;
    }
    write_once_a_second();
}

} // namespace

std::optional<PACKET> Blk_read()
{
    if (Filled - Taken < Packet_size && !At_end) read_on();
    if (Filled - Taken < Packet_size) {
        if (Read_failed) shut_down(FATAL_READ, nullptr);
        return std::nullopt;
    }
    const PACKET pkt(Ahead + Taken);
    Taken += Packet_size;
    return pkt;
}

void Blk_rewind()
{
    Filled = Taken = 0;
    At_end = Read_failed = false;
}
