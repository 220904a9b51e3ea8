// Recorders in one stream: their files, their change, their order at the end.
#include "runs/common.h"

#include <filesystem>
#include <fstream>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

using namespace kit;
using namespace runs;

namespace {

Dt data(unsigned unit, unsigned event, const std::vector<int32_t>& samples)
{
    return Dt().unit(unit).event(event).samples(samples);
}

std::string fd(unsigned unit)
{
    return Fd().unit(unit).packet();
}

std::string channel_block(const std::string& unit, const std::string& event, const std::string& numbers)
{
    return "No ET block for U:" + unit + " E:" + event + "\r\n" + Qc_head + "\r\n   Channel  0:" + numbers +
           "\r\n\r\n";
}

/// A socket stands in a directory, yet nobody can open it as a file; -1 where there can be none.
int put_socket(const std::string& path)
{
    const int fd = socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un name{};
    name.sun_family = AF_UNIX;
    snprintf(name.sun_path, sizeof name.sun_path, "%s", path.c_str());
    if (bind(fd, reinterpret_cast<const sockaddr*>(&name), sizeof name) == 0) return fd;
    close(fd);
    return -1;
}

} // namespace

TEST(Units, id_zero_is_filed_under_FFFF)
{
    const Converted run = convert(data(0, 12, {1, 3}), {"-Q+"});
    Settings s = settings_of(run);
    s.qcc_on = true;
    EXPECT_EQ(names(run.tree), "2004123101530250_0FFFF_1_1.sac\nIDFFFF.qcc\nIDFFFF.vxl\nrec.qcc\nrec.vxl\n");
    EXPECT_TRUE(same_bytes(
        run.out, whole_console(s, progress_dt(1, "FFFF", 12, 1, 1) + "\nNo ET block for U:FFFF E:0012")));
    EXPECT_TRUE(ends_with(run.file("rec.vxl"), head_line(data_line("0012", 2, 0, "0000"))))
        << "a log line shows the packet's own bytes";
    EXPECT_TRUE(ends_with(run.file("rec.qcc"), "\r\n   FFFF     0:" + qc_numbers(1, 3, 2, 2, 1.4142)));
    EXPECT_EQ(header_text(run.file("2004123101530250_0FFFF_1_1.sac"), 600, 8), "FFFF-1-1");
    EXPECT_EQ(header_text(run.file("2004123101530250_0FFFF_1_1.sac"), 440, 8), std::string("0FFFF\0\0\0", 8));
}

TEST(Units, zero_and_FFFF_are_one_recorder)
{
    ConvertOptions options;
    options.ini = "[FFFF]\nStation=SAME\n";
    const Converted run =
        convert(data(0, 12, {1}).packet() + data(0xFFFF, 12, {2}).ms(260).packet(), {}, options);
    EXPECT_EQ(names(run.tree), "2004123101530250__SAME_1_1.sac\nIDFFFF.vxl\nrec.vxl\n");
    EXPECT_EQ(samples_of(run.file("2004123101530250__SAME_1_1.sac")), (std::vector<float>{1, 2}));
}

TEST(Units, alternating_recorders_keep_one_header_in_each_file)
{
    const Converted run = convert(fd(0xA) + fd(0xB) + fd(0xA) + fd(0xB), {"-Q+"});
    Settings s = settings_of(run);
    s.qcc_on = true;
    const auto line = [](unsigned block, const char* unit) {
        return head_line(plain_line("FD", block, unit));
    };
    EXPECT_TRUE(same_tree(run.tree, {{"rec.vxl", log_header(s) + line(0, "000A") + line(1, "000B") +
                                                     line(2, "000A") + line(3, "000B")},
                                     {"rec.qcc", qcc_header(s)},
                                     {"ID000A.vxl", log_header(s) + line(0, "000A") + line(2, "000A")},
                                     {"ID000B.vxl", log_header(s) + line(1, "000B") + line(3, "000B")},
                                     {"ID000A.qcc", qcc_header(s)},
                                     {"ID000B.qcc", qcc_header(s)}}));
}

TEST(Units, alternating_recorders_keep_their_traces_whole)
{
    for (const char* log : {"-L+", "-L-"}) {
        Recording recording =
            Eh().unit(0xA).event(1).usual().station("AAAA") + Eh().unit(0xB).event(1).usual().station("BBBB");
        for (int i = 0; i < 4; ++i) {
            recording += data(0xA, 1, {i}).ms(250 + 10 * static_cast<unsigned>(i));
            recording += data(0xB, 1, {10 * i}).ms(250 + 10 * static_cast<unsigned>(i));
        }
        const Converted run = convert(recording, {log});
        Sac a = Sac().rate(100).stats(0, 3, 1.5f), b = Sac().rate(100).stats(0, 30, 15);
        a.kcmpnm = "000A-1-1", a.kstnm = "AAAA ";
        b.kcmpnm = "000B-1-1", b.kstnm = "BBBB ";
        EXPECT_TRUE(
            same_bytes(mask_run_date(run.file("2004123101530250_AAAA__1_1.sac")), sac_file(a, {0, 1, 2, 3})));
        EXPECT_TRUE(same_bytes(mask_run_date(run.file("2004123101530250_BBBB__1_1.sac")),
                               sac_file(b, {0, 10, 20, 30})));
    }
}

TEST(Units, a_second_run_appends_to_unit_files_and_begins_the_run_wide_ones_anew)
{
    const Recording recording = one_event(12, {1, 3});
    const Converted first = convert(recording, {"-Q+"});
    const Converted second = convert_again(first, recording, {"-Q+"});
    EXPECT_EQ(second.status, 0);
    Tree expected = masked(first.tree);
    for (const char* name : {"ID9A2F.vxl", "ID9A2F.qcc"}) expected[name] += expected[name];
    expected["2004123101530250_STA01_1A1.sac"] = expected[Name_1_1];
    EXPECT_TRUE(same_tree(second.tree, expected));
}

TEST(Units, unit_files_name_the_run_wide_ones)
{
    const Converted run = convert(fd(0xA), {"-Q+"});
    for (const char* name : {"ID000A.vxl", "ID000A.qcc"}) {
        EXPECT_NE(run.file(name).find("\r\n       Log File : out/rec.vxl\r\n"), std::string::npos) << name;
        EXPECT_NE(run.file(name).find("\r\n       QCC File : out/rec.qcc\r\n"), std::string::npos) << name;
    }
}

TEST(Units, statistics_files_exist_without_logs)
{
    const Converted run = convert(fd(0xA) + fd(0xB), {"-Q+", "-L-"});
    EXPECT_EQ(names(run.tree), "ID000A.qcc\nID000B.qcc\nrec.qcc\n");
}

TEST(Units, a_recorder_met_again_without_logs_loses_its_statistics_text_but_no_more)
{
    const Recording recording = Eh().unit(0xA).event(1).usual() + data(0xA, 1, {1, 3}) + Fd().unit(0xB) +
                                data(0xA, 1, {5, 7}).ms(290) + Et().unit(0xA).event(1).usual() +
                                Fd().unit(0xA) + Nh().unit(0xA).event(2);
    const Converted run = convert(recording, {"-Q+", "-L-"});
    Settings s = settings_of(run);
    s.qcc_on = true, s.log_on = false;
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_TRUE(same_bytes(mask_clock(run.file("ID000A.qcc")), qcc_header(s)));
    // The mark of the gap went with the trailer's line that had no file.
    EXPECT_TRUE(same_bytes(mask_clock(run.file("rec.qcc")),
                           qcc_header(s) + Qc_head + "\r\n   000A     0:" + qc_numbers(1, 7, 6, 4, 2.5820) +
                               "\r\n\r\n" + head_line(event_line("NH", "0002", 6, "000A")) + Qc_head));
    Sac trace = Sac().rate(100);
    trace.kcmpnm = "000A-1-1";
    EXPECT_TRUE(same_bytes(mask_run_date(run.file(Name_1_1)), sac_file(trace, {1, 3, 5, 7})));
}

TEST(Units, statistics_at_a_trailer_show_the_mark_of_a_gap_when_no_log_took_it)
{
    const Recording recording = Eh().event(1).usual() + Dt().event(1).samples({1, 3}) +
                                Dt().event(1).ms(500).samples({5}) + Et().event(1).usual();
    const Converted run = convert(recording, {"-Q+", "-L-"});
    HeadLine et = event_line("ET", "0001", 3);
    et.mark = "+";
    EXPECT_NE(run.file("ID9A2F.qcc").find("\r\n\r\n" + head_line(et) + Qc_head), std::string::npos)
        << run.file("ID9A2F.qcc");
}

TEST(Units, open_events_are_told_from_the_current_recorder_on_in_ring_order)
{
    for (const char* log : {"-L+", "-L-"}) {
        const Recording recording =
            data(0xA, 1, {1, 3}).packet() + data(0xB, 2, {2, 4}).packet() + data(0xC, 3, {3, 5}).packet();
        const Converted run = convert(recording, {"-Q+", log});
        Settings s = settings_of(run);
        s.qcc_on = true, s.log_on = log[2] == '+';
        // Each new recorder stands right behind the current one: C, A, B when walked from C.
        EXPECT_TRUE(ends_with(run.out, "\nNo ET block for U:000C E:0003\nNo ET block for U:000A E:0001"
                                       "\nNo ET block for U:000B E:0002\r\n"))
            << run.out;
        const auto numbers = [](double least) { return qc_numbers(least, least + 2, 2, least + 1, 1.4142); };
        EXPECT_TRUE(same_bytes(mask_clock(run.file("rec.qcc")),
                               qcc_header(s) + Qc_head + "\r\n   000C     0:" + numbers(3) + Qc_head +
                                   "\r\n   000A     0:" + numbers(1) + Qc_head +
                                   "\r\n   000B     0:" + numbers(2)));
        // Files closed since are opened once more, without another header.
        EXPECT_TRUE(same_bytes(mask_clock(run.file("ID000A.qcc")),
                               qcc_header(s) + channel_block("000A", "0001", numbers(1))));
        EXPECT_TRUE(same_bytes(mask_clock(run.file("ID000B.qcc")),
                               qcc_header(s) + channel_block("000B", "0002", numbers(2))));
        EXPECT_TRUE(same_bytes(mask_clock(run.file("ID000C.qcc")),
                               qcc_header(s) + channel_block("000C", "0003", numbers(3))));
        EXPECT_EQ(run.sac_names().size(), 3u);
    }
}

TEST(Units, the_ini_section_names_the_station_until_a_header_does)
{
    ConvertOptions options;
    options.ini = "[9A2E]\nStation=WRONG\n[9a2f] field site\nstationX = AB ; comment\n[9A2F]\nStation=LATE\n";
    const Recording recording = Dt().event(1).samples({1}) + Eh().event(2).usual() +
                                Dt().event(2).samples({2}) + Et().event(2).usual() +
                                Dt().event(3).samples({3});
    const Converted run = convert(recording, {"-L-"}, options);
    EXPECT_EQ(names(run.tree), "2004123101530250_STA01_1A1.sac\n2004123101530250_STA01_1_1.sac\n"
                               "2004123101530250___AB__1_1.sac\n");
    EXPECT_EQ(header_text(run.file("2004123101530250___AB__1_1.sac"), 440, 8), std::string("STA01\0\0\0", 8))
        << "the recorder's name when the header is written for good";
}

TEST(Units, an_ini_file_that_cannot_be_opened_is_told_and_waited_for)
{
    Scratch scratch;
    scratch.write("rec.pkt", fd(0xA));
    const int held = put_socket(scratch.path("vxu.ini"));
    if (held < 0) GTEST_SKIP() << "no socket can be made at " << scratch.path("vxu.ini");
    const Outcome run = run_vx(scratch.dir(), {"rec.pkt", "-L-"});
    close(held);
    EXPECT_EQ(run.status, 0);
    EXPECT_GE(run.seconds, 4.9);
    EXPECT_LT(run.seconds, 8);
    EXPECT_TRUE(ends_with(run.out, table_start() + "\nWARNING: Unable to open the INI file " +
                                       scratch.path("vxu.ini") + progress_params(1, "FD") + "\r\n"))
        << run.out;
}

TEST(Units, an_ini_file_that_cannot_be_opened_is_told_by_each_unit_and_each_channel_and_waited_for_once)
{
    Scratch scratch;
    scratch.write("rec.pkt", data(0xA, 12, {1}).packet());
    const int held = put_socket(scratch.path("vxu.ini"));
    if (held < 0) GTEST_SKIP() << "no socket can be made at " << scratch.path("vxu.ini");
    const Outcome run = run_vx(scratch.dir(), {"rec.pkt", "-L-"});
    close(held);
    EXPECT_EQ(run.status, 0);
    EXPECT_GE(run.seconds, 4.9);
    EXPECT_LT(run.seconds, 8);
    const std::string warning = "\nWARNING: Unable to open the INI file " + scratch.path("vxu.ini");
    EXPECT_TRUE(
        ends_with(run.out, table_start() + warning + warning + progress_dt(1, "000A", 12, 1, 1) + "\r\n"))
        << run.out;
    EXPECT_EQ(scratch.read("2004123101530250_0000A_1_1.sac").size(), 636u);
}

TEST(Units, a_log_of_more_than_two_gigabytes_grows_on)
{
    constexpr std::uintmax_t hole = 2147483648u + 4096;
    Scratch scratch;
    scratch.write("rec.pkt", fd(0xA));
    const std::string path = scratch.write("out/ID000A.vxl", "");
    std::filesystem::resize_file(path, hole);
    const Outcome run = run_vx(scratch.dir(), {"rec.pkt", "out"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    const std::string same = scratch.read("out/rec.vxl"); // one packet: the header and the same line
    ASSERT_EQ(std::filesystem::file_size(path), hole + same.size());
    std::string added(same.size(), '?');
    std::ifstream log(path, std::ios::binary);
    log.seekg(static_cast<std::streamoff>(hole));
    log.read(added.data(), static_cast<std::streamsize>(added.size()));
    EXPECT_TRUE(same_bytes(added, same));
    EXPECT_TRUE(ends_with(added, head_line(plain_line("FD", 0, "000A"))));
}
