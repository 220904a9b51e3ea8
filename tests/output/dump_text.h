// What a dump writes for one packet, as text, and expected texts that are easy to read.
#pragma once

#include "driver/base/fatal.h"
#include "kit/packets.h"
#include "kit/scratch.h"
#include "output/dump.h"

#include <gtest/gtest.h>
#include <string>
#include <string_view>

using Dump = void(OUT_FILE& log, const PACKET& pkt);

/// The bytes that a dump leaves in a log of its own.
inline std::string dumped(Dump* dump, const std::string& packet)
{
    const kit::Scratch scratch;
    const std::string name = scratch.path("log");
    // A copy without anything behind its last byte: the sanitizers see a step past the packet's end.
    const std::vector<uint8_t> bytes(packet.begin(), packet.end());
    const PACKET pkt(bytes.data());
    OUT_FILE log;
    if (!out_open(log, name.c_str(), OUT_MODE::truncate, log_lost)) {
        ADD_FAILURE() << "no log at " << name;
        return {};
    }
    dump(log, pkt);
    out_close(log);
    return scratch.read("log");
}

/// Every "\n" as the "\r\n" that ends the lines of a log.
inline std::string crlf(std::string_view lines)
{
    std::string text;
    for (const char c : lines) {
        if (c == '\n') text += '\r';
        text += c;
    }
    return text;
}
