// What a packet is by its letters, and how its samples are encoded.
#include "packet/kind.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

namespace {

uint16_t number_of(const std::string& letters)
{
    std::vector<uint8_t> bytes(letters.begin(), letters.end());
    if (bytes.size() < 2) bytes.resize(2);
    return code_set(bytes.data());
}

TEST(code_set, numbers_the_types_in_their_order)
{
    const char* order[] = {"EH", "ET", "DT", "SH", "SC", "DS", "CD", "OM", "AD", "DR", "NH", "NT", "FD"};
    uint16_t number = 0;
    for (const char* letters : order) EXPECT_EQ(number_of(letters), ++number) << letters;
    EXPECT_EQ(PKT_FD, 13);
    EXPECT_STREQ(Pkt_codes, "EHETDTSHSCDSCDOMADDRNHNTFD");
}

TEST(code_set, knows_only_capital_letters)
{
    for (const char* letters : {"eh", "Eh", "eH", "dt", "fd"}) EXPECT_EQ(number_of(letters), 0) << letters;
}

TEST(code_set, does_not_know_other_letters)
{
    for (const char* letters : {"XX", "  ", "E", "H", "EX", "XH", "ST", "D "})
        EXPECT_EQ(number_of(letters), 0) << letters;
    EXPECT_EQ(number_of(std::string("\0\0", 2)), 0);
}

TEST(code_set, takes_no_pair_that_only_stands_between_two_codes)
{
    for (const char* letters : {"HE", "TD", "TS", "HS", "CD", "DO", "MA", "DD", "RN", "HN", "TF"})
        EXPECT_EQ(number_of(letters), letters == std::string("CD") ? 7 : 0) << letters;
}

TEST(code_set, looks_at_two_bytes_only)
{
    EXPECT_EQ(number_of("EHx"), 1);
    EXPECT_EQ(number_of("DTET"), 3);
}

TEST(code_set, knows_13_pairs_of_bytes)
{
    std::map<uint16_t, int> found;
    for (int pair = 0; pair < 65536; ++pair) {
        const uint8_t letters[] = {static_cast<uint8_t>(pair >> 8), static_cast<uint8_t>(pair)};
        ++found[code_set(letters)];
    }
    EXPECT_EQ(found[0], 65536 - 13);
    for (uint16_t number = 1; number <= 13; ++number) EXPECT_EQ(found[number], 1) << number;
    EXPECT_EQ(found.size(), 14U);
}

TEST(encoding_of, every_format_byte_has_its_decoder_or_none)
{
    std::map<int, Encoding> known;
    for (const int code : {0x16, 0x17, 0x01}) known[code] = Encoding::int16;
    for (const int code : {0x32, 0x33, 0x00}) known[code] = Encoding::int32;
    for (const int code : {0xC0, 0xC1, 0x02, 0x03}) known[code] = Encoding::steim1;
    for (const int code : {0xC2, 0xC3}) known[code] = Encoding::steim2;
    for (int code = 0; code < 256; ++code) {
        const Encoding expected = known.contains(code) ? known[code] : Encoding::none;
        EXPECT_EQ(encoding_of(static_cast<uint8_t>(code)), expected) << code;
    }
    EXPECT_EQ(Format_16_bit, 0x16);
}

} // namespace
