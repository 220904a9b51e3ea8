#include "packet/codec.h"

#include <cstdio>
#include <cstring>

/// The two hexadecimal digits of every byte, and a blank.
struct HexBytes {
    char of[256][3];
};
static constexpr HexBytes Hex = [] {
    HexBytes h{};
    for (int b = 0; b < 256; ++b) {
        h.of[b][0] = "0123456789ABCDEF"[b >> 4];
        h.of[b][1] = "0123456789ABCDEF"[b & 15];
        h.of[b][2] = ' ';
    }
    return h;
}();

int secs_split(const uint8_t* packed, char* text)
{
    const uint32_t word = be32(packed);
    const uint32_t year = (word >> 25) + 1984;
    uint32_t left = word & 0x1FFFFFF;
    const uint32_t second = left % 60;
    left /= 60;
    const uint32_t minute = left % 60;
    left /= 60;
    const uint32_t hour = left % 24;
    const uint32_t day = left / 24 + 1;
    return snprintf(text, 14, "%04u%03u%02u%02u%02u", year, day, hour, minute, second);
}

/// The run goes on after this message.
static void complain_about_count()
{
    printf("\n ERROR: Incorrect no of bytes passed");
}

/// A signed integer of n bytes, most significant byte first; `step` is the distance to the next byte.
static int32_t integer_in(const uint8_t* at, uint16_t n, int step)
{
    uint32_t value = static_cast<uint32_t>(static_cast<int8_t>(*at));
    const uint8_t more = static_cast<uint8_t>(n - 1);
    if (more > 3) {
        complain_about_count();
        return static_cast<int32_t>(value);
    }
    for (int i = 1; i <= more; ++i) value = value << 8 | at[i * step];
    return static_cast<int32_t>(value);
}

int32_t little_endian_in(const uint8_t* at, uint16_t n)
{
    return integer_in(at, n, 1);
}

int32_t big_endian_in(const uint8_t* at, uint16_t n)
{
    return integer_in(at + 3, n, -1);
}

void little_endian_out(uint32_t value, uint8_t* to, uint16_t n)
{
    for (int i = 0; i < n; ++i, value >>= 8) to[i] = static_cast<uint8_t>(value);
}

void big_endian_out(uint32_t value, uint8_t* to, uint16_t n)
{
    for (int i = 0; i < n; ++i, value >>= 8) to[3 - i] = static_cast<uint8_t>(value);
}

uint32_t reverse(const uint8_t* at, uint16_t n)
{
    if (n == 2) return be16(at);
    if (n == 4) return be32(at);
    printf("reverse: Incorrect no of bytes passed\n");
    return 0;
}

void hex_str(char* line, const uint8_t* bytes)
{
    char* to = line;
    for (int i = 0; i < 16; ++i) {
        if (i == 8) {
            *to++ = '-';
            *to++ = ' ';
        }
        memcpy(to, Hex.of[bytes[i]], 3);
        to += 3;
    }
    *to++ = ' ';
    *to++ = ' ';
    for (int i = 0; i < 16; ++i) {
        const bool shown = bytes[i] >= 32 && bytes[i] <= 126;
        *to++ = shown ? static_cast<char>(bytes[i]) : '.';
    }
    *to = '\0';
}
