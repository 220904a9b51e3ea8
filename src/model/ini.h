// The station INI file as text: sections, lines, keys and values. This room knows no particular key. The file
// is read once per run; every unit and every new channel is served from memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// The lines of a section in the order of the file, packed into one string, since a file may have very many
/// short lines.
class IniLines {
public:
    static constexpr size_t Longest = 255; ///< characters of a line

    void add(std::string_view line)
    {
        packed.push_back(static_cast<char>(line.size()));
        packed.append(line);
        ++count;
    }
    size_t size() const { return count; }

    /// An iterator over the lines.
    struct LinePlace {
        const char* at;

        size_t length() const { return static_cast<unsigned char>(*at); }
        std::string_view operator*() const { return {at + 1, length()}; }
        LinePlace& operator++()
        {
            at += 1 + length();
            return *this;
        }
        bool operator==(const LinePlace&) const = default;
    };
    LinePlace begin() const { return {packed.data()}; }
    LinePlace end() const { return {packed.data() + packed.size()}; }

private:
    std::string packed; // a byte with its length precedes each line
    size_t count = 0;
};

/// A section of the file. Positions are byte offsets in the file, modulo 2^32.
struct IniSection {
    int32_t first = 0; ///< where the header line begins
    int32_t last = 0;  ///< end of the next line with "[", or of the file
    IniLines lines;    ///< the lines after the header, each of at most 99 characters
};

/// The unit's section: the first one with its ID that begins at `from` or later. Without one, a section
/// without lines that ends at the end of the file. Null when there is no file, and, with a warning
/// on the console at each call, when the file cannot be opened or positioned. If reading fails, the run ends
/// (21) and names the file.
const IniSection* ini_section(uint16_t unit_id, int32_t from);

/// Drops what was read, so that the file is read again. For tests.
void ini_forget();

/// True when a text begins with the key, in any case of letters.
bool begins_with_key(std::string_view text, std::string_view key);

/// The first row of a key table whose `name` the text begins with, or null. The order of rows matters where
/// one name begins with another.
template <class Row, size_t n>
const Row* ini_row(std::string_view text, const Row (&rows)[n])
{
    for (const Row& row : rows)
        if (begins_with_key(text, row.name)) return &row;
    return nullptr;
}

/// kept: first-number-wins. Some numbers keep their first value that is not 0, from the INI file or the
/// catalogue.
template <class Number>
void set_once(Number& field, Number value)
{
    if (field == 0) field = value;
}

/// The value of a line: the text after the first "=", up to the first ";", CR or LF, without leading blanks.
/// Trailing blanks stay. Nothing when the line has no "=".
std::optional<std::string_view> ini_value(std::string_view line);
