// Packet builders: one readable line of a test per packet, exactly 1024 bytes each.
// Values are decimal numbers and texts; the builder knows coding, byte order and place. Every builder
// converts to a std::string, so a recording is a string of packets:
//     Recording rec = Eh().event(12).usual();  rec += Dt().event(12).samples({1, 2});  rec +=
//     Et().event(12).usual();
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace kit {

using Recording = std::string; ///< packets, one after the other

inline constexpr int Packet_len = 1024;

/// `digits` decimal digits of a number, two per byte.
std::string bcd(unsigned value, int digits);
/// The low `len` bytes of a number, most significant first.
std::string big_endian(uint32_t value, int len);

/// Day of year, hour, minute, second, millisecond as the header's twelve digits.
std::string packed_time(unsigned day, unsigned hour, unsigned min, unsigned sec, unsigned ms);
[[noreturn]] void beyond_the_end(int offset);

struct Builder {}; ///< base of all builders

/// Common header: type, experiment 07, 2004-123 10:15:30.250, unit 9A2F, byte count 1024, sequence 0.
template <class Self>
class Packet : public Builder {
public:
    Self& type(std::string_view two_letters) { return raw(0, two_letters); }
    Self& experiment(unsigned n) { return raw(2, bcd(n, 2)); }
    Self& unit(unsigned id) { return raw(4, big_endian(id, 2)); }
    Self& bytes(unsigned n) { return raw(12, bcd(n, 4)); } ///< byte count, header included
    Self& seq(unsigned n) { return raw(14, bcd(n, 4)); }

    Self& year(unsigned of_century) { return raw(3, bcd(of_century, 2)); }
    Self& day(unsigned n) { return part(day_, n); }
    Self& hour(unsigned n) { return part(hour_, n); }
    Self& min(unsigned n) { return part(min_, n); }
    Self& sec(unsigned n) { return part(sec_, n); }
    Self& ms(unsigned n) { return part(ms_, n); }
    /// Sets hour, minute, second and millisecond; the day stays.
    Self& at(unsigned h, unsigned m, unsigned s, unsigned milli)
    {
        hour_ = h, min_ = m, sec_ = s;
        return ms(milli);
    }

    /// Sets bytes at any place; bytes beyond the packet's end are an error of the test and end it.
    Self& raw(int offset, std::string_view text)
    {
        if (static_cast<size_t>(offset) + text.size() > Packet_len) beyond_the_end(offset);
        bytes_.replace(static_cast<size_t>(offset), text.size(), text);
        return self();
    }
    Self& raw(int offset, const std::vector<int>& values)
    {
        std::string text;
        for (int v : values) text += static_cast<char>(v);
        return raw(offset, text);
    }
    /// Sets a text: left-justified, cut to the field, filled up with blanks.
    Self& text(int offset, int width, std::string_view value)
    {
        std::string field(value.substr(0, static_cast<size_t>(width)));
        field.resize(static_cast<size_t>(width), ' ');
        return raw(offset, field);
    }
    /// Fills a part of the packet with one byte.
    Self& fill(int from, int to, char byte)
    {
        return raw(from, std::string(static_cast<size_t>(to - from), byte));
    }

    std::string packet() const { return bytes_; }
    operator std::string() const { return static_cast<const Self*>(this)->packet(); }

protected:
    Packet(std::string_view two_letters, int text_from)
    {
        if (text_from < Packet_len) fill(text_from, Packet_len, ' ');
        type(two_letters).experiment(7).unit(0x9A2F).year(4).bytes(1024).seq(0);
        put_time();
    }
    Self& self() { return static_cast<Self&>(*this); }
    std::string bytes_ = std::string(Packet_len, '\0');

private:
    Self& part(unsigned& which, unsigned n)
    {
        which = n;
        return put_time();
    }
    Self& put_time() { return raw(6, packed_time(day_, hour_, min_, sec_, ms_)); }
    unsigned day_ = 123, hour_ = 10, min_ = 15, sec_ = 30, ms_ = 250;
};

/// The event fields of EH, ET, DT, NH and NT. Streams and channels count from 0, as in the packet.
template <class Self>
class EventPacket : public Packet<Self> {
public:
    Self& event(unsigned n) { return this->raw(16, bcd(n, 4)); }
    Self& stream(unsigned n) { return this->raw(18, bcd(n, 2)); }
    Self& flags(unsigned bits) { return this->raw(22, std::string(1, static_cast<char>(bits))); }
    Self& format(unsigned code) { return this->raw(23, std::string(1, static_cast<char>(code))); }

protected:
    /// Bytes 16 to 23 start as zero, the texts after them as given.
    EventPacket(std::string_view two_letters, int text_from) : Packet<Self>(two_letters, text_from) {}
};

/// Event header or trailer. All texts start blank, which means absent.
template <class Self>
class EventText : public EventPacket<Self> {
public:
    Self& second_bank() { return this->flags(0x04); }
    /// Station, rate and times that most tests need: STA01, 100 sps, trigger EVT, both times at the header's
    /// default.
    Self& usual()
    {
        return station("STA01")
            .rate("100 ")
            .trigger_type("EVT ")
            .t_trg("2004123101530250")
            .t_first("2004123101530250");
    }
    Self& short_text(std::string_view s) { return this->bytes(57).text(24, 31, s); }
    Self& time_source(char c) { return this->raw(57, std::string(1, c)); }
    Self& pll_days(char c) { return this->raw(58, std::string(1, c)); }
    /// Five characters: the first four are at 60, the fifth is before them at 59.
    Self& station(std::string_view five)
    {
        std::string s(five);
        s.resize(5, ' ');
        return this->raw(59, s.substr(4, 1) + s.substr(0, 4));
    }
    Self& stream_name(std::string_view s) { return this->text(64, 24, s); }
    Self& rate(std::string_view s) { return this->text(88, 4, s); }
    Self& rate_telemetry(std::string_view s) { return this->text(88, 8, s); } ///< overwrites the trigger type
    Self& trigger_type(std::string_view s) { return this->text(92, 4, s); }
    Self& t_trg(std::string_view s) { return this->text(96, 16, s); }
    Self& t_first(std::string_view s) { return this->text(112, 16, s); }
    Self& t_detrg(std::string_view s) { return this->text(128, 16, s); }
    Self& t_last(std::string_view s) { return this->text(144, 16, s); }
    /// Per-channel entries; the slot counts from 0 within the bank of sixteen.
    Self& bit_weight(int slot, std::string_view s) { return this->text(160 + 8 * slot, 8, s); }
    Self& true_weight(int slot, std::string_view s) { return this->text(288 + 8 * slot, 8, s); }
    Self& gain(int slot, char c) { return this->raw(416 + slot, std::string(1, c)); }
    Self& resolution(int slot, char c) { return this->raw(432 + slot, std::string(1, c)); }
    Self& full_scale(int slot, char c) { return this->raw(448 + slot, std::string(1, c)); }
    Self& seed(int slot, std::string_view s) { return this->text(464 + 4 * slot, 4, s); }
    Self& sensor_full_scale(int slot, char c) { return this->raw(528 + slot, std::string(1, c)); }
    Self& sensor_vpu(int slot, std::string_view s) { return this->text(544 + 6 * slot, 6, s); }
    Self& units_code(int slot, char c) { return this->raw(640 + slot, std::string(1, c)); }
    Self& channel_name(int slot, std::string_view s) { return this->text(656 + 3 * slot, 3, s); }
    /// Microsecond digits of trigger, first sample, detrigger and last sample.
    Self& micros(std::string_view trg, std::string_view first, std::string_view detrg, std::string_view last)
    {
        return this->text(848, 3, trg).text(851, 3, first).text(854, 3, detrg).text(857, 3, last);
    }
    Self& installed(std::string_view s) { return this->text(860, 2, s); }
    Self& comment(std::string_view s) { return this->text(862, 40, s); }
    Self& filters(std::string_view s) { return this->text(902, 16, s); }
    Self& position(std::string_view s) { return this->text(918, 26, s); }
    Self& telemetry(std::string_view six) { return this->text(1016, 6, six); }

protected:
    explicit EventText(std::string_view two_letters) : EventPacket<Self>(two_letters, 24) {}
};

class Eh : public EventText<Eh> {
public:
    Eh() : EventText("EH") {}
};

class Et : public EventText<Et> {
public:
    Et() : EventText("ET") {}
};

/// One word of Steim frames: its 2-bit code and its 32 bits.
struct Word {
    unsigned code;
    uint32_t bits;
};
Word none();                           ///< code 0, a word without data
Word four(int a, int b, int c, int d); ///< code 1, four 8-bit differences
Word two(int a, int b);                ///< code 2 of Steim-1, two 16-bit differences
Word one(int a);                       ///< code 3 of Steim-1, one 32-bit difference
/// A Steim-2 word of code 2 or 3: sub-code and as many differences as it takes (1x30, 2x15, 3x10; 5x6, 6x5,
/// 7x4).
Word sub(unsigned code, unsigned dnib, const std::vector<int>& differences);

/// Data packet. Samples are written when it is converted to a string, so the order of the calls does not
/// matter.
class Dt : public EventPacket<Dt> {
public:
    Dt() : EventPacket("DT", Packet_len) { format(0x32); }
    Dt& channel(unsigned n) { return raw(19, bcd(n, 2)); }
    /// The sample count of the header; without it, the number of samples given.
    Dt& count(unsigned n)
    {
        count_ = static_cast<int>(n);
        return *this;
    }
    /// Samples of 16 bits (formats 16, 17, 01) or 32 bits (any other), from offset 24, or 64 with
    /// extension().
    Dt& samples(std::vector<int32_t> values)
    {
        samples_ = std::move(values);
        return *this;
    }
    /// The 40 bytes before the samples: flag bit 3, byte 46, which the decoders test, three microsecond
    /// digits.
    Dt& extension(std::string_view three_digits = "000");
    /// Steim-1 frames (format C0): words laid down from word 3 of frame 1 on, control words filled along.
    Dt& steim1(int32_t x0, int32_t xn, const std::vector<Word>& words) { return frames(0xC0, x0, xn, words); }
    /// Steim-2 frames (format C2), in the same way.
    Dt& steim2(int32_t x0, int32_t xn, const std::vector<Word>& words) { return frames(0xC2, x0, xn, words); }
    /// Sets one word: frame 1 to 15, word 1 to 15, with its code.
    Dt& word(int frame, int index, Word w);

    std::string packet() const;

private:
    Dt& frames(unsigned code, int32_t x0, int32_t xn, const std::vector<Word>& words);
    std::vector<int32_t> samples_;
    int count_ = -1;
    int data_at_ = 24;
};

/// State of health: a text, and its byte count.
class Sh : public Packet<Sh> {
public:
    explicit Sh(std::string_view what) : Packet("SH", 16)
    {
        raw(24, what).bytes(24 + static_cast<unsigned>(what.size()));
    }
};

/// Any other packet: blank after the common header; Params("DR").fill(16, 1024, '\0') for binary ones.
class Params : public Packet<Params> {
public:
    explicit Params(std::string_view two_letters) : Packet(two_letters, 16) {}
};

class Nh : public EventText<Nh> {
public:
    Nh() : EventText("NH") {}
};

class Nt : public EventText<Nt> {
public:
    Nt() : EventText("NT") {}
};

class Fd : public Packet<Fd> {
public:
    Fd() : Packet("FD", Packet_len) {}
};

/// Joins packets: Eh().usual() + Dt().samples({1}) + Et().usual().
template <class A, class B>
requires(std::is_base_of_v<Builder, A> || std::is_base_of_v<Builder, B>) Recording operator+(const A& a,
                                                                                             const B& b)
{
    return Recording(a).append(Recording(b));
}

/// The whole numbers from first to last, both included.
std::vector<int32_t> counting(int32_t first, int32_t last);

} // namespace kit
