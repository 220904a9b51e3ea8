// docs/format.md as a reader takes it apart: its sections, their tables and the packet in hexadecimal.
#pragma once

#include "kit/scratch.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

namespace format_page {

/// A table below a heading: its rows without the head, each cell without the blanks and marks around it.
using Table = std::vector<std::vector<std::string>>;

/// The lines between a heading, told with its marks ("## SH..."), and the next one.
inline std::vector<std::string> section(const std::string& heading)
{
    std::istringstream page(kit::read_file(VX_FORMAT_PAGE));
    std::vector<std::string> lines;
    bool inside = false;
    for (std::string line; std::getline(page, line);) {
        if (line.starts_with('#')) inside = line == heading;
        if (inside) lines.push_back(line);
    }
    EXPECT_GT(lines.size(), 1U) << "no section " << heading;
    return lines;
}

inline std::string plain(const std::string& cell)
{
    const size_t from = cell.find_first_not_of(" `");
    return from == cell.npos ? "" : cell.substr(from, cell.find_last_not_of(" `") + 1 - from);
}

inline std::vector<std::string> cells(const std::string& line)
{
    std::vector<std::string> row;
    std::istringstream rest(line.substr(1));
    for (std::string cell; std::getline(rest, cell, '|');) row.push_back(plain(cell));
    return row;
}

/// The table of a section whose head begins with this column.
inline Table table(const std::string& heading, const std::string& first_column)
{
    Table found;
    bool inside = false;
    for (const std::string& line : section(heading)) {
        if (!line.starts_with('|')) inside = false;
        if (inside && !line.starts_with("|-")) found.push_back(cells(line));
        if (line.starts_with("| " + first_column + " |")) inside = true;
    }
    EXPECT_FALSE(found.empty()) << "no table of " << first_column << " in " << heading;
    return found;
}

/// Numbers with blanks between them.
inline std::vector<int32_t> numbers(const std::string& text)
{
    std::istringstream in(text);
    std::vector<int32_t> all;
    for (int32_t n; in >> n;) all.push_back(n);
    EXPECT_TRUE(in.eof()) << text;
    return all;
}

/// The bytes that hexadecimal digits stand for.
inline std::string bytes(const std::string& digits)
{
    std::string all, pair;
    for (const char digit : digits) {
        if (digit == ' ') continue;
        pair += digit;
        if (pair.size() < 2) continue;
        all += static_cast<char>(std::stoi(pair, nullptr, 16));
        pair.clear();
    }
    EXPECT_EQ(pair, "") << digits;
    return all;
}

/// What xxd -a showed: rows of sixteen bytes behind their offsets; "*" stands for rows like the one before.
inline std::string dumped(const std::vector<std::string>& lines)
{
    std::string all;
    for (const std::string& line : lines) {
        if (line.size() < 49 || line[8] != ':') continue;
        const size_t at = std::stoul(line.substr(0, 8), nullptr, 16);
        while (all.size() < at && all.size() >= 16) all += all.substr(all.size() - 16);
        EXPECT_EQ(all.size(), at) << line;
        all += bytes(line.substr(9, 40));
    }
    return all;
}

} // namespace format_page
