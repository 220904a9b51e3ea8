// A packet's header as it is decoded, and the readers of fields.
#include "packet/packet.h"

#include "packet/block.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using kit::Dt;
using kit::Eh;
using kit::Params;

/// The kind of a packet that begins with these letters.
PKT kind_of(const char* letters)
{
    return Block(Params(letters)).pkt().kind;
}

std::string year_of(const std::string& packet)
{
    return Block(packet).pkt().time.s;
}

TEST(PACKET, knows_its_kind_by_its_letters)
{
    const std::pair<const char*, PKT> kinds[] = {
        {"EH", PKT_EH}, {"ET", PKT_ET}, {"DT", PKT_DT}, {"SH", PKT_SH},     {"SC", PKT_SC},
        {"DS", PKT_DS}, {"CD", PKT_CD}, {"OM", PKT_OM}, {"AD", PKT_AD},     {"DR", PKT_DR},
        {"NH", PKT_NH}, {"NT", PKT_NT}, {"FD", PKT_FD}, {"XX", PKT_UNKNOWN}};
    for (const auto& [letters, kind] : kinds) EXPECT_EQ(kind_of(letters), kind) << letters;
}

TEST(PACKET, decodes_what_a_data_packet_says_of_itself)
{
    const Block dt(
        Dt().unit(0x9A2F).seq(9998).event(1234).stream(7).channel(16).count(892).at(23, 59, 58, 997));
    EXPECT_EQ(dt.pkt().kind, PKT_DT);
    EXPECT_EQ(dt.pkt().unit_id, 0x9A2F);
    EXPECT_EQ(dt.pkt().seq, 9998);
    EXPECT_EQ(dt.pkt().event, 1234);
    EXPECT_EQ(dt.pkt().stream, 7);
    EXPECT_EQ(dt.pkt().channel, 16);
    EXPECT_EQ(dt.pkt().samples, 892);
    EXPECT_STREQ(dt.pkt().time.s, "2004123235958997");
    EXPECT_EQ(text(dt.pkt(), Span{0, Packet_size}), dt.bytes());
}

TEST(PACKET, keeps_a_unit_id_of_0_as_it_is)
{
    EXPECT_EQ(Block(Dt().unit(0)).pkt().unit_id, 0);
    EXPECT_EQ(Block(Dt().unit(1)).pkt().unit_id, 1);
    EXPECT_EQ(Block(Dt().unit(0xFF00)).pkt().unit_id, 0xFF00);
}

TEST(PACKET, has_years_of_two_centuries)
{
    EXPECT_EQ(year_of(Dt().year(84).day(1).at(0, 0, 0, 0)), "2084001000000000");
    EXPECT_EQ(year_of(Dt().year(85).day(1).at(0, 0, 0, 0)), "1985001000000000");
}

TEST(PACKET, numbers_of_bad_digits_count_each_digit_as_what_it_is)
{
    const Block dt(
        Dt().raw(14, "\xFF\xFF").raw(16, "\xAB\xCD").raw(18, "\xFF").raw(19, "\x1F").raw(20, "\x0A\xFF"));
    EXPECT_EQ(dt.pkt().seq, 16665);
    EXPECT_EQ(dt.pkt().event, 11233);
    EXPECT_EQ(dt.pkt().stream, 165);
    EXPECT_EQ(dt.pkt().channel, 25);
    EXPECT_EQ(dt.pkt().samples, 1165);
}

TEST(PACKET, describes_an_event_as_header_or_trailer)
{
    for (const char* letters : {"EH", "ET"}) EXPECT_TRUE(describes_event(Block(Params(letters)).pkt()));
    for (const char* letters : {"DT", "SH", "SC", "DS", "CD", "OM", "AD", "DR", "NH", "NT", "FD", "XX"})
        EXPECT_FALSE(describes_event(Block(Params(letters)).pkt())) << letters;
}

TEST(PACKET, of_five_kinds_carries_the_fields_of_an_event)
{
    for (const char* letters : {"EH", "ET", "DT", "NH", "NT"})
        EXPECT_TRUE(belongs_to_event(Block(Params(letters)).pkt())) << letters;
    for (const char* letters : {"SH", "SC", "DS", "CD", "OM", "AD", "DR", "FD", "XX"})
        EXPECT_FALSE(belongs_to_event(Block(Params(letters)).pkt())) << letters;
}

TEST(PACKET, is_a_value_that_can_be_copied)
{
    const Block eh(Eh().event(7).unit(0xA));
    const PACKET copy = eh.pkt(); // NOLINT(performance-unnecessary-copy-initialization)
    EXPECT_EQ(copy.event, 7);
    EXPECT_EQ(copy.unit_id, 0xA);
    EXPECT_EQ(copy.bytes, eh.pkt().bytes);
}

TEST(digits, writes_two_per_byte_and_returns_the_place_behind_them)
{
    const Block dt(Dt().raw(14, "\x12\xAF"));
    char made[] = "....!";
    EXPECT_EQ(digits(dt.pkt(), HDR::Seq, made), made + 4);
    EXPECT_STREQ(made, "12:?!");
}

TEST(number, is_the_value_of_a_binary_field_of_one_two_or_four_bytes)
{
    const Block dt(Dt().raw(100, std::string("\xFE\x01\x02\x80", 4)));
    EXPECT_EQ(number(dt.pkt(), Span{100, 1}), 0xFEU);
    EXPECT_EQ(number(dt.pkt(), Span{100, 2}), 0xFE01U);
    EXPECT_EQ(number(dt.pkt(), Span{100, 4}), 0xFE010280U);
}

} // namespace
