#include "ls/list.h"

#include "ls/text.h"

#include <array>
#include <cinttypes>
#include <cstdio>

namespace ls {

namespace {

constexpr size_t Columns = 10;
using ListRow = std::array<std::string, Columns>;

constexpr char Unknown[] = "-";

bool is_number(size_t column)
{
    return 4 <= column && column <= 8;
}

std::string flag_words(const Entry& e, const char* before, const char* between, const char* behind)
{
    std::string words;
    for (const FlagName& name : Flag_names) {
        if (!e.has(name.flag)) continue;
        if (!words.empty()) words += between;
        words += std::string(before) + name.word + behind;
    }
    return words;
}

std::string cell(const std::optional<std::string>& text)
{
    return text && !text->empty() ? printable(*text) : Unknown;
}

ListRow row_of(const Entry& e)
{
    ListRow row;
    row.fill(Unknown);
    row[0] = printable(e.path);
    row[1] = cell(e.kstnm);
    row[2] = cell(e.kcmpnm);
    if (e.start) row[3] = trace::iso_time(*e.start);
    if (e.rate) row[4] = shortest(static_cast<float>(*e.rate));
    if (e.npts) row[5] = std::to_string(*e.npts);
    if (e.has_statistics) {
        row[6] = shortest(e.depmin);
        row[7] = shortest(e.depmax);
        row[8] = shortest(e.depmen);
    }
    if (e.flags) row[9] = flag_words(e, "", ",", "");
    return row;
}

void print_row(const ListRow& row, const std::array<size_t, Columns>& widths)
{
    std::string line;
    for (size_t i = 0; i < Columns; ++i) {
        const std::string blanks(widths[i] - width(row[i]), ' ');
        if (i > 0) line += "  ";
        line += is_number(i) ? blanks + row[i] : i + 1 < Columns ? row[i] + blanks : row[i];
    }
    printf("%s\n", line.c_str());
}

void print_count(const std::vector<Entry>& entries)
{
    uint64_t samples = 0;
    size_t flagged = 0;
    for (const Entry& e : entries) {
        samples += e.has_header ? e.samples_there() : 0;
        flagged += e.flags != 0;
    }
    printf("\n%zu %s, %" PRIu64 " %s, %zu flagged", entries.size(), entries.size() == 1 ? "file" : "files",
           samples, samples == 1 ? "sample" : "samples", flagged);
    const char* before = ": ";
    for (const FlagName& name : Flag_names) {
        size_t n = 0;
        for (const Entry& e : entries) n += e.has(name.flag);
        if (n == 0) continue;
        printf("%s%zu %s", before, n, name.word);
        before = ", ";
    }
    printf("\n");
}

std::string json_text(const std::optional<std::string>& text)
{
    return text ? json_string(*text) : "null";
}

/// The bytes of a name that is not UTF-8, as two hexadecimal digits each.
std::string hex_of(std::string_view bytes)
{
    constexpr char Digits[] = "0123456789abcdef";
    std::string text;
    for (const char c : bytes) {
        text += Digits[static_cast<uint8_t>(c) >> 4];
        text += Digits[static_cast<uint8_t>(c) & 15];
    }
    return text;
}

void print_object(const Entry& e)
{
    const auto number = [](float value, bool known) { return known ? json_number(value) : "null"; };
    printf("{\"file\":%s,", json_string(e.path).c_str());
    if (!is_utf8(e.path)) printf("\"file_hex\":\"%s\",", hex_of(e.path).c_str());
    printf("\"kstnm\":%s,\"kcmpnm\":%s,", json_text(e.kstnm).c_str(), json_text(e.kcmpnm).c_str());
    printf("\"start\":%s,\"delta\":%s,\"npts\":%s,",
           e.start ? json_string(trace::iso_time(*e.start)).c_str() : "null",
           number(e.delta, e.delta != Undefined_f).c_str(),
           e.npts ? std::to_string(*e.npts).c_str() : "null");
    printf("\"depmin\":%s,\"depmax\":%s,\"depmen\":%s,", number(e.depmin, e.has_statistics).c_str(),
           number(e.depmax, e.has_statistics).c_str(), number(e.depmen, e.has_statistics).c_str());
    printf("\"flags\":[%s]}", flag_words(e, "\"", ",", "\"").c_str());
}

} // namespace

void print_table(const std::vector<Entry>& entries)
{
    const ListRow head = {"file",    "station", "component", "start", "rate",
                          "samples", "minimum", "maximum",   "mean",  "flags"};
    std::array<size_t, Columns> widths{};
    for (size_t i = 0; i < Columns; ++i) widths[i] = width(head[i]);
    for (const Entry& e : entries) {
        const ListRow row = row_of(e);
        for (size_t i = 0; i < Columns; ++i) widths[i] = std::max(widths[i], width(row[i]));
    }
    print_row(head, widths);
    for (const Entry& e : entries) print_row(row_of(e), widths);
    print_count(entries);
}

void print_json(const std::vector<Entry>& entries)
{
    printf("[");
    const char* before = "\n";
    for (const Entry& e : entries) {
        printf("%s", before);
        print_object(e);
        before = ",\n";
    }
    printf("\n]\n");
}

} // namespace ls
