// Decodes BCD, integers of both byte orders and packed seconds, and writes the line of a hexadecimal dump.
// Pure functions on bytes.
#pragma once

#include <cstdint>
#include <cstring>

/// The two digits of every byte.
struct DigitPairs {
    char of[256][2];
};
inline constexpr DigitPairs Digits = [] {
    DigitPairs d{};
    for (int b = 0; b < 256; ++b) {
        d.of[b][0] = static_cast<char>('0' + (b >> 4));
        d.of[b][1] = static_cast<char>('0' + (b & 15));
    }
    return d;
}();

/// Writes the 2n digits of n BCD bytes, without a NUL. A nibble above 9 gives one of the characters after "9"
/// (":" to "?").
inline void unbcd(char* digits, const uint8_t* bcd, uint16_t n)
{
    for (unsigned i = 0; i < n; ++i) memcpy(digits + 2 * i, Digits.of[bcd[i]], 2);
}

/// The value of n BCD bytes, modulo 65536. A nibble above 9 counts with its value, so one byte gives at most
/// 165.
inline uint16_t bcd2i(const uint8_t* bcd, int16_t n)
{
    unsigned value = 0;
    for (int i = 0; i < n; ++i) {
        value = value * 10 + (bcd[i] >> 4);
        value = value * 10 + (bcd[i] & 15);
    }
    return static_cast<uint16_t>(value);
}

/// carried: bytewise-bcd. The same value, computed byte by byte.
inline uint16_t bcdtoi(const uint8_t* bcd, uint16_t n)
{
    unsigned value = 0;
    for (unsigned i = 0; i < n; ++i) value = value * 100 + (bcd[i] >> 4) * 10U + (bcd[i] & 15U);
    return static_cast<uint16_t>(value);
}

/// Unpacks a time of a disk directory: four packet bytes with 7 bits of years since 1984 and 25 bits of
/// seconds in that year. Writes year (4 digits), day (3), hour, minute, second (2 each) and a NUL; `text` has
/// 14 bytes. Returns the number of characters (13).
int secs_split(const uint8_t* packed, char* text);

/// carried: byte-swaps. The number with its bytes in reverse order.
inline int16_t swap16(uint16_t v)
{
    return static_cast<int16_t>(__builtin_bswap16(v));
}
inline uint32_t swap32(uint32_t v)
{
    return __builtin_bswap32(v);
}

/// The value of big-endian bytes, on any host.
inline uint16_t be16(const uint8_t* p)
{
    return static_cast<uint16_t>(p[0] << 8 | p[1]);
}
inline uint32_t be32(const uint8_t* p)
{
    return static_cast<uint32_t>(p[0]) << 24 | static_cast<uint32_t>(p[1]) << 16 |
           static_cast<uint32_t>(p[2]) << 8 | p[3];
}

/// Writes a word, the most significant byte first.
template <class Byte>
void put_be32(Byte* to, uint32_t word)
{
    for (int i = 0; i < 4; ++i) to[i] = static_cast<Byte>(word >> (24 - 8 * i));
}

/// carried: sized-integers. kept: little-endian-reads-big. Reads n (1 to 4) bytes upward from `at`, the first
/// one the most significant and signed. For any other n prints a message and returns the first byte.
int32_t little_endian_in(const uint8_t* at, uint16_t n);

/// carried: sized-integers. kept: big-endian-starts-at-3. Reads n (1 to 4) bytes downward, always from `at` +
/// 3 on. Treats any other n as little_endian_in does.
int32_t big_endian_in(const uint8_t* at, uint16_t n);

/// carried: sized-integers. Writes n bytes of a value, the lowest first, upward from `to`.
void little_endian_out(uint32_t value, uint8_t* to, uint16_t n);

/// carried: sized-integers. kept: big-endian-starts-at-3. Writes n bytes of a value, the lowest first,
/// downward from `to` + 3.
void big_endian_out(uint32_t value, uint8_t* to, uint16_t n);

/// The value of a big-endian field of 2 or 4 bytes; 2 bytes are not sign-extended. For any other n prints a
/// message and returns 0.
uint32_t reverse(const uint8_t* at, uint16_t n);

inline constexpr int Hex_str_len = 68; ///< characters that hex_str writes

/// Writes the dump line of 16 bytes: Hex_str_len characters and a NUL.
void hex_str(char* line, const uint8_t* bytes);
