#include "check/options.h"

#include <algorithm>

namespace check {

const char Help_text[] =
    "Usage: vx_check [--json | --gaps] [--ini FILE] [--only CODE,...] FILE... [-- SWITCHES]\n"
    "Looks through recordings of PASSCAL packets and tells what is in them and what is wrong with them.\n"
    "Writes nothing but standard output. FILE may be - for standard input.\n"
    "\n"
    "  --json            one JSON object per line and file instead of a table\n"
    "  --gaps            the gaps and overlaps alone, as tab-separated values\n"
    "  --ini FILE        the station file; without it, the one that vx_sac would take\n"
    "  --only CODE,...   only findings of these codes\n"
    "  --codes           all codes, as tab-separated values\n"
    "  -h, --help, --version\n"
    "\n"
    "SWITCHES are those of vx_sac: the names of traces are told as they make them.\n"
    "Status: 0 no errors found, 1 errors, 2 mistake on the command line, 3 not readable, empty or no "
    "recording.\n";

namespace {

/// Appends the codes of a list; false, and a complaint, for a name that is none.
bool read_codes(const std::string& list, std::vector<Code>& codes, std::string& complaint)
{
    size_t at = 0;
    do {
        const size_t comma = std::min(list.find(',', at), list.size());
        const std::string name = list.substr(at, comma - at);
        const auto code = code_named(name);
        if (!code)
            return complaint = "--only: there is no code '" + name + "'; vx_check --codes shows all", false;
        codes.push_back(*code);
        at = comma + 1;
    } while (at <= list.size());
    return true;
}

std::optional<View> view_of(const std::string& arg)
{
    if (arg == "--json") return View::json;
    if (arg == "--gaps") return View::gaps;
    if (arg == "--codes") return View::codes;
    if (arg == "-h" || arg == "--help") return View::help;
    if (arg == "--version") return View::version;
    return std::nullopt;
}

/// Takes what stands behind "--".
bool take_switches(const std::vector<std::string>& args, size_t from, Options& options,
                   std::string& complaint)
{
    for (size_t i = from; i < args.size(); ++i) {
        if (args[i].empty() || args[i][0] != '-')
            return complaint = "'" + args[i] + "' behind -- is no switch of vx_sac", false;
        options.switches.push_back(args[i]);
    }
    return true;
}

} // namespace

bool Options::shows(Code code) const
{
    return only.empty() || std::find(only.begin(), only.end(), code) != only.end();
}

bool read_options(const std::vector<std::string>& args, Options& options, std::string& complaint)
{
    std::string chosen;
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string& arg = args[i];
        if (arg == "--") {
            if (!take_switches(args, i + 1, options, complaint)) return false;
            break;
        }
        if (arg.size() < 2 || arg[0] != '-') {
            options.files.push_back(arg);
        } else if (const auto view = view_of(arg)) {
            if (!chosen.empty() && chosen != arg)
                return complaint = chosen + " and " + arg + " do not go together", false;
            chosen = arg;
            options.view = *view;
            if (*view >= View::codes) return true;
        } else {
            const size_t equals = arg.find('=');
            const std::string name = arg.substr(0, equals);
            if (name != "--ini" && name != "--only") return complaint = "no such option: " + arg, false;
            if (equals == std::string::npos && i + 1 == args.size())
                return complaint = name + " needs a value", false;
            const std::string value = equals == std::string::npos ? args[++i] : arg.substr(equals + 1);
            if (value.empty()) return complaint = name + " needs a value", false;
            if (name == "--ini")
                options.ini = value;
            else if (!read_codes(value, options.only, complaint))
                return false;
        }
    }
    if (options.files.empty()) return complaint = "no recording given", false;
    return true;
}

} // namespace check
