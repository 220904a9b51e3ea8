// Converts readable values to packet bytes.
#include "kit/packets.h"

#include <cstdio>
#include <cstdlib>

namespace kit {

namespace {

std::string decimal(unsigned value, int digits)
{
    std::string text(static_cast<size_t>(digits), '0');
    for (size_t i = text.size(); i-- > 0; value /= 10) text[i] = static_cast<char>('0' + value % 10);
    return text;
}

std::string pack(std::string_view digits)
{
    std::string bytes;
    for (size_t i = 0; i + 1 < digits.size(); i += 2) {
        bytes += static_cast<char>((digits[i] - '0') << 4 | (digits[i + 1] - '0'));
    }
    return bytes;
}

} // namespace

std::string bcd(unsigned value, int digits)
{
    return pack(decimal(value, digits));
}

std::string big_endian(uint32_t value, int len)
{
    std::string bytes;
    for (int shift = 8 * (len - 1); shift >= 0; shift -= 8) bytes += static_cast<char>(value >> shift & 0xFF);
    return bytes;
}

std::string packed_time(unsigned day, unsigned hour, unsigned min, unsigned sec, unsigned ms)
{
    return pack(decimal(day, 3) + decimal(hour, 2) + decimal(min, 2) + decimal(sec, 2) + decimal(ms, 3));
}

void beyond_the_end(int offset)
{
    fprintf(stderr, "a test writes beyond the end of its packet, from offset %d\n", offset);
    abort();
}

Word none()
{
    return {0, 0};
}

static uint32_t field(int value, int width)
{
    return width == 32 ? static_cast<uint32_t>(value) : static_cast<uint32_t>(value) & ((1u << width) - 1);
}

Word four(int a, int b, int c, int d)
{
    return {1, field(a, 8) << 24 | field(b, 8) << 16 | field(c, 8) << 8 | field(d, 8)};
}

Word two(int a, int b)
{
    return {2, field(a, 16) << 16 | field(b, 16)};
}

Word one(int a)
{
    return {3, static_cast<uint32_t>(a)};
}

Word sub(unsigned code, unsigned dnib, const std::vector<int>& differences)
{
    static constexpr int width_of_2[] = {30, 30, 15, 10};
    static constexpr int width_of_3[] = {6, 5, 4, 4};
    const int width = code == 2 ? width_of_2[dnib] : width_of_3[dnib];
    uint32_t bits = 0;
    for (int d : differences) bits = bits << width | field(d, width);
    return {code, dnib << 30 | bits};
}

Dt& Dt::extension(std::string_view three_digits)
{
    data_at_ = 64;
    bytes_[22] = static_cast<char>(bytes_[22] | 0x08);
    return raw(24, pack("0" + std::string(three_digits) + "0000")).raw(46, "\x08");
}

Dt& Dt::word(int frame, int index, Word w)
{
    const int at = 64 * frame;
    const int shift = 30 - 2 * index;
    uint32_t control = 0;
    for (size_t i = 0; i < 4; ++i) {
        control = control << 8 | static_cast<unsigned char>(bytes_[static_cast<size_t>(at) + i]);
    }
    control = (control & ~(3u << shift)) | w.code << shift;
    return raw(at, big_endian(control, 4)).raw(at + 4 * index, big_endian(w.bits, 4));
}

Dt& Dt::frames(unsigned code, int32_t x0, int32_t xn, const std::vector<Word>& words)
{
    format(code);
    fill(64, Packet_len, '\0');
    word(1, 1, {0, static_cast<uint32_t>(x0)});
    word(1, 2, {0, static_cast<uint32_t>(xn)});
    int frame = 1, index = 3;
    for (const Word& w : words) {
        word(frame, index, w);
        if (++index == 16) ++frame, index = 1;
    }
    return *this;
}

std::string Dt::packet() const
{
    Dt whole = *this;
    if (count_ >= 0 || !samples_.empty()) {
        whole.raw(
            20, bcd(count_ >= 0 ? static_cast<unsigned>(count_) : static_cast<unsigned>(samples_.size()), 4));
    }
    const int code = static_cast<unsigned char>(bytes_[23]);
    const int len = code == 0x16 || code == 0x17 || code == 0x01 ? 2 : 4;
    int at = data_at_;
    for (int32_t s : samples_) {
        whole.raw(at, big_endian(static_cast<uint32_t>(s), len));
        at += len;
    }
    return whole.bytes_;
}

std::vector<int32_t> counting(int32_t first, int32_t last)
{
    std::vector<int32_t> values;
    for (int32_t v = first; v <= last; ++v) values.push_back(v);
    return values;
}

} // namespace kit
