// DR packets in the unit log.
#include "dump_text.h"

#include <chrono>
#include <gmock/gmock.h>

using kit::big_endian;
using kit::Params;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

/// A directory whose neighbours lie at blocks 1001 and 2000000001.
static Params directory(unsigned entries)
{
    return Params("DR")
        .fill(16, 1024, '\0')
        .raw(16, big_endian(1001, 4))
        .raw(20, big_endian(2000000001, 4))
        .raw(26, big_endian(entries, 2))
        .raw(28, big_endian(70000, 4));
}

static std::string directory_text(const char* entries)
{
    return std::string("     Prev Dir Location (Block)    : 0000001001\r\n"
                       "     Next Dir Location (Block)    : 2000000001\r\n"
                       "     Block/Sector Flag            : 0\r\n"
                       "     No of dir entries            : ") +
           entries +
           "\r\n"
           "     Last Entry Number            : 70000\r\n";
}

/// An entry with a value of its own in every field.
static Params& put_entry(Params& packet, int at, unsigned len = 72)
{
    return packet.raw(at, big_endian(65537, 4))
        .raw(at + 4, {2, 253})
        .raw(at + 6, big_endian(len, 2))
        .raw(at + 8, big_endian(0x9A2F, 2))
        .raw(at + 10, big_endian(65535, 2))
        .raw(at + 12, {1, 254})
        .raw(at + 14, big_endian(7, 2))
        .raw(at + 16, "STREAM-1EVT ")
        .raw(at + 28, {0x28, 0x00, 0x00, 0x3D}) // 2004, 61 s
        .raw(at + 32, {0x29, 0xE2, 0x84, 0xFF}) // 2004, 31622399 s
        .raw(at + 36, {0x00, 0x00, 0x00, 0x01}) // 1984, 1 s
        .raw(at + 40, {0xFF, 0xFF, 0xFF, 0xFF}) // 2111, 33554431 s
        .raw(at + 44, {0x2A, 0x00, 0x00, 0x00}) // 2005, 0 s
        .raw(at + 48, big_endian(5, 2))
        .raw(at + 50, big_endian(65535, 2))
        .raw(at + 52, big_endian(50, 2))
        .raw(at + 54, big_endian(999, 2))
        .raw(at + 56, big_endian(0, 2))
        .raw(at + 58, big_endian(0xC2, 2))
        .raw(at + 60, big_endian(300000, 4))
        .raw(at + 64, big_endian(400000, 4))
        .raw(at + 68, big_endian(4000000000U, 4));
}

static std::string entry_text(const char* len = "72", const char* location = "0000301001")
{
    return std::string("\r\n"
                       "      Entry Number                : 65537\r\n"
                       "      Entry Status                : 2\r\n"
                       "      Entry Format                : 253\r\n"
                       "      Entry Length                : ") +
           len +
           "\r\n"
           "      Unit ID                     : 39471\r\n"
           "      Event Number                : 65535\r\n"
           "      Event Header Flag           : 1\r\n"
           "      Event Trailer Flag          : 254\r\n"
           "      Stream Number               : 7\r\n"
           "      Data Stream Name            : STREAM-1\r\n"
           "      Trigger Type                : EVT \r\n"
           "      Data Format                 : C2\r\n"
           "      Data Location (Block)       : " +
           location +
           "\r\n"
           "      Data Length (Blocks)        : 0000400000\r\n"
           "      Disk Errors (Blocks)        : 4000000000\r\n"
           "      Trigger time                : 2004:001:00:01:01.005\r\n"
           "      First sample time           : 2004:366:23:59:59.65535\r\n"
           "      Detrigger time              : 1984:001:00:00:01.050\r\n"
           "      Last sample time            : 2111:389:08:40:31.999\r\n"
           "      Entry time                  : 2005:001:00:00:00.000\r\n";
}

TEST(log_dr, shows_an_empty_directory)
{
    EXPECT_EQ(dumped(log_dr, directory(0)), directory_text("0"));
}

TEST(log_dr, shows_every_field_of_an_entry)
{
    Params packet = directory(1);
    EXPECT_EQ(dumped(log_dr, put_entry(packet, 32)), directory_text("1") + entry_text());
}

TEST(log_dr, shows_the_unit_ID_in_decimal_digits_at_least_four)
{
    Params packet = directory(1);
    EXPECT_THAT(dumped(log_dr, put_entry(packet, 32).raw(40, big_endian(0x2F, 2))),
                HasSubstr("      Unit ID                     : 0047\r\n"));
}

TEST(log_dr, shows_the_data_format_in_two_or_more_hexadecimal_digits)
{
    Params packet = directory(1);
    EXPECT_THAT(dumped(log_dr, put_entry(packet, 32).raw(90, big_endian(0x0A, 2))),
                HasSubstr("      Data Format                 : 0A\r\n"));
    EXPECT_THAT(dumped(log_dr, put_entry(packet, 32).raw(90, big_endian(0xABCD, 2))),
                HasSubstr("      Data Format                 : ABCD\r\n"));
}

TEST(log_dr, halves_locations_counted_in_sectors)
{
    Params packet = directory(1).raw(25, {1});
    const std::string text = dumped(log_dr, put_entry(packet, 32));
    EXPECT_THAT(text, StartsWith("     Prev Dir Location (Block)    : 0000000500\r\n"
                                 "     Next Dir Location (Block)    : 1000000000\r\n"
                                 "     Block/Sector Flag            : 1\r\n"));
    EXPECT_THAT(text, HasSubstr("      Data Location (Block)       : 0000300500\r\n"));
}

TEST(log_dr, halves_once_whatever_the_flag_is)
{
    EXPECT_THAT(dumped(log_dr, directory(0).raw(25, {7})),
                StartsWith("     Prev Dir Location (Block)    : 0000000500\r\n"
                           "     Next Dir Location (Block)    : 1000000000\r\n"
                           "     Block/Sector Flag            : 7\r\n"));
    EXPECT_THAT(dumped(log_dr, directory(0).raw(25, {0x80})),
                StartsWith("     Prev Dir Location (Block)    : 0000000500\r\n"
                           "     Next Dir Location (Block)    : 1000000000\r\n"
                           "     Block/Sector Flag            : 128\r\n"));
}

TEST(log_dr, takes_locations_for_unsigned_numbers)
{
    const Params packet = directory(0).raw(16, {0xFF, 0xFF, 0xFF, 0xFF}).raw(20, {0x80, 0, 0, 0});
    EXPECT_THAT(dumped(log_dr, packet), StartsWith("     Prev Dir Location (Block)    : 4294967295\r\n"
                                                   "     Next Dir Location (Block)    : 2147483648\r\n"));
    EXPECT_THAT(dumped(log_dr, Params(packet).raw(25, {1}).raw(28, {0xFF, 0xFF, 0xFF, 0xFF})),
                testing::AllOf(StartsWith("     Prev Dir Location (Block)    : 2147483647\r\n"
                                          "     Next Dir Location (Block)    : 1073741824\r\n"),
                               HasSubstr("     Last Entry Number            : 4294967295\r\n")));
}

TEST(log_dr, adds_locations_within_32_bits)
{
    Params packet = directory(1).raw(16, big_endian(1, 4));
    EXPECT_THAT(dumped(log_dr, put_entry(packet, 32).raw(92, {0xFF, 0xFF, 0xFF, 0xFF})),
                HasSubstr("      Data Location (Block)       : 0000000000\r\n"));
}

TEST(log_dr, shows_the_label_alone_for_a_time_that_is_zero)
{
    Params packet = directory(1);
    put_entry(packet, 32).fill(60, 64, '\0').fill(76, 80, '\0');
    const std::string text = dumped(log_dr, packet);
    EXPECT_THAT(text, HasSubstr("      Trigger time                : \r\n"
                                "      First sample time           : 2004:366:23:59:59.65535\r\n"
                                "      Detrigger time              : 1984:001:00:00:01.050\r\n"
                                "      Last sample time            : 2111:389:08:40:31.999\r\n"
                                "      Entry time                  : \r\n"));
}

TEST(log_dr, right_aligns_names_that_end_at_a_NUL)
{
    using namespace std::string_literals;
    Params packet = directory(1);
    EXPECT_THAT(dumped(log_dr, put_entry(packet, 32).raw(48, "ABC\0EFGHI\0KL"s)),
                HasSubstr("      Data Stream Name            :      ABC\r\n"
                          "      Trigger Type                :    I\r\n"));
}

TEST(log_dr, shows_a_zero_filled_entry)
{
    EXPECT_THAT(dumped(log_dr, directory(1)), EndsWith("\r\n"
                                                       "      Entry Number                : 0\r\n"
                                                       "      Entry Status                : 0\r\n"
                                                       "      Entry Format                : 0\r\n"
                                                       "      Entry Length                : 0\r\n"
                                                       "      Unit ID                     : 0000\r\n"
                                                       "      Event Number                : 0\r\n"
                                                       "      Event Header Flag           : 0\r\n"
                                                       "      Event Trailer Flag          : 0\r\n"
                                                       "      Stream Number               : 0\r\n"
                                                       "      Data Stream Name            :         \r\n"
                                                       "      Trigger Type                :     \r\n"
                                                       "      Data Format                 : 00\r\n"
                                                       "      Data Location (Block)       : 0000001001\r\n"
                                                       "      Data Length (Blocks)        : 0000000000\r\n"
                                                       "      Disk Errors (Blocks)        : 0\r\n"
                                                       "      Trigger time                : \r\n"
                                                       "      First sample time           : \r\n"
                                                       "      Detrigger time              : \r\n"
                                                       "      Last sample time            : \r\n"
                                                       "      Entry time                  : \r\n"));
}

TEST(log_dr, steps_on_by_the_length_of_each_entry)
{
    Params packet = directory(3);
    put_entry(packet, 32, 100);
    put_entry(packet, 132, 72);
    put_entry(packet, 204, 80);
    put_entry(packet, 284); // one more than the directory counts
    EXPECT_EQ(dumped(log_dr, packet),
              directory_text("3") + entry_text("100") + entry_text("72") + entry_text("80"));
}

TEST(log_dr, skips_an_entry_that_begins_with_a_blank_but_steps_over_it)
{
    Params packet = directory(2);
    put_entry(packet, 32, 90).raw(32, " ");
    put_entry(packet, 122);
    EXPECT_EQ(dumped(log_dr, packet), directory_text("2") + entry_text());
}

TEST(log_dr, stops_at_an_entry_that_runs_past_the_packets_end)
{
    Params packet = directory(65535);
    std::string expected = directory_text("65535");
    for (int i = 0; i < 13; ++i) {
        put_entry(packet, 32 + 72 * i);
        expected += entry_text();
    }
    packet.raw(968, big_endian(65537, 4)); // 56 bytes are left for a fourteenth
    EXPECT_EQ(dumped(log_dr, packet), expected);
}

TEST(log_dr, shows_an_entry_that_ends_where_the_packet_ends)
{
    Params packet = directory(2);
    put_entry(packet, 32, 920);
    put_entry(packet, 952);
    EXPECT_EQ(dumped(log_dr, packet), directory_text("2") + entry_text("920") + entry_text());
}

TEST(log_dr, shows_no_entry_that_lacks_its_last_byte)
{
    Params packet = directory(2);
    put_entry(packet, 32, 921);
    packet.raw(953, big_endian(65537, 4));
    EXPECT_EQ(dumped(log_dr, packet), directory_text("2") + entry_text("921"));
}

TEST(log_dr, goes_on_to_the_next_entry_however_long_the_last_one_says_it_is)
{
    Params packet = directory(65535);
    EXPECT_EQ(dumped(log_dr, put_entry(packet, 32, 65535)), directory_text("65535") + entry_text("65535"));
}

TEST(log_dr, shows_overlapping_entries_up_to_the_packets_end)
{
    Params packet = directory(65535);
    for (int at = 32; at < 1024; at += 2) packet.raw(at, big_endian(2, 2)); // every length is 2
    const std::string text = dumped(log_dr, packet);
    size_t shown = 0;
    for (size_t at = 0;
         (at = text.find("      Entry Number                : 131074\r\n", at)) != std::string::npos; ++at)
        ++shown;
    EXPECT_EQ(shown, 461U); // from 32 to 952 in steps of 2
}

TEST(log_dr, repeats_an_entry_without_length_as_often_as_entries_are_counted)
{
    Params packet = directory(65535);
    put_entry(packet, 32, 0);
    const auto start = std::chrono::steady_clock::now();
    const std::string text = dumped(log_dr, packet);
    const auto took = std::chrono::steady_clock::now() - start;

    const std::string head = directory_text("65535");
    const std::string entry = entry_text("0");
    ASSERT_EQ(text.size(), head.size() + 65535 * entry.size());
    EXPECT_EQ(text.substr(0, head.size()), head);
    bool same = true;
    for (size_t at = head.size(); at < text.size(); at += entry.size())
        same = same && text.compare(at, entry.size(), entry) == 0;
    EXPECT_TRUE(same);
    EXPECT_LT(took, std::chrono::seconds(20)); // hardly a second; a write per line would take minutes
}

TEST(log_dr, repeats_from_where_the_length_is_missing)
{
    Params packet = directory(4);
    put_entry(packet, 32, 100);
    put_entry(packet, 132, 0);
    EXPECT_EQ(dumped(log_dr, packet),
              directory_text("4") + entry_text("100") + entry_text("0") + entry_text("0") + entry_text("0"));
}

TEST(log_dr, writes_nothing_for_a_blank_entry_without_length)
{
    Params packet = directory(65535);
    put_entry(packet, 32, 0).raw(32, " ");
    EXPECT_EQ(dumped(log_dr, packet), directory_text("65535"));
}
