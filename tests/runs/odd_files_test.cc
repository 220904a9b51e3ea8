// What is no ordinary file, or cannot be read, where a log, a QC file or the station file should stand.
#include "runs/traces.h"

#include <fcntl.h>
#include <filesystem>
#include <poll.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

using namespace kit;
using namespace runs;

namespace {

/// A folder with out/ and a recording of one event.
void lay_out_one_event(const Scratch& scratch)
{
    scratch.make_dir("out");
    scratch.write("rec.pkt", one_event(12, {1, 2}));
}

void put_fifo(const Scratch& scratch, const std::string& name)
{
    ASSERT_EQ(mkfifo(scratch.path(name).c_str(), 0600), 0);
}

RunOptions ending_soon()
{
    RunOptions options;
    options.timeout = 20; // a run that waits for a reader waits for ever
    return options;
}

class Odd_files : public testing::TestWithParam<std::string> {};
INSTANTIATE_TEST_SUITE_P(Names, Odd_files, testing::Values("rec.vxl", "rec.qcc", "ID9A2F.vxl", "ID9A2F.qcc"));

/// What a FIFO was given, read by a slow reader until the other side is closed.
std::string drained(int fifo)
{
    std::string text;
    for (;;) {
        pollfd ready = {fifo, POLLIN, 0};
        if (poll(&ready, 1, 20000) != 1) break;
        char piece[4096];
        const ssize_t n = read(fifo, piece, sizeof piece);
        if (n <= 0) break;
        text.append(piece, static_cast<size_t>(n));
        if (text.size() < 40000) std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return text;
}

TEST_P(Odd_files, a_fifo_that_nobody_reads_is_waited_for_five_seconds_and_is_status_20)
{
    Scratch scratch;
    lay_out_one_event(scratch);
    put_fifo(scratch, "out/" + GetParam());
    const Outcome run = run_vx(scratch.dir(), {"rec.pkt", "out", "-Q+"}, ending_soon());
    EXPECT_EQ(run.status, 20);
    EXPECT_TRUE(ends_with(run.out, "\nFile open error for 'out/" + GetParam() + "'")) << run.out;
    EXPECT_GE(run.seconds, 4.9);
    EXPECT_LT(run.seconds, 8);
}

} // namespace

TEST(Odd_files, a_fifo_with_a_reader_gets_the_whole_log_however_slow_the_reader_is)
{
    Scratch scratch;
    scratch.make_dir("out");
    constexpr unsigned Packets = 3000; // their lines are more than a pipe holds
    Recording recording;
    for (unsigned i = 0; i < Packets; ++i) recording += Fd();
    scratch.write("rec.pkt", recording);
    put_fifo(scratch, "out/rec.vxl");
    const int reader = open(scratch.path("out/rec.vxl").c_str(), O_RDONLY | O_NONBLOCK);
    ASSERT_GE(reader, 0);
    RunOptions options = ending_soon();
    std::string log;
    options.meanwhile = [&](pid_t) { log = drained(reader); };
    const Outcome run = run_vx(scratch.dir(), {"rec.pkt", "out"}, options);
    close(reader);
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    std::string lines;
    for (unsigned i = 0; i < Packets; ++i) lines += head_line(plain_line("FD", i));
    EXPECT_TRUE(ends_with(log, "\r\n\r\n" + lines)) << log.size();
}

TEST(Odd_files, links_to_the_null_device_take_all_logs)
{
    Scratch scratch;
    lay_out_one_event(scratch);
    for (const char* name : {"rec.vxl", "ID9A2F.vxl", "rec.qcc", "ID9A2F.qcc"})
        std::filesystem::create_symlink("/dev/null", scratch.path(std::string("out/") + name));
    const Outcome run = run_vx(scratch.dir(), {"rec.pkt", "out", "-Q+"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(samples_of(scratch.read(std::string("out/") + Name_1_1)), (std::vector<float>{1, 2}));
}

TEST(Odd_files, a_fifo_for_a_station_file_is_told_and_the_run_goes_on_after_five_seconds)
{
    Scratch scratch;
    lay_out_one_event(scratch);
    put_fifo(scratch, "vxu.ini");
    const Outcome run = run_vx(scratch.dir(), {"rec.pkt", "out", "-L-"}, ending_soon());
    EXPECT_EQ(run.status, 0);
    EXPECT_GE(run.seconds, 4.9);
    EXPECT_LT(run.seconds, 8);
    const std::string warning = "\nWARNING: Unable to open the INI file " + scratch.path("vxu.ini");
    EXPECT_EQ(count(run.out, warning), 2U) << "for the recorder and for the channel";
    EXPECT_EQ(samples_of(scratch.read(std::string("out/") + Name_1_1)), (std::vector<float>{1, 2}));
}

TEST(Odd_files, a_fifo_with_a_writer_is_no_station_file_either)
{
    Scratch scratch;
    lay_out_one_event(scratch);
    put_fifo(scratch, "vxu.ini");
    const int writer = open(scratch.path("vxu.ini").c_str(), O_RDWR | O_NONBLOCK);
    const std::string station = "[9A2F]\nStation=OTHER\n";
    ASSERT_EQ(write(writer, station.data(), station.size()), static_cast<ssize_t>(station.size()));
    const Outcome run = run_vx(scratch.dir(), {"rec.pkt", "out", "-L-"}, ending_soon());
    close(writer);
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(count(run.out, "\nWARNING: Unable to open the INI file "), 2U) << run.out;
    EXPECT_TRUE(scratch.exists(std::string("out/") + Name_1_1));
}

TEST(Odd_files, a_station_file_that_cannot_be_opened_costs_five_seconds_for_all_recorders_and_channels)
{
    Scratch scratch;
    Recording recording;
    for (const unsigned unit : {1U, 2U})
        for (const unsigned channel : {0U, 1U})
            recording +=
                Dt().unit(unit).event(unit).channel(channel).samples({static_cast<int32_t>(channel)});
    scratch.write("rec.pkt", recording);
    scratch.make_dir("out");
    const std::string ini = scratch.write("vxu.ini", "[0001]\nStation=ONE\n");
    std::filesystem::permissions(ini, std::filesystem::perms::none);
    for (const char* below : {"", "out"})
        std::filesystem::permissions(scratch.path(below), std::filesystem::perms::all);
    std::filesystem::copy_file(VX_SAC_PROGRAM, scratch.path("vx_sac"));
    RunOptions options;
    options.program = scratch.path("vx_sac");
    options.as_nobody = true; // who owns everything may read everything
    const Outcome run = run_vx(scratch.dir(), {"rec.pkt", "out", "-L-"}, options);
    EXPECT_EQ(run.status, 0);
    EXPECT_GE(run.seconds, 4.9);
    EXPECT_LT(run.seconds, 8);
    EXPECT_EQ(count(run.out, "\nWARNING: Unable to open the INI file " + ini), 6U)
        << "two recorders, four channels";
    EXPECT_EQ(scratch.tree("out").size(), 4U);
}
