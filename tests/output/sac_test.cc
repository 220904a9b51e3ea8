// The SAC header's fields from a channel's record, appending and statistics, finishing.
#include "output/sac.h"

#include "kit/ending.h"
#include "kit/expect.h"
#include "kit/stage.h"
#include "output/qcc.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <ctime>
#include <sys/resource.h>
#include <unistd.h>

using namespace kit;

namespace {

/// A channel with its event and unit, all as they begin.
struct Trace {
    Trace()
    {
        unit.unit_id = 0x9A2F;
        unit.stn_name.put("STA01");
        evt.unit = &unit;
        chn.evt = &evt;
        chn.unit = &unit;
        chn.id.unit_id = 0x9A2F;
        Qcc_init(chn);
    }
    ~Trace() { out_close(chn.fp); }
    SACHDR_T header() const
    {
        SACHDR_T h;
        memset(&h, 0xEE, sizeof h);
        Sac_dhdr_init(chn, h);
        return h;
    }
    std::string bytes() const
    {
        std::string all(632, '\xEE');
        Sac_dhdr_bytes(chn, all.data());
        return mask_run_date(all);
    }
    void open(Stage& stage, const char* name = "a.sac")
    {
        chn.name = stage.scratch.path(name);
        ASSERT_TRUE(Chn_file_open(chn));
    }
    void add(const std::vector<int32_t>& samples)
    {
        Sac_data_out(chn, samples.data(), static_cast<uint16_t>(samples.size()));
    }
    UNIT_T unit;
    EVT_T evt;
    CHN_T chn;
};

std::string text(const char* field, size_t len = 8)
{
    return std::string(field, len);
}

/// Seconds since 1970 of a day of the year, counted from 0, in UTC.
time_t moment(int year, int day)
{
    time_t days = 0;
    for (int y = 1970; y < year; ++y) days += y % 4 == 0 && (y % 100 != 0 || y % 400 == 0) ? 366 : 365;
    return (days + day) * 86400 + 43200;
}

std::string run_date(int year, int day)
{
    setenv("TZ", "UTC", 1);
    tzset();
    Sys_time = moment(year, day);
    return text(Trace().header().KDATRD);
}

} // namespace

namespace {

/// A trace that has all samples but three that a SAC header can count. Its file is short: only the count says
/// so.
struct NearlyFull {
    explicit NearlyFull(Stage& stage)
    {
        trace.open(stage);
        trace.chn.cnt = 4294967292U;
    }
    Trace trace;
};

} // namespace

TEST(Sac_dhdr_init, fills_what_nobody_sets_as_undefined)
{
    Stage stage;
    Trace trace;
    Sac s;
    s.year = s.day = s.hour = s.min = s.sec = s.ms = 0; // no time is known
    EXPECT_TRUE(same_bytes(trace.bytes(), sac_header(s)));
}

TEST(Sac_dhdr_init, takes_the_channels_statistics)
{
    Stage stage;
    Trace trace;
    trace.chn.cnt = 3;
    trace.chn.stats.sum = 1;
    trace.chn.stats.min = -16777217.0;
    trace.chn.stats.max = 16777219.0;
    trace.chn.set.azimuth = 65535;
    trace.chn.set.dip = -32768;
    const SACHDR_T h = trace.header();
    EXPECT_EQ(h.DEPMIN, -16777216.0F);
    EXPECT_EQ(h.DEPMAX, 16777220.0F);
    EXPECT_EQ(h.DEPMEN, 0.33333334F);
    EXPECT_EQ(h.CMPAZ, 65535.0F);
    EXPECT_EQ(h.CMPINC, -32768.0F);
    EXPECT_EQ(h.NPTS, 3);
}

TEST(Sac_dhdr_init, a_sample_count_above_31_bits_keeps_its_bits_and_its_mean)
{
    Stage stage;
    Trace trace;
    trace.chn.cnt = 4000000000U;
    trace.chn.stats.sum = 8e9;
    const SACHDR_T h = trace.header();
    EXPECT_EQ(static_cast<uint32_t>(h.NPTS), 4000000000U);
    EXPECT_EQ(h.DEPMEN, 2.0F);
}

TEST(Sac_dhdr_init, network_names_are_cut_to_eight_bytes_or_padded_with_NULs)
{
    Stage stage;
    Trace trace;
    EXPECT_EQ(text(trace.header().KNETWK), "-12345  ");
    trace.unit.net_name.put("VALLEY ARRAY");
    EXPECT_EQ(text(trace.header().KNETWK), "VALLEY A");
    trace.unit.net_name.put("VA");
    EXPECT_EQ(text(trace.header().KNETWK), std::string("VA\0\0\0\0\0\0", 8));
}

TEST(Sac_dhdr_init, an_empty_station_leaves_the_end_of_the_fill_behind_the_unit)
{
    Stage stage;
    Trace trace;
    trace.unit.stn_name.clear();
    trace.unit.unit_id = 0x9F2A;
    EXPECT_EQ(text(trace.header().KSTNM), std::string("9F2A\0005  ", 8));
    trace.unit.unit_id = 0x000B;
    EXPECT_EQ(text(trace.header().KSTNM), std::string("000B\0005  ", 8));
}

TEST(Sac_dhdr_init, the_component_has_letters_only_when_a_band_is_known)
{
    Stage stage;
    Trace trace;
    trace.chn.set.type = 'H';
    trace.chn.set.axis = 'Z';
    EXPECT_EQ(text(trace.header().KCMPNM), "9A2F-1-1");
    trace.chn.set.band = 'B';
    EXPECT_EQ(text(trace.header().KCMPNM), "9A2F-BHZ");
    trace.chn.set.band = '\0';
    EXPECT_EQ(text(trace.header().KCMPNM), std::string("9A2F-\0HZ", 8));
}

TEST(Sac_dhdr_init, the_run_date_counts_days_from_zero)
{
    Stage stage;
    EXPECT_EQ(run_date(2024, 0), "2024:000");
    EXPECT_EQ(run_date(2024, 365), "2024:365");
    EXPECT_EQ(run_date(2023, 364), "2023:364");
    EXPECT_EQ(run_date(2037, 59), "2037:059");
}

TEST(Sac_dhdr_init, the_run_date_is_local)
{
    Stage stage;
    Sys_time = moment(2024, 0); // noon of 1 January
    setenv("TZ", "WEST+13", 1);
    tzset();
    EXPECT_EQ(text(Trace().header().KDATRD), "2023:364");
    EXPECT_EQ(text(Trace().header().KINST), "VX 900  ");
}

TEST(Sac_dhdr_bytes, puts_the_most_significant_byte_first)
{
    Stage stage;
    Trace trace;
    trace.evt.smp_rate = 100.0F;
    trace.evt.times.t_trg.put("2004123101530123");
    trace.evt.times.t_first.put("2004123101530001");
    trace.chn.cnt = 0x01020304;
    const std::string bytes = trace.bytes();
    EXPECT_EQ(bytes.substr(0, 4), "\x3C\x23\xD7\x0A");
    EXPECT_EQ(bytes.substr(28, 4), "\x3D\xF9\xDB\x20");
    EXPECT_EQ(bytes.substr(316, 4), "\x01\x02\x03\x04");
    EXPECT_EQ(bytes.substr(280, 8), std::string("\0\0\x07\xD4\0\0\0\x7B", 8));
}

TEST(Chn_file_open, creates_the_trace)
{
    Stage stage;
    CHN_T chn;
    chn.name = stage.scratch.path("a.sac");
    EXPECT_TRUE(Chn_file_open(chn));
    EXPECT_TRUE(chn.fp.open);
    EXPECT_TRUE(stage.scratch.exists("a.sac"));
    chn.fp.write("bytes");
    Chn_file_close(chn);
    EXPECT_FALSE(chn.fp.open);
    EXPECT_EQ(stage.scratch.read("a.sac"), "bytes");
}

TEST(Chn_file_open, refuses_a_name_that_is_taken_at_once)
{
    Stage stage;
    CHN_T chn;
    chn.name = stage.scratch.write("a.sac", "someone else's");
    const time_t start = time(nullptr);
    EXPECT_FALSE(Chn_file_open(chn));
    EXPECT_EQ(errno, EEXIST);
    EXPECT_LT(time(nullptr) - start, 3);
    EXPECT_FALSE(chn.fp.open);
    EXPECT_EQ(stage.scratch.read("a.sac"), "someone else's");
}

TEST(Chn_file_open, a_byte_lost_ends_the_run)
{
    const Stage stage;
    expect_ending(
        [&] {
            CHN_T chn;
            chn.name = stage.scratch.path("a.sac");
            const rlimit little{4096, 4096};
            signal(SIGXFSZ, SIG_IGN);
            if (!Chn_file_open(chn) || setrlimit(RLIMIT_FSIZE, &little) != 0) _exit(99);
            chn.fp.write(std::string(5000, 'x'));
            Chn_file_close(chn);
            _exit(98);
        },
        22, "\nFile write error for '" + stage.scratch.path("a.sac") + "'");
}

TEST(Chn_file_close, does_nothing_to_a_trace_that_is_not_open)
{
    Stage stage;
    CHN_T chn;
    chn.name = stage.scratch.path("a.sac");
    Chn_file_close(chn);
    ASSERT_TRUE(Chn_file_open(chn));
    Chn_file_close(chn);
    Chn_file_close(chn);
    EXPECT_FALSE(chn.fp.open);
}

TEST(Sac_dhdr_out, appends_to_the_trace)
{
    Stage stage;
    Trace trace;
    trace.open(stage);
    Sac_dhdr_out(trace.chn);
    Sac_dhdr_out(trace.chn);
    out_close(trace.chn.fp);
    EXPECT_TRUE(same_bytes(mask_run_date(stage.scratch.read("a.sac")).substr(0, 632), trace.bytes()));
    EXPECT_EQ(stage.scratch.read("a.sac").size(), 1264U);
}

TEST(Sac_data_out, a_tie_keeps_the_first_extreme)
{
    Stage stage;
    Trace trace;
    trace.open(stage);
    trace.add({5, -3, 9, -3, 9});
    trace.add({-3, 9, 0});
    EXPECT_EQ(trace.chn.stats.min, -3.0);
    EXPECT_EQ(trace.chn.stats.min_ndx, 2U);
    EXPECT_EQ(trace.chn.stats.max, 9.0);
    EXPECT_EQ(trace.chn.stats.max_ndx, 3U);
    EXPECT_EQ(trace.chn.cnt, 8U);
    EXPECT_EQ(trace.chn.stats.sum, 23.0);
    EXPECT_EQ(trace.chn.stats.sq_sum, 295.0);
    trace.add({10, -4});
    EXPECT_EQ(trace.chn.stats.max_ndx, 9U);
    EXPECT_EQ(trace.chn.stats.min_ndx, 10U);
}

TEST(Sac_data_out, a_sample_at_the_reset_value_is_no_extreme)
{
    Stage stage;
    Trace trace;
    trace.open(stage);
    trace.add({INT32_MAX, INT32_MAX});
    EXPECT_EQ(trace.chn.stats.min, 2147483647.0);
    EXPECT_EQ(trace.chn.stats.min_ndx, 0U);
    EXPECT_EQ(trace.chn.stats.max_ndx, 1U);
    Trace low;
    low.open(stage, "b.sac");
    low.add({INT32_MIN, -INT32_MAX});
    EXPECT_EQ(low.chn.stats.max, -2147483647.0);
    EXPECT_EQ(low.chn.stats.max_ndx, 0U);
    EXPECT_EQ(low.chn.stats.min_ndx, 1U);
    EXPECT_EQ(low.chn.stats.sq_sum, 4611686018427387904.0 + 4611686014132420609.0);
}

TEST(Sac_data_out, samples_to_drop_use_up_turns_and_not_samples)
{
    Stage stage;
    Trace trace;
    trace.open(stage);
    trace.chn.trash = 3;
    trace.add({1, 2, 3, 4, 5});
    EXPECT_EQ(trace.chn.trash, 0U);
    EXPECT_EQ(trace.chn.cnt, 2U);
    trace.chn.trash = 4;
    trace.add({6, 7, 8, 9}); // all of them
    EXPECT_EQ(trace.chn.trash, 0U);
    trace.chn.trash = 6;
    trace.add({10, 11});
    EXPECT_EQ(trace.chn.trash, 4U);
    trace.add({});
    EXPECT_EQ(trace.chn.trash, 4U);
    out_close(trace.chn.fp);
    EXPECT_EQ(stage.scratch.read("a.sac"), sac_samples({1, 2}));
}

TEST(Sac_data_out, samples_beyond_the_limit_are_neither_written_nor_counted)
{
    Stage stage;
    Smp_limit = 4;
    Trace trace;
    trace.open(stage);
    trace.add({1, 2, 3});
    trace.add({4, 500, -600});
    trace.add({700});
    EXPECT_EQ(trace.chn.cnt, 4U);
    EXPECT_EQ(trace.chn.stats.sum, 10.0);
    EXPECT_EQ(trace.chn.stats.max, 4.0);
    EXPECT_EQ(trace.chn.stats.min, 1.0);
    out_close(trace.chn.fp);
    EXPECT_EQ(stage.scratch.read("a.sac"), sac_samples({1, 2, 3, 4}));
}

TEST(Sac_data_out, the_count_stops_at_the_limit_of_32_bits)
{
    Stage stage;
    Trace trace;
    trace.open(stage);
    trace.chn.cnt = 4294967294U;
    trace.add({1, 2, 3});
    EXPECT_EQ(trace.chn.cnt, 4294967295U);
    out_close(trace.chn.fp);
    EXPECT_EQ(stage.scratch.read("a.sac"), sac_samples({1}));
}

TEST(Sac_data_close, writes_the_final_header_over_the_provisional_one)
{
    Stage stage;
    Trace trace;
    trace.open(stage);
    Sac_dhdr_out(trace.chn);
    trace.add({4, 6});
    trace.evt.smp_rate = 50.0F;
    Sac_data_close(trace.chn);
    Sac s = Sac().rate(50.0F).stats(4, 6, 5);
    s.year = s.day = s.hour = s.min = s.sec = s.ms = 0;
    EXPECT_TRUE(same_bytes(mask_run_date(stage.scratch.read("a.sac")), sac_file(s, {4, 6})));
    EXPECT_FALSE(trace.chn.fp.open);
}

TEST(Sac_data_close, finishes_a_trace_that_gave_way_before)
{
    Stage stage;
    Trace trace;
    trace.open(stage);
    Sac_dhdr_out(trace.chn);
    trace.add({4, 6});
    Chn_file_close(trace.chn);
    Sac_data_close(trace.chn);
    const std::string bytes = stage.scratch.read("a.sac");
    EXPECT_EQ(bytes.size(), 640U);
    EXPECT_EQ(header_int(bytes, 79), 2);
}

TEST(Sac_data_close, opens_nothing_when_no_samples_are_wanted)
{
    Stage stage;
    Smp_limit = 0;
    Trace trace;
    trace.chn.name = stage.scratch.write("a.sac", "someone else's");
    EXPECT_EQ(shown_by([&] { Sac_data_close(trace.chn); }), "");
    EXPECT_EQ(stage.scratch.read("a.sac"), "someone else's");
}

TEST(Sac_data_close, tells_of_a_trace_that_cannot_be_opened_and_shows_its_channel)
{
    Stage stage;
    Trace trace;
    trace.open(stage);
    trace.add({1, 2, 3});
    out_write_all(); // a trace that is still collected is not opened again
    ASSERT_EQ(remove(trace.chn.name.c_str()), 0);
    stage.scratch.make_dir("a.sac");
    ASSERT_TRUE(freopen("/dev/null", "r", stdin));
    std::string told;
    const std::string asked = complained_by([&] { told = shown_by([&] { Sac_data_close(trace.chn); }); });
    EXPECT_TRUE(told.starts_with("\n!!!Could not re-open '" + trace.chn.name +
                                 "' to update header!!!\nChan structure (9A2F):\n   Ptrs chan prv =  "))
        << told;
    EXPECT_EQ(asked, "\r\nPress ENTER/RETURN to continue.");
}

TEST(IBM_float, has_a_base_16_exponent_above_six_digits)
{
    EXPECT_EQ(IBM_float(1), 0x41100000U);
    EXPECT_EQ(IBM_float(-1), 0xC1100000U);
    EXPECT_EQ(IBM_float(15), 0x41F00000U);
    EXPECT_EQ(IBM_float(16), 0x42100000U);
    EXPECT_EQ(IBM_float(100), 0x42640000U);
    EXPECT_EQ(IBM_float(-256), 0xC3100000U);
    EXPECT_EQ(IBM_float(0xFFFFFF), 0x46FFFFFFU);
    EXPECT_EQ(IBM_float(0x123456), 0x46123456U);
}

TEST(IBM_float, keeps_the_low_24_bits_and_ends_where_they_are_zero)
{
    EXPECT_EQ(IBM_float(0x7F000001), 0x41100000U);
    EXPECT_EQ(IBM_float(0), 0U);
    EXPECT_EQ(IBM_float(0x1000000), 0U);
    EXPECT_EQ(IBM_float(-0x1000000), 0U);
    EXPECT_EQ(IBM_float(INT32_MIN), 0U);
}
TEST(Sac_data_out, drops_samples_that_a_header_cannot_count_and_says_so_once)
{
    Stage stage;
    NearlyFull full(stage);
    const std::string name = stage.scratch.path("a.sac");
    EXPECT_EQ(complained_by([&] { full.trace.add({1, 2, 3}); }), "") << "the last three fit";
    EXPECT_EQ(full.trace.chn.cnt, 4294967295U);
    const std::string told = "\nNo more than 4294967295 samples fit into '" + name + "': the rest is dropped";
    EXPECT_EQ(complained_by([&] { full.trace.add({4}); }), told);
    EXPECT_EQ(complained_by([&] { full.trace.add({5, 6}); }), "") << "once is enough";
    EXPECT_EQ(full.trace.chn.cnt, 4294967295U);
    out_close(full.trace.chn.fp);
    EXPECT_TRUE(same_bytes(stage.scratch.read("a.sac"), sac_samples({1, 2, 3})));
}

TEST(Sac_data_out, keeps_what_still_fits_of_the_packet_that_is_one_too_many)
{
    Stage stage;
    NearlyFull full(stage);
    EXPECT_NE(complained_by([&] { full.trace.add({1, 2, 3, 4}); }), "");
    EXPECT_EQ(full.trace.chn.cnt, 4294967295U);
    out_close(full.trace.chn.fp);
    EXPECT_TRUE(same_bytes(stage.scratch.read("a.sac"), sac_samples({1, 2, 3})));
}

TEST(Sac_data_out, says_so_of_every_trace)
{
    Stage stage;
    for (const char* name : {"a.sac", "b.sac"}) {
        Trace trace;
        trace.open(stage, name);
        trace.chn.cnt = 4294967295U;
        EXPECT_NE(complained_by([&] { trace.add({1}); }).find(std::string(name) + "': the rest"),
                  std::string::npos);
    }
}

TEST(Sac_data_out, drops_without_a_word_what_is_beyond_a_limit_that_the_user_set)
{
    Stage stage;
    Trace trace;
    trace.open(stage);
    Smp_limit = 2;
    Smp_limit_set = true;
    EXPECT_EQ(complained_by([&] { trace.add({1, 2, 3}); }), "");
    EXPECT_EQ(trace.chn.cnt, 2U);
}
