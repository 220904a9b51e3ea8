// The station INI file as text: sections, lines, keys and values. Knows no particular key.
// The file is looked for and read once per run; every unit and every new channel is then served from memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// Lines in the order of the file. Each costs a byte beside its text: a file may consist of short ones.
class INI_LINES {
public:
    static constexpr size_t Longest = 255;

    void add(std::string_view line)
    {
        packed.push_back(static_cast<char>(line.size()));
        packed.append(line);
        ++count;
    }
    size_t size() const { return count; }

    struct PLACE {
        const char* at;

        size_t length() const { return static_cast<unsigned char>(*at); }
        std::string_view operator*() const { return {at + 1, length()}; }
        PLACE& operator++()
        {
            at += 1 + length();
            return *this;
        }
        bool operator==(const PLACE&) const = default;
    };
    PLACE begin() const { return {packed.data()}; }
    PLACE end() const { return {packed.data() + packed.size()}; }

private:
    std::string packed; // each line after a byte with its length
    size_t count = 0;
};

/// What the file says of one unit. Positions are byte offsets in the file, kept to 32 bits.
struct INI_SECTION {
    uint32_t serial = 0; ///< no other section that was ever read has the same; 0: nothing of the file
    int32_t first = 0;   ///< of the header line
    int32_t last = 0;    ///< behind the line that ends the section: the next header, or the end of the file
    INI_LINES lines;     ///< between the two, each of at most 99 characters
};

/// The unit's section: the first one with its ID that begins at `from` or later. A unit without one gets a
/// section without lines (serial 0) that ends at the end of the file. Null when there is no file (silently),
/// and when it cannot be opened or positioned (with a warning on the console at each call). When reading
/// fails half way, fatal error 21 naming the file.
const INI_SECTION* ini_section(uint16_t unit_id, int32_t from);

/// Forgets what was read, so that the file is read again; for tests.
void ini_forget();

/// True when a text begins with the key, in any case.
bool begins_with_key(std::string_view text, std::string_view key);

/// The first row of a key table whose `name` the text begins with; null for none. Row order matters where one name
/// begins another.
template <class Row, size_t n>
const Row* ini_row(std::string_view text, const Row (&rows)[n])
{
    for (const Row& row : rows)
        if (begins_with_key(text, row.name)) return &row;
    return nullptr;
}

/// kept: first-number-wins. Some numbers keep their first value that is not 0, from a line or from the catalogue.
template <class Number>
void set_once(Number& field, Number value)
{
    if (field == 0) field = value;
}

/// The value of a line: what follows the first "=", up to the first ";", CR or LF, without leading blanks; trailing ones
/// stay. Nothing when the line has no "=".
std::optional<std::string_view> ini_value(std::string_view line);
