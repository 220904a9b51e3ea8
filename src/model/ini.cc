// Reads the INI file, and takes lines apart. Begin with ini_section.
#include "model/ini.h"

#include "driver/base/ascii.h"
#include "driver/base/fatal.h"
#include "driver/base/file.h"
#include "driver/base/settings.h"
#include "driver/base/text.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <strings.h>
#include <unordered_map>
#include <vector>

namespace {

constexpr size_t Line_max = 99; // a longer line is split into several
static_assert(Line_max <= IniLines::Longest);
constexpr size_t Header_len = 6; // "[9A3F]"

struct IniFile {
    std::string path;                                            // that was read or is missing
    bool there = false;                                          // the file exists
    std::unordered_map<uint16_t, std::vector<IniSection>> units; // a unit's sections in file order
    IniSection nothing;                                          // for units without a section
};

IniFile Ini;

struct FileCloser {
    void operator()(FILE* file) const { fclose(file); }
};
using OpenedFile = std::unique_ptr<FILE, FileCloser>;

/// The next character, or EOF. A directory reads as empty. Any other error ends the run (21): with half of
/// the file, settings would be missing without notice.
int next_character(FILE* file)
{
    for (;;) {
        const int c = getc(file);
        if (c != EOF || !ferror(file) || errno == EISDIR) return c;
        if (errno != EINTR) shut_down(FATAL_READ, FileIni.c_str());
        clearerr(file);
    }
}

/// Reads a line with its LF, but at most Line_max characters of it. False at the end of the file.
bool read_piece(FILE* file, std::string& piece)
{
    piece.clear();
    while (piece.size() < Line_max) {
        const int c = next_character(file);
        if (c == EOF) break;
        piece.push_back(static_cast<char>(c));
        if (c == '\n') break;
    }
    return !piece.empty();
}

/// The unit ID in the header of a section, such as "[9A3F]"; the line begins with "[", and anything may
/// follow the "]". Nothing if it is no such header.
std::optional<uint16_t> header_id(std::string_view line)
{
    if (line.size() < Header_len || line[5] != ']') return std::nullopt;
    unsigned id = 0;
    for (const char c : line.substr(1, 4)) {
        const int digit = hex_digit(c);
        if (digit < 0) return std::nullopt;
        id = id << 4 | static_cast<unsigned>(digit);
    }
    return static_cast<uint16_t>(id);
}

/// A byte offset, modulo 2^32.
int32_t position(uint64_t bytes)
{
    return static_cast<int32_t>(static_cast<uint32_t>(bytes));
}

/// Reads the whole file into sections. Drops what follows a NUL in a line.
void read_sections(FILE* file, IniFile& ini)
{
    std::string piece;
    IniSection* section = nullptr; // of the current line; null: of no unit
    uint64_t at = 0;
    for (; read_piece(file, piece); at += piece.size()) {
        const std::string_view line = before_nul(piece);
        if (!line.starts_with('[')) {
            if (section) section->lines.add(line);
            continue;
        }
        if (section) section->last = position(at + piece.size());
        section = nullptr;
        if (const auto id = header_id(line)) {
            section = &ini.units[*id].emplace_back();
            section->first = position(at);
        }
    }
    if (section) section->last = position(at);
    ini.nothing.last = position(at);
}

/// Reads the file unless it is in memory. False when it does not exist, which is looked up once per run, and
/// when it cannot be opened or positioned.
bool have_file(int32_t from)
{
    if (!Ini.path.empty() && Ini.path == FileIni) return Ini.there;
    if (!fexist(FileIni.c_str()) && !look_failed()) {
        Ini = {FileIni, false, {}, {}};
        return false;
    }

    static bool waited = false; // five seconds are spent once per run
    const OpenedFile file(fopen_ready_vx(FileIni.c_str(), !waited));
    if (!file) {
        waited = true;
        printf("\nWARNING: Unable to open the INI file %s", FileIni.c_str());
        return false;
    }
    // Only tests that the position exists. The file is read from its start, for all units at once.
    // never taken: the second one cannot fail alone
    if (fseek(file.get(), from, SEEK_SET) != 0 || fseek(file.get(), 0, SEEK_SET) != 0) {
        printf("\nWARNING: Unable to set position within the INI file %s", FileIni.c_str());
        return false;
    }
    Ini = {FileIni, true, {}, {}};
    read_sections(file.get(), Ini);
    return true;
}

} // namespace

const IniSection* ini_section(uint16_t unit_id, int32_t from)
{
    if (!have_file(from)) return nullptr;
    const auto found = Ini.units.find(unit_id);
    if (found == Ini.units.end()) return &Ini.nothing;
    for (const IniSection& section : found->second)
        if (static_cast<uint32_t>(section.first) >= static_cast<uint32_t>(from)) return &section;
    return &Ini.nothing;
}

void ini_forget()
{
    Ini = {};
}

bool begins_with_key(std::string_view text, std::string_view key)
{
    return text.size() >= key.size() && strncasecmp(text.data(), key.data(), key.size()) == 0;
}

std::optional<std::string_view> ini_value(std::string_view line)
{
    const size_t equals = line.find('=');
    if (equals == std::string_view::npos) return std::nullopt;
    const std::string_view value = line.substr(equals + 1);
    const std::string_view given = value.substr(0, value.find_first_of(";\r\n"));
    return given.substr(std::min(given.find_first_not_of(' '), given.size()));
}
