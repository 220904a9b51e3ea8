// The expected texts and bytes, written from the descriptions of the outputs.
#include "kit/expect.h"

#include <algorithm>
#include <bit>
#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace kit {

namespace {

[[gnu::format(printf, 1, 2)]] std::string print(const char* form, ...)
{
    char line[512];
    va_list values;
    va_start(values, form);
    vsnprintf(line, sizeof line, form, values);
    va_end(values);
    return line;
}

std::string yes_no(bool on)
{
    return std::string(on ? Yes : No);
}

std::string str(std::string_view s)
{
    return std::string(s);
}

} // namespace

Settings settings_of(const Converted& run)
{
    Settings s;
    s.file_in = run.args.at(0);
    s.dir_org = run.scratch->dir();
    s.dir_out = run.args.at(1) + "/";
    const std::string beside = run.argv0.substr(0, run.argv0.rfind('/') + 1);
    if (run.scratch->exists("vxu.ini"))
        s.file_ini = s.dir_org + "/vxu.ini";
    else
        s.file_ini = (beside.empty() ? run.argv0 : beside) + "vxu.ini - not found; using defaults";
    const std::string base = s.file_in.substr(0, s.file_in.rfind('.'));
    s.file_log = s.dir_out + base + ".vxl";
    s.file_qcc = s.dir_out + base + ".qcc";
    s.cmd_line = run.argv0;
    for (const std::string& arg : run.args) s.cmd_line += " " + arg;
    s.cmd_line.resize(std::min<size_t>(s.cmd_line.size(), 131));
    return s;
}

std::string console_banner()
{
    return "\nVX_SAC - Version sps16   \n" + str(Banner);
}

std::string usage(std::string_view skip)
{
    return "\r\n\nPurpose:"
           "\r\n   Reads a file containing PASSCAL data packets and converts"
           "\r\n   the data to SAC format."
           "\r\n\nUsage:"
           "\r\n   VX_SAC [switches] sourceFile [output_path] [switches]"
           "\r\n\n Switches               Description                               Default    "
           "\r\n ----------------------------------------------------------------------------"
           "\r\n   -Dc     include DT info in log file: Y, +, N or -              (NO)"
           "\r\n   -Lc     Log file output: Y, +, N or -                          (YES)"
           "\r\n   -Nc     file Name option:                                      (Auto)"
           "\r\n             0/A = use Station Name if present, else use Unit ID"
           "\r\n             1/I = always use Unit ID"
           "\r\n   -Pn     output Path levels                                     (0)"
           "\r\n             0 = no additional subdirectories"
           "\r\n             1 = one subdirectory level:  YYYY_DDD"
           "\r\n             2 = two subdirectory levels: YYYY_DDD/HH"
           "\r\n             3 = two subdirectory levels: YYYY_DDD/HH_MM"
           "\r\n             4 = two subdirectory levels: YYYY_DDD/HH_MM_SS"
           "\r\n   -Qc     QCC File output: Y, +, N or -                          (NO)"
           "\r\n   -Rn     sample Rate (if not found in the data)                 (100)"
           "\r\n   -Sn     Sample count per channel per event                     (4294967295)"
           "\r\n   -Tn     Trash n samples from each event                        (" +
           str(skip) +
           ")"
           "\r\n   -Vc     Verbose message output: Y, +, N or -                   (ENABLED)"
           "\r\n\nSwitches may appear anywhere on the command line."
           "\r\nArguments and switches are NOT case sensitive."
           "\r\n";
}

std::string run_summary(const Settings& s)
{
    return "\n\n     Input File : " + s.file_in + "\n       INI File : " + s.file_ini +
           "\n  Original Path : " + s.dir_org + "\n    Output Path : " + s.dir_out +
           "\n    Path Option : " + std::to_string(s.path_option) + "\n    Name Option : " + s.name_option +
           "\n     Log enable : " + yes_no(s.log_on) + "\n    Log DT Blks : " + yes_no(s.log_dt) +
           "\n       Log File : " + s.file_log + "\n     QCC enable : " + yes_no(s.qcc_on) +
           "\n       QCC File : " + s.file_qcc + "\n    Sample Rate : " + s.rate +
           "\n    Max Samples : " + s.max_samples + "\n   Skip Samples : " + s.skip_samples +
           "\n\nPress CTRL-BRK or CTRL-C to abort.\n";
}

std::string table_start()
{
    return "\r\n\n  Block     Type      Unit      Event     Stream    Channel   Trg   Rate"
           "\r\n\n      0       -          -          -          -          -     -      -";
}

std::string log_header(const Settings& s)
{
    return "VX_SAC - Version sps16   \r\n" + str(Banner) + "\r\nSystem time: ************************" +
           "\r\n\r\n     Input File : " + s.file_in + "\r\n       INI File : " + s.file_ini +
           "\r\n  Original Path : " + s.dir_org + "\r\n    Output Path : " + s.dir_out +
           "\r\n    Path Option : " + std::to_string(s.path_option) +
           "\r\n    Name Option : " + s.name_option + "\r\n         Gather : NO\r\n      trace Hdr : YES" +
           "\r\n     Log enable : " + yes_no(s.log_on) + "\r\n    Log DT Blks : " + yes_no(s.log_dt) +
           "\r\n       Log File : " + s.file_log + "\r\n     QCC enable : " + yes_no(s.qcc_on) +
           "\r\n       QCC File : " + s.file_qcc + "\r\n    Sample Rate : " + s.rate +
           "\r\n    Max Samples : " + s.max_samples + "\r\n   Skip Samples : " + s.skip_samples +
           "\r\n   Command Line : " + s.cmd_line + "\r\n\r\n";
}

std::string qcc_header(const Settings& s)
{
    return log_header(s) + "\r\n\r\n";
}

std::string whole_console(const Settings& s, std::string_view progress)
{
    return console_banner() + run_summary(s) + table_start() + str(progress) + "\r\n";
}

std::string progress_eh(unsigned block, std::string_view unit, unsigned event, unsigned stream,
                        std::string_view trigger3, std::string_view rate, std::string_view type)
{
    return print("\r%07u       ", block) + str(type) + "      " + str(unit) + "       " +
           print("%04u", event) + "          " + print("%02u", stream) + "         -    " + str(trigger3) +
           "  " + str(rate);
}

std::string progress_et(unsigned block, std::string_view unit, unsigned event, unsigned stream,
                        std::string_view trigger3, std::string_view rate)
{
    return progress_eh(block, unit, event, stream, trigger3, rate, "ET");
}

std::string progress_dt(unsigned block, std::string_view unit, unsigned event, unsigned stream,
                        unsigned channel)
{
    return print("\r%07u       DT      ", block) + str(unit) + "       " + print("%04u", event) +
           "         " + print("%02u         %02u   ", stream, channel);
}

std::string progress_sh(unsigned block, std::string_view unit)
{
    return print("\r%07u       SH      ", block) + str(unit) + "          -          -          -   ";
}

std::string progress_params(unsigned block, std::string_view type)
{
    return print("\r%07u       ", block) + str(type) + "         -          -          -          -   ";
}

std::string progress_net(unsigned block, std::string_view type, std::string_view unit, unsigned number)
{
    return print("\r%07u       ", block) + str(type) + "      " + str(unit) + "       " +
           print("%04u", number) + "          -          -    ";
}

std::string head_line(const HeadLine& h)
{
    const bool data = h.type == "DT";
    const bool of_event = data || h.type == "EH" || h.type == "ET" || h.type == "NH" || h.type == "NT";
    std::string line =
        h.type + h.mark + h.time + (data ? h.micros : "   ") + " X:" + h.experiment + " U:" + h.unit;
    if (of_event) {
        line += " E:" + h.event + " D:" + h.stream;
        line += data ? " C:" + h.channel + " S:" + h.samples : std::string(11, ' ');
        line += " F:" + h.format + " G:" + h.flags;
    } else {
        line += std::string(32, ' ');
    }
    return line + " L:" + h.length + " N:" + h.seq + print(" B:%010u", h.block) + "\r\n";
}

Sac& Sac::rate(float samples_per_second)
{
    delta = odelta = 1.0f / samples_per_second;
    return *this;
}

Sac& Sac::stats(float least, float most, float mean)
{
    depmin = least, depmax = most, depmen = mean;
    return *this;
}

namespace {

class Header {
public:
    Header()
    {
        for (int word = 0; word < 70; ++word) put(word, -12345.0f);
        for (int word = 70; word < 105; ++word) put(word, int32_t{-12345});
        for (int word = 105; word < 110; ++word) put(word, int32_t{0});
        put(440, "-12345  ");
        put(448, "-12345          ");
        for (int at = 464; at < 632; at += 8) put(at, "-12345  ");
    }
    void put(int word, float value) { put(4 * word, big_endian(std::bit_cast<uint32_t>(value), 4)); }
    void put(int word, int32_t value) { put(4 * word, big_endian(static_cast<uint32_t>(value), 4)); }
    void put(int at, std::string_view text) { bytes.replace(static_cast<size_t>(at), text.size(), text); }
    std::string bytes = std::string(632, '\0');
};

uint32_t word_at(std::string_view bytes, size_t at)
{
    uint32_t value = 0;
    for (size_t i = 0; i < 4; ++i) value = value << 8 | static_cast<unsigned char>(bytes.at(at + i));
    return value;
}

} // namespace

std::string sac_header(const Sac& s)
{
    Header h;
    h.put(0, s.delta);
    h.put(1, s.depmin);
    h.put(2, s.depmax);
    h.put(3, 1.0f);
    h.put(4, s.odelta);
    h.put(7, s.o);
    h.put(56, s.depmen);
    h.put(57, s.cmpaz);
    h.put(58, s.cmpinc);
    const int32_t time[] = {s.year, s.day, s.hour, s.min, s.sec, s.ms};
    for (int i = 0; i < 6; ++i) h.put(70 + i, time[i]);
    h.put(76, int32_t{6});
    h.put(79, s.npts);
    h.put(85, int32_t{1});
    h.put(86, int32_t{5});
    h.put(87, int32_t{5});
    h.put(92, int32_t{5});
    h.put(93, int32_t{45});
    h.put(94, int32_t{49});
    h.put(105, int32_t{1});
    h.put(106, int32_t{1});
    std::string station = s.kstnm;
    station.resize(8, '\0');
    h.put(440, station);
    h.put(600, s.kcmpnm);
    h.put(608, s.knetwk);
    h.put(616, "????????");
    h.put(624, "VX 900  ");
    return h.bytes;
}

std::string sac_samples(const std::vector<int32_t>& samples)
{
    std::string bytes;
    for (int32_t s : samples) bytes += big_endian(std::bit_cast<uint32_t>(static_cast<float>(s)), 4);
    return bytes;
}

std::string sac_file(const Sac& s, const std::vector<int32_t>& samples)
{
    Sac counted = s;
    counted.npts = static_cast<int32_t>(samples.size());
    return sac_header(counted) + sac_samples(samples);
}

std::vector<float> samples_of(std::string_view sac_bytes)
{
    std::vector<float> samples;
    for (size_t at = 632; at + 4 <= sac_bytes.size(); at += 4) {
        samples.push_back(std::bit_cast<float>(word_at(sac_bytes, at)));
    }
    return samples;
}

uint32_t header_bits(std::string_view sac_bytes, int word)
{
    return sac_bytes.size() < 632 ? 0xDEADBEEF : word_at(sac_bytes, static_cast<size_t>(4 * word));
}

int32_t header_int(std::string_view sac_bytes, int word)
{
    return static_cast<int32_t>(header_bits(sac_bytes, word));
}

std::string header_text(std::string_view sac_bytes, int offset, int len)
{
    if (sac_bytes.size() < 632) return "no header";
    return std::string(sac_bytes.substr(static_cast<size_t>(offset), static_cast<size_t>(len)));
}

std::string mask_clock(std::string text)
{
    static const std::string label = "System time: ";
    for (size_t at = text.find(label); at != text.npos; at = text.find(label, at)) {
        at += label.size();
        const size_t len = std::min<size_t>(24, text.size() - at);
        text.replace(at, len, len, '*');
    }
    return text;
}

std::string mask_run_date(std::string sac_bytes)
{
    if (sac_bytes.size() >= 632) sac_bytes.replace(616, 8, "????????");
    return sac_bytes;
}

Tree masked(Tree tree)
{
    for (auto& [name, bytes] : tree) {
        if (name.ends_with(".sac")) bytes = mask_run_date(std::move(bytes));
        if (name.ends_with(".vxl") || name.ends_with(".qcc")) bytes = mask_clock(std::move(bytes));
    }
    return tree;
}

namespace {

std::string readable(std::string_view bytes)
{
    std::string text;
    for (const char byte : bytes) {
        const auto c = static_cast<uint8_t>(byte);
        if (c == '\r')
            text += "\\r";
        else if (c == '\n')
            text += "\\n\n      ";
        else if (c < 32 || c > 126)
            text += print("\\x%02X", c);
        else
            text += static_cast<char>(c);
    }
    return text;
}

} // namespace

testing::AssertionResult same_bytes(std::string_view actual, std::string_view expected)
{
    if (actual == expected) return testing::AssertionSuccess();
    const size_t common = std::min(actual.size(), expected.size());
    size_t at = 0;
    while (at < common && actual[at] == expected[at]) ++at;
    const size_t from = at < 60 ? 0 : at - 60;
    return testing::AssertionFailure()
           << "bytes differ at " << at << " (sizes " << actual.size() << ", expected " << expected.size()
           << ")\n  before:   " << readable(expected.substr(from, at - from))
           << "\n  actual:   " << readable(actual.substr(at, 160))
           << "\n  expected: " << readable(expected.substr(at, 160));
}

testing::AssertionResult same_tree(const Tree& actual, const Tree& expected)
{
    const Tree a = masked(actual), e = masked(expected);
    if (names(a) != names(e)) {
        return testing::AssertionFailure() << "files are\n" << names(a) << "but should be\n" << names(e);
    }
    for (const auto& [name, bytes] : e) {
        const testing::AssertionResult same = same_bytes(a.at(name), bytes);
        if (!same) return testing::AssertionFailure() << name << ": " << same.message();
    }
    return testing::AssertionSuccess();
}

} // namespace kit
