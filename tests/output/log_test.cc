// Summary lines, block dumps and the run header, as functions.
#include "output/log.h"

#include "kit/expect.h"
#include "kit/hex_lines.h"
#include "kit/stage.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <limits>

using namespace kit;

namespace {

std::string line_of(const std::string& bytes, char mark = ' ')
{
    Stage stage;
    const PACKET pkt = stage.packet(bytes);
    return written_by([&](OUT_FILE& f) { log_head(f, pkt, mark); });
}

std::string block_of(const std::string& bytes, unsigned dump)
{
    Stage stage;
    const PACKET pkt = stage.packet(bytes);
    return written_by([&](OUT_FILE& f) { log_block(f, pkt, static_cast<BlockDump>(dump)); });
}

/// The end of a line for a block number.
std::string number_of(uint32_t block)
{
    Stage stage;
    Blk_cnt = block;
    const PACKET pkt = stage.packet(Fd());
    const std::string line = written_by([&](OUT_FILE& f) { log_head(f, pkt, ' '); });
    return line.substr(line.find(" B:"));
}

} // namespace

TEST(log_head, shows_a_data_packet)
{
    EXPECT_EQ(line_of(Dt().seq(5).event(12).channel(2).count(250)),
              "DT 04:123:10:15:30.250000 X:07 U:9A2F E:0012 D:1 C:3 S:0250 F:32 G:00 L:1024 N:0005 "
              "B:0000000000\r\n");
}

TEST(log_head, shows_event_fields_without_channel_of_the_packets_that_describe_events_or_networks)
{
    for (const char* letters : {"EH", "ET", "NH", "NT"})
        EXPECT_EQ(line_of(Eh().type(letters).event(12).format(0x32).flags(0x14)),
                  std::string(letters) +
                      " 04:123:10:15:30.250    X:07 U:9A2F E:0012 D:1            F:32 G:14 "
                      "L:1024 N:0000 B:0000000000\r\n");
}

TEST(log_head, shows_no_event_fields_of_all_other_packets)
{
    for (const char* letters : {"SH", "SC", "DS", "CD", "OM", "AD", "DR", "FD"})
        EXPECT_EQ(line_of(Params(letters)), std::string(letters) + " 04:123:10:15:30.250    X:07 U:9A2F" +
                                                std::string(32, ' ') + " L:1024 N:0000 B:0000000000\r\n");
}

TEST(log_head, shows_the_mark_behind_the_letters)
{
    for (const char mark : {' ', '-', '+'})
        EXPECT_EQ(line_of(Fd(), mark).substr(0, 6), std::string("FD") + mark + "04:");
}

TEST(take_mark, tells_whether_the_latest_time_was_earlier_or_later_and_clears_it)
{
    const auto mark_of = [](int comparison) {
        mark_continuity(comparison);
        return take_mark();
    };
    EXPECT_EQ(mark_of(0), ' ');
    EXPECT_EQ(mark_of(-1), '-');
    EXPECT_EQ(take_mark(), ' ');
    EXPECT_EQ(mark_of(7), '+');
    EXPECT_EQ(take_mark(), ' ');
    EXPECT_EQ(mark_of(INT32_MIN), '-');
    mark_continuity(7);
    mark_continuity(0);
    EXPECT_EQ(take_mark(), ' ') << "the latest one counts";
}

TEST(log_head, shows_block_numbers_of_31_bits_and_a_sign)
{
    EXPECT_EQ(number_of(42), " B:0000000042\r\n");
    EXPECT_EQ(number_of(2147483647), " B:2147483647\r\n");
    EXPECT_EQ(number_of(2147483648U), " B:-2147483648\r\n");
    EXPECT_EQ(number_of(4294967295U), " B:-000000001\r\n");
}

TEST(log_mismatch, shows_what_was_read_beside_what_came_out_and_the_packet)
{
    Stage stage;
    const std::string bytes = Dt().count(892);
    const PACKET pkt = stage.packet(bytes);
    const Decoded decoded{false, 0x64, 0xFFFFFFFF, 0x80000001, 0x7A};
    EXPECT_TRUE(same_bytes(written_by([&](OUT_FILE& f) { log_mismatch(f, pkt, decoded, 1561); }),
                           "     Read start 0x00000064  stop 0xFFFFFFFF  samples 892\r\n"
                           "     Calc start 0x80000001  stop 0x0000007A  samples 1561\r\n" +
                               hex_lines(bytes) + "\r\n"));
}

TEST(log_block, dumps_the_whole_packet_whatever_its_byte_count)
{
    std::string bytes = Dt().bytes(100).packet();
    for (size_t i = 24; i < 1024; ++i) bytes[i] = static_cast<char>(i);
    EXPECT_TRUE(same_bytes(block_of(bytes, 0), hex_lines(bytes) + "\r\n"));
    const std::string text = block_of(bytes, 0);
    EXPECT_TRUE(text.starts_with(
        "     000   44 54 07 04 9A 2F 12 31 - 01 53 02 50 01 00 00 00   DT.../.1.S.P....\r\n"));
    EXPECT_TRUE(text.ends_with(
        "     3F0   F0 F1 F2 F3 F4 F5 F6 F7 - F8 F9 FA FB FC FD FE FF   ................\r\n\r\n"));
}

TEST(log_block, dumps_a_packet_up_to_its_byte_count_in_whole_lines)
{
    const auto lines = [](unsigned count) {
        const std::string bytes = Dt().bytes(count).packet();
        return std::pair(block_of(bytes, 5), hex_lines(bytes, count < 1024 ? count : 1024) + "\r\n");
    };
    for (const unsigned count : {0U, 1U, 16U, 17U, 33U, 1023U, 1024U, 1025U, 9999U}) {
        const auto [shown, expected] = lines(count);
        EXPECT_TRUE(same_bytes(shown, expected)) << count;
    }
}

TEST(log_block, writes_a_line_end_and_no_more_for_other_kinds)
{
    for (const unsigned kind : {1U, 2U, 3U, 6U, 65535U})
        EXPECT_EQ(block_of(Sh("text"), kind), "\r\n") << kind;
}

TEST(log_block, indents_the_lines_of_a_text)
{
    EXPECT_EQ(block_of(Sh("AB\r\nCD"), 4), "     AB\r\n     CD\r\n\r\n");
    EXPECT_EQ(block_of(Sh("AB\r"), 4), "     AB\r\r\n\r\n");
    EXPECT_EQ(block_of(Sh("A\rB"), 4), "     A\rB\n\r\n");
    EXPECT_EQ(block_of(Sh("AB\r\n"), 4), "     AB\r\n     \r\n");
    EXPECT_EQ(block_of(Sh("\n\n"), 4), "     \n     \n     \r\n");
}

TEST(log_block, a_text_of_no_bytes_is_an_indent)
{
    for (const unsigned count : {0U, 1U, 2U, 23U, 24U})
        EXPECT_EQ(block_of(Sh("").bytes(count), 4), "     \r\n\r\n") << count;
}

TEST(log_block, a_text_ends_with_the_packet)
{
    EXPECT_EQ(block_of(Sh(std::string(1000, 'x')).bytes(9999), 4),
              "     " + std::string(1000, 'x') + "\r\n\r\n");
}

TEST(Log_fhdr, shows_every_setting_of_the_run)
{
    Stage stage;
    setenv("TZ", "UTC", 1);
    tzset();
    Sys_time = 1083406530; // 2004-05-01 10:15:30
    FileIn = "in/rec.pkt", FileIni = "/p/vxu.ini", DirOrg = "/home", DirOut = "out/", FileLog = "out/rec.vxl";
    FileQcc = "out/rec.qcc", Cmd_line = "vx_sac in/rec.pkt out";
    Path_option = 3, Name_option = 2, Log_on = true, Log_dt = true, Qcc_on = true;
    Smp_rate_cmd = 33.3F, Smp_limit = 0, Smp_skip = 4294967295U;
    EXPECT_EQ(written_by([](OUT_FILE& f) { Log_fhdr(f); }),
              "VX_SAC - Version sps16   "
              "\r\nPASSCAL packets to SAC traces, packet logs and QC statistics"
              "\r\nSystem time: Sat May  1 10:15:30 2004"
              "\r\n\r\n     Input File : in/rec.pkt"
              "\r\n       INI File : /p/vxu.ini"
              "\r\n  Original Path : /home"
              "\r\n    Output Path : out/"
              "\r\n    Path Option : 3"
              "\r\n    Name Option : Station"
              "\r\n         Gather : NO"
              "\r\n      trace Hdr : YES"
              "\r\n     Log enable : YES"
              "\r\n    Log DT Blks : YES"
              "\r\n       Log File : out/rec.vxl"
              "\r\n     QCC enable : YES"
              "\r\n       QCC File : out/rec.qcc"
              "\r\n    Sample Rate : 33.3000"
              "\r\n    Max Samples : 0"
              "\r\n   Skip Samples : 4294967295"
              "\r\n   Command Line : vx_sac in/rec.pkt out"
              "\r\n\r\n");
}

TEST(Log_fhdr, shows_the_defaults)
{
    Stage stage;
    Log_on = true;
    const std::string header = written_by([](OUT_FILE& f) { Log_fhdr(f); });
    EXPECT_NE(header.find("\r\n    Name Option : Auto\r\n         Gather : NO\r\n      trace Hdr : YES\r\n"
                          "     Log enable : YES\r\n    Log DT Blks : NO\r\n"),
              header.npos)
        << header;
    EXPECT_NE(
        header.find(
            "\r\n    Sample Rate : 100.0000\r\n    Max Samples : 4294967295\r\n   Skip Samples : 0\r\n"),
        header.npos);
    Name_option = 1;
    EXPECT_NE(written_by([](OUT_FILE& f) { Log_fhdr(f); }).find("\r\n    Name Option : Unit ID\r\n"),
              header.npos);
}

TEST(Log_fhdr, a_clock_beyond_all_years_shows_no_time)
{
    Stage stage;
    Sys_time = std::numeric_limits<time_t>::max();
    const std::string header = written_by([](OUT_FILE& f) { Log_fhdr(f); });
    EXPECT_NE(header.find("\r\nSystem time: \r\n\r\n     Input File : rec.pkt\r\n"), header.npos) << header;
}
