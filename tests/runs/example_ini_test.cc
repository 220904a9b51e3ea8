// The station file that is installed as an example: every key in it is known, and a run beside it gives what
// its comments promise.
#include "runs/traces.h"

#include <algorithm>
#include <cctype>
#include <gmock/gmock.h>
#include <set>
#include <sstream>

using namespace kit;
using namespace runs;

namespace {

const std::set<std::string> Unit_keys{"Altitude",   "Latitude",   "Longitude",  "Station", "Orientation",
                                      "StatDASCnt", "StatChnCnt", "CosGeology", "CosStn"};
const std::set<std::string> Channel_keys{"FSA",      "Res",   "Band",   "Type",     "Axis",    "SnsMake",
                                         "SnsModel", "SnsSN", "SnsFSA", "SnsVPU",   "SnsFreq", "SnsDamp",
                                         "Azm",      "Depth", "Dip",    "SeisComp", "StnChn"};

std::string example()
{
    return read_file(VX_EXAMPLES "/vxu.ini");
}

std::vector<std::string> lines_of(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
}

/// What stands before the "=", without the blanks around it.
std::string key_of(const std::string& line)
{
    const std::string key = line.substr(0, line.find('='));
    return key.substr(0, key.find_last_not_of(' ') + 1);
}

bool is_entry(const std::string& line)
{
    return !line.empty() && line[0] != ';' && line[0] != '[';
}

/// The keys of the example, those of channels without their head "Ch1".
std::set<std::string> keys_used(bool of_channels)
{
    std::set<std::string> keys;
    for (const std::string& line : lines_of(example())) {
        if (!is_entry(line)) continue;
        const std::string key = key_of(line);
        const bool of_channel = key.starts_with("Ch") && key.size() > 2 && isdigit(key[2]);
        if (of_channel == of_channels) keys.insert(of_channel ? key.substr(3) : key);
    }
    return keys;
}

/// One packet of each channel under headers that tell nothing.
Converted run_beside_the_example()
{
    Recording recording = Eh().unit(0x9A3F).event(12);
    for (unsigned channel = 0; channel < 3; ++channel)
        recording += data({1, 2}).unit(0x9A3F).channel(channel);
    recording += Recording(Eh().unit(0x9A40).event(12)) + Recording(data({3}).unit(0x9A40));
    ConvertOptions options;
    options.ini = example();
    return convert(recording, {"-L-"}, options);
}

/// The whole trace of a header that told no time and no rate.
std::string trace(const std::string& station, const std::string& component, float azimuth, float dip,
                  const std::vector<int32_t>& samples)
{
    const auto [least, most] = std::minmax_element(samples.begin(), samples.end());
    float sum = 0;
    for (const int32_t sample : samples) sum += static_cast<float>(sample);
    Sac s = Sac().stats(static_cast<float>(*least), static_cast<float>(*most),
                        sum / static_cast<float>(samples.size()));
    s.kstnm = station;
    s.kcmpnm = component;
    s.cmpaz = azimuth;
    s.cmpinc = dip;
    s.year = s.day = s.hour = s.min = s.sec = s.ms = 0;
    return sac_file(s, samples);
}

} // namespace

TEST(Example_ini, uses_every_key_that_the_program_keeps_and_no_other)
{
    EXPECT_EQ(keys_used(false), Unit_keys);
    EXPECT_EQ(keys_used(true), Channel_keys);
}

TEST(Example_ini, has_no_line_that_would_be_read_in_pieces_and_no_entry_without_a_value)
{
    for (const std::string& line : lines_of(example())) {
        EXPECT_LT(line.size(), 99U) << line;
        if (!is_entry(line)) continue;
        ASSERT_NE(line.find('='), line.npos) << line;
        EXPECT_NE(line.find_first_not_of(' ', line.find('=') + 1), line.npos) << line;
    }
}

TEST(Example_ini, gives_the_traces_that_its_comments_promise)
{
    const Converted run = run_beside_the_example();
    EXPECT_EQ(run.status, 0);
    EXPECT_THAT(run.out, testing::HasSubstr("/vxu.ini\n")); // without the note that it was not found
    EXPECT_TRUE(same_tree(run.tree,
                          {
                              {"2004123101530250_QUARY_1_1.sac", trace("QUARY", "9A3F-HHZ", 0, -90, {1, 2})},
                              {"2004123101530250_QUARY_1_2.sac", trace("QUARY", "9A3F-HHN", 12, 0, {1, 2})},
                              {"2004123101530250_QUARY_1_3.sac", trace("QUARY", "9A3F-HHE", 102, 0, {1, 2})},
                              {"2004123101530250__LAKE_1_1.sac", trace(" LAKE", "9A40-1-1", 0, 0, {3})},
                          }));
}
