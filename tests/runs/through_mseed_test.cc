// Recordings with real ground motion, from outside the project, on the way that their users send them: to
// SAC, from there to miniSEED by the packaged converter, and read by the public library. No sample may
// be lost.
#include "kit/run.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <bit>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#ifdef VX_LIBMSEED
#include <libmseed.h>

namespace {

using Json = nlohmann::json;

const std::string Shared_data = VX_SHARED_DATA;

bool is_in_path(const std::string& program)
{
    return std::system(("command -v " + program + " >/dev/null 2>&1").c_str()) == 0;
}

void put_float(std::string& to, float value)
{
    const auto word = std::bit_cast<uint32_t>(value);
    for (const int shift : {24, 16, 8, 0}) to += static_cast<char>(word >> shift);
}

std::string sha256_of(const kit::Scratch& scratch, const std::string& bytes)
{
    const std::string command = "sha256sum <'" + scratch.write("samples", bytes) + "'";
    FILE* const tool = popen(command.c_str(), "r");
    if (!tool) return "";
    char digits[65] = {};
    const size_t n = fread(digits, 1, 64, tool);
    pclose(tool);
    return std::string(digits, n);
}

/// YYYYDDDHHMMSSmmm, as the traces' names begin.
std::string name_of_time(hptime_t time)
{
    BTime t;
    ms_hptime2btime(time, &t);
    char text[64];
    snprintf(text, sizeof text, "%04d%03d%02d%02d%02d%03d", t.year, t.day, t.hour, t.min, t.sec,
             t.fract / 10);
    return text;
}

/// One trace, to miniSEED and read again, against what an independent tool read out of the first miniSEED.
void check_trace(const kit::Converted& run, const Json& expected)
{
    const std::string name = expected.at("file"), component = expected.at("kcmpnm");
    SCOPED_TRACE(name);
    const std::string sac = run.scratch->path("out/" + name), mseed = run.scratch->path("trace.mseed");
    std::filesystem::remove(mseed);
    const std::string command = "sac2mseed -n XX -c " + component.substr(5) + " -s 1 -o '" + mseed + "' '" +
                                sac + "' >'" + run.scratch->path("told") + "' 2>&1";
    ASSERT_EQ(std::system(command.c_str()), 0) << run.scratch->read("told");

    MSTraceGroup* group = nullptr;
    ASSERT_EQ(ms_readtraces(&group, mseed.c_str(), 0, -1.0, -1.0, 0, 1, 1, 0), MS_NOERROR);
    EXPECT_EQ(group->numtraces, 1);
    const MSTrace& trace = *group->traces;
    EXPECT_EQ(trace.channel, component.substr(5));
    EXPECT_EQ(name_of_time(trace.starttime), name.substr(0, 16));
    EXPECT_FLOAT_EQ(static_cast<float>(trace.samprate), expected.at("rate").get<float>());
    EXPECT_EQ(trace.sampletype, 'i');
    std::string bytes;
    for (int64_t i = 0; i < trace.numsamples; ++i)
        put_float(bytes, static_cast<float>(static_cast<const int32_t*>(trace.datasamples)[i]));
    EXPECT_EQ(bytes.size(), 4 * expected.at("npts").get<size_t>());
    EXPECT_EQ(sha256_of(*run.scratch, bytes), expected.at("sha256"));
    mst_freegroup(&group);
}

} // namespace

TEST(Through_mseed, every_sample_of_the_real_recordings_comes_through)
{
    if (!std::filesystem::exists(Shared_data + "/manifest.json"))
        GTEST_SKIP() << "left out: there are no real recordings at " << Shared_data;
    if (!is_in_path("sac2mseed")) GTEST_SKIP() << "left out: there is no sac2mseed (scripts/setup cookbook)";
    size_t traces = 0;
    for (const Json& recording : Json::parse(kit::read_file(Shared_data + "/manifest.json"))) {
        kit::ConvertOptions options;
        options.run.env = {"VXU==" + Shared_data + "/vxu.ini"};
        const std::string name = recording.at("recording");
        const kit::Converted run = kit::convert(kit::read_file(Shared_data + "/" + name), {}, options);
        ASSERT_EQ(run.status, 0);
        for (const Json& trace : recording.at("sac")) {
            check_trace(run, trace);
            ++traces;
        }
    }
    EXPECT_GT(traces, 0U);
}

#endif
