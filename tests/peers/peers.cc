// Compares the sample decoders with libmseed on many series: packets of libmseed must give the series back;
// packets of vx_mkrec, and frames that no encoder makes, must give the same with both. vx_peers SERIES
// [SEED]: so many random series; then the real recordings, where they are.
#include "driver/base/settings.h"
#include "mkrec/steim_encode.h"
#include "packet/kind.h"
#include "packet/mseed_frames.h"
#include "packet/steim_by_the_book.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <limits>
#include <map>
#include <string>
#include <vector>

namespace {

using namespace mseed_frames;

/// One packet of plain samples holds 480 of 16 bits, 240 of 32 bits.
constexpr unsigned Most16 = 480, Most32 = 240;
constexpr unsigned Steim1_formats[] = {0xC0, 0xC1, 0x02, 0x03};
constexpr unsigned Steim2_formats[] = {0xC2, 0xC3};
/// A decoder of plain samples as one that gives a verdict.
template <PlainDecoder decode>
Decoded plain(const PACKET& pkt, uint32_t&, DATA_BUF& out)
{
    decode(pkt, out);
    return {};
}
const Coding Plain16{0, DE_INT16, 0x16, {plain<Buf_16>, plain<Buf_16>}};
const Coding Plain32{0, DE_INT32, 0x32, {plain<Buf_32>, plain<Buf_32>}};

struct Account {
    unsigned long series = 0, packets = 0, samples = 0, frames = 0, made = 0, real = 0, real_odd = 0,
                  findings = 0;
    std::map<std::string, unsigned long> forms; ///< words seen, by coding and kind of difference
};

void find_fault(Account& account, const std::string& what)
{
    if (++account.findings <= 20) printf("%s\n", what.c_str());
}

/// How the program itself comes to the samples of a packet.
Samples by_the_program(Channel& channel, const std::string& packet)
{
    return channel.decode(
        [](const PACKET& pkt, uint32_t& last, DATA_BUF& out) {
            return decode_samples(pkt, encoding_of(byte(pkt, EVT::Format)), last, out);
        },
        packet);
}

void note_forms(Account& account, const Coding& coding, const std::string& packet)
{
    for (int frame = 1; frame <= 15; ++frame) {
        for (int w = frame == 1 ? 3 : 1; w < 16; ++w) {
            const int code = by_the_book::code_of(packet, frame, w);
            if (code == 0) continue;
            std::string form = std::to_string(coding.number) + ":" + std::to_string(code);
            if (coding.number == 2 && code > 1)
                form += "." + std::to_string(by_the_book::word_at(packet, frame, w) >> 30);
            ++account.forms[form];
        }
    }
}

/// What libmseed packs comes back: through the program's own choice of a decoder and word by word.
void packed_by_it(Account& account, const Coding& coding, unsigned format, const Samples& series,
                  Channel& channel)
{
    Samples whole, by_word;
    uint32_t last = 0, last_by_word = 0;
    for (const std::string& record : records_of(coding, series)) {
        kit::Dt dt;
        if (coding.number == 0) dt.extension();
        const std::string data = record.substr(half_word(record, 44)); // plain samples stand a little earlier
        dt.format(format).count(samples_in(record)).raw(Frames_at, data.substr(0, Packet_size - Frames_at));
        const std::string packet = dt;
        channel.chn.last = last;
        const Samples one = by_the_program(channel, packet);
        last = channel.chn.last;
        channel.chn.last = last_by_word;
        const Samples other = channel.decode(coding.decoders[1], packet);
        last_by_word = channel.chn.last;
        whole.insert(whole.end(), one.begin(), one.end());
        by_word.insert(by_word.end(), other.begin(), other.end());
        ++account.packets;
        if (coding.number) note_forms(account, coding, packet);
    }
    account.samples += series.size();
    ++account.series;
    if (whole != series || by_word != series || channel.chn.discontinuous)
        find_fault(account,
                   "series " + std::to_string(account.series) + ", format " + std::to_string(format));
    channel.chn.discontinuous = false;
}

/// What the maker packs is read alike by libmseed, by the program, and is the series.
void packed_by_us(Account& account, const Coding& coding, const Samples& series, Channel& channel)
{
    std::string frames(mkrec::Steim_len, '\0');
    const mkrec::SteimFill fill = mkrec::steim_encode(
        coding.number == 1 ? mkrec::SteimLevel::level1 : mkrec::SteimLevel::level2, series.data(),
        static_cast<int>(series.size()), 0, reinterpret_cast<uint8_t*>(frames.data()));
    if (fill.samples == 0) return; // its first difference, to 0, is too wide
    const auto count = static_cast<unsigned>(fill.samples);
    const std::string packet = kit::Dt().format(coding.format).count(count).raw(Frames_at, frames);
    const Samples head(series.begin(), series.begin() + fill.samples);
    channel.chn.last = 0;
    ++account.made;
    if (decoded_by_it(coding, packet, count) != head || by_the_program(channel, packet) != head)
        find_fault(account, "the maker's packet of series " + std::to_string(account.series));
}

/// Frames of words by chance, with an end that fits.
void frames_by_chance(Account& account, const Coding& coding, std::mt19937& random, Channel& channel)
{
    std::string packet = random_frames(random, coding);
    const by_the_book::Decoded once = by_the_book::decode(coding.number, packet, 0, 0);
    const auto count = static_cast<unsigned>(once.samples.size());
    packet.replace(20, 2, kit::bcd(count, 4));
    packet.replace(72, 4, kit::big_endian(static_cast<uint32_t>(once.samples.back()), 4));
    const Samples theirs = decoded_by_it(coding, packet, count);
    ++account.frames;
    channel.chn.last = 0;
    if (by_the_program(channel, packet) != theirs)
        find_fault(account, "frames " + std::to_string(account.frames));
    channel.chn.last = 0;
    if (channel.decode(coding.decoders[1], packet) != theirs)
        find_fault(account, "frames word by word " + std::to_string(account.frames));
}

/// Series of 16-bit samples keep to their range.
Samples narrowed(Samples series)
{
    for (int32_t& x : series) x = static_cast<int16_t>(x);
    return series;
}

void random_cases(Account& account, unsigned long count, uint32_t seed)
{
    std::mt19937 random(seed);
    Channel channel(0);
    for (unsigned long i = 0; i < count; ++i) {
        const size_t length = 1 + random() % (i % 50 ? 200 : 4000);
        const unsigned kind = static_cast<unsigned>(random() % 10);
        if (kind == 0) {
            packed_by_it(account, Plain16, 0x16, narrowed(random_series(random, 16, 1 + random() % Most16)),
                         channel);
        } else if (kind == 1) {
            packed_by_it(account, Plain32, 0x32, random_series(random, 30, 1 + random() % Most32), channel);
        } else if (kind < 6) {
            const Samples series = random_series(random, i % 4 ? 16 : 30, length);
            packed_by_it(account, Coding1, Steim1_formats[random() % 4], series, channel);
            packed_by_us(account, Coding1, series, channel);
        } else {
            const Samples series = random_series(random, i % 4 ? 12 : 29, length);
            packed_by_it(account, Coding2, Steim2_formats[random() % 2], series, channel);
            packed_by_us(account, Coding2, series, channel);
        }
        if (i % 10 == 0) frames_by_chance(account, i % 20 ? Coding1 : Coding2, random, channel);
    }
}

bool fits_steim2(const Samples& series)
{
    for (size_t i = 1; i < series.size(); ++i)
        if (std::abs(int64_t{series[i]} - series[i - 1]) >= int64_t{1} << 29) return false;
    return true;
}

/// A data packet of the field: its frames as libmseed reads them, and its samples there and back.
void real_packet(Account& account, const std::string& packet, Channel& channel)
{
    const Encoding encoding = encoding_of(static_cast<uint8_t>(packet[23]));
    if (encoding == Encoding::none) return;
    channel.chn.last = 0;
    const Samples ours = by_the_program(channel, packet);
    const bool odd = channel.chn.discontinuous || ours.empty();
    channel.chn.discontinuous = false;
    if (odd) {
        ++account.real_odd;
        return;
    }
    ++account.real;
    const bool steim = encoding == Encoding::steim1 || encoding == Encoding::steim2;
    const Coding& coding = encoding == Encoding::steim1 ? Coding1 : Coding2;
    if (steim && decoded_by_it(coding, packet, static_cast<unsigned>(ours.size())) != ours)
        find_fault(account, "real packet " + std::to_string(account.real));
    packed_by_it(account, Coding1, 0xC0, ours, channel);
    if (fits_steim2(ours)) packed_by_it(account, Coding2, 0xC2, ours, channel);
}

void real_recordings(Account& account)
{
    Channel channel(0);
    for (const char* name : {"rec1.pkt", "rec2.pkt", "rec3.pkt", "rec4.pkt"}) {
        const std::string path = std::string(VX_SHARED_DATA) + "/" + name;
        if (!std::filesystem::exists(path)) continue;
        const std::string bytes = kit::read_file(path);
        for (size_t at = 0; at + Packet_size <= bytes.size(); at += Packet_size)
            if (bytes.compare(at, 2, "DT") == 0) real_packet(account, bytes.substr(at, Packet_size), channel);
    }
    if (account.real == 0) printf("real recordings: left out, there are none in %s\n", VX_SHARED_DATA);
}

} // namespace

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    if (argc < 2 || argc > 3) {
        fprintf(stderr, "Usage: vx_peers SERIES [SEED]\n");
        return 2;
    }
    set_defaults();
    Log_on = true;
    Account account;
    random_cases(account, strtoul(argv[1], nullptr, 10),
                 static_cast<uint32_t>(argc > 2 ? strtoul(argv[2], nullptr, 10) : 1));
    real_recordings(account);

    // Three kinds of words of Steim-1, seven of Steim-2: without each of them little would be shown.
    unsigned long fewest = std::numeric_limits<unsigned long>::max();
    for (const char* form :
         {"1:1", "1:2", "1:3", "2:1", "2:2.1", "2:2.2", "2:2.3", "2:3.0", "2:3.1", "2:3.2"})
        fewest = std::min(fewest, account.forms[form]);
    if (fewest < 1000) find_fault(account, "a kind of word is rare: " + std::to_string(fewest));
    printf("%lu series of %lu samples in %lu packets by libmseed, %lu packets of vx_mkrec's encoder, %lu of "
           "random "
           "words, %lu real ones (%lu more odd); each of 10 kinds of words %lu times or more; %lu findings\n",
           account.series, account.samples, account.packets, account.made, account.frames, account.real,
           account.real_odd, fewest, account.findings);
    return account.findings == 0 && !testing::Test::HasFailure() ? 0 : 1;
}
