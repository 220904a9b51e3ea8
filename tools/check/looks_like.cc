#include "check/looks_like.h"

#include "driver/base/ascii.h"
#include "output/sac_layout.h"
#include "packet/codec.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

#ifdef VX_LIBMAGIC
#include <magic.h>
#include <memory>
#endif

namespace check {

namespace {

/// A miniSEED 2 record begins with six digits, a quality letter and a blank; one of miniSEED 3 with "MS"
/// and 3.
bool is_miniseed(std::span<const uint8_t> b)
{
    if (b.size() >= 48 && b[0] == 'M' && b[1] == 'S' && b[2] == 3) return true;
    if (b.size() < 48) return false;
    const bool digits =
        std::all_of(b.begin(), b.begin() + 6, [](uint8_t c) { return is_digit(static_cast<char>(c)); });
    return digits && std::string_view("DRQM").find(static_cast<char>(b[6])) != std::string_view::npos &&
           (b[7] == ' ' || b[7] == 0);
}

/// The version of the header, in either byte order, and the logical that evenly spaced samples have.
bool is_sac(std::span<const uint8_t> b)
{
    if (b.size() < Sac_header_len) return false;
    const uint32_t version = be32(b.data() + offsetof(SACHDR_T, NVHDR));
    const uint32_t even = be32(b.data() + offsetof(SACHDR_T, LEVEN));
    const auto fits = [](uint32_t v, uint32_t e) { return (v == 6 || v == 7) && e <= 1; };
    return fits(version, even) || fits(swap32(version), swap32(even));
}

#ifdef VX_LIBMAGIC
/// "gzip compressed data, from Unix" is "gzip data"; of any other description what stands before the first
/// comma.
std::string shortened(std::string_view told)
{
    constexpr std::string_view Compressed = " compressed data";
    const size_t at = told.find(Compressed);
    if (at != std::string_view::npos) return std::string(told.substr(0, at)) + " data";
    return std::string(told.substr(0, told.find(',')));
}

std::optional<std::string> by_magic(std::span<const uint8_t> b)
{
    struct Closer {
        void operator()(magic_t m) const { magic_close(m); }
    };
    const auto ask = [&](int how) -> std::string {
        const std::unique_ptr<magic_set, Closer> magic(magic_open(how));
        if (!magic || magic_load(magic.get(), nullptr) != 0) return "";
        const char* told = magic_buffer(magic.get(), b.data(), b.size());
        return told ? told : "";
    };
    if (ask(MAGIC_MIME_TYPE).starts_with("text/")) return "text";
    const std::string told = ask(MAGIC_NONE);
    if (told.empty() || told == "data") return std::nullopt;
    return shortened(told);
}
#else
std::optional<std::string> by_magic(std::span<const uint8_t>)
{
    return std::nullopt;
}
#endif

} // namespace

std::optional<std::string> looks_like(std::span<const uint8_t> beginning)
{
    if (beginning.empty()) return std::nullopt;
    if (is_miniseed(beginning)) return "miniSEED";
    if (is_sac(beginning)) return "SAC file";
    return by_magic(beginning);
}

} // namespace check
