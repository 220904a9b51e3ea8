// What the tests of vx_check share: runs of the program, and what its JSON says.
#pragma once

#include "kit/packets.h"
#include "kit/run.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

namespace check_test {

using Json = nlohmann::json;

inline kit::Outcome run_check(const kit::Scratch& scratch, const kit::Args& args,
                              kit::RunOptions options = {})
{
    options.program = VX_CHECK_PROGRAM;
    options.argv0 = "vx_check";
    return kit::run_vx(scratch.dir(), args, options);
}

/// Fails the test unless every line fits docs/vx_check.schema.json.
inline void expect_schema(const kit::Scratch& scratch, const std::string& lines)
{
    const std::string path = scratch.write("lines.json", lines);
    const std::string rest =
        " '" VX_CHECK_SCHEMA_TEST "' '" VX_CHECK_SCHEMA "' <'" + path + "' >'" + path + ".said' 2>&1";
    int status = std::system(("python3" + rest).c_str());
    if (status == 77 * 256)
        status = std::system(("/usr/bin/python3" + rest).c_str()); // has Debian's packages
    if (status == 77 * 256 || status == 127 * 256) {
        puts("The schema is not checked: there is no jsonschema for python3");
        return;
    }
    EXPECT_EQ(status, 0) << scratch.read("lines.json.said");
}

/// The lines of vx_check --json about files of a scratch directory.
inline std::vector<Json> reports(const kit::Scratch& scratch, kit::Args args)
{
    args.insert(args.begin(), "--json");
    const kit::Outcome run = run_check(scratch, args);
    expect_schema(scratch, run.out);
    std::istringstream in(run.out);
    std::vector<Json> all;
    for (std::string line; std::getline(in, line);) all.push_back(Json::parse(line));
    return all;
}

/// The report of one recording.
inline Json report_of(const std::string& recording, kit::Args args = {})
{
    const kit::Scratch scratch;
    scratch.write("rec.pkt", recording);
    args.insert(args.begin(), "rec.pkt");
    const auto all = reports(scratch, args);
    EXPECT_EQ(all.size(), 1u);
    return all.empty() ? Json() : all[0];
}

/// "gap@5 no-trailer@9": the findings with their packets, those of the station file and the name apart.
inline std::string findings_of(const Json& report)
{
    std::string all;
    for (const Json& f : report["findings"]) {
        if (!all.empty()) all += ' ';
        all += f["code"].get<std::string>();
        if (!f["packet"].is_null()) all += "@" + std::to_string(f["packet"].get<int>());
    }
    return all;
}

/// A channel's int32 samples from one moment on, as packets of a recorder that cuts its times to
/// milliseconds.
struct Stream {
    double rate = 100;
    int64_t start_ms = 0; ///< of day 123 of 2004
    unsigned event = 12, stream = 0, channel = 0, unit = 0x9A2F, seq = 0;
    int64_t given = 0;

    /// The time of a sample, cut to milliseconds.
    int64_t ms_of(int64_t sample) const
    {
        return start_ms + static_cast<int64_t>(static_cast<double>(sample) * 1000.0 / rate + 1e-6);
    }
    static kit::Dt at(int64_t ms, kit::Dt dt)
    {
        const auto part = [&](int64_t unit_ms, int64_t full) {
            return static_cast<unsigned>(ms / unit_ms % full);
        };
        const bool leap = true; // 2004
        const int64_t day = 123 + ms / 86400000;
        const int64_t year_len = leap ? 366 : 365;
        dt.year(day > year_len ? 5 : 4).day(static_cast<unsigned>(day > year_len ? day - year_len : day));
        return dt.at(part(3600000, 24), part(60000, 60), part(1000, 60), part(1, 1000));
    }
    /// The next packet of n samples.
    kit::Dt next(int n)
    {
        kit::Dt dt;
        dt.event(event).stream(stream).channel(channel).unit(unit).seq(seq++ % 10000);
        dt.samples(std::vector<int32_t>(static_cast<size_t>(n), static_cast<int32_t>(given % 1000)));
        dt = at(ms_of(given), dt);
        given += n;
        return dt;
    }
    void skip(int n) { given += n; }
};

} // namespace check_test
