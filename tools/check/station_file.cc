#include "check/station_file.h"

#include "check/station_keys.h"
#include "driver/base/ascii.h"
#include "ls/text.h"
#include "model/ini.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <optional>
#include <span>

namespace check {

namespace {

constexpr std::string_view Byte_order_mark = "\xEF\xBB\xBF";
constexpr size_t Line_most = 99; // characters that the converter takes of a line at a time

std::string_view trimmed(std::string_view text)
{
    while (!text.empty() && is_space(text.front())) text.remove_prefix(1);
    while (!text.empty() && is_space(text.back())) text.remove_suffix(1);
    return text;
}

std::string quoted(std::string_view text)
{
    return "'" + ls::printable(text) + "'";
}

/// Single characters to be changed, added or left out to make one text of the other, in any case of letters.
size_t distance(std::string_view a, std::string_view b)
{
    std::vector<size_t> row(b.size() + 1);
    for (size_t j = 0; j <= b.size(); ++j) row[j] = j;
    for (size_t i = 1; i <= a.size(); ++i) {
        size_t before = row[0];
        row[0] = i;
        for (size_t j = 1; j <= b.size(); ++j) {
            const size_t changed = before + (to_upper(a[i - 1]) != to_upper(b[j - 1]));
            before = row[j];
            row[j] = std::min({changed, row[j] + 1, row[j - 1] + 1});
        }
    }
    return row[b.size()];
}

std::string_view nearest(std::string_view key, std::span<const StationKey> keys)
{
    return std::min_element(keys.begin(), keys.end(),
                            [&](const StationKey& a, const StationKey& b) {
                                return distance(key, a.name) < distance(key, b.name);
                            })
        ->name;
}

const StationKey* key_of(std::string_view text, std::span<const StationKey> keys)
{
    for (const StationKey& key : keys)
        if (begins_with_key(text, key.name)) return &key;
    return nullptr;
}

/// What follows "Ch1", "Ch01" or "ChA"; nothing when the line is about no channel.
std::optional<std::string_view> behind_channel(std::string_view line)
{
    if (line.size() < 3 || !begins_with_key(line, "Ch")) return std::nullopt;
    if (is_digit(line[2])) return line.substr(line.size() > 3 && is_digit(line[3]) ? 4 : 3);
    const bool letter = line[2] >= 'A' && line[2] <= 'Z';
    if (!letter || line.size() < 4 || line[3] < 'A' || line[3] > 'Z') return std::nullopt;
    return line.substr(3);
}

/// The characters of a number at the start of a text.
size_t number_length(std::string_view text, bool whole)
{
    const std::string copy(text);
    const char* const from = copy.c_str();
    char* end = nullptr;
    if (whole)
        strtoll(from, &end, 10);
    else
        strtod(from, &end);
    return static_cast<size_t>(end - from);
}

std::optional<uint16_t> head_id(std::string_view line)
{
    if (line.size() < 6 || line[0] != '[' || line[5] != ']') return std::nullopt;
    unsigned id = 0;
    for (const char c : line.substr(1, 4)) {
        if (hex_digit(c) < 0) return std::nullopt;
        id = id << 4 | static_cast<unsigned>(hex_digit(c));
    }
    return static_cast<uint16_t>(id);
}

} // namespace

void StationFile::add(Code code, const std::string& what)
{
    findings_.push_back(
        {code, info_of(code).severity, {.unit = unit_}, "line " + std::to_string(line_) + ": " + what});
}

int StationFile::read(const std::string& path)
{
    *this = {};
    FILE* file = fopen(path.c_str(), "re");
    if (!file) return errno;
    std::string all;
    char piece[65536];
    for (size_t n; (n = fread(piece, 1, sizeof piece, file)) > 0;) all.append(piece, n);
    const int error = ferror(file) ? errno : 0;
    fclose(file);
    if (error) return error;
    there_ = true;
    take_text(all);
    return 0;
}

void StationFile::take_text(std::string_view text)
{
    line_ = 1;
    if (text.starts_with(Byte_order_mark))
        add(Code::ini_bom, "a byte order mark, which hides what the line says");
    for (; !text.empty(); ++line_) {
        const size_t end = std::min(text.find('\n'), text.size());
        take_line(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
}

void StationFile::take_line(std::string_view line)
{
    if (line.size() > Line_most)
        add(Code::ini_cut, "the converter takes no more than " + std::to_string(Line_most) + " of its " +
                               std::to_string(line.size()) + " characters for one line");
    std::string_view seen = line;
    if (seen.starts_with(Byte_order_mark)) seen.remove_prefix(Byte_order_mark.size());
    seen = trimmed(seen);
    if (seen.starts_with('['))
        take_head(line);
    else if (!seen.empty() && !seen.starts_with(';') && !seen.starts_with('#') && in_use_)
        take_key(line);
}

void StationFile::take_head(std::string_view line)
{
    const auto id = head_id(line);
    if (!id) {
        const std::string_view seen = trimmed(line);
        const bool blanks = line[0] != '[' || seen.find(' ') < seen.find(']');
        add(Code::ini_hidden,
            quoted(seen) + (blanks ? " begins no section: blanks or a mark hide it"
                                   : " begins no recorder's section, which is four hexadecimal digits"));
        if (line[0] == '[') {
            unit_ = Nowhere;
            in_use_ = false;
        }
        return;
    }
    unit_ = *id;
    in_use_ = sections_.insert(*id).second;
    if (!in_use_) add(Code::ini_repeated, "the section stands above already, and only that one is used");
}

void StationFile::take_key(std::string_view line)
{
    const std::string_view named = trimmed(line.substr(0, line.find('=')));
    const auto of_channel = behind_channel(line);
    const std::span<const StationKey> keys =
        of_channel ? std::span<const StationKey>(Channel_keys) : std::span<const StationKey>(Unit_keys);
    const StationKey* key = key_of(of_channel.value_or(line), keys);
    if (is_space(line[0]) && (key_of(named, Unit_keys) || behind_channel(named)))
        return add(Code::ini_key, "a blank before " + quoted(named) + " hides it");
    if (!key) {
        const std::string_view wrong = behind_channel(named).value_or(named);
        return add(Code::ini_key, quoted(named) + " is not known; the nearest known key is " +
                                      std::string(nearest(wrong, keys)));
    }
    const auto given = ini_value(line);
    if (!given) return add(Code::ini_value, quoted(named) + " has no value");
    const std::string_view value = trimmed(*given);
    if (value.empty() || key->kind == ValueKind::unused) return;
    if (key->kind == ValueKind::text) {
        if (value.size() > key->most)
            add(Code::ini_cut, quoted(value) + " is cut to " + std::to_string(key->most) +
                                   (key->most == 1 ? " character" : " characters"));
        return;
    }
    const size_t used = number_length(value, key->kind == ValueKind::whole);
    if (used == 0)
        add(Code::ini_value, quoted(value) + " of " + std::string(key->name) + " is no number");
    else if (used < value.size())
        add(Code::ini_value, "of " + quoted(value) + " for " + std::string(key->name) + " only " +
                                 quoted(value.substr(0, used)) + " is used");
}

void check_station_file(const StationFile& file, Report& report)
{
    if (!file.is_there()) return;
    for (const Finding& f : file.findings()) report.findings.add(f.code, f.severity, f.place, f.text);
    for (const auto& [unit, tally] : report.units)
        if (!file.sections().contains(unit))
            report.findings.add(Code::ini_no_section, {.unit = unit},
                                "the recorder has no section in the station file");
    for (const uint16_t unit : file.sections())
        if (!report.units.contains(unit))
            report.findings.add(Code::ini_unused, {.unit = unit},
                                "the recording has no packets of this recorder");
}

} // namespace check
