// The listing of vx_ls: table, JSON, flags, statuses.
#include "ls/entry.h"
#include "ls/text.h"
#include "tools/ls_tree.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <limits>
#include <sys/resource.h>
#include <sys/stat.h>

using namespace ls_test;

namespace {

std::string trace_from(int hour, int min, int sec, int ms, int samples = 100,
                       const std::string& component = "9A2F-1-1")
{
    kit::Sac s = usual();
    s.hour = hour;
    s.min = min;
    s.sec = sec;
    s.ms = ms;
    s.kcmpnm = component;
    return kit::sac_file(s, std::vector<int32_t>(static_cast<size_t>(samples), 1));
}

/// The flags of a tree's traces in the order of their names, "-" for none.
std::string flags_of_all(const kit::Scratch& scratch)
{
    std::string all;
    for (const Json& trace : list(scratch)) {
        if (!all.empty()) all += " ";
        if (trace["flags"].empty()) all += "-";
        for (const Json& word : trace["flags"]) all += word.get<std::string>();
    }
    return all;
}

} // namespace

TEST(Ls_table, shows_one_line_per_trace_under_a_head_and_counts_them)
{
    const kit::Scratch s;
    s.write("out/2004_123/a.sac", finished());
    kit::Sac slow = usual();
    slow.rate(62.5F).stats(-131072, 1, 0.25F);
    slow.kstnm = "B";
    s.write("out/b.sac", kit::sac_file(slow, std::vector<int32_t>(1234, 0)));
    s.write("out/c.sac", unfinished());
    s.write("out/d.vxl", "no trace");
    const kit::Outcome run = run_ls(s, {"out"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.out, "file                station  component  start                     rate  samples  "
                       "minimum  maximum  mean  flags\n"
                       "out/2004_123/a.sac  STA01    9A2F-1-1   2004-05-02T10:15:30.250Z   100        3      "
                       " -3        5     2  -\n"
                       "out/b.sac           B        9A2F-1-1   2004-05-02T10:15:30.250Z  62.5     1234  "
                       "-131072        1  0.25  -\n"
                       "out/c.sac           STA01    9A2F-1-1   2004-05-02T10:15:30.250Z   100        0      "
                       "  -        -     -"
                       "  unfinished,overlap\n"
                       "\n"
                       "3 files, 1240 samples, 1 flagged: 1 unfinished, 1 overlap\n");
}

TEST(Ls_table, looks_at_the_working_directory_when_no_path_is_given)
{
    const kit::Scratch s;
    s.write("deep/a.sac", finished());
    const kit::Outcome run = run_ls(s, {});
    EXPECT_NE(run.out.find("\ndeep/a.sac  "), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("\n1 file, 3 samples, 0 flagged\n"), std::string::npos) << run.out;
}

TEST(Ls_table, an_empty_tree_has_a_head_and_a_count)
{
    const kit::Scratch s;
    const kit::Outcome run = run_ls(s, {});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, "file  station  component  start  rate  samples  minimum  maximum  mean  flags\n"
                       "\n"
                       "0 files, 0 samples, 0 flagged\n");
}

TEST(Ls_table, sends_no_control_characters_to_a_terminal)
{
    const kit::Scratch s;
    s.write("\033[2J\xC2\x9B\xFF.sac", with_text(finished(), 440, "\033]0;X\a\n"));
    s.write("bad\033.sac", "x");
    const kit::Outcome run = run_ls(s, {});
    EXPECT_EQ(run.out.find('\033'), std::string::npos) << run.out;
    EXPECT_EQ(run.out.find('\xC2'), std::string::npos);
    EXPECT_EQ(run.out.find('\xFF'), std::string::npos);
    EXPECT_NE(run.out.find("?[2J???.sac  ?]0;X??"), std::string::npos) << run.out;
    EXPECT_EQ(run.err, "vx_ls: bad?.sac: shorter than a SAC header: 1 bytes\n");
}

TEST(Ls_table, columns_count_characters_and_not_bytes)
{
    const kit::Scratch s;
    s.write("\xC3\xA4.sac", finished());
    s.write("bb.sac", "");
    const std::string out = run_ls(s, {}).out;
    EXPECT_NE(out.find("\n\xC3\xA4.sac   STA01"), std::string::npos) << out;
    EXPECT_NE(out.find("\nbb.sac  -    "), std::string::npos) << out;
}

TEST(Ls_json, has_these_keys_and_values)
{
    const kit::Scratch s;
    kit::Sac sac = usual();
    sac.year = 2024;
    sac.day = 2;
    sac.hour = 3;
    sac.min = 4;
    sac.sec = 5;
    sac.ms = 678;
    s.write("out/a.sac", kit::sac_file(sac, {5, -3, 4}));
    const kit::Outcome run = run_ls(s, {"--json", "out"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(Json::parse(run.out),
              Json::parse(R"([{"file": "out/a.sac", "kstnm": "STA01", "kcmpnm": "9A2F-1-1",
        "start": "2024-01-02T03:04:05.678Z", "delta": 0.01, "npts": 3, "depmin": -3, "depmax": 5, "depmen": 2,
        "flags": []}])"));
}

TEST(Ls_json, of_no_trace_is_an_empty_array)
{
    const kit::Scratch s;
    EXPECT_EQ(Json::parse(run_ls(s, {"--json"}).out), Json::array());
}

TEST(Ls_json, both_byte_orders_read_alike)
{
    const kit::Scratch s;
    s.write("x/a.sac", finished());
    s.write("y/a.sac", little_endian(finished()));
    Json big = list(s, "x"), little = list(s, "y");
    big[0].erase("file");
    little[0].erase("file");
    EXPECT_EQ(big, little);
    EXPECT_EQ(little[0]["npts"], 3);
}

TEST(Ls_json, what_is_undefined_is_null)
{
    const kit::Scratch s;
    std::string sac = finished();
    for (const SacWord word : {DELTA, DEPMIN, DEPMAX, DEPMEN}) sac = with_float(sac, word, -12345.0F);
    for (const SacWord word : {NZYEAR, NZJDAY, NZHOUR, NZMIN, NZSEC, NZMSEC, NPTS})
        sac = with_word(sac, word, static_cast<uint32_t>(-12345));
    sac = with_text(with_text(sac, 440, "-12345  "), 600, "-12345  ");
    s.write("a.sac", sac);
    EXPECT_EQ(list(s)[0], Json::parse(R"({"file": "a.sac", "kstnm": null, "kcmpnm": null, "start": null,
        "delta": null, "npts": null, "depmin": null, "depmax": null, "depmen": null,
        "flags": ["unfinished", "no-rate", "no-time"]})"));
}

TEST(Ls_json, a_sample_may_be_the_number_that_means_undefined)
{
    const kit::Scratch s;
    s.write("a.sac", with_float(finished(), DEPMIN, -12345.0F));
    EXPECT_EQ(list(s)[0]["depmin"], -12345);
}

TEST(Ls_json, numbers_come_back_to_the_bit)
{
    for (const uint32_t bits :
         {0x3C23D70AU, 0x00000001U, 0x7F7FFFFFU, 0x3EAAAAABU, 0xCB18967FU, 0x80000000U}) {
        const kit::Scratch s;
        s.write("a.sac", with_word(with_word(finished(), DEPMEN, bits), DELTA, bits));
        const std::string out = run_ls(s, {"--json"}).out;
        for (const char* key : {"depmen", "delta"}) {
            const float value = std::strtof(out.c_str() + out.find(key) + strlen(key) + 2, nullptr);
            EXPECT_EQ(memcmp(&value, &bits, 4), 0) << out;
        }
    }
}

TEST(Ls_json, infinity_and_NaN_are_null)
{
    for (const float value : {std::numeric_limits<float>::infinity(), std::nanf("")}) {
        const kit::Scratch s;
        std::string sac = finished();
        for (const SacWord word : {DELTA, DEPMIN, DEPMAX, DEPMEN}) sac = with_float(sac, word, value);
        s.write("a.sac", sac);
        const Json trace = list(s)[0];
        for (const char* key : {"delta", "depmin", "depmax", "depmen"})
            EXPECT_TRUE(trace[key].is_null()) << key;
        EXPECT_EQ(trace["flags"], Json({"no-rate"}));
    }
}

TEST(Ls_json, every_byte_in_texts_and_names_leaves_it_valid)
{
    const kit::Scratch s;
    s.write("\xE4\"\\\n.sac", with_text(finished(), 440, "\xC3\xA4\xFF\"\\\x01\x7F."));
    const Json trace = list(s)[0];
    EXPECT_EQ(trace["file"], "\xC3\xA4\"\\\n.sac"); // the Latin-1 character of the byte
    EXPECT_EQ(trace["kstnm"], "\xC3\xA4\xC3\xBF\"\\\x01\x7F.");
    EXPECT_EQ(trace["file_hex"], "e4225c0a2e736163");
}

TEST(Ls_json, every_name_comes_back_to_the_byte)
{
    const kit::Scratch s;
    kit::Tree names;
    for (int i = 1; i < 256; ++i) {
        const std::string name = std::string("x") + static_cast<char>(i) + "\xC3\xA9.sac";
        if (i != '/') names[name] = "";
    }
    names["d/\xC3.SAC"] = "";
    for (const auto& [name, bytes] : names) s.write(name, finished());
    kit::Tree told;
    for (const Json& trace : list(s)) {
        const std::string hex = trace.value("file_hex", "");
        std::string name = hex.empty() ? trace["file"].get<std::string>() : "";
        for (size_t at = 0; at < hex.size(); at += 2)
            name += static_cast<char>(std::stoi(hex.substr(at, 2), nullptr, 16));
        EXPECT_EQ(hex.empty(), ls::is_utf8(name)) << hex;
        told[name] = "";
    }
    EXPECT_EQ(told, names);
}

TEST(Ls_json, all_bytes_one_after_the_other_leave_it_valid)
{
    const kit::Scratch s;
    for (int i = 1; i < 256; ++i) {
        std::string text = "........";
        text[2] = static_cast<char>(i);
        s.write("d/" + std::to_string(i) + ".sac", with_text(finished(), 440, text));
    }
    EXPECT_EQ(list(s).size(), 255U);
}

TEST(Ls_text, no_UTF_8_is_what_is_too_long_a_surrogate_or_too_large)
{
    for (const char* bad : {"\xC0\x80", "\xE0\x9F\xBF", "\xED\xA0\x80", "\xF0\x8F\xBF\xBF",
                            "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xC3", "\xE2\x82", "\x80"})
        EXPECT_EQ(ls::printable(bad), std::string(strlen(bad), '?'))
            << Json(std::string(bad)).dump(-1, ' ', true, Json::error_handler_t::replace);
    for (const char* good : {"\x7E", "\xC2\xA0", "\xDF\xBF", "\xE0\xA0\x80", "\xED\x9F\xBF", "\xEF\xBF\xBF",
                             "\xF0\x90\x80\x80", "\xF4\x8F\xBF\xBF"}) {
        EXPECT_EQ(ls::printable(good), good);
        EXPECT_EQ(ls::width(good), 1U);
        EXPECT_EQ(ls::json_string(good), '"' + std::string(good) + '"');
    }
}

TEST(Ls_text, marks_that_turn_the_direction_of_writing_are_not_shown)
{
    for (const char* mark : {"\xD8\x9C", "\xE2\x80\x8E", "\xE2\x80\x8F", "\xE2\x80\xAA", "\xE2\x80\xAE",
                             "\xE2\x81\xA6", "\xE2\x81\xA9"})
        EXPECT_EQ(ls::printable(mark), std::string(strlen(mark), '?')) << mark;
    for (const char* good : {"\xE2\x80\x8D", "\xE2\x80\x90", "\xE2\x80\xA9", "\xE2\x80\xAF", "\xE2\x81\xA5",
                             "\xE2\x81\xAA", "\xE2\x82\xAC", "\xD8\x9B"})
        EXPECT_EQ(ls::printable(good), good);
}

TEST(Ls_flags, a_good_trace_has_none)
{
    EXPECT_EQ(flags_of(finished()), "[]");
}

TEST(Ls_flags, unfinished_is_a_header_that_counts_nothing_before_samples)
{
    EXPECT_EQ(flags_of(unfinished()), R"(["unfinished"])");
    EXPECT_EQ(flags_of(with_word(unfinished(), NPTS, static_cast<uint32_t>(-12345))), R"(["unfinished"])");
    EXPECT_EQ(flags_of(unfinished() + "x"), R"(["unfinished","cut"])");
}

TEST(Ls_flags, empty_is_a_header_alone_that_counts_nothing)
{
    EXPECT_EQ(flags_of(unfinished().substr(0, 632)), R"(["empty"])");
}

TEST(Ls_flags, cut_is_shorter_than_said_by_as_little_as_a_byte)
{
    EXPECT_EQ(flags_of(finished().substr(0, 643)), R"(["cut"])");
    EXPECT_EQ(flags_of(finished().substr(0, 632)), R"(["cut"])");
    EXPECT_EQ(flags_of(finished().substr(0, 631)), R"(["cut"])");
    EXPECT_EQ(flags_of(""), R"(["cut"])");
    EXPECT_EQ(flags_of(with_word(finished(), NPTS, 0xFFFFFFFF)), R"(["cut"])");
    EXPECT_EQ(flags_of(with_word(finished(), NPTS, 0x40000003)),
              R"(["cut"])"); // 12 bytes, counted in 32 bits
    EXPECT_EQ(flags_of(with_word(finished(), NPTS, 0x80000003)), R"(["cut"])");
}

TEST(Ls_flags, extra_is_longer_than_said)
{
    EXPECT_EQ(flags_of(finished() + "x"), R"(["extra"])");
    EXPECT_EQ(flags_of(with_word(finished(), NPTS, 2)), R"(["extra"])");
}

TEST(Ls_flags, no_rate_is_an_interval_undefined_or_zero)
{
    EXPECT_EQ(flags_of(with_float(finished(), DELTA, -12345.0F)), R"(["no-rate"])");
    EXPECT_EQ(flags_of(with_float(finished(), DELTA, 0.0F)), R"(["no-rate"])");
}

TEST(Ls_flags, no_time_is_a_start_that_is_no_date)
{
    EXPECT_EQ(flags_of(with_word(finished(), NZJDAY, 367)), R"(["no-time"])");
}

TEST(Ls_flags, qc_reset_tells_that_statistics_left_the_header)
{
    const kit::Scratch s;
    s.write("a.sac", with_word(unfinished(), NPTS, 3));
    const Json trace = list(s)[0];
    EXPECT_EQ(trace["flags"], Json({"qc-reset"}));
    EXPECT_TRUE(trace["depmin"].is_null() && trace["depmax"].is_null() && trace["depmen"].is_null());
}

TEST(Ls_flags, qc_reset_is_what_the_converter_leaves_with_statistics_on)
{
    const kit::Recording recording =
        kit::Eh().event(0).usual() + kit::Dt().event(0).samples({5, -3, 4}) + kit::Et().event(0).usual();
    const kit::Converted plain = kit::convert(recording), with_qc = kit::convert(recording, {"-QY"});
    EXPECT_EQ(list(*plain.scratch, "out")[0]["flags"].dump(), "[]");
    EXPECT_EQ(list(*plain.scratch, "out")[0]["depmax"], 5);
    EXPECT_EQ(list(*with_qc.scratch, "out")[0]["npts"], 3);
    EXPECT_EQ(list(*with_qc.scratch, "out")[0]["flags"].dump(), R"(["qc-reset"])");
}

TEST(Ls_flags, not_sac_is_listed_told_and_status_1)
{
    const kit::Scratch s;
    s.write("a.sac", finished());
    s.write("b.sac", std::string(1000, 'x'));
    ASSERT_EQ(mkfifo(s.path("c.sac").c_str(), 0666), 0);
    const kit::Outcome run = run_ls(s, {"--json"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "vx_ls: b.sac: not a SAC file\nvx_ls: c.sac: not a SAC file\n");
    const Json all = Json::parse(run.out);
    ASSERT_EQ(all.size(), 3U);
    EXPECT_EQ(all[1]["flags"], Json({"not-sac"}));
    EXPECT_EQ(all[1]["npts"], nullptr);
    EXPECT_EQ(all[2]["flags"], Json({"not-sac"}));
}

TEST(Ls_flags, what_cannot_be_read_is_listed_told_and_status_1)
{
    const kit::Scratch s;
    std::filesystem::create_symlink("nowhere", s.path("a.sac"));
    const kit::Outcome run = run_ls(s, {"--json"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "vx_ls: a.sac: No such file or directory\n");
    EXPECT_EQ(Json::parse(run.out)[0]["flags"], Json({"unreadable"}));
}

TEST(Ls_flags, files_and_directories_without_permission_are_told)
{
    const kit::Scratch s;
    s.write("t/a.sac", finished());
    s.write("t/b.sac", finished());
    s.make_dir("t/closed");
    chmod(s.dir().c_str(), 0755);
    chmod(s.path("t/b.sac").c_str(), 0);
    chmod(s.path("t/closed").c_str(), 0);
    std::filesystem::copy_file(VX_LS_PROGRAM, s.path("vx_ls")); // where nobody can get at it
    kit::RunOptions nobody;
    nobody.program = s.path("vx_ls");
    nobody.as_nobody = true;
    nobody.argv0 = "vx_ls";
    const kit::Outcome run = kit::run_vx(s.dir(), {"--json", "t"}, nobody);
    chmod(s.path("t/closed").c_str(), 0755);
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "vx_ls: t/closed/: Permission denied\nvx_ls: t/b.sac: Permission denied\n");
    EXPECT_EQ(Json::parse(run.out).size(), 2U);
}

TEST(Ls_gaps, follow_the_channel_and_not_the_order_of_names)
{
    const kit::Scratch s; // a second each
    s.write("a.sac", trace_from(10, 0, 3, 0));
    s.write("b.sac", trace_from(10, 0, 0, 0));
    s.write("c.sac", trace_from(10, 0, 1, 0));
    s.write("d.sac", trace_from(10, 0, 3, 500));
    EXPECT_EQ(flags_of_all(s), "gap - - overlap");
}

TEST(Ls_gaps, leave_half_a_sample_and_no_more)
{
    for (const auto& [ms, flags] : std::vector<std::pair<int, std::string>>{
             {0, "- -"}, {5, "- -"}, {6, "- gap"}, {995, "- -"}, {994, "- overlap"}}) {
        const kit::Scratch s;
        s.write("a.sac", trace_from(10, 0, 0, 0));
        s.write("b.sac", trace_from(10, 0, ms < 500 ? 1 : 0, ms));
        EXPECT_EQ(flags_of_all(s), flags) << ms;
    }
}

TEST(Ls_gaps, leave_the_millisecond_that_fast_channels_cannot_tell)
{
    for (const auto& [ms, flags] : std::vector<std::pair<int, std::string>>{{1, "- -"}, {2, "- gap"}}) {
        const kit::Scratch s;
        const std::string fast = with_float(trace_from(10, 0, 0, 0), DELTA, 0.0005F); // 50 ms
        s.write("a.sac", fast);
        s.write("b.sac", with_word(fast, NZMSEC, static_cast<uint32_t>(50 + ms)));
        EXPECT_EQ(flags_of_all(s), flags) << ms;
    }
}

TEST(Ls_gaps, rounding_of_the_interval_makes_none_in_days_of_samples)
{
    const kit::Scratch s;
    kit::Sac day = usual();
    day.rate(200);
    day.hour = day.min = day.sec = day.ms = 0;
    day.npts = 17280000;
    s.write("a.sac", kit::sac_header(day));
    std::filesystem::resize_file(s.path("a.sac"), 632 + 4 * 17280000); // no block of it is on the medium
    day.day = 124;
    s.write("b.sac", kit::sac_header(day));
    std::filesystem::resize_file(s.path("b.sac"), 632 + 4 * 17280000);
    EXPECT_EQ(flags_of_all(s), "- -");
    s.write("b.sac", with_word(kit::sac_header(day), NZMSEC, 3));
    std::filesystem::resize_file(s.path("b.sac"), 632 + 4 * 17280000);
    EXPECT_EQ(flags_of_all(s), "- gap");
}

TEST(Ls_gaps, a_long_trace_reaches_beyond_a_short_one_inside_it)
{
    const kit::Scratch s;
    s.write("a.sac", trace_from(10, 0, 0, 0, 1000));
    s.write("b.sac", trace_from(10, 0, 2, 0));
    s.write("c.sac", trace_from(10, 0, 10, 0));
    EXPECT_EQ(flags_of_all(s), "- overlap -");
}

TEST(Ls_gaps, go_by_the_samples_that_are_there)
{
    const kit::Scratch s;
    s.write("a.sac", with_word(trace_from(10, 0, 0, 0), NPTS, 0));
    s.write("b.sac", trace_from(10, 0, 1, 0));
    s.write("c.sac", trace_from(10, 0, 2, 0).substr(0, 632 + 4 * 50));
    s.write("d.sac", trace_from(10, 0, 3, 0));
    EXPECT_EQ(flags_of_all(s), "unfinished - cut gap");
}

TEST(Ls_gaps, are_not_looked_for_behind_a_trace_without_rate_or_time)
{
    const kit::Scratch s;
    s.write("a.sac", with_float(trace_from(10, 0, 0, 0), DELTA, 0));
    s.write("b.sac", trace_from(11, 0, 0, 0));
    s.write("c.sac", with_word(trace_from(12, 0, 0, 0), NZJDAY, 0));
    EXPECT_EQ(flags_of_all(s), "no-rate - no-time");
}

TEST(Ls_gaps, stay_within_station_component_stream_and_channel)
{
    const kit::Scratch s;
    s.write("a.sac", trace_from(10, 0, 0, 0));
    s.write("b.sac", trace_from(11, 0, 0, 0, 100, "9A2F-1-2"));
    s.write("c.sac", with_text(trace_from(12, 0, 0, 0), 440, "STA02   "));
    s.write("d.sac", with_text(trace_from(12, 0, 0, 0), 608, "NET     "));
    // One component in two streams: only the names tell. The second of a stream has the letter of a second
    // run.
    s.write("2004123100000000_STA01_1_1.sac", trace_from(10, 0, 0, 0, 100, "9A2F-BHZ"));
    s.write("2004123100000000_STA01_2_1.sac", trace_from(10, 0, 0, 0, 100, "9A2F-BHZ"));
    s.write("2004123100100000_STA01_1A1.sac", trace_from(10, 0, 1, 0, 100, "9A2F-BHZ"));
    s.write("2004123100200000_STA01_2_1.sac", trace_from(10, 0, 2, 0, 100, "9A2F-BHZ"));
    EXPECT_EQ(flags_of_all(s), "- - - gap - - - -");
}

TEST(Ls_gaps, know_the_stream_by_names_in_capitals_too)
{
    const kit::Scratch s;
    s.write("2004123100000000_STA01_1_1.SAC", trace_from(10, 0, 0, 0, 100, "9A2F-BHZ"));
    s.write("2004123100000000_STA01_2_1.SAC", trace_from(10, 0, 0, 0, 100, "9A2F-BHZ"));
    EXPECT_EQ(flags_of_all(s), "- -");
}

TEST(Ls_program, mistakes_on_the_command_line_are_status_2)
{
    const kit::Scratch s;
    const std::vector<kit::Args> mistakes = {{"--jsn"},
                                             {"-l"},
                                             {"--json", "--finish", "."},
                                             {"--json", "--json"},
                                             {"--finish"},
                                             {"--set-begin"},
                                             {"--set-begin", "d"},
                                             {"--set-begin", "", "."},
                                             {"--force"},
                                             {"--dry-run", "--json"},
                                             {"--force", "--set-begin", "d", "."}};
    for (const kit::Args& args : mistakes) {
        const kit::Outcome run = run_ls(s, args);
        EXPECT_EQ(run.status, 2) << args[0];
        EXPECT_EQ(run.out, "");
        EXPECT_TRUE(run.err.starts_with("vx_ls: ") && run.err.ends_with("\nTry vx_ls --help\n")) << run.err;
    }
    EXPECT_EQ(s.tree().size(), 0U);
}

TEST(Ls_program, help_and_version_are_told)
{
    const kit::Scratch s;
    const kit::Outcome help = run_ls(s, {"-h"}), version = run_ls(s, {"--version"});
    EXPECT_EQ(help.status, 0);
    EXPECT_EQ(help.out, run_ls(s, {"--help"}).out);
    EXPECT_TRUE(help.out.starts_with("Usage: vx_ls [--json] [PATH...]\n"));
    for (const ls::FlagName& flag : ls::Flag_names) EXPECT_NE(help.out.find(flag.word), std::string::npos);
    EXPECT_EQ(version.status, 0);
    EXPECT_EQ(version.out, "vx_ls " VX_PROJECT_VERSION "\n");
}

TEST(Ls_program, what_follows_two_dashes_is_a_path)
{
    const kit::Scratch s;
    s.write("--json/a.sac", finished());
    const kit::Outcome run = run_ls(s, {"--json", "--", "--json"});
    EXPECT_EQ(Json::parse(run.out)[0]["file"], "--json/a.sac");
}

TEST(Ls_program, a_missing_path_is_status_1_and_the_others_are_listed)
{
    const kit::Scratch s;
    s.write("a.sac", finished());
    const kit::Outcome run = run_ls(s, {"--json", "none", "a.sac"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "vx_ls: none: No such file or directory\n");
    EXPECT_EQ(Json::parse(run.out).size(), 1U);
}

TEST(Ls_program, a_listing_that_cannot_be_written_is_status_1)
{
    if (!kit::full_device_is_there()) GTEST_SKIP() << "no /dev/full";
    const kit::Scratch s;
    kit::RunOptions full;
    full.stdout_path = "/dev/full";
    for (const char* what : {"--json", "--help", "--version", "."}) {
        const kit::Outcome run = run_ls(s, {what}, full);
        EXPECT_EQ(run.status, 1);
        EXPECT_EQ(run.err, "vx_ls: standard output: No space left on device\n");
    }
}

TEST(Ls_program, memory_does_not_grow_with_what_a_header_or_a_length_claims)
{
    const kit::Scratch s;
    s.write("a.sac", with_word(finished(), NPTS, 0x7FFFFFFF));
    s.write("b.sac", unfinished());
    std::filesystem::resize_file(s.path("b.sac"), 6'000'000'000);
    const kit::Outcome run = run_ls(s, {"--json"});
    EXPECT_EQ(run.status, 0);
    EXPECT_LT(run.peak_kb, 200000); // the sanitizers' own included
    EXPECT_EQ(Json::parse(run.out)[1]["flags"], Json({"unfinished", "overlap"}));
}
