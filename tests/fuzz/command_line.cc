// The command line, and the numbers in it against those that the C library reads.
//
// Input: the arguments, one a line; each is taken as a number too.
#include "driver/base/number.h"
#include "driver/base/settings.h"
#include "driver/cmdline.h"
#include "fuzz/ending.h"
#include "fuzz/fuzz.h"

#include <cmath>
#include <limits>
#include <string>
#include <vector>

namespace {

using fuzz::demand;

std::vector<std::string> lines_of(std::string_view text)
{
    std::vector<std::string> lines{"vx_sac"};
    while (!text.empty()) {
        const size_t end = std::min(text.find('\n'), text.size());
        lines.emplace_back(text.substr(0, text.substr(0, end).find('\0')));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return lines;
}

/// The base that a number's first characters tell.
int base_of(const char* text)
{
    while (*text == ' ' || (*text >= '\t' && *text <= '\r')) ++text;
    if (*text == '-' || *text == '+') ++text;
    if (text[0] != '0') return 10;
    return text[1] == 'x' || text[1] == 'X' ? 16 : 8;
}

/// What the unsigned reading gives on a host of 32 bits.
uint32_t library_unsigned(const char* text)
{
    const bool minus = strchr(text, '-') != nullptr; // behind the sign a "-" ends the number
    std::string magnitude = text;
    const size_t sign = magnitude.find_first_not_of(" \t\n\v\f\r");
    const bool negative = minus && sign != std::string::npos && magnitude[sign] == '-';
    if (negative) magnitude[sign] = '+';
    const unsigned long long value = strtoull(magnitude.c_str(), nullptr, base_of(text));
    if (value > std::numeric_limits<uint32_t>::max()) return std::numeric_limits<uint32_t>::max();
    return negative ? 0U - static_cast<uint32_t>(value) : static_cast<uint32_t>(value);
}

/// As scanf reads a field: white space does not count, a sign does.
int64_t library_scan(const std::string& text, size_t width)
{
    const size_t start = std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size());
    return strtoll(text.substr(start, width).c_str(), nullptr, 10);
}

bool same(double a, double b)
{
    return a == b || (std::isnan(a) && std::isnan(b));
}

void check_numbers(const std::string& argument)
{
    const char* text = argument.c_str();
    const long long whole = strtoll(text, nullptr, 10);
    demand(to_int32(argument) == std::clamp<long long>(whole, INT32_MIN, INT32_MAX),
           "an integer saturates at 32 bits");
    demand(to_uint32_any_base(argument) == library_unsigned(text), "an integer of any base is read");
    if (argument.size() < 256) demand(same(to_double(argument), strtod(text, nullptr)), "a decimal is read");
    for (int width = 1; width <= 9; ++width) {
        const int64_t value = library_scan(argument, static_cast<size_t>(width));
        demand(scan_int32(argument, 0, width) == value, "an integer of some characters is read");
        demand(scan_int16(argument, 0, width) == static_cast<int16_t>(value), "and kept to 16 bits");
        scan_double(argument, 0, width);
    }
    const std::string_view whole_text = argument; // of a std::string the C++ library has a stof of its own
    static_cast<void>(stof(whole_text, 0));
    static_cast<void>(stof(whole_text, 8));
    static_cast<void>(stoi(whole_text, 0));
    static_cast<void>(stoi(whole_text, 3));
}

void forget_settings()
{
    set_defaults();
    Cmd_line.clear();
    FileIn.clear();
    DirOut.clear();
}

void check_settings()
{
    demand(!FileIn.empty(), "there is an input");
    demand(Path_option <= 4 && Name_option <= 1, "an option is one that there is");
    demand(Cmd_line.size() <= Path_max, "the command line is kept as far as it fits");
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const bool silent = (fuzz::silence(), true);
    if (!silent) return -1;
    std::vector<std::string> arguments = lines_of(fuzz::Bytes(data, size).rest());
    std::vector<char*> argv;
    for (std::string& argument : arguments) {
        check_numbers(argument);
        argv.push_back(argument.data());
    }
    argv.push_back(nullptr);

    forget_settings();
    const int status =
        fuzz::status_of([&] { read_command_line(static_cast<int>(argv.size()) - 1, argv.data()); });
    demand(status == -1 || status == 2 || status == 10,
           "a mistake shows the usage text, or misses the output path");
    if (status == -1) check_settings();
    return 0;
}
