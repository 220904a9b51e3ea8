// A packet's hexadecimal dump as a log must show it, coded a second time.
#pragma once

#include <cstdio>
#include <string>

namespace kit {

/// Lines of 16 bytes up to `count`; the last line is complete even if it goes beyond. Every line has its
/// offset, two groups of eight digit pairs and the characters.
inline std::string hex_lines(const std::string& packet, size_t count = 1024)
{
    std::string lines;
    for (size_t at = 0; at < count; at += 16) {
        char piece[24];
        snprintf(piece, sizeof piece, "     %03X   ", static_cast<unsigned>(at));
        lines += piece;
        std::string characters;
        for (size_t i = 0; i < 16; ++i) {
            const unsigned char c = static_cast<unsigned char>(packet.at(at + i));
            snprintf(piece, sizeof piece, "%02X ", static_cast<unsigned>(c));
            lines += piece;
            if (i == 7) lines += "- ";
            characters += c >= 32 && c <= 126 ? static_cast<char>(c) : '.';
        }
        lines += "  " + characters + "\r\n";
    }
    return lines;
}

} // namespace kit
