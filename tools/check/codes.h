// The findings that vx_check can make: code, severity and sentence of each, in one table for all tools.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace check {

enum class Code : uint8_t {
    gap,
    overlap,
    drift,
    sequence,
    bad_check,
    unknown_type,
    shifted,
    cut_tail,
    unknown_format,
    too_many_samples,
    byte_46,
    rate,
    no_header,
    no_trailer,
    late_start,
    clock,
    log_name,
    long_path,
    zeros,
    duplicate,
    ini_key,
    ini_value,
    ini_cut,
    ini_bom,
    ini_hidden,
    ini_repeated,
    ini_no_section,
    ini_unused,
};

enum class Severity : uint8_t { note, error };

// NOLINTNEXTLINE(clang-analyzer-optin.performance.Padding): the table is read in this order
struct CodeInfo {
    Code code;
    std::string_view name;
    Severity severity; ///< unless a single finding is milder
    const char* sentence;
};

inline constexpr CodeInfo Codes[] = {
    {Code::gap, "gap", Severity::error, "samples are missing between two packets of a channel"},
    {Code::overlap, "overlap", Severity::error, "a packet begins before the one before it ends"},
    {Code::drift, "drift", Severity::error, "packets that fit one by one run off together"},
    {Code::sequence, "sequence", Severity::error, "a packet number follows none before it"},
    {Code::bad_check, "bad-check", Severity::error,
     "a compressed packet contradicts itself or the one before"},
    {Code::unknown_type, "unknown-type", Severity::error, "packets of an unknown type are not converted"},
    {Code::shifted, "shifted", Severity::error, "the recording continues at another offset"},
    {Code::cut_tail, "cut-tail", Severity::error, "the last packet is cut"},
    {Code::unknown_format, "unknown-format", Severity::error,
     "samples of an unknown format are not converted"},
    {Code::too_many_samples, "too-many-samples", Severity::error,
     "a packet tells more samples than it can hold"},
    {Code::byte_46, "byte-46", Severity::error, "byte 46 of a packet moves the start of its samples"},
    {Code::rate, "rate", Severity::error, "the trailer tells another rate than the header"},
    {Code::no_header, "no-header", Severity::error, "an event has no header"},
    {Code::no_trailer, "no-trailer", Severity::note, "an event has no trailer"},
    {Code::late_start, "late-start", Severity::error, "a channel begins later than its event"},
    {Code::clock, "clock", Severity::note, "the clock was not locked for a day or more"},
    {Code::log_name, "log-name", Severity::note, "the input is named like a recorder's log"},
    {Code::long_path, "long-path", Severity::note, "the input's path is longer than vx_sac takes"},
    {Code::zeros, "zeros", Severity::error, "there are blocks of zero bytes"},
    {Code::duplicate, "duplicate", Severity::error, "a packet stands twice"},
    {Code::ini_key, "ini-key", Severity::error, "a key of the station file is not known"},
    {Code::ini_value, "ini-value", Severity::error, "a value of the station file does not convert"},
    {Code::ini_cut, "ini-cut", Severity::error, "a line or value of the station file is cut"},
    {Code::ini_bom, "ini-bom", Severity::error, "the station file begins with a byte order mark"},
    {Code::ini_hidden, "ini-hidden", Severity::error,
     "the head of a section in the station file is not taken for one"},
    {Code::ini_repeated, "ini-repeated", Severity::error,
     "a section of the station file is repeated and not used"},
    {Code::ini_no_section, "ini-no-section", Severity::note, "a recorder has no section in the station file"},
    {Code::ini_unused, "ini-unused", Severity::note, "a section of the station file has no recorder"},
};
inline constexpr size_t Code_cnt = sizeof Codes / sizeof Codes[0];

constexpr bool in_order()
{
    for (size_t i = 0; i < Code_cnt; ++i)
        if (static_cast<size_t>(Codes[i].code) != i) return false;
    return true;
}
static_assert(in_order());

constexpr size_t index_of(Code code)
{
    return static_cast<size_t>(code);
}
constexpr const CodeInfo& info_of(Code code)
{
    return Codes[index_of(code)];
}

/// The code with a name, or nothing.
inline std::optional<Code> code_named(std::string_view name)
{
    for (const CodeInfo& info : Codes)
        if (info.name == name) return info.code;
    return std::nullopt;
}

} // namespace check
