// Where traces go and what they are called: directory levels, station or unit, the letters of taken names.
#include "runs/traces.h"

#include <sys/stat.h>
#include <thread>
#include <unistd.h>

using namespace kit;
using namespace runs;

namespace {

std::string lettered(char letter)
{
    return std::string("2004123101530250_STA01_1") + letter + "1.sac";
}

/// The names of the traces that packets of event 12 make behind a header with usual() values.
std::string trace_names(const Recording& packets, const Args& args = {})
{
    std::string all;
    for (const std::string& name : convert(Eh().event(12).usual() + packets, args).sac_names())
        all += name + "\n";
    return all;
}

/// The same for one packet of channel 1 behind a header with this station.
std::string name_for_station(const std::string& five, const Args& args = {})
{
    return convert(Eh().event(12).usual().station(five) + data({1}), args).sac_names().at(0);
}

/// A directory in which the given traces stand already, each with its own name for bytes.
std::shared_ptr<Scratch> with_traces(const std::vector<std::string>& names)
{
    auto scratch = std::make_shared<Scratch>();
    scratch->write("rec.pkt", one_event(12, {1, 2}));
    scratch->make_dir("out");
    for (const std::string& name : names) scratch->write("out/" + name, name);
    return scratch;
}

std::vector<std::string> plain_and(const std::string& letters)
{
    std::vector<std::string> names = {Name_1_1};
    for (char c : letters) names.push_back(lettered(c));
    return names;
}

} // namespace

TEST(Naming, a_name_has_time_station_stream_and_channel)
{
    EXPECT_EQ(trace_names(data({1})), "2004123101530250_STA01_1_1.sac\n");
    EXPECT_EQ(trace_names(data({1}).stream(1).channel(2).day(7).at(1, 2, 3, 4)),
              "2004007010203004_STA01_2_3.sac\n");
}

TEST(Naming, channels_are_counted_in_hexadecimal_digits)
{
    EXPECT_EQ(trace_names(data({1}).channel(8)), "2004123101530250_STA01_1_9.sac\n");
    EXPECT_EQ(trace_names(data({1}).channel(9)), "2004123101530250_STA01_1_A.sac\n");
    EXPECT_EQ(trace_names(data({1}).channel(15)), "2004123101530250_STA01_1_10.sac\n");
    EXPECT_EQ(trace_names(data({1}).channel(99)), "2004123101530250_STA01_1_64.sac\n");
}

TEST(Naming, streams_are_counted_in_decimal_digits)
{
    EXPECT_EQ(trace_names(data({1}).stream(8)), "2004123101530250_STA01_9_1.sac\n");
    EXPECT_EQ(trace_names(data({1}).stream(9)), "2004123101530250_STA01_10_1.sac\n");
    EXPECT_EQ(trace_names(data({1}).raw(18, "\xFF")), "2004123101530250_STA01_166_1.sac\n");
}

TEST(Naming, the_stream_of_a_channel_is_that_of_its_first_packet)
{
    EXPECT_EQ(trace_names(data({1}).stream(3) + data({2}).stream(4)), "2004123101530250_STA01_4_1.sac\n");
}

TEST(Naming, blanks_of_a_station_become_underscores)
{
    EXPECT_EQ(name_for_station("A B C"), "2004123101530250_A_B_C_1_1.sac");
    EXPECT_EQ(name_for_station("AB   "), "2004123101530250_AB____1_1.sac");
    ConvertOptions options;
    options.ini = "[9A2F]\nStation=AB\n";
    EXPECT_EQ(convert(Eh().event(12) + data({1}), {}, options).sac_names().at(0),
              "2004123101530250____AB_1_1.sac");
}

TEST(Naming, the_fifth_letter_of_a_station_stands_before_the_other_four)
{
    EXPECT_EQ(convert(Eh().event(12).usual().raw(59, "XSTA1") + data({1})).sac_names().at(0),
              "2004123101530250_STA1X_1_1.sac");
}

TEST(Naming, a_station_that_ends_at_a_NUL_is_aligned_right)
{
    EXPECT_EQ(name_for_station(std::string("AB\0CD", 5)), "2004123101530250____AB_1_1.sac");
}

TEST(Naming, a_station_of_five_blanks_gives_way_to_the_unit)
{
    ConvertOptions options;
    options.ini = "[9A2F]\nStation=\n";
    const Converted run = convert(Eh().event(12).usual().station("     ") + data({1}), {"-L-"}, options);
    Sac s = usual_trace().stats(1, 1, 1);
    s.kstnm = "     ";
    EXPECT_TRUE(same_tree(run.tree, {{"2004123101530250_09A2F_1_1.sac", sac_file(s, {1})}}));
}

TEST(Naming, without_any_station_the_name_is_the_units_in_five_digits)
{
    EXPECT_EQ(convert(Eh().unit(0x00AB).event(12) + data({1}).unit(0x00AB)).sac_names().at(0),
              "2004123101530250_000AB_1_1.sac");
    EXPECT_EQ(convert(Eh().unit(0).event(12) + data({1}).unit(0)).sac_names().at(0),
              "2004123101530250_0FFFF_1_1.sac");
}

TEST(Naming, the_unit_takes_the_stations_place_when_asked_for)
{
    EXPECT_EQ(name_for_station("STA01", {"-N1"}), "2004123101530250_09A2F_1_1.sac");
    EXPECT_EQ(name_for_station("STA01", {"-Ni"}), "2004123101530250_09A2F_1_1.sac");
    EXPECT_EQ(name_for_station("STA01", {"-NA"}), "2004123101530250_STA01_1_1.sac");
}

TEST(Naming, a_zero_filled_header_leaves_an_empty_station)
{
    const Converted run =
        convert(Eh().unit(0x9F2A).event(12).fill(24, 1024, '\0') + data({1, 2}).unit(0x9F2A), {"-L-"});
    Sac s = Sac().stats(1, 2, 1.5f);
    s.kstnm = std::string("9F2A\0005  ", 8);
    s.kcmpnm = std::string("9F2A-\0\0\0", 8);
    EXPECT_TRUE(same_tree(run.tree, {{"2004123101530250_______1_1.sac", sac_file(s, {1, 2})}}));
}

TEST(Naming, odd_letters_of_a_station_go_into_the_name_as_they_are)
{
    EXPECT_EQ(name_for_station("\x01\xFF%s\n"), "2004123101530250_\x01\xFF%s\n_1_1.sac");
    EXPECT_EQ(name_for_station(".."), "2004123101530250_..____1_1.sac");
}

TEST(Naming, a_slash_in_a_station_ends_the_run_and_leaves_the_output_path_alone)
{
    const Converted run = convert(Eh().event(12).usual().station("../ab") + data({1}));
    EXPECT_EQ(run.status, 20);
    EXPECT_GE(run.seconds, 4.9);
    EXPECT_TRUE(ends_with(run.out,
                          "\n\nERROR!!!!\n   unable to open out/2004123101530250_../ab_1_1.sac for output."));
    EXPECT_EQ(names(run.scratch->tree()), "out/\nout/ID9A2F.vxl\nout/rec.vxl\nrec.pkt\n");
    EXPECT_EQ(run_log(run), head_line(event_line("EH", "0012", 0)) + head_line(data_line("0012", 1, 1)));
}

TEST(Naming, path_levels_are_built_from_the_time_of_the_packet)
{
    const std::string name = "2004123101530250_STA01_1_1.sac\n";
    EXPECT_EQ(trace_names(data({1}), {"-P0"}), name);
    EXPECT_EQ(trace_names(data({1}), {"-P1"}), "2004_123/" + name);
    EXPECT_EQ(trace_names(data({1}), {"-P2"}), "2004_123/10/" + name);
    EXPECT_EQ(trace_names(data({1}), {"-P3"}), "2004_123/10_15/" + name);
    EXPECT_EQ(trace_names(data({1}), {"-P4"}), "2004_123/10_15_30/" + name);
}

TEST(Naming, each_channel_has_the_directory_of_its_own_first_packet_and_stays_there)
{
    EXPECT_EQ(trace_names(data({1}) + data({1}).channel(1).day(124).at(0, 0, 0, 0) +
                              data({2}).at(11, 0, 0, 0) + data({2}).channel(1).day(124).at(1, 0, 0, 0) +
                              data({3}),
                          {"-P2"}),
              "2004_123/10/2004123101530250_STA01_1_1.sac\n2004_124/00/2004124000000000_STA01_1_2.sac\n");
}

TEST(Naming, directories_and_logs_are_all_that_stands_beside_the_traces)
{
    const Converted run = convert(in_event(data({1, 2})), {"-P3"});
    EXPECT_EQ(names(run.tree), "2004_123/\n2004_123/10_15/\n2004_123/10_15/2004123101530250_STA01_1_1.sac\n"
                               "ID9A2F.vxl\nrec.vxl\n");
    EXPECT_TRUE(
        same_bytes(mask_run_date(only_trace(run)), sac_file(usual_trace().stats(1, 2, 1.5f), {1, 2})));
}

TEST(Naming, a_file_in_place_of_a_directory_is_an_error_told_by_the_traces_name)
{
    Scratch scratch;
    scratch.write("rec.pkt", in_event(data({1})));
    scratch.write("out/2004_123", "a file");
    const Outcome run = run_vx(scratch.dir(), {"rec.pkt", "out", "-P1", "-L-"});
    EXPECT_EQ(run.status, 20);
    EXPECT_TRUE(ends_with(
        run.out, "\n\nERROR!!!!\n   unable to open out/2004_123/2004123101530250_STA01_1_1.sac for output."));
    EXPECT_EQ(scratch.read("out/2004_123"), "a file");
}

TEST(Naming, no_samples_wanted_means_directories_without_traces)
{
    const Converted run = convert(in_event(data({1})), {"-S0", "-P2"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(names(run.tree), "2004_123/\n2004_123/10/\nID9A2F.vxl\nrec.vxl\n");
}

TEST(Naming, a_second_run_puts_letters_into_its_names)
{
    const Converted first = convert(in_event(data({1}) + data({2}).channel(2)), {"-L-"});
    const Converted second = convert_again(first, in_event(data({3}) + data({4}).channel(2)), {"-L-"});
    const Converted third = convert_again(first, in_event(data({5})), {"-L-"});
    const auto trace = [](int32_t sample, const char* component) {
        const float x = static_cast<float>(sample);
        Sac s = usual_trace().stats(x, x, x);
        s.kcmpnm = component;
        return sac_file(s, {sample});
    };
    EXPECT_EQ(third.status, 0);
    EXPECT_TRUE(same_tree(third.tree, {{"2004123101530250_STA01_1_1.sac", trace(1, "9A2F-1-1")},
                                       {"2004123101530250_STA01_1_3.sac", trace(2, "9A2F-1-3")},
                                       {"2004123101530250_STA01_1A1.sac", trace(3, "9A2F-1-1")},
                                       {"2004123101530250_STA01_1A3.sac", trace(4, "9A2F-1-3")},
                                       {"2004123101530250_STA01_1B1.sac", trace(5, "9A2F-1-1")}}));
}

TEST(Naming, the_letter_stands_at_one_place_whatever_it_replaces)
{
    const auto again = [](unsigned stream) {
        Scratch scratch;
        scratch.write("rec.pkt",
                      Eh().event(12).usual() + data({1}).raw(18, std::string(1, static_cast<char>(stream))));
        scratch.make_dir("out");
        run_vx(scratch.dir(), {"rec.pkt", "out", "-L-"});
        EXPECT_EQ(run_vx(scratch.dir(), {"rec.pkt", "out", "-L-"}).status, 0);
        return names(scratch.tree("out"));
    };
    EXPECT_EQ(again(0x09), "2004123101530250_STA01_10_1.sac\n2004123101530250_STA01_1A_1.sac\n");
    EXPECT_EQ(again(0xFF), "2004123101530250_STA01_166_1.sac\n2004123101530250_STA01_1A6_1.sac\n");
}

TEST(Naming, letters_go_up_to_X)
{
    const auto scratch = with_traces(plain_and("ABCDEFGHIJKLMNOPQRSTUVW"));
    const Outcome run = run_vx(scratch->dir(), {"rec.pkt", "out", "-L-"});
    EXPECT_EQ(run.status, 0);
    EXPECT_TRUE(same_bytes(mask_run_date(scratch->read("out/" + lettered('X'))),
                           sac_file(usual_trace().stats(1, 2, 1.5f), {1, 2})));
    EXPECT_EQ(scratch->tree("out").size(), 25U);
}

TEST(Naming, any_free_letter_in_between_is_taken)
{
    const auto scratch = with_traces(plain_and("ABCDEGHIJKLMNOPQRSTUVWX"));
    EXPECT_EQ(run_vx(scratch->dir(), {"rec.pkt", "out", "-L-"}).status, 0);
    EXPECT_EQ(scratch->read("out/" + lettered('F')).size(), 640U);
    EXPECT_EQ(scratch->read("out/" + lettered('G')), lettered('G'));
}

TEST(Naming, with_25_names_taken_the_run_ends_and_Y_and_Z_stay_free)
{
    const std::vector<std::string> taken = plain_and("ABCDEFGHIJKLMNOPQRSTUVWX");
    for (const Args& args : {Args{"rec.pkt", "out"}, Args{"rec.pkt", "out", "-S0"}}) {
        const auto scratch = with_traces(taken);
        const Outcome run = run_vx(scratch->dir(), args);
        EXPECT_EQ(run.status, 23);
        EXPECT_LT(run.seconds, 4);
        EXPECT_TRUE(ends_with(run.out, "\n\nERROR!!!!!\n   Unable to create an unique filename."));
        EXPECT_FALSE(scratch->exists("out/" + lettered('Y')));
        EXPECT_FALSE(scratch->exists("out/" + lettered('Z')));
        const Tree tree = scratch->tree("out");
        EXPECT_EQ(tree.size(), 27U) << names(tree); // and two logs
        for (const std::string& name : taken) EXPECT_EQ(tree.at(name), name);
        const std::string log = scratch->read("out/rec.vxl");
        EXPECT_TRUE(ends_with(log, head_line(data_line("0012", 2, 1)))) << log;
    }
}

TEST(Naming, anything_that_stands_at_a_name_takes_it)
{
    Scratch scratch;
    scratch.write("rec.pkt", one_event(12, {1, 2}));
    scratch.make_dir("out/" + std::string(Name_1_1)); // a directory
    scratch.write("elsewhere", "precious");
    ASSERT_EQ(symlink("../elsewhere", scratch.path("out/" + lettered('A')).c_str()), 0);
    ASSERT_EQ(symlink("../nowhere", scratch.path("out/" + lettered('B')).c_str()), 0);
    EXPECT_EQ(run_vx(scratch.dir(), {"rec.pkt", "out", "-L-"}).status, 0);
    EXPECT_TRUE(same_bytes(mask_run_date(scratch.read("out/" + lettered('C'))),
                           sac_file(usual_trace().stats(1, 2, 1.5f), {1, 2})));
    EXPECT_EQ(scratch.read("elsewhere"), "precious");
    EXPECT_FALSE(scratch.exists("nowhere"));
}

TEST(Naming, a_link_to_nowhere_is_never_followed)
{
    Scratch scratch;
    scratch.write("rec.pkt", one_event(12, {1, 2}));
    scratch.make_dir("out");
    for (const std::string& name : plain_and("ABCDEFGHIJKLMNOPQRSTUVWX"))
        ASSERT_EQ(symlink("../nowhere", scratch.path("out/" + name).c_str()), 0);
    EXPECT_EQ(run_vx(scratch.dir(), {"rec.pkt", "out", "-L-"}).status, 23);
    EXPECT_FALSE(scratch.exists("nowhere"));
}

TEST(Naming, runs_at_the_same_time_in_one_directory_never_share_a_trace)
{
    constexpr int Runs = 4, Traces = 60;
    Scratch scratch;
    scratch.make_dir("out");
    for (int r = 0; r < Runs; ++r) {
        Recording recording;
        for (unsigned n = 0; n < Traces; ++n)
            recording += one_event(n + 1, std::vector<int32_t>(200, 300 * r + static_cast<int32_t>(n % 20)));
        // Three events of each run have the same time, so that letters are fought over.
        for (unsigned n = 0; n < Traces; ++n)
            for (unsigned p = 0; p < 3; ++p)
                recording.replace(1024 * (3 * n + p) + 6, 6, packed_time(n % 20 + 1, 1, 2, 3, 4));
        scratch.write("rec" + std::to_string(r) + ".pkt", recording);
    }
    std::vector<Outcome> outcomes(Runs);
    std::vector<std::thread> threads;
    for (int r = 0; r < Runs; ++r) {
        threads.emplace_back([&, r] {
            outcomes[static_cast<size_t>(r)] =
                run_vx(scratch.dir(), {"rec" + std::to_string(r) + ".pkt", "out", "-L-"});
        });
    }
    for (std::thread& t : threads) t.join();
    for (const Outcome& run : outcomes) EXPECT_EQ(run.status, 0) << run.out;

    const Tree tree = scratch.tree("out");
    EXPECT_EQ(tree.size(), static_cast<size_t>(Runs * Traces)) << names(tree);
    std::map<std::string, int> seen; // bytes of a trace, and how often
    for (const auto& [name, bytes] : tree) ++seen[mask_run_date(bytes)];
    for (int r = 0; r < Runs; ++r) {
        for (int32_t n = 0; n < 20; ++n) {
            const int32_t value = 300 * r + n;
            const float x = static_cast<float>(value);
            EXPECT_EQ(seen[sac_file(usual_trace().stats(x, x, x), std::vector<int32_t>(200, value))], 3)
                << value;
        }
    }
}
