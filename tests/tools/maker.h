// What the tests of the recording maker share: a recording made in memory, and its packets.
#pragma once

#include "mkrec/mseed.h"
#include "mkrec/recording.h"
#include "packet/layout.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>
#include <unistd.h>
#include <vector>

/// A path for a file that is gone after the test.
struct ScratchFile {
    std::string path;
    ScratchFile()
    {
        std::string name = std::filesystem::temp_directory_path() / "mkrec_XXXXXX";
        const int fd = mkstemp(name.data());
        if (fd >= 0) close(fd);
        path = name;
    }
    ~ScratchFile() { std::remove(path.c_str()); }
    std::string content() const
    {
        std::ifstream in(path, std::ios::binary);
        std::ostringstream all;
        all << in.rdbuf();
        return all.str();
    }
};

inline mkrec::Survey survey_of(std::vector<std::string> args)
{
    args.push_back("OUT");
    mkrec::Options options;
    mkrec::Survey survey;
    std::string complaint;
    EXPECT_TRUE(mkrec::read_options(args, options, complaint)) << complaint;
    EXPECT_TRUE(mkrec::make_survey(options, survey, complaint)) << complaint;
    return survey;
}

inline std::string written(const mkrec::Survey& survey,
                           bool (*write)(const mkrec::Survey&, mkrec::RecordingFile&))
{
    ScratchFile file;
    mkrec::RecordingFile out;
    EXPECT_TRUE(out.open(file.path, true));
    EXPECT_TRUE(write(survey, out));
    EXPECT_TRUE(out.close());
    return file.content();
}

/// The first `n` samples of a channel.
inline std::vector<int32_t> signal_of(const mkrec::Survey& survey, const mkrec::LinePlace& place, size_t n)
{
    mkrec::SignalMaker signal(mkrec::signal_plan(survey, place));
    std::vector<int32_t> x(n);
    signal.fill(x.data(), static_cast<int>(n));
    return x;
}

inline std::string recording(const std::vector<std::string>& args)
{
    return written(survey_of(args), mkrec::write_recording);
}

/// A packet seen through the eyes of a reader who knows nothing of how it was made.
struct Seen {
    std::string_view bytes;

    std::string type() const { return std::string(bytes.substr(0, 2)); }
    std::string text(Span at) const { return std::string(bytes.substr(size_t(at.at), size_t(at.len))); }
    unsigned byte(int at) const { return static_cast<uint8_t>(bytes[size_t(at)]); }
    unsigned binary(Span at) const
    {
        unsigned v = 0;
        for (int i = 0; i < at.len; ++i) v = v << 8 | byte(at.at + i);
        return v;
    }
    std::string digits(Span at) const
    {
        std::string s;
        for (int i = 0; i < at.len; ++i) {
            s += static_cast<char>('0' + (byte(at.at + i) >> 4));
            s += static_cast<char>('0' + (byte(at.at + i) & 15));
        }
        return s;
    }
    int bcd(Span at) const { return std::stoi(digits(at)); }
    /// Milliseconds since the start of the year.
    int64_t time() const
    {
        const std::string d = digits(HDR::Time);
        const auto part = [&](size_t from, size_t len) { return std::stoll(d.substr(from, len)); };
        return (((part(0, 3) * 24 + part(3, 2)) * 60 + part(5, 2)) * 60 + part(7, 2)) * 1000 + part(9, 3);
    }
    const uint8_t* payload() const { return reinterpret_cast<const uint8_t*>(bytes.data()) + 64; }
};

inline std::vector<Seen> packets_of(const std::string& recording)
{
    EXPECT_EQ(recording.size() % 1024, 0u);
    std::vector<Seen> packets;
    for (size_t at = 0; at + 1024 <= recording.size(); at += 1024)
        packets.push_back({std::string_view(recording).substr(at, 1024)});
    return packets;
}

/// The types of all packets, a run of data packets as one "DT".
inline std::string types_of(const std::vector<Seen>& packets)
{
    std::string types;
    for (const Seen& p : packets) {
        const std::string type = p.type();
        if (type == "DT" && types.ends_with("DT ")) continue;
        types += type + " ";
    }
    return types;
}
