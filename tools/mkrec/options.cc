// The table of options; each row has the function that reads its value.
#include "mkrec/options.h"

#include "mkrec/clock.h"

#include <algorithm>
#include <cctype>
#include <limits>

namespace mkrec {

const char Help_text[] =
    "Usage: vx_mkrec [options] OUT\n"
    "Writes a synthetic field recording of PASSCAL packets to the file OUT (- for standard output). An\n"
    "existing file is not overwritten without --force.\n"
    "The same options and seed give the same bytes on every machine.\n"
    "\n"
    "What is recorded:\n"
    "  --units N         recorders                                        (2)\n"
    "  --streams N       data streams of each unit                        (2)\n"
    "  --channels N      channels of each stream, 32 at most              (3)\n"
    "  --events N        events of each stream                            (2)\n"
    "  --seconds N       length of an event, and time between quakes      (60)\n"
    "  --size N          exactly N bytes, N may end in K, M or G; sets the length of the events\n"
    "  --rate N,...      samples per second, by stream; must divide 1000  (200,50)\n"
    "  --format F,...    c2 Steim-2, c0 Steim-1, 32 or 16 bits, by stream (c2,c0,32,16)\n"
    "  --signal KIND     quake, quiet, loud, offset, full or mixed        (quake)\n"
    "  --seed N          another seed gives other samples                 (1)\n"
    "\n"
    "How it is written:\n"
    "  --interleave      packets of units and streams in turn; without it, one unit after another\n"
    "  --no-et           no ET packets: no event ends\n"
    "  --no-parameters   only EH, DT and ET packets\n"
    "  --bad-check       every Steim packet stores a wrong last sample\n"
    "  --start TIME      begin of the survey, YYYY-DDDTHH:MM, from 2023 on      (2023-010T06:00)\n"
    "  --gap N           data packets that begin in N seconds amid each event are missing\n"
    "  --drop N,...      these packets, counted from 1, are missing\n"
    "  --damage KIND@N   packet N is damaged; may be repeated. Kinds: bad-check, byte-46, clock, cut-tail,\n"
    "                    duplicate, late-start, overlap, rate, sequence, shifted, too-many-samples,\n"
    "                    unknown-format, unknown-type, zeros\n"
    "  --mseed FILE      also writes the data as 1024-byte miniSEED records, channel by channel\n"
    "  --force           overwrites files that exist\n"
    "\n"
    "  -h, --help, --version\n"
    "\n"
    "Signals: quake is noise with P and S arrivals; quiet is noise; loud has differences of 9 to 16 bits;\n"
    "offset is quiet noise far from zero; full is random over the whole range; mixed has all widths.\n";

namespace {

constexpr int Last_year = 2080;
constexpr int64_t Most_events = 1000000;
constexpr int64_t Most_bytes = int64_t{1} << 50;

/// Reads decimal digits; returns false for other characters and for numbers out of range.
bool read_number(const std::string& text, int64_t least, int64_t most, int64_t& value)
{
    int64_t v = 0;
    if (text.empty()) return false;
    for (const char c : text) {
        if (c < '0' || c > '9' || v > (most - (c - '0')) / 10) return false;
        v = v * 10 + (c - '0');
    }
    value = v;
    return v >= least;
}

/// A value for a message.
std::string shown(const std::string& value)
{
    return value.empty() ? "''" : value;
}

/// The functions that read values return an empty text, or a message without its beginning, the option's
/// name.
std::string read_whole(const std::string& text, int64_t least, int64_t most, int64_t& value)
{
    if (read_number(text, least, most, value)) return "";
    return shown(text) + " is not a whole number from " + std::to_string(least) + " to " +
           std::to_string(most);
}

std::string read_int(const std::string& text, int least, int most, int& value)
{
    int64_t v = value;
    std::string why = read_whole(text, least, most, v);
    value = static_cast<int>(v);
    return why;
}

std::string read_size(const std::string& text, int64_t& value)
{
    std::string digits = text;
    int64_t unit = 1;
    if (!text.empty()) {
        switch (std::toupper(static_cast<unsigned char>(text.back()))) {
        case 'K': unit = int64_t{1} << 10; break;
        case 'M': unit = int64_t{1} << 20; break;
        case 'G': unit = int64_t{1} << 30; break;
        }
        if (unit != 1) digits.pop_back();
    }
    int64_t v = 0;
    if (!read_number(digits, 1, Most_bytes / unit, v))
        return shown(text) + " is not a number of bytes (K, M or G may follow), 1048576G at most";
    value = v * unit;
    return value % 1024 == 0 ? "" : text + " is not a multiple of 1024";
}

std::vector<std::string> split(const std::string& text)
{
    std::vector<std::string> parts(1);
    for (const char c : text) {
        if (c == ',')
            parts.emplace_back();
        else
            parts.back() += c;
    }
    return parts;
}

/// Times have milliseconds, so the sample interval must be a whole number of them.
std::string read_rates(const std::string& text, std::vector<int>& rates)
{
    rates.clear();
    for (const std::string& part : split(text)) {
        int rate = 0;
        std::string why = read_int(part, 1, 1000, rate);
        if (!why.empty()) return why;
        if (1000 % rate != 0) return part + " does not divide 1000";
        rates.push_back(rate);
    }
    return "";
}

std::string read_formats(const std::string& text, std::vector<SampleFormat>& formats)
{
    formats.clear();
    for (const std::string& given : split(text)) {
        std::string part = given;
        for (char& c : part) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        if (part == "16")
            formats.push_back(SampleFormat::int16);
        else if (part == "32")
            formats.push_back(SampleFormat::int32);
        else if (part == "c0")
            formats.push_back(SampleFormat::steim1);
        else if (part == "c2")
            formats.push_back(SampleFormat::steim2);
        else
            return shown(given) + " is not one of c2, c0, 32 and 16";
    }
    return "";
}

std::string read_motion(const std::string& text, Motion& motion)
{
    static constexpr struct {
        const char* name;
        Motion motion;
    } Motions[] = {{"quake", Motion::quake},   {"quiet", Motion::quiet}, {"loud", Motion::loud},
                   {"offset", Motion::offset}, {"full", Motion::full},   {"mixed", Motion::mixed}};
    for (const auto& m : Motions) {
        if (text != m.name) continue;
        motion = m.motion;
        return "";
    }
    return shown(text) + " is not one of quake, quiet, loud, offset, full and mixed";
}

std::string read_seed(const std::string& text, uint64_t& seed)
{
    int64_t v = 0;
    std::string why = read_whole(text, 0, std::numeric_limits<int64_t>::max(), v);
    seed = static_cast<uint64_t>(v);
    return why;
}

std::string read_name(const std::string& text, std::string& name)
{
    name = text;
    return text.empty() ? "needs a name" : "";
}

/// YYYY-DDDTHH:MM
std::string read_start(const std::string& text, int64_t& ms)
{
    int64_t year = 0, day = 0, hour = 0, minute = 0;
    const bool shaped = text.size() == 14 && text[4] == '-' && text[8] == 'T' && text[11] == ':' &&
                        read_number(text.substr(0, 4), First_year, Last_year, year) &&
                        read_number(text.substr(5, 3), 1, days_in(static_cast<int>(year)), day) &&
                        read_number(text.substr(9, 2), 0, 23, hour) &&
                        read_number(text.substr(12), 0, 59, minute);
    if (!shaped) return shown(text) + " is no time like 2023-010T06:00 from 2023 to 2080";
    for (int y = First_year; y < year; ++y) day += days_in(y);
    ms = (((day - 1) * 24 + hour) * 60 + minute) * 60000;
    return "";
}

std::string read_drop(const std::string& text, std::vector<int64_t>& drop)
{
    for (const std::string& part : split(text)) {
        std::string why = read_whole(part, 1, Most_bytes, drop.emplace_back());
        if (!why.empty()) return why;
    }
    return "";
}

std::string read_damage(const std::string& text, std::vector<Damage>& damage)
{
    const size_t at = text.find('@');
    const auto kind = damage_kind_named(text.substr(0, at));
    if (!kind) return shown(text.substr(0, at)) + " is no kind of damage; --help shows all";
    if (at == std::string::npos) return "needs a packet: " + text + "@N";
    int64_t packet = 0;
    std::string why = read_whole(text.substr(at + 1), 1, Most_bytes, packet);
    damage.push_back({*kind, packet});
    return why;
}

std::string set(bool& flag, bool value = true)
{
    flag = value;
    return "";
}

using OptionText = const std::string&;
struct Option {
    const char* name;
    bool takes_value;
    std::string (*take)(Options& o, OptionText value); ///< returns an empty text or the error
};

constexpr Option Table[] = {
    {"--units", true, [](Options& o, OptionText v) { return read_int(v, 1, 20000, o.units); }},
    {"--streams", true, [](Options& o, OptionText v) { return read_int(v, 1, 99, o.streams); }},
    {"--channels", true, [](Options& o, OptionText v) { return read_int(v, 1, 32, o.channels); }},
    {"--events", true, [](Options& o, OptionText v) { return read_whole(v, 1, Most_events, o.events); }},
    {"--seconds", true, [](Options& o, OptionText v) { return read_whole(v, 1, 10000000, o.seconds); }},
    {"--size", true, [](Options& o, OptionText v) { return read_size(v, o.size); }},
    {"--rate", true, [](Options& o, OptionText v) { return read_rates(v, o.rates); }},
    {"--format", true, [](Options& o, OptionText v) { return read_formats(v, o.formats); }},
    {"--signal", true, [](Options& o, OptionText v) { return read_motion(v, o.motion); }},
    {"--seed", true, [](Options& o, OptionText v) { return read_seed(v, o.seed); }},
    {"--mseed", true, [](Options& o, OptionText v) { return read_name(v, o.mseed); }},
    {"--start", true, [](Options& o, OptionText v) { return read_start(v, o.start_ms); }},
    {"--gap", true, [](Options& o, OptionText v) { return read_int(v, 1, 10000000, o.gap); }},
    {"--drop", true, [](Options& o, OptionText v) { return read_drop(v, o.drop); }},
    {"--damage", true, [](Options& o, OptionText v) { return read_damage(v, o.damage); }},
    {"--interleave", false, [](Options& o, OptionText) { return set(o.interleave); }},
    {"--no-et", false, [](Options& o, OptionText) { return set(o.trailers, false); }},
    {"--no-parameters", false, [](Options& o, OptionText) { return set(o.parameters, false); }},
    {"--bad-check", false, [](Options& o, OptionText) { return set(o.bad_check); }},
    {"--force", false, [](Options& o, OptionText) { return set(o.force); }},
    {"-h", false, [](Options& o, OptionText) { return set(o.help); }},
    {"--help", false, [](Options& o, OptionText) { return set(o.help); }},
    {"--version", false, [](Options& o, OptionText) { return set(o.version); }},
};

bool take_out(Options& options, const std::string& arg, std::string& complaint)
{
    if (arg.empty())
        complaint = "the name of the recording is empty";
    else if (!options.out.empty())
        complaint = "more than one name: " + options.out + " and " + arg;
    else
        options.out = arg;
    return complaint.empty();
}

/// Takes args[at], and args[at + 1] if that is the option's value.
bool take_option(const std::vector<std::string>& args, size_t& at, Options& options, std::string& complaint)
{
    const std::string& arg = args[at];
    const size_t equals = arg.find('=');
    const std::string name = arg.substr(0, equals);
    const Option* option =
        std::find_if(std::begin(Table), std::end(Table), [&](const Option& o) { return name == o.name; });
    if (option == std::end(Table)) return complaint = "unknown option " + arg, false;
    if (!option->takes_value && equals != std::string::npos)
        return complaint = name + " takes no value", false;
    std::string value;
    if (option->takes_value) {
        if (equals != std::string::npos)
            value = arg.substr(equals + 1);
        else if (at + 1 < args.size())
            value = args[++at];
        else
            return complaint = name + " needs a value", false;
    }
    const std::string why = option->take(options, value);
    if (!why.empty()) complaint = name + " " + why;
    return why.empty();
}

} // namespace

bool read_options(const std::vector<std::string>& args, Options& options, std::string& complaint)
{
    complaint.clear();
    bool only_names = false;
    for (size_t i = 0; i < args.size(); ++i) {
        if (!only_names && args[i] == "--") {
            only_names = true;
            continue;
        }
        const bool is_option = !only_names && args[i].size() > 1 && args[i][0] == '-';
        if (!(is_option ? take_option(args, i, options, complaint) : take_out(options, args[i], complaint)))
            return false;
    }
    if (options.help || options.version) return true;
    if (options.out.empty())
        complaint = "no name given for the recording";
    else if (options.out == options.mseed)
        complaint = "the recording and --mseed are the same file: " + options.out;
    return complaint.empty();
}

} // namespace mkrec
