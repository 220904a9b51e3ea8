#include "driver/cmdline.h"

#include "driver/base/ascii.h"
#include "driver/base/console.h"
#include "driver/base/fatal.h"
#include "driver/base/number.h"
#include "driver/base/settings.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <string>

namespace {

constexpr int Usage_status = 2;

// Each setter takes the value of a switch, the text after its letter. False if that is not valid.

/// Y and + set, N and - clear; only the first character counts.
template <auto& flag>
bool set_flag(const char* value)
{
    switch (to_upper(value[0])) {
    case 'Y':
    case '+': flag = true; return true;
    case 'N':
    case '-': flag = false; return true;
    default: return false;
    }
}

/// kept: dash-n-means-auto. "-" and "N" do not switch off anything; they choose Auto.
bool set_name_option(const char* value)
{
    switch (to_upper(value[0])) {
    case '0':
    case 'A':
    case '-':
    case 'N': Name_option = 0; return true;
    case '1':
    case 'I': Name_option = 1; return true;
    default: return false;
    }
}

bool set_path_option(const char* value)
{
    Path_option = static_cast<uint16_t>(to_int32(value));
    return Path_option <= 4;
}

bool set_rate(const char* value)
{
    Smp_rate_cmd = stof(value, 0);
    return true;
}

template <uint32_t& count>
bool set_count(const char* value)
{
    count = to_uint32_any_base(value);
    return true;
}

bool set_limit(const char* value)
{
    Smp_limit_set = true;
    return set_count<Smp_limit>(value);
}

bool ignore(const char*)
{
    return true;
}

struct Switch {
    char letter;
    bool (*set)(const char* value);
};
constexpr Switch Switches[] = {
    {'D', set_flag<Log_dt>},
    {'F', ignore},
    {'G', ignore},
    {'H', ignore},
    {'L', set_flag<Log_on>},
    {'N', set_name_option},
    {'P', set_path_option},
    {'Q', set_flag<Qcc_on>},
    {'R', set_rate},
    {'S', set_limit},
    {'T', set_count<Smp_skip>},
    {'V', set_flag<Verbose>},
};

[[noreturn]] void usage_error()
{
    syntax();
    end_run(Usage_status);
}

bool set_switch(const char* argument)
{
    const char letter = to_upper(argument[1]);
    const Switch* found = std::find_if(std::begin(Switches), std::end(Switches),
                                       [=](const Switch& s) { return s.letter == letter; });
    return found != std::end(Switches) && found->set(argument + 2);
}

/// Appends to Cmd_line, which is cut at Path_max characters.
void keep_argument(const char* argument)
{
    Cmd_line += argument;
    Cmd_line.resize(std::min(Cmd_line.size(), Path_max));
}

} // namespace

void read_command_line(int argc, char** argv)
{
    keep_argument(argc > 0 ? argv[0] : Program);
    std::string* const names[] = {&FileIn, &DirOut};
    int named = 0;
    for (int i = 1; i < argc; ++i) {
        const char* argument = argv[i];
        keep_argument(" ");
        keep_argument(argument);
        if (argument[0] == '-') {
            if (!set_switch(argument)) usage_error();
        } else {
            if (argument[0] == '?' || named == 2) usage_error();
            *names[named++] = argument;
        }
    }
    if (FileIn.empty()) usage_error();
    if (named == 2 && DirOut.empty()) shut_down(FATAL_NO_DIRECTORY, "");
}
