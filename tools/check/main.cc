// vx_check: what is in a recording, and what is wrong with it. Statuses: 0 no errors found, 1 errors, 2
// mistake on the command line, 3 not readable, empty or no recording.
#include "check/options.h"
#include "check/run.h"
#include "check/write.h"
#include "driver/base/console.h"
#include "ls/text.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <new>

using namespace check;

static constexpr int Bad_arguments = 2, Not_read = 3;

static int say(const std::string& text)
{
    return fputs(text.c_str(), stdout) >= 0 && fflush(stdout) == 0 ? 0 : Not_read;
}

/// The table of codes as tab-separated values.
static std::string all_codes()
{
    std::string out = "code\tseverity\tsentence\n";
    for (const CodeInfo& info : Codes)
        out += std::string(info.name) + (info.severity == Severity::error ? "\terror\t" : "\tnote\t") +
               info.sentence + "\n";
    return out;
}

static int look(const Options& options, const char* argv0)
{
    take_switches(options.switches);
    settle_station_file(options, argv0);
    OwnOutput out; // from here on, what the packet library prints goes nowhere
    if (!out.opened()) {
        fprintf(stderr, "vx_check: standard output: %s\n", strerror(errno));
        return Not_read;
    }
    const int worst = check_files(options, out);
    if (out.close()) return worst;
    fprintf(stderr, "vx_check: standard output: %s\n", strerror(errno));
    return Not_read;
}

int main(int argc, char** argv)
try {
    signal(SIGXFSZ, SIG_IGN); // a file too large for the user's limit is a failed write, not a sudden end
    console_start();
    Options options;
    std::string complaint;
    if (!read_options(std::vector<std::string>(argv + (argc ? 1 : 0), argv + argc), options, complaint)) {
        fprintf(stderr, "vx_check: %s\nTry vx_check --help\n", ls::printable(complaint).c_str());
        return Bad_arguments;
    }
    switch (options.view) {
    case View::help: return say(Help_text);
    case View::version: return say("vx_check " VX_VERSION "\n");
    case View::codes: return say(all_codes());
    default: return look(options, argv[0]);
    }
} catch (const std::bad_alloc&) {
    fprintf(stderr, "vx_check: out of memory\n");
    return Not_read;
}
