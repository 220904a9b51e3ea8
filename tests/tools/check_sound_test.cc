// No false alarms: sound recordings of many rates, over New Year and leap days, from vx_mkrec and by hand.
#include "tools/check_made.h"
#include "tools/check_run.h"

#include <cstdio>
#include <random>

using namespace check_test;

namespace {

/// A sound event at a rate, its times cut to milliseconds. Packets have from 1 to 250 samples.
std::string sound_event(double rate, int64_t start_ms, int packets, uint32_t seed, bool with_header)
{
    std::mt19937 chance(seed);
    char told[16];
    snprintf(told, sizeof told, "%g", rate);
    kit::Eh eh;
    eh.event(12).rate(told).station("STA01").pll_days('0');
    std::string all = with_header ? eh.packet() : "";
    Stream stream{.rate = rate, .start_ms = start_ms, .seq = 1};
    for (int i = 0; i < packets; ++i) all += stream.next(static_cast<int>(chance() % 250 + 1)).packet();
    return all;
}

std::string alarms_of(const kit::Scratch& s, const kit::Args& args)
{
    std::string all;
    for (const Json& report : reports(s, args))
        for (const Json& f : report["findings"])
            if (f["code"] != "no-trailer" && f["code"] != "no-header")
                all += report["file"].get<std::string>() + ": " + f.dump() + "\n";
    return all;
}

} // namespace

TEST(Check_sound, all_rates_from_1_to_4000)
{
    const kit::Scratch s;
    kit::Args args;
    for (int rate = 1; rate <= 4000; rate += rate < 400 ? 1 : 37) {
        args.push_back(std::to_string(rate) + ".pkt");
        s.write(args.back(), sound_event(rate, 1234567, 40, static_cast<uint32_t>(rate), true));
    }
    ASSERT_GT(args.size(), 490u);
    EXPECT_EQ(alarms_of(s, args), "");
}

TEST(Check_sound, rates_found_without_a_header)
{
    const kit::Scratch s;
    kit::Args args;
    for (const int rate : {1, 2, 5, 20, 33, 40, 100, 125, 200, 250, 300, 500, 1000, 2000, 4000}) {
        args.push_back(std::to_string(rate) + ".pkt");
        s.write(args.back(), sound_event(rate, 7654321, 200, static_cast<uint32_t>(rate), false));
    }
    EXPECT_EQ(alarms_of(s, args), "");
    for (const Json& report : reports(s, args))
        EXPECT_EQ(std::to_string(report["units"][0]["events"][0]["rate"].get<int>()) + ".pkt",
                  report["file"]);
}

TEST(Check_sound, new_year_and_leap_day)
{
    const kit::Scratch s;
    constexpr int64_t Day_ms = 86400000;
    s.write("new_year.pkt",
            sound_event(100, (366 - 123) * Day_ms + Day_ms - 20000, 100, 1, true)); // 2004 into 2005
    std::string leap;
    Stream stream{.start_ms = Day_ms - 20000, .seq = 1};
    for (int i = 0; i < 100; ++i) {
        const int64_t ms = stream.ms_of(stream.given);
        kit::Dt dt = stream.next(200);
        leap += dt.day(static_cast<unsigned>(59 + ms / Day_ms)).packet(); // 28 to 29 February 2004
    }
    s.write("leap.pkt", leap);
    EXPECT_EQ(alarms_of(s, {"new_year.pkt", "leap.pkt"}), "");
}

TEST(Check_sound, a_thousand_random_recordings_of_vx_mkrec)
{
    const kit::Scratch s;
    std::mt19937 chance(5);
    const std::vector<std::string> rates{"1", "10", "50", "100", "125", "200", "250", "500", "1000"};
    const std::vector<std::string> formats{"c0", "c2", "32", "16"};
    kit::Args args;
    for (int i = 0; i < 1000; ++i) {
        std::vector<std::string> options{"--seed",     std::to_string(i),
                                         "--units",    std::to_string(chance() % 3 + 1),
                                         "--streams",  std::to_string(chance() % 2 + 1),
                                         "--channels", std::to_string(chance() % 4 + 1),
                                         "--events",   std::to_string(chance() % 3 + 1),
                                         "--seconds",  std::to_string(chance() % 8 + 1),
                                         "--rate",     rates[chance() % rates.size()],
                                         "--format",   formats[chance() % formats.size()]};
        if (chance() % 2) options.push_back("--interleave");
        if (chance() % 3 == 0) options.push_back("--no-parameters");
        args.push_back(std::to_string(i) + ".pkt");
        s.write(args.back(), made(options));
    }
    EXPECT_EQ(run_check(s, args).status, 0);
    EXPECT_EQ(alarms_of(s, args), "");
}
