// vx_ls: lists and repairs the traces in an output tree of vx_sac. Statuses: 0 done, 1 something could not be
// read or written, 2 bad arguments.
#include "driver/base/console.h"
#include "ls/begin.h"
#include "ls/finish.h"
#include "ls/list.h"
#include "ls/options.h"
#include "ls/tell.h"
#include "ls/text.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <new>

using namespace ls;

static constexpr int Not_all = 1, Bad_arguments = 2;

static bool list_traces(const Options& options)
{
    const trace::Walk walk = trace::find_traces(options.paths);
    bool all = tell_troubles(walk);
    std::vector<Entry> entries;
    for (const trace::TracePath& file : walk.files) {
        entries.push_back(read_entry(file.path));
        if (!entries.back().is_lost()) continue;
        complain(file.path, why_lost(entries.back()));
        all = false;
    }
    mark_gaps(entries);
    if (options.task == TaskKind::json)
        print_json(entries);
    else
        print_table(entries);
    return all;
}

static bool run(const Options& options)
{
    switch (options.task) {
    case TaskKind::help: return fputs(Help_text, stdout) >= 0;
    case TaskKind::version: return printf("vx_ls %s\n", VX_VERSION) > 0;
    case TaskKind::finish: return finish_traces(options.paths, options.finishing);
    case TaskKind::set_begin: return copy_with_begin(options.dir, options.paths);
    default: return list_traces(options);
    }
}

int main(int argc, char** argv)
try {
    signal(SIGXFSZ,
           SIG_IGN);        // so that writing beyond the file size limit fails instead of killing the process
    signal(SIGIO, SIG_IGN); // sent when another program waits for the end of a lease
    console_start();
    Options options;
    std::string complaint;
    if (!read_options(std::vector<std::string>(argv + (argc ? 1 : 0), argv + argc), options, complaint)) {
        fprintf(stderr, "vx_ls: %s\nTry vx_ls --help\n", printable(complaint).c_str());
        return Bad_arguments;
    }
    const bool all = run(options);
    // A listing that could not be written completely must not look like a short one.
    if (fflush(stdout) != 0 || ferror(stdout)) {
        fprintf(stderr, "vx_ls: standard output: %s\n", strerror(errno));
        return Not_all;
    }
    return all ? 0 : Not_all;
} catch (const std::bad_alloc&) {
    fprintf(stderr, "vx_ls: out of memory\n");
    return Not_all;
}
