// Where the fields lie, and the readers that keep to the packet.
#include "packet/layout.h"

#include "kit/packets.h"
#include "packet/block.h"
#include "packet/packet.h"

#include <gtest/gtest.h>

#include <string>

namespace {

void expect_at(Span field, int at, int len)
{
    EXPECT_EQ(field.at, at);
    EXPECT_EQ(field.len, len);
}
void expect_at(Row row, int at, int len)
{
    EXPECT_EQ(row.at, at);
    EXPECT_EQ(row.len, len);
    EXPECT_EQ(row.count, 16);
    expect_at(row[0], at, len);
    expect_at(row[15], at + 15 * len, len);
    EXPECT_EQ(row.end(), at + 16 * len);
}

TEST(Layout, of_the_common_header)
{
    EXPECT_EQ(Packet_size, 1024);
    expect_at(HDR::Type, 0, 2);
    expect_at(HDR::Experiment, 2, 1);
    expect_at(HDR::Year, 3, 1);
    expect_at(HDR::Unit_id, 4, 2);
    expect_at(HDR::Time, 6, 6);
    expect_at(HDR::Byte_cnt, 12, 2);
    expect_at(HDR::Seq, 14, 2);
    expect_at(HDR::Digits, 2, 14);
}

TEST(Layout, of_the_event_fields)
{
    expect_at(EVT::Number, 16, 2);
    expect_at(EVT::Stream, 18, 1);
    expect_at(EVT::Channel, 19, 1);
    expect_at(EVT::Samples, 20, 2);
    expect_at(EVT::Flags, 22, 1);
    expect_at(EVT::Format, 23, 1);
    EXPECT_EQ(FLAG::Second_bank, 0x04U);
    EXPECT_EQ(FLAG::Extension, 0x08U);
    EXPECT_EQ(FLAG::Bit4, 0x10U);
}

TEST(Layout, of_the_samples)
{
    EXPECT_EQ(DT::Data, 24);
    EXPECT_EQ(DT::Data + DT::Extension_len, 64);
    EXPECT_EQ(DT::Frames, 64);
    EXPECT_EQ(DT::Frame_len, 64);
    EXPECT_EQ(DT::Frame_cnt, 15);
    expect_at(DT::Micros, 24, 4);
}

TEST(Layout, of_the_event_header)
{
    EXPECT_EQ(EH::Full_len, 58U);
    expect_at(EH::Short_text, 24, 31);
    expect_at(EH::Time_src, 57, 1);
    expect_at(EH::Pll_days, 58, 1);
    expect_at(EH::Stn_name_5th, 59, 1);
    expect_at(EH::Stn_name, 60, 4);
    expect_at(EH::Strm_name, 64, 24);
    expect_at(EH::Rate, 88, 4);
    expect_at(EH::Rate_telemetry, 88, 8);
    expect_at(EH::Trg_type, 92, 4);
    expect_at(EH::T_trg, 96, 16);
    expect_at(EH::T_first, 112, 16);
    expect_at(EH::T_detrg, 128, 16);
    expect_at(EH::T_last, 144, 16);
    expect_at(EH::Us_trg, 848, 3);
    expect_at(EH::Us_first, 851, 3);
    expect_at(EH::Us_detrg, 854, 3);
    expect_at(EH::Us_last, 857, 3);
    expect_at(EH::Chn_cnt, 860, 2);
    expect_at(EH::Comment, 862, 40);
    expect_at(EH::Filters, 902, 16);
    expect_at(EH::Position, 918, 26);
    expect_at(EH::Telemetry, 1016, 6);
}

TEST(Layout, of_the_event_headers_channel_rows)
{
    expect_at(EH::Bit_wght, 160, 8);
    expect_at(EH::True_wght, 288, 8);
    expect_at(EH::Gain, 416, 1);
    expect_at(EH::Res, 432, 1);
    expect_at(EH::Fsv, 448, 1);
    expect_at(EH::Seed, 464, 4);
    expect_at(EH::Sns_fsv, 528, 1);
    expect_at(EH::Sns_vpu, 544, 6);
    expect_at(EH::Units, 640, 1);
    expect_at(EH::Chn_name, 656, 3);
}

TEST(Layout, of_the_position)
{
    const int base = EH::Position.at;
    EXPECT_EQ(base + POS::South.at, 918);
    EXPECT_EQ(base + POS::Lat_deg.at, 920);
    EXPECT_EQ(base + POS::Lat_min.at, 922);
    EXPECT_EQ(base + POS::West.at, 928);
    EXPECT_EQ(base + POS::Lon_deg.at, 929);
    EXPECT_EQ(base + POS::Lon_min.at, 932);
    EXPECT_EQ(base + POS::Elevation.at, 938);
}

TEST(Packet, text_has_the_exact_width_with_its_blanks)
{
    const Block eh(kit::Eh().station("STA1X").rate("50  "));
    EXPECT_EQ(text(eh.pkt(), EH::Stn_name), "STA1");
    EXPECT_EQ(text(eh.pkt(), EH::Stn_name_5th), "X");
    EXPECT_EQ(text(eh.pkt(), EH::Rate), "50  ");
    EXPECT_EQ(text(eh.pkt(), HDR::Type), "EH");
}

TEST(Packet, text_keeps_nul_bytes)
{
    const Block eh(kit::Eh().raw(60, std::string("A\0B\0", 4)));
    EXPECT_EQ(text(eh.pkt(), EH::Stn_name), std::string_view("A\0B\0", 4));
}

TEST(Packet, readers_stop_at_its_end)
{
    const Block eh(kit::Eh().raw(1020, "abcd"));
    EXPECT_EQ(text(eh.pkt(), Span{1020, 8}), "abcd");
    EXPECT_EQ(text(eh.pkt(), Span{1023, 1}), "d");
    EXPECT_EQ(text(eh.pkt(), Span{1024, 4}), "");
    EXPECT_EQ(text(eh.pkt(), Span{5000, 4}), "");
    EXPECT_EQ(byte(eh.pkt(), Span{1023, 1}), 'd');
    EXPECT_EQ(byte(eh.pkt(), Span{1024, 1}), ' ');
    EXPECT_EQ(byte(eh.pkt(), Span{5000, 1}), ' ');
}

TEST(Packet, bytes_are_unsigned)
{
    const Block dt(kit::Dt().flags(0xFE).format(0xC2));
    EXPECT_EQ(flags(dt.pkt()), 0xFEU);
    EXPECT_EQ(byte(dt.pkt(), EVT::Format), 0xC2);
}

TEST(Packet, counts_are_decimal_digits)
{
    const Block dt(kit::Dt().seq(9999).event(12).stream(3).channel(17).count(892).bytes(1024));
    EXPECT_EQ(bcd(dt.pkt(), HDR::Seq), 9999);
    EXPECT_EQ(bcd(dt.pkt(), EVT::Number), 12);
    EXPECT_EQ(bcd(dt.pkt(), EVT::Stream), 3);
    EXPECT_EQ(bcd(dt.pkt(), EVT::Channel), 17);
    EXPECT_EQ(bcd(dt.pkt(), EVT::Samples), 892);
    EXPECT_EQ(bcd(dt.pkt(), HDR::Byte_cnt), 1024);
}

TEST(Packet, unit_id_has_its_high_byte_first)
{
    EXPECT_EQ(Block(kit::Sh("x").raw(4, "\x9A\x2F")).pkt().unit_id, 0x9A2F);
    EXPECT_EQ(Block(kit::Sh("x").unit(0)).pkt().unit_id, 0);
    EXPECT_EQ(Block(kit::Sh("x").unit(0xFFFF)).pkt().unit_id, 0xFFFF);
}

TEST(Packet, a_field_is_given_unless_it_begins_with_a_blank)
{
    EXPECT_TRUE(given("A   "));
    EXPECT_FALSE(given(" A  "));
    EXPECT_TRUE(given(std::string_view("\0   ", 4)));
    EXPECT_FALSE(given(""));
}

TEST(Packet, telemetry_is_told_by_six_bytes_that_are_not_all_blank)
{
    EXPECT_FALSE(from_telemetry(Block(kit::Eh()).pkt()));
    EXPECT_TRUE(from_telemetry(Block(kit::Eh().telemetry("01    ")).pkt()));
    EXPECT_TRUE(from_telemetry(Block(kit::Eh().telemetry("     1")).pkt()));
    EXPECT_TRUE(from_telemetry(Block(kit::Eh().fill(1016, 1022, '\0')).pkt()));
    EXPECT_FALSE(from_telemetry(Block(kit::Eh().raw(1015, "x      x")).pkt()));
}

} // namespace
