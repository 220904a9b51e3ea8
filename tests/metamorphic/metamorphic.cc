// Relations between runs: what a change of the switches or of the input must do to the traces, whatever the
// traces are. No single run is compared with an expected result, only with another run.
// vx_metamorphic COUNT [SEED [FIRST]]: so many recordings, half of them made well, half of them hostile.
#include "kit/expect.h"
#include "kit/run.h"
#include "stress/inputs.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <string>
#include <tuple>
#include <vector>

namespace {

using namespace stress;
using kit::Args;
using kit::Recording;

constexpr size_t Packet = kit::Packet_len;
constexpr size_t Header = 632;           // bytes of a SAC header
constexpr int Statistics[] = {1, 2, 56}; // its words DEPMIN, DEPMAX, DEPMEN
constexpr unsigned long File_size_most = 16UL << 20;

/// A recording with what the relations must know of it.
struct Stream {
    Recording recording;
    std::string ini;
    Args args;           ///< switches of every run
    bool well = false;   ///< made by vx_mkrec
    bool ending = false; ///< and every event of it ends
    std::string how;
};

using Traces = std::map<std::string, std::string>; ///< name without its folder, and bytes

Traces traces_of(const kit::Tree& tree)
{
    Traces traces;
    for (const auto& [path, bytes] : kit::masked(tree))
        if (path.ends_with(".sac")) traces[path.substr(path.rfind('/') + 1)] = bytes;
    return traces;
}

kit::ConvertOptions options_of(const Stream& in)
{
    kit::ConvertOptions options;
    options.ini = in.ini;
    options.run.limits = {{RLIMIT_FSIZE, File_size_most}, {RLIMIT_CORE, 0}};
    return options;
}

Args joined(Args args, const Args& more)
{
    args.insert(args.end(), more.begin(), more.end());
    return args;
}

struct Result {
    int status;
    Traces traces;
};

Result convert(const Stream& in, const Args& more, const Recording& recording)
{
    const kit::Converted run = kit::convert(recording, joined(in.args, more), options_of(in));
    return {run.status, traces_of(run.tree)};
}
Result convert(const Stream& in, const Args& more)
{
    return convert(in, more, in.recording);
}

std::string samples(const std::string& trace)
{
    return trace.substr(std::min(Header, trace.size()));
}

/// The sample bytes of all traces, for relations under which names may change hands.
std::vector<std::string> all_samples(const Traces& traces)
{
    std::vector<std::string> list;
    for (const auto& [name, bytes] : traces) list.push_back(samples(bytes));
    std::sort(list.begin(), list.end());
    return list;
}

/// Empty, or what is wrong: statuses and names are alike, and `alike` holds of every pair of traces.
std::string pairwise(const Result& plain, const Result& other,
                     const std::function<bool(const std::string&, const std::string&)>& alike)
{
    if (plain.status != other.status) return "status " + std::to_string(other.status);
    if (plain.traces.size() != other.traces.size()) return std::to_string(other.traces.size()) + " traces";
    for (const auto& [name, bytes] : plain.traces) {
        const auto twin = other.traces.find(name);
        if (twin == other.traces.end()) return "no trace " + name;
        if (!alike(bytes, twin->second)) return "trace " + name;
    }
    return "";
}

std::string same(const Result& plain, const Result& other)
{
    return pairwise(plain, other, std::equal_to<>());
}

std::string a_second_run_gives_the_same(const Stream& in, const Result& plain, Chance&)
{
    return same(plain, convert(in, {}));
}

std::string folders_only_move_files(const Stream& in, const Result& plain, Chance& chance)
{
    return same(plain, convert(in, {"-P" + std::to_string(chance.from_to(1, 4))}));
}

std::string logs_change_no_trace(const Stream& in, const Result& plain, Chance& chance)
{
    Args args = {chance.of({"-LN", "-LY"}), chance.of({"-DN", "-DY"}), chance.of({"-VN", "-VY"})};
    return same(plain, convert(in, args));
}

/// The statistics leave the headers; nothing else may change.
std::string without_statistics(std::string trace)
{
    for (const int word : Statistics) trace.replace(static_cast<size_t>(4 * word), 4, "????");
    return trace;
}

std::string statistics_change_no_sample(const Stream& in, const Result& plain, Chance&)
{
    return pairwise(plain, convert(in, {"-QY"}), [](const std::string& a, const std::string& b) {
        return without_statistics(a) == without_statistics(b);
    });
}

std::string a_limit_keeps_the_first_samples(const Stream& in, const Result& plain, Chance& chance)
{
    const unsigned n = chance.from_to(1, chance.one_in(2) ? 50 : 5000);
    return pairwise(plain, convert(in, {"-S" + std::to_string(n)}),
                    [n](const std::string& whole, const std::string& cut) {
                        return samples(cut) == samples(whole).substr(0, size_t{4} * n);
                    });
}

unsigned bcd(const Recording& recording, size_t at, size_t bytes)
{
    unsigned value = 0;
    for (size_t i = 0; i < bytes; ++i) {
        const unsigned byte = static_cast<unsigned char>(recording[at + i]);
        value = value * 100 + byte / 16 * 10 + byte % 16;
    }
    return value;
}

/// What is left when n samples are dropped at the start: of each packet the last ones, until n are dropped.
std::string dropped(const std::string& whole, const std::vector<unsigned>& counts, unsigned n)
{
    std::string left;
    size_t at = 0;
    for (const unsigned count : counts) {
        const unsigned drop = std::min(n, count);
        left += whole.substr(at, size_t{4} * (count - drop));
        at += size_t{4} * count;
        n -= drop;
    }
    return left;
}

/// For each unit, stream, channel and event the sample counts of its packets.
std::vector<std::vector<unsigned>> packet_counts(const Recording& recording)
{
    std::map<std::tuple<unsigned, unsigned, unsigned, unsigned>, std::vector<unsigned>> counts;
    for (size_t at = 0; at < recording.size(); at += Packet) {
        if (recording.compare(at, 2, "DT") != 0) continue;
        const unsigned unit = static_cast<unsigned char>(recording[at + 4]) * 256U +
                              static_cast<unsigned char>(recording[at + 5]);
        counts[{unit, bcd(recording, at + 18, 1), bcd(recording, at + 19, 1), bcd(recording, at + 16, 2)}]
            .push_back(bcd(recording, at + 20, 2));
    }
    std::vector<std::vector<unsigned>> lists;
    for (const auto& [key, list] : counts) lists.push_back(list);
    return lists;
}

std::string dropping_cuts_each_channel(const Stream& in, const Result& plain, Chance& chance)
{
    const unsigned n = chance.from_to(1, chance.one_in(2) ? 50 : 5000);
    const Result cut = convert(in, {"-T" + std::to_string(n)});
    const auto fewer = [n](const std::string& whole, const std::string& left) {
        const size_t most = samples(whole).size(), least = std::min(size_t{4} * n, most);
        return samples(left).size() == most - least;
    };
    const std::string what = pairwise(plain, cut, fewer);
    if (!what.empty() || !in.well) return what;

    for (const std::vector<unsigned>& counts : packet_counts(in.recording)) {
        size_t sum = 0;
        for (const unsigned count : counts) sum += count;
        // The packets know no trace: of those of this length, any that leaves what is there.
        bool found = false;
        for (const auto& [name, bytes] : plain.traces) {
            if (samples(bytes).size() != 4 * sum) continue;
            found = found || dropped(samples(bytes), counts, n) == samples(cut.traces.at(name));
        }
        if (!found) return "a channel of " + std::to_string(sum) + " samples, -T" + std::to_string(n);
    }
    return "";
}

std::string unit_of(const Recording& recording, size_t at)
{
    const std::string unit = recording.substr(at + 4, 2);
    return unit == std::string(2, '\0') ? "\xFF\xFF" : unit; // they are one
}

/// The units' packets in another order, each unit's own order kept.
Recording shuffled_units(const Recording& recording, Chance& chance)
{
    std::vector<std::vector<size_t>> queues;
    std::map<std::string, size_t> queue_of;
    size_t packets = 0;
    for (size_t at = 0; at + Packet <= recording.size(); at += Packet, ++packets) {
        const auto [entry, added] = queue_of.try_emplace(unit_of(recording, at), queues.size());
        if (added) queues.emplace_back();
        queues[entry->second].push_back(at);
    }
    Recording mixed;
    std::vector<size_t> next(queues.size(), 0);
    while (mixed.size() < packets * Packet) {
        const unsigned q = chance.below(static_cast<unsigned>(queues.size()));
        for (unsigned run = chance.from_to(1, 6); run > 0 && next[q] < queues[q].size(); --run)
            mixed += recording.substr(queues[q][next[q]++], Packet);
    }
    return mixed + recording.substr(packets * Packet); // a piece of a packet stays where it is, at the end
}

std::string the_order_of_units_changes_no_sample(const Stream& in, const Result& plain, Chance& chance)
{
    const Result mixed = convert(in, {}, shuffled_units(in.recording, chance));
    if (mixed.status != plain.status) return "status " + std::to_string(mixed.status);
    if (in.well) return same(plain, mixed);
    return all_samples(mixed.traces) == all_samples(plain.traces) ? "" : "samples";
}

/// A place behind which no event is open that has packets before it; the end if there is none other.
size_t event_border(const Recording& recording, Chance& chance)
{
    std::vector<size_t> borders;
    std::map<std::string, int> open;
    for (size_t at = 0; at < recording.size(); at += Packet) {
        const std::string type = recording.substr(at, 2);
        const std::string event = unit_of(recording, at) + recording.substr(at + 16, 2);
        if (type == "EH" || type == "DT") open[event] = 1;
        if (type == "ET" && (recording[at + 22] & 4) == 0) open.erase(event);
        if (open.empty()) borders.push_back(at + Packet);
    }
    return borders.empty() ? recording.size() : borders[chance.below(static_cast<unsigned>(borders.size()))];
}

std::string pieces_give_what_the_whole_gives(const Stream& in, const Result& plain, Chance& chance)
{
    if (!in.ending) return "";
    const size_t border = event_border(in.recording, chance);
    if (border == in.recording.size()) return "";
    const kit::ConvertOptions options = options_of(in);
    const kit::Converted first = kit::convert(in.recording.substr(0, border), in.args, options);
    const kit::Converted both = kit::convert_again(first, in.recording.substr(border), in.args, options);
    return pairwise(plain, {both.status, traces_of(both.tree)},
                    [](const std::string& a, const std::string& b) { return samples(a) == samples(b); });
}

std::string recordings_joined_give_what_both_give(const Stream& in, const Result& plain, Chance&)
{
    if (!in.ending) return "";
    const std::vector<std::string> once = all_samples(plain.traces);
    std::vector<std::string> twice = once;
    twice.insert(twice.end(), once.begin(), once.end());
    std::sort(twice.begin(), twice.end());
    const Result joined = convert(in, {}, in.recording + in.recording);
    if (joined.status != plain.status) return "status " + std::to_string(joined.status);
    return all_samples(joined.traces) == twice ? "" : "samples";
}

struct Relation {
    const char* name;
    std::string (*holds)(const Stream& in, const Result& plain, Chance& chance);
};
#define RELATION(name)                                                                                       \
    {                                                                                                        \
#name, name                                                                                          \
    }
constexpr Relation Relations[] = {
    RELATION(a_second_run_gives_the_same),
    RELATION(folders_only_move_files),
    RELATION(logs_change_no_trace),
    RELATION(statistics_change_no_sample),
    RELATION(a_limit_keeps_the_first_samples),
    RELATION(dropping_cuts_each_channel),
    RELATION(the_order_of_units_changes_no_sample),
    RELATION(pieces_give_what_the_whole_gives),
    RELATION(recordings_joined_give_what_both_give),
};

Stream made_stream(Chance& chance)
{
    const auto number = [&](unsigned first, unsigned last) {
        return std::to_string(chance.from_to(first, last));
    };
    Args options = {"--units",    number(1, 4),
                    "--streams",  number(1, 3),
                    "--channels", number(1, 4),
                    "--events",   number(1, 3),
                    "--seconds",  number(1, 8),
                    "--seed",     number(1, 1000000),
                    "--rate",     chance.of({"200,50", "100", "1000,20,1", "500,250"}),
                    "--format",   chance.of({"c2", "c0", "32", "16", "c2,c0,32,16", "16,c2,c0", "32,c0"}),
                    "--signal",   chance.of({"quake", "quiet", "loud", "offset", "mixed"})};
    Stream in;
    in.ending = !chance.one_in(4);
    if (!in.ending) options.push_back("--no-et");
    if (chance.one_in(2)) options.push_back("--interleave");
    if (chance.one_in(3)) options.push_back("--no-parameters");
    if (chance.one_in(6)) options.push_back("--bad-check");
    in.recording = made_well(options);
    in.well = true;
    for (const std::string& option : options) in.how += option + " ";
    return in;
}

Stream hostile_stream(Chance& chance, const Recording& base)
{
    Input hostile = make_input(chance, {base});
    while (hostile.slow) hostile = make_input(chance, {base});
    Stream in;
    in.recording = hostile.recording;
    in.ini = hostile.ini;
    in.how = hostile.kind;
    return in;
}

struct Account {
    unsigned streams = 0, ended_otherwise = 0, checks = 0, findings = 0;
    unsigned long traces = 0;
};

void try_stream(uint64_t seed, uint64_t number, const Recording& base, Account& account)
{
    Chance chance(seed * 1000003 + number);
    Stream in = chance.one_in(2) ? made_stream(chance) : hostile_stream(chance, base);
    if (chance.one_in(3)) in.args.push_back("-N1");
    const Result plain = convert(in, {});
    ++account.streams;
    account.traces += plain.traces.size();
    if (plain.status != 0) { // a run that ended early keeps to none of this
        ++account.ended_otherwise;
        return;
    }
    for (const Relation& relation : Relations) {
        ++account.checks;
        const std::string what = relation.holds(in, plain, chance);
        if (what.empty()) continue;
        ++account.findings;
        printf("stream %lu (%s): %s: %s\n", static_cast<unsigned long>(number), in.how.c_str(), relation.name,
               what.c_str());
        fflush(stdout);
    }
}

} // namespace

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    if (argc < 2 || argc > 4) {
        fprintf(stderr, "Usage: vx_metamorphic COUNT [SEED [FIRST]]\n");
        return 2;
    }
    const auto number = [&](int i, uint64_t otherwise) -> uint64_t {
        return argc > i ? strtoull(argv[i], nullptr, 10) : otherwise;
    };
    const uint64_t count = number(1, 0), seed = number(2, 1), first = number(3, 1);
    const Recording base = made_well({"--seconds", "20", "--interleave"});
    if (base.empty()) return 1;

    Account account;
    for (uint64_t n = first; n < first + count; ++n) try_stream(seed, n, base, account);
    printf("%u streams (%u of them ended with another status than 0), %lu traces, %u checks of %zu "
           "relations, %u findings\n",
           account.streams, account.ended_otherwise, account.traces, account.checks, std::size(Relations),
           account.findings);
    return account.findings == 0 && account.traces > 0 ? 0 : 1;
}
