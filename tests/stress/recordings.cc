#include "stress/recordings.h"

#include <algorithm>

namespace stress {

namespace {

using namespace kit;
using namespace std::string_view_literals;

constexpr const char* Parameters[] = {"SC", "DS", "CD", "OM", "AD", "DR", "NH", "NT", "FD"};
constexpr const char* Other_types[] = {"EH", "ET", "DT", "DT", "DT", "SH", "XX"};
constexpr unsigned Formats[] = {0x16, 0x17, 0x01, 0x32, 0x33, 0x00, 0xC0, 0xC1, 0x02, 0x03, 0xC2, 0xC3, 0x20};
constexpr unsigned Units[] = {0x9A2F, 0x9A30, 0x0000, 0xFFFF, 0x0001};
constexpr unsigned Events[] = {0, 1, 12, 13, 9999};
constexpr std::string_view Numbers[] = {
    "100 "sv,     "0"sv,    "-1"sv,   "1e-9"sv,     "1e9"sv,   "1e38"sv,     "inf"sv,     "nan"sv,
    "-nan"sv,     "0x1p"sv, "1/0 "sv, "0/0 "sv,     "1e-45"sv, "    "sv,     "abcd"sv,    ".5"sv,
    "00000000"sv, "1e99"sv, "250 "sv, "99999999"sv, "  40"sv,  "+.e1+.e1"sv, "\0\0\0\0"sv};
constexpr std::string_view Stations[] = {"STA01"sv,  "     "sv,      ".."sv,  "%s%n%"sv,
                                         "A B C"sv,  "\x1b[2J"sv,    "~"sv,   "\xff\xfe\xfd"sv,
                                         "x\0y\0"sv, "\r\n\r\n\r"sv, "-Q+"sv, "KSTNM"sv};
constexpr std::string_view Times[] = {"2004123101530250"sv,
                                      "9999366235959999"sv,
                                      "0000000000000000"sv,
                                      "                "sv,
                                      "2004-12-+1 1: 5."sv,
                                      "99999999"sv,
                                      "-004999999999999"sv,
                                      "1970001000000000"sv,
                                      "\xff\xff\xff\xff"sv,
                                      "2004123101530251"sv,
                                      "\000"
                                      "004123101530250"sv};

/// A field of the packets that something reads.
struct Field {
    int at, len;
};
constexpr Field Fields[] = {
    {0, 2},   {2, 1},    {3, 1},   {4, 2},    {6, 6},    {12, 2},   {14, 2},   {16, 2},   {18, 1},   {19, 1},
    {20, 2},  {22, 1},   {23, 1},  {24, 4},   {46, 1},   {57, 1},   {58, 1},   {59, 5},   {64, 24},  {88, 4},
    {88, 8},  {92, 4},   {96, 16}, {112, 16}, {128, 16}, {144, 16}, {160, 8},  {288, 8},  {416, 1},  {464, 4},
    {544, 6}, {848, 12}, {860, 2}, {862, 40}, {918, 26}, {1016, 6}, {64, 4},   {68, 4},   {72, 4},   {128, 4},
    {16, 64}, {25, 1},   {26, 2},  {28, 2},   {30, 4},   {82, 24},  {230, 16}, {500, 50}, {936, 88}, {59, 1},
    {60, 4},  {16, 16},  {32, 72}, {64, 64},  {128, 64}, {288, 128}};

const char* any_type(Chance& chance)
{
    return chance.one_in(2) ? chance.of(Parameters) : chance.of(Other_types);
}

std::string any_bytes(Chance& chance, size_t n)
{
    switch (chance.below(7)) {
    case 0: return std::string(n, '\0');
    case 1: return std::string(n, '\xFF');
    case 2: return std::string(n, ' ');
    case 3:
        return std::string(n,
                           static_cast<char>(chance.of({0x99, 0x7F, 0x80, 0x3A, 0xAA, 0x01}))); // bad BCD too
    case 4: return chance.digits(n);
    case 5: {
        std::string s(chance.of(Numbers));
        s.resize(n, chance.of({' ', '\0', '9'}));
        return s;
    }
    default: return chance.bytes(n);
    }
}

template <class P>
P& spoil_fields(Chance& chance, P& packet, unsigned most)
{
    for (unsigned n = chance.below(most + 1); n > 0; --n) {
        const Field& f = chance.of(Fields);
        packet.raw(f.at, any_bytes(chance, static_cast<size_t>(f.len)));
    }
    return packet;
}

template <class P>
P& common(Chance& chance, P& packet)
{
    packet.unit(chance.of(Units)).seq(chance.below(10000)).year(chance.below(100)).day(chance.below(400));
    packet.at(chance.below(26), chance.below(62), chance.below(62), chance.below(1000));
    if (chance.one_in(4)) packet.bytes(chance.below(10000));
    return packet;
}

template <class P>
P& event_fields(Chance& chance, P& packet)
{
    packet.event(chance.of(Events)).stream(chance.of({0U, 0U, 1U, 9U, 99U}));
    return packet.flags(chance.of({0U, 0U, 0U, 4U, 8U, 16U, 255U}));
}

std::string sized(std::string_view text, size_t n)
{
    std::string s(text);
    s.resize(n, ' ');
    return s;
}

template <class P>
std::string about_event(Chance& chance)
{
    P packet;
    event_fields(chance, common(chance, packet.usual()));
    packet.station(chance.of(Stations)).rate(sized(chance.of(Numbers), 4));
    for (const int at : {96, 112, 128, 144}) packet.raw(at, sized(chance.of(Times), 16));
    if (chance.one_in(3))
        packet.telemetry(sized(chance.of(Numbers), 6)).rate_telemetry(sized(chance.of(Numbers), 8));
    if (chance.one_in(3)) packet.position("N 47" + chance.bytes(20));
    for (int slot = 0; slot < 16; ++slot) {
        if (chance.one_in(3))
            packet.bit_weight(slot, chance.of({"15.89 uV"sv, "nan    n"sv, "1e999 mV"sv, "\0\0\0\0"sv}));
        if (chance.one_in(3)) packet.gain(slot, chance.byte()).seed(slot, chance.bytes(4));
    }
    return spoil_fields(chance, packet, 4);
}

std::string data(Chance& chance)
{
    Dt packet;
    event_fields(chance, common(chance, packet)).channel(chance.of({0U, 1U, 2U, 15U, 16U, 31U, 32U, 99U}));
    packet.format(chance.of(Formats));
    if (chance.one_in(2)) packet.extension();
    packet.count(chance.of({0U, 1U, 10U, 250U, 480U, 500U, 1000U, 9999U}));
    if (chance.one_in(2)) {
        std::string frames = chance.bytes(960);
        // Control words of one kind of difference: full frames, or empty ones.
        if (chance.one_in(2)) {
            const std::string word(4, static_cast<char>(chance.of({0x00, 0x55, 0xAA, 0xFF})));
            for (size_t frame = 0; frame < 960; frame += 64) frames.replace(frame, 4, word);
        }
        packet.raw(64, frames);
    }
    return spoil_fields(chance, packet, 3);
}

std::string parameters(Chance& chance)
{
    Params packet(chance.of(Parameters));
    common(chance, packet);
    const unsigned how = chance.below(4);
    if (how == 1) packet.fill(16, Packet_len, '\0');
    if (how == 2) packet.raw(16, chance.bytes(Packet_len - 16));
    if (how == 3) packet.fill(16, Packet_len, '\xFF');
    return spoil_fields(chance, packet, 8);
}

std::string health(Chance& chance)
{
    std::string text;
    for (unsigned n = chance.below(60); n > 0; --n) {
        switch (chance.below(4)) {
        case 0: text += "\r\n"; break;
        case 1: text += chance.of({'\r', '\n', '\0', '\x1b'}); break;
        default: text += chance.digits(chance.below(16));
        }
    }
    text.resize(std::min<size_t>(text.size(), 999));
    Sh packet(text);
    common(chance, packet);
    return spoil_fields(chance, packet, 2);
}

/// Event after event of one unit, none of which ends.
Recording many_events(Chance& chance)
{
    Recording recording;
    const unsigned n = chance.from_to(100, 400);
    for (unsigned i = 0; i < n; ++i) {
        const unsigned event = chance.one_in(5) ? chance.below(i + 1) : i;
        if (chance.one_in(2)) recording += Eh().event(event).usual();
        recording += Dt().event(event).channel(chance.below(4)).samples({1, 2, 3});
        if (chance.one_in(20)) recording += Et().event(event).usual();
    }
    return recording;
}

Recording many_units(Chance& chance)
{
    Recording recording;
    const unsigned n = chance.from_to(50, 300);
    for (unsigned i = 0; i < n; ++i) {
        const unsigned unit = chance.below(n) + 1;
        recording += Dt().unit(unit).event(chance.below(2)).channel(chance.below(3)).samples({7});
        if (chance.one_in(10)) recording += Et().unit(unit).event(1).usual();
    }
    return recording;
}

/// As many channels as a packet can name, bad digits included, taken in turns.
Recording many_channels(Chance& chance)
{
    Recording recording = Eh().event(1).usual();
    const unsigned n = chance.from_to(100, 400);
    for (unsigned i = 0; i < n; ++i) recording += Dt().event(1).raw(19, chance.bytes(1)).samples({1, -1});
    return recording;
}

/// One name over and over: the event ends and comes again.
Recording same_names(Chance& chance)
{
    Recording recording;
    for (unsigned n = chance.from_to(20, 50); n > 0; --n)
        recording += Eh().event(1).usual() + Dt().event(1).samples({1}) + Et().event(1).usual();
    return recording;
}

size_t place(Chance& chance, const Recording& recording)
{
    return chance.below(static_cast<unsigned>(recording.size()));
}

/// Where a whole packet begins.
size_t packet_start(Chance& chance, const Recording& recording)
{
    return chance.below(static_cast<unsigned>(recording.size() / Packet_len)) * size_t{Packet_len};
}

/// Gives a packet numbers that others have too.
void let_meet(Chance& chance, Recording& r, size_t packet)
{
    r.replace(packet + 4, 2, big_endian(chance.of(Units), 2));
    r.replace(packet + 16, 2, bcd(chance.below(4), 4));
    r.replace(packet + 18, 1, bcd(chance.below(3), 2));
    r.replace(packet + 19, 1, bcd(chance.below(chance.one_in(4) ? 100 : 4), 2));
    if (r.compare(packet, 2, "DT") == 0) r[packet + 23] = static_cast<char>(chance.of(Formats));
}

void add_copy(Chance& chance, Recording& r, const std::string& packet)
{
    const size_t to = packet_start(chance, r);
    r.insert(to, packet);
    if (chance.one_in(2)) let_meet(chance, r, to);
}

void swap_packets(Recording& r, size_t a, size_t b)
{
    const auto packet = [&](size_t at) { return r.begin() + static_cast<std::ptrdiff_t>(at); };
    if (a != b) std::swap_ranges(packet(a), packet(a) + Packet_len, packet(b));
}

/// One change that may also move all packets behind it off their places.
void spoil_once(Chance& chance, Recording& r)
{
    if (r.size() < Packet_len) return;
    switch (chance.below(12)) {
    case 0: r.resize(place(chance, r)); break;
    case 1: r.insert(place(chance, r), chance.bytes(chance.from_to(1, 40))); break;
    case 2: r[place(chance, r)] = chance.byte(); break;
    case 3: {
        char& c = r[place(chance, r)];
        c = static_cast<char>(c ^ (1 << chance.below(8)));
        break;
    }
    default: change(chance, r, [&](char* bytes, size_t n) { any_bytes(chance, n).copy(bytes, n); });
    }
}

} // namespace

Recording noise(Chance& chance)
{
    Recording recording;
    for (unsigned n = chance.below(40); n > 0; --n) {
        std::string packet = chance.bytes(Packet_len).replace(0, 2, any_type(chance));
        if (chance.one_in(2)) packet.replace(4, 2, big_endian(chance.of(Units), 2));
        if (chance.one_in(2)) packet.replace(16, 2, bcd(chance.of(Events), 4));
        recording += packet;
    }
    return recording + chance.bytes(chance.one_in(3) ? chance.below(Packet_len) : 0);
}

Recording hostile(Chance& chance)
{
    Recording recording;
    for (unsigned n = chance.from_to(1, 80); n > 0; --n) {
        const unsigned what = chance.below(20);
        if (what < 4)
            recording += about_event<Eh>(chance);
        else if (what < 6)
            recording += about_event<Et>(chance);
        else if (what < 15)
            recording += data(chance);
        else if (what < 16)
            recording += health(chance);
        else
            recording += parameters(chance);
    }
    return recording;
}

Recording crowd(Chance& chance)
{
    switch (chance.below(4)) {
    case 0: return many_events(chance);
    case 1: return many_units(chance);
    case 2: return many_channels(chance);
    default: return same_names(chance);
    }
}

Recording spoilt(Chance& chance, const Recording& base)
{
    const size_t packets = base.size() / Packet_len;
    const size_t first = chance.one_in(2) ? 0 : chance.below(static_cast<unsigned>(packets));
    const size_t n = std::min<size_t>(chance.from_to(1, 150), packets - first);
    Recording recording = base.substr(first * Packet_len, n * Packet_len);
    for (unsigned times = chance.from_to(1, chance.of({3U, 30U, 300U})); times > 0; --times)
        spoil_once(chance, recording);
    return recording;
}

void change(Chance& chance, Recording& r, const Rewrite& rewrite)
{
    const size_t at = packet_start(chance, r);
    switch (chance.below(20)) {
    case 0:
        if (r.size() >= 2 * Packet_len) r.erase(at, Packet_len);
        break;
    case 1: add_copy(chance, r, r.substr(at, Packet_len)); break;
    case 2: swap_packets(r, at, packet_start(chance, r)); break;
    case 3:
    case 4: r.replace(at, 2, any_type(chance)); break;
    case 5:
    case 6: let_meet(chance, r, at); break;
    case 7:
    case 8: rewrite(&r[at + 2], Packet_len - 2); break;
    case 9:
    case 10: rewrite(&r[at + 64], Packet_len - 64); break; // all Steim frames
    default: {
        const Field& f = chance.of(Fields);
        rewrite(&r[at + static_cast<size_t>(f.at)], static_cast<size_t>(f.len));
    }
    }
}

bool spare_slashes(Chance& chance, Recording& recording)
{
    bool may_have_one = chance.one_in(600);
    bool has_one = false;
    for (size_t at = 0; at + Packet_len <= recording.size(); at += Packet_len) {
        if (recording[at] != 'E') continue;
        const auto name = recording.begin() + static_cast<std::ptrdiff_t>(at) + 59;
        std::replace(name, name + 5, '/', '_');
        if (!may_have_one) continue;
        name[chance.below(5)] = '/';
        may_have_one = false;
        has_one = true;
    }
    return has_one;
}

} // namespace stress
