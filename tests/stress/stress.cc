// Runs the program over random and spoilt inputs for a given time and watches how each run ends:
//     vx_stress SECONDS [SEED [FOLDER [CASE]]]
//     vx_stress --write COUNT SEED FOLDER      only writes that many inputs, for other uses
// Every input is made from the seed and its number, so a case can be repeated by its number alone. Inputs
// that the program did not survive are kept in FOLDER. Status 0 when there is none, 1 when there are some.
#include "kit/run.h"
#include "stress/inputs.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <sys/resource.h>

namespace fs = std::filesystem;

namespace {

using namespace stress;

constexpr unsigned long File_size_most = 16UL << 20; // reached now and then: then the status is 22
constexpr double Seconds_most = 60;
constexpr long Memory_most_kb = 1L << 20; // far more than any input here needs, the sanitizers' own included
constexpr uintmax_t Sac_header_len = 632;
constexpr int Worst_cases = 20;

struct Account {
    unsigned runs = 0, findings = 0;
    std::map<std::string, unsigned> kinds;
    std::map<int, unsigned> statuses;
    double longest = 0;
    long most_kb = 0;
};

/// The scratch folder of one case: the program runs three levels down, so that a way out through ".." is
/// seen.
struct Place {
    kit::Scratch top;
    std::string run = top.path("a/b/run");
};

kit::RunOptions limits()
{
    kit::RunOptions options;
    options.timeout = Seconds_most;
    options.limits = {{RLIMIT_FSIZE, File_size_most}, {RLIMIT_CORE, 0}};
    return options;
}

void lay_out(const Place& place, const Input& in)
{
    place.top.write("a/b/run/rec.pkt", in.recording);
    if (!in.ini.empty()) place.top.write("a/b/run/vxu.ini", in.ini);
    place.top.make_dir("a/b/run/out");
}

/// What stands outside of the output folder, with its bytes.
kit::Tree surroundings(const Place& place)
{
    kit::Tree tree;
    const fs::path out = fs::path(place.run) / "out";
    for (auto at = fs::recursive_directory_iterator(place.top.dir());
         at != fs::recursive_directory_iterator(); ++at) {
        if (at->path() == out) at.disable_recursion_pending();
        tree[at->path().string()] = at->is_regular_file() ? kit::read_file(at->path().string()) : "";
    }
    return tree;
}

bool documented(int status, const Input& in)
{
    static constexpr int any_time[] = {0, 22, 23};
    if (status == 1) return in.recording.empty();
    if (status == 20) return in.slow;
    return std::find(std::begin(any_time), std::end(any_time), status) != std::end(any_time);
}

int32_t be32(const std::string& bytes, size_t at)
{
    uint32_t v = 0;
    for (size_t i = 0; i < 4; ++i) v = v << 8 | static_cast<uint8_t>(bytes[at + i]);
    return static_cast<int32_t>(v);
}

/// After a run that ended well every trace holds what its header says.
std::string check_traces(const Place& place)
{
    for (const auto& [name, bytes] : place.top.tree("a/b/run/out")) {
        if (!name.ends_with(".sac")) continue;
        if (bytes.size() < Sac_header_len) return name + " has no header";
        const auto samples = static_cast<uint32_t>(be32(bytes, 316));
        if (be32(bytes, 304) != 6 || bytes.size() != Sac_header_len + uintmax_t{4} * samples)
            return name + " is not what its header says";
    }
    return "";
}

/// What is wrong with a run; empty when nothing is.
std::string complaint(const kit::Outcome& run, const Input& in)
{
    if (run.timed_out) return "it did not end";
    if (run.signal) return "signal " + std::to_string(run.signal);
    for (const char* word : {"Sanitizer", "runtime error", "terminate called"})
        if (run.err.find(word) != std::string::npos) return word;
    if (!documented(run.status, in)) return "status " + std::to_string(run.status);
    if (run.status == 0 && !run.err.empty()) return "words on standard error, and status 0";
    if (run.status == 22 && run.err.find("File write error") == std::string::npos &&
        run.out.find("File write error") == std::string::npos)
        return "status 22 without a word";
    if (run.peak_kb > Memory_most_kb) return std::to_string(run.peak_kb) + " KB of memory";
    return "";
}

std::string account_of(const kit::Outcome& run, const Input& in, const std::string& what)
{
    std::string text = what + "\nkind " + in.kind + "\nswitches";
    for (const std::string& arg : in.args) text += " " + arg;
    return text + "\nstatus " + std::to_string(run.status) + ", signal " + std::to_string(run.signal) +
           "\nstandard error:\n" + run.err + "\nend of the console:\n" +
           run.out.substr(run.out.size() > 2000 ? run.out.size() - 2000 : 0) + "\n";
}

/// Writes an input as files; a case's folder also tells the switches.
std::string write_case(const std::string& folder, uint64_t number, const Input& in)
{
    const std::string case_folder = folder + "/case-" + std::to_string(number);
    fs::create_directories(case_folder);
    kit::write_file(case_folder + "/rec.pkt", in.recording);
    if (!in.ini.empty()) kit::write_file(case_folder + "/vxu.ini", in.ini);
    std::string switches;
    for (const std::string& arg : in.args) switches += arg + " ";
    kit::write_file(case_folder + "/switches", switches + "\n");
    return case_folder;
}

/// One run, and for some a second one into the same folder, whose names are then taken.
std::string try_once(const Place& place, const Input& in, kit::Outcome& run)
{
    const kit::Tree before = surroundings(place);
    kit::Args args = {"rec.pkt", "out"};
    args.insert(args.end(), in.args.begin(), in.args.end());
    run = kit::run_vx(place.run, args, limits());
    std::string what = complaint(run, in);
    if (what.empty() && surroundings(place) != before)
        what = "something outside of the output folder changed";
    if (what.empty() && run.status == 0) what = check_traces(place);
    return what;
}

Chance chance_of(uint64_t seed, uint64_t number)
{
    return Chance(seed * 1000003 + number);
}

void one_case(uint64_t seed, uint64_t number, const std::vector<kit::Recording>& bases,
              const std::string& folder, Account& account)
{
    Chance chance = chance_of(seed, number);
    const Input in = make_input(chance, bases);
    const Place place;
    lay_out(place, in);
    for (unsigned times = chance.one_in(8) ? 2 : 1; times > 0; --times) {
        kit::Outcome run;
        const std::string what = try_once(place, in, run);
        ++account.runs;
        ++account.kinds[in.kind];
        ++account.statuses[run.status];
        account.longest = std::max(account.longest, run.seconds);
        account.most_kb = std::max(account.most_kb, run.peak_kb);
        if (what.empty()) continue;
        ++account.findings;
        const std::string text = account_of(run, in, what);
        printf("case %s: %s\n", std::to_string(number).c_str(), text.c_str());
        if (account.findings <= Worst_cases)
            kit::write_file(write_case(folder, number, in) + "/what.txt", text);
        return;
    }
}

/// A made recording of every data format, and the real ones where they are.
std::vector<kit::Recording> base_recordings()
{
    std::vector<kit::Recording> bases = {made_well({"--seconds", "20", "--interleave"})};
    for (const char* name : {"rec1.pkt", "rec2.pkt", "rec3.pkt", "rec4.pkt"}) {
        const std::string path = std::string(VX_SHARED_DATA) + "/" + name;
        if (fs::exists(path)) bases.push_back(kit::read_file(path));
    }
    return bases;
}

void show(const Account& account)
{
    printf("%u runs, %u findings; longest %.1f s, most memory %ld KB\n", account.runs, account.findings,
           account.longest, account.most_kb);
    for (const auto& [kind, n] : account.kinds) printf("   %-8s %u\n", kind.c_str(), n);
    for (const auto& [status, n] : account.statuses) printf("   status %-3d %u\n", status, n);
}

} // namespace

static int usage()
{
    fprintf(stderr, "Usage: vx_stress SECONDS [SEED [FOLDER [CASE]]]\n"
                    "       vx_stress --write COUNT SEED FOLDER\n");
    return 2;
}

static int write_cases(const std::vector<kit::Recording>& bases, uint64_t count, uint64_t seed,
                       const std::string& folder)
{
    for (uint64_t number = 1; number <= count; ++number) {
        Chance chance = chance_of(seed, number);
        const Input in = make_input(chance, bases);
        if (!in.slow) write_case(folder, number, in);
    }
    return 0;
}

static Account run_cases(const std::vector<kit::Recording>& bases, double seconds, uint64_t seed,
                         const std::string& folder)
{
    using Clock = std::chrono::steady_clock;
    const Clock::time_point end = Clock::now() + std::chrono::milliseconds(static_cast<long>(seconds * 1000));
    Account account;
    for (uint64_t number = 1; Clock::now() < end; ++number) one_case(seed, number, bases, folder, account);
    return account;
}

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    if (argc < 2 || argc > 5) return usage();
    const std::vector<std::string> args(argv + 1, argv + argc);
    const auto number = [&](size_t i) -> uint64_t { return strtoull(args[i].c_str(), nullptr, 10); };

    const std::vector<kit::Recording> bases = base_recordings();
    if (std::any_of(bases.begin(), bases.end(), [](const kit::Recording& base) { return base.empty(); })) {
        fprintf(stderr, "vx_stress: a recording to start from is missing or empty\n");
        return 1;
    }
    if (args[0] == "--write")
        return args.size() == 4 ? write_cases(bases, number(1), number(2), args[3]) : usage();

    const uint64_t seed = args.size() > 1 ? number(1) : 1;
    const std::string folder = args.size() > 2 ? args[2] : "stress-findings";
    Account account;
    if (args.size() > 3)
        one_case(seed, number(3), bases, folder, account);
    else
        account = run_cases(bases, strtod(args[0].c_str(), nullptr), seed, folder);
    show(account);
    return account.findings == 0 && account.runs > 0 ? 0 : 1;
}
