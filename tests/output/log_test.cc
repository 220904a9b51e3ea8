// Summary lines, block dumps and the run header, as functions.
#include "output/log.h"

#include "kit/expect.h"
#include "kit/hex_lines.h"
#include "kit/stage.h"
#include "packet/kind.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <limits>

using namespace kit;

namespace {

std::string line_of(const std::string& bytes, uint16_t type, uint16_t file_num = 0)
{
    Stage stage;
    const PACKET pkt = stage.packet(bytes);
    return written_by([&](OUT_FILE& f) { log_head(f, pkt, type, file_num); });
}

std::string block_of(const std::string& bytes, uint16_t kind)
{
    Stage stage;
    const PACKET pkt = stage.packet(bytes);
    return written_by([&](OUT_FILE& f) { log_block(f, pkt, kind); });
}

/// The end of a line for a block number, with and without a file number.
std::string number_of(uint32_t block, uint16_t file_num)
{
    Stage stage;
    Blk_cnt = block;
    const PACKET pkt = stage.packet(Fd());
    const std::string line = written_by([&](OUT_FILE& f) { log_head(f, pkt, PKT_FD, file_num); });
    return line.substr(line.find(" B:"));
}

} // namespace

TEST(log_head, shows_a_data_packet)
{
    EXPECT_EQ(line_of(Dt().seq(5).event(12).channel(2).count(250), PKT_DT),
              "DT 04:123:10:15:30.250000 X:07 U:9A2F E:0012 D:1 C:3 S:0250 F:32 G:00 L:1024 N:0005 "
              "B:0000000000\r\n");
}

TEST(log_head, shows_an_unknown_packet_by_its_counts_alone)
{
    EXPECT_EQ(line_of(Params("XX").bytes(100).seq(6), PKT_UNKNOWN), "UNKNOWN BLOCK TYPE!          " +
                                                                        std::string(8 + 27 + 5, ' ') +
                                                                        " L:0100 N:0006 B:0000000000\r\n");
}

TEST(log_head, goes_by_the_type_that_it_is_told)
{
    const std::string bytes = Dt().event(12).channel(2).count(250);
    EXPECT_EQ(line_of(bytes, PKT_EH), "DT 04:123:10:15:30.250    X:07 U:9A2F E:0012 D:1            F:32 G:00 "
                                      "L:1024 N:0000 B:0000000000\r\n");
    EXPECT_EQ(line_of(bytes, PKT_SH), "DT 04:123:10:15:30.250    X:07 U:9A2F" + std::string(32, ' ') +
                                          " L:1024 N:0000 B:0000000000\r\n");
}

TEST(log_head, shows_and_clears_the_mark_of_a_known_packet)
{
    Stage stage;
    const PACKET pkt = stage.packet(Fd());
    const auto mark = [&](int comparison, uint16_t type) {
        sign = comparison;
        return written_by([&](OUT_FILE& f) { log_head(f, pkt, type, 0); }).substr(0, 3);
    };
    EXPECT_EQ(mark(0, PKT_FD), "FD ");
    EXPECT_EQ(mark(-1, PKT_FD), "FD-");
    EXPECT_EQ(sign, 0);
    EXPECT_EQ(mark(7, PKT_FD), "FD+");
    EXPECT_EQ(sign, 0);
    EXPECT_EQ(mark(INT32_MIN, PKT_FD), "FD-");
    EXPECT_EQ(mark(7, PKT_UNKNOWN), "UNK");
    EXPECT_EQ(sign, 7);
}

TEST(log_head, shows_a_file_number_when_there_is_one)
{
    EXPECT_EQ(number_of(42, 0), " B:0000000042\r\n");
    EXPECT_EQ(number_of(42, 7), " B:0007:00042\r\n");
    EXPECT_EQ(number_of(1234567, 12345), " B:12345:1234567\r\n");
    EXPECT_EQ(number_of(0, 1), " B:0001:00000\r\n");
}

TEST(log_head, shows_block_numbers_of_31_bits_and_a_sign)
{
    EXPECT_EQ(number_of(2147483647, 0), " B:2147483647\r\n");
    EXPECT_EQ(number_of(2147483648U, 0), " B:-2147483648\r\n");
    EXPECT_EQ(number_of(4294967295U, 0), " B:-000000001\r\n");
    EXPECT_EQ(number_of(4294967295U, 3), " B:0003:-0001\r\n");
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
        EXPECT_EQ(block_of(Sh("text"), static_cast<uint16_t>(kind)), "\r\n") << kind;
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

TEST(log_fd, writes_nothing)
{
    EXPECT_EQ(written_by([](OUT_FILE&) { log_fd(); }), "");
}

TEST(Log_fhdr, shows_every_setting_of_the_run)
{
    Stage stage;
    setenv("TZ", "UTC", 1);
    tzset();
    Sys_time = 1083406530; // 2004-05-01 10:15:30
    FileIn = "in/rec.pkt", FileIni = "/p/vxu.ini", DirOrg = "/home", DirOut = "out/", FileLog = "out/rec.vxl";
    FileQcc = "out/rec.qcc", Cmd_line = "vx_sac in/rec.pkt out";
    Path_option = 3, Name_option = 2, Log_on = 1, Log_dt = 1, Qcc_on = 1;
    Flag_info = {0, 1};
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
              "\r\n         Gather : YES"
              "\r\n      trace Hdr : NO"
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
    Log_on = 1;
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
