// What the fuzz targets share. A target is one function, LLVMFuzzerTestOneInput, which must accept any bytes.
// libFuzzer calls it in the fuzz builds, replay.cc with the stored corpus in all others.
#pragma once

#include "driver/base/fatal.h"
#include "driver/base/outfile.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdio_ext.h>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace fuzz {

/// A finding: ends the process, which libFuzzer and ctest notice.
inline void demand(bool holds, const char* what)
{
    if (holds) return;
    fprintf(stderr, "\nFUZZ: %s\n", what);
    abort();
}

/// Reads an input piece by piece from its start; returns zeros after its end.
class Bytes {
public:
    Bytes(const uint8_t* data, size_t size) : at_(data), left_(size) {}

    uint8_t byte()
    {
        if (left_ == 0) return 0;
        --left_;
        return *at_++;
    }
    uint32_t word()
    {
        uint32_t value = 0;
        for (int i = 0; i < 4; ++i) value = value << 8 | byte();
        return value;
    }
    void fill(uint8_t* to, size_t n)
    {
        const size_t there = std::min(n, left_);
        std::copy_n(at_, there, to);
        std::fill_n(to + there, n - there, uint8_t{0});
        at_ += there;
        left_ -= there;
    }
    std::string_view rest() const { return {reinterpret_cast<const char*>(at_), left_}; }

private:
    const uint8_t* at_;
    size_t left_;
};

inline char Shown[1 << 16];

/// Discards what the program prints on standard output from now on.
inline void silence()
{
    if (!freopen("/dev/null", "w", stdout) || setvbuf(stdout, Shown, _IOFBF, sizeof Shown) != 0) abort();
}

/// The text printed since the last call, which must fit in Shown.
inline std::string_view take_shown()
{
    const size_t length = __fpending(stdout);
    __fpurge(stdout);
    return {Shown, length};
}

/// Opens a log whose text is discarded, through the program's own writer. All of its buffer is written once.
inline void open_nowhere(OUT_FILE& log)
{
    demand(out_open(log, "/dev/null", OUT_MODE::append, log_lost), "/dev/null can be opened");
    for (const uint32_t end = log.cap; log.used < end; log.took(1)) log.buf[log.used] = ' ';
    log.used = 0;
}

} // namespace fuzz
