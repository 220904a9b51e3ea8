// The console while packets go by: the table's lines to the character, and the counter.
#include "packet/loop/progress.h"

#include "driver/base/settings.h"
#include "kit/ending.h"
#include "kit/packets.h"
#include "model/record/records.h"
#include "packet/block.h"
#include "packet/input.h"

#include <gtest/gtest.h>

#include <string>

namespace {

class Progress : public testing::Test {
protected:
    Progress()
    {
        Verbose = true;
        Blk_cnt = 0;
        unit.unit_id = 0x9A2F;
        evt.unit_id = 0x9A2F;
        evt.evt_num = 12;
        evt.smp_rate = 100.0f;
        evt.trg_type.put("EVT ");
        chn.id.event = 12;
    }
    std::string event(const std::string& packet)
    {
        return kit::shown_by([&] { Progress_event(Block(packet).pkt(), evt); });
    }
    std::string data()
    {
        return kit::shown_by([&] { Progress_data(unit, chn); });
    }
    std::string health(const std::string& packet)
    {
        return kit::shown_by([&] { Progress_health(Block(packet).pkt(), unit); });
    }
    std::string parameters(const std::string& packet)
    {
        return kit::shown_by([&] { Progress_parameters(Block(packet).pkt()); });
    }
    std::string network(const std::string& packet)
    {
        return kit::shown_by([&] { Progress_network(Block(packet).pkt(), unit); });
    }
    UNIT_T unit;
    EVT_T evt;
    CHN_T chn;
};

TEST_F(Progress, table_has_its_head)
{
    EXPECT_EQ(kit::shown_by([] { Progress_start(); }),
              "\r\n\n  Block     Type      Unit      Event     Stream    Channel   Trg   Rate"
              "\r\n\n      0       -          -          -          -          -     -      -");
}

TEST_F(Progress, counter_starts_at_0)
{
    Verbose = false;
    EXPECT_EQ(kit::shown_by([] { Progress_start(); }), "\r\n\nMeg:     0");
}

TEST_F(Progress, of_event_header_and_trailer)
{
    EXPECT_EQ(event(kit::Eh()),
              "\r0000001       EH      9A2F       0012          01         -    EVT  100.0000");
    EXPECT_EQ(event(kit::Et()),
              "\r0000001       ET      9A2F       0012          01         -    EVT  100.0000");
}

TEST_F(Progress, of_an_event_shows_what_the_record_holds)
{
    Blk_cnt = 9999998;
    evt.unit_id = 0xFFFF;
    evt.evt_num = 11233;
    evt.strm = 165;
    evt.trg_type.put("MIM ");
    evt.smp_rate = 33.3f;
    EXPECT_EQ(event(kit::Eh()),
              "\r9999999       EH      FFFF       11233          166         -    MIM  33.3000");
    evt.smp_rate = 0.0f;
    evt.unit_id = 0x00AB;
    evt.trg_type.put("A");
    EXPECT_EQ(event(kit::Et()),
              "\r9999999       ET      00AB       11233          166         -      A  0.0000");
    evt.trg_type.put("");
    EXPECT_EQ(event(kit::Et()),
              "\r9999999       ET      00AB       11233          166         -         0.0000");
}

TEST_F(Progress, of_data_shows_the_channel_record)
{
    EXPECT_EQ(data(), "\r0000001       DT      9A2F       0012         01         01   ");
    Blk_cnt = 12345678;
    unit.unit_id = 0xFFFF;
    chn.id.event = 9999, chn.id.stream = 9, chn.id.channel = 16;
    EXPECT_EQ(data(), "\r12345679       DT      FFFF       9999         10         17   ");
    chn.id.event = 16665, chn.id.stream = 165, chn.id.channel = 165;
    EXPECT_EQ(data(), "\r12345679       DT      FFFF       16665         166         166   ");
}

TEST_F(Progress, of_data_is_what_print_would_show)
{
    for (uint32_t i = 0; i < 40000; i += 7) {
        Blk_cnt = i * 107;
        unit.unit_id = static_cast<uint16_t>(i * 13);
        chn.id.event = static_cast<uint16_t>(i);
        chn.id.stream = static_cast<uint16_t>(i % 166);
        chn.id.channel = static_cast<uint16_t>(i / 3 % 166);
        char line[128];
        snprintf(line, sizeof line, "\r%07u       DT      %04X       %04u         %02u         %02u   ",
                 Blk_cnt + 1, static_cast<unsigned>(unit.unit_id), static_cast<unsigned>(chn.id.event),
                 chn.id.stream + 1U, chn.id.channel + 1U);
        ASSERT_EQ(data(), line);
    }
}

TEST_F(Progress, of_health_shows_the_unit)
{
    Blk_cnt = 41;
    EXPECT_EQ(health(kit::Sh("text")), "\r0000042       SH      9A2F          -          -          -   ");
    unit.unit_id = 0xFFFF;
    EXPECT_EQ(health(kit::Sh("text").unit(0)),
              "\r0000042       SH      FFFF          -          -          -   ");
}

TEST_F(Progress, of_parameters_shows_the_letters_only)
{
    for (const char* letters : {"SC", "DS", "CD", "OM", "AD", "DR", "FD"})
        EXPECT_EQ(parameters(kit::Params(letters)), "\r0000001       " + std::string(letters) +
                                                        "         -          -          -          -   ");
}

TEST_F(Progress, of_the_network_shows_its_number)
{
    EXPECT_EQ(network(kit::Nh().event(345)),
              "\r0000001       NH      9A2F       0345          -          -    ");
    EXPECT_EQ(network(kit::Nt().event(9999)),
              "\r0000001       NT      9A2F       9999          -          -    ");
    EXPECT_EQ(network(kit::Nt().raw(16, "\xAB\xCD")),
              "\r0000001       NT      9A2F       11233          -          -    ");
}

/// What the counter shows for the packet number `block`, counted from 0.
class Counter : public Progress {
protected:
    Counter() { Verbose = false; }
    std::string at(uint32_t block)
    {
        Blk_cnt = block;
        return data();
    }
};

TEST_F(Counter, is_printed_for_every_other_1024_packets)
{
    for (uint32_t block = 0; block < 8192; ++block) {
        std::string expected;
        if (block < 1024) expected = "\rMeg:     0";
        if (block >= 2048 && block < 3072) expected = "\rMeg:     2";
        if (block >= 4096 && block < 5120) expected = "\rMeg:     4";
        if (block >= 6144 && block < 7168) expected = "\rMeg:     6";
        ASSERT_EQ(at(block), expected) << block;
    }
}

TEST_F(Counter, is_right_when_the_first_packet_of_its_mebibyte_was_of_no_known_type)
{
    EXPECT_EQ(at(0), "\rMeg:     0");
    EXPECT_EQ(at(2049), "\rMeg:     2"); // nothing was shown for packet 2048
    EXPECT_EQ(at(4100), "\rMeg:     4");
    EXPECT_EQ(at(1), "\rMeg:     0");
}

TEST_F(Counter, grows_with_the_input)
{
    EXPECT_EQ(at(4294966272U), ""); // bit 10 is set
    EXPECT_EQ(at(4294965248U), "\rMeg: 4194302");
    EXPECT_EQ(at(102400), "\rMeg:   100");
}

TEST_F(Counter, is_the_same_for_packets_of_every_kind)
{
    EXPECT_EQ(event(kit::Eh()), "\rMeg:     0");
    EXPECT_EQ(health(kit::Sh("x")), "\rMeg:     0");
    EXPECT_EQ(parameters(kit::Params("SC")), "\rMeg:     0");
    EXPECT_EQ(network(kit::Nh()), "\rMeg:     0");
    EXPECT_EQ(data(), "\rMeg:     0");
}

} // namespace
