#include "stress/inputs.h"

#include "stress/recordings.h"

#include <algorithm>

namespace stress {

namespace {

constexpr const char* Keys[] = {
    "DASType",    "Altitude", "Latitude", "Longitude",  "Network",    "NetSEED", "Station", "Orientation",
    "StatDASCnt", "CosNet",   "CosStn",   "CosGeology", "StatChnCnt", "FSA",     "Res",     "Band",
    "Type",       "Axis",     "SnsMake",  "SnsModel",   "SnsSN",      "SnsFSA",  "SnsVPU",  "SnsFreq",
    "SnsDamp",    "Lat",      "Lon",      "Alt",        "Azm",        "Depth",   "Dip",     "NZNP",
    "Zero",       "Pole",     "Norm",     "SeisComp",   "StnChn"};
constexpr const char* Heads[] = {"",      "",    "Ch1",  "Ch01",  "Ch10", "ChA",    "Ch0", "ChAA",
                                 "Ch:",   "Cha", "Ch99", "ch32",  "Ch/",  "Ch\xff", "Ch",  "C",
                                 "Ch010", "Ch2", "CH16", "Ch999", "Ch-1", "Ch1\0"};
constexpr const char* Values[] = {
    "STA01",
    "",
    " ",
    "99999999999999999999",
    "-99999999999999999999",
    "1e999",
    "nan",
    "-inf",
    "0x1p-1074",
    "%s%s%n%n",
    ";",
    "Vexar Inc",
    "Accelerometer",
    "AX-21/3/INT",
    "../../x",
    "47.55 ; degrees",
    "\xc3\xa9\xff",
    ("aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa"
     "aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa")};
constexpr const char* Sections[] = {"[9A2F]", "[9a2f]", "[0001]", "[FFFF]", "[0000]",  "[9A30",  "[ 9A2F ]",
                                    "[]",     "[",      "]",      "[GGGG]", "[9A2FF]", "[8F21]", "[91D4]"};

std::string ini_line(Chance& chance)
{
    if (chance.one_in(20)) return chance.bytes(chance.below(300));
    const char* between = chance.of({"=", " = ", "", "==", "\t=", "= ;"});
    return std::string(chance.of(Heads)) + chance.of(Keys) + between + chance.of(Values);
}

std::string station_file(Chance& chance)
{
    std::string text;
    for (unsigned n = chance.below(60); n > 0; --n) {
        text += chance.one_in(6) ? chance.of(Sections) : ini_line(chance);
        text += chance.of({"\n", "\n", "\r\n", "\n\n", "", "\r"});
    }
    if (text.empty()) return text;
    for (unsigned n = chance.one_in(2) ? chance.below(10) : 0; n > 0; --n)
        text[chance.below(static_cast<unsigned>(text.size()))] = chance.byte();
    return text;
}

kit::Args switches(Chance& chance)
{
    kit::Args args;
    if (chance.one_in(2)) args.push_back("-QY");
    if (chance.one_in(5)) args.push_back("-LN");
    if (chance.one_in(3)) args.push_back("-DY");
    if (chance.one_in(3)) args.push_back("-VN");
    if (chance.one_in(3)) args.push_back("-P" + std::to_string(chance.below(5)));
    if (chance.one_in(4)) args.push_back("-N1");
    if (chance.one_in(4))
        args.push_back(chance.of({"-S0", "-S1", "-S100", "-S0x10", "-S-1", "-S99999999999999"}));
    if (chance.one_in(4)) args.push_back(chance.of({"-T1", "-T25", "-T100000", "-T-1", "-T0xFFFFFFFF"}));
    if (chance.one_in(6)) args.push_back(chance.of({"-R1/0", "-Rnan", "-R-1", "-R1e999", "-R0/0", "-R"}));
    return args;
}

} // namespace

kit::Recording made_well(kit::Args options)
{
    const kit::Scratch scratch;
    kit::RunOptions run;
    run.program = VX_MKREC_PROGRAM;
    run.argv0 = "vx_mkrec";
    options.push_back("made.pkt");
    kit::run_vx(scratch.dir(), options, run);
    return scratch.read("made.pkt");
}

Input make_input(Chance& chance, const std::vector<kit::Recording>& bases)
{
    Input in;
    const unsigned kind = chance.below(16);
    if (kind < 3) {
        in.kind = "noise";
        in.recording = noise(chance);
    } else if (kind < 9) {
        in.kind = "hostile";
        in.recording = hostile(chance);
    } else if (kind < 10) {
        in.kind = "crowd";
        in.recording = crowd(chance);
    } else {
        in.kind = "spoilt";
        in.recording = spoilt(chance, bases[chance.below(static_cast<unsigned>(bases.size()))]);
    }
    if (!chance.one_in(4)) in.ini = station_file(chance);
    in.slow = spare_slashes(chance, in.recording);
    if (!in.slow) std::replace(in.ini.begin(), in.ini.end(), '/', '_');
    in.args = switches(chance);
    return in;
}

} // namespace stress
