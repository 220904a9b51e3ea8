#include "ls/options.h"

#include <optional>

namespace ls {

const char Help_text[] =
    "Usage: vx_ls [--json] [PATH...]\n"
    "       vx_ls --finish [--force] [--dry-run] PATH...\n"
    "       vx_ls --set-begin DIR PATH...\n"
    "Lists the SAC traces (*.sac, *.SAC) below the directories PATH, or the files PATH; without one, below "
    "the "
    "working\n"
    "directory.\n"
    "\n"
    "  --json            one JSON array instead of a table\n"
    "  --finish          completes the headers of traces whose run was killed, except traces that may\n"
    "                    still be written\n"
    "  --force           with --finish: finishes those, too\n"
    "  --dry-run         with --finish: prints what would be done, writes nothing\n"
    "  --set-begin DIR   copies traces into DIR with B = 0 and E = (NPTS - 1) * DELTA; overwrites nothing\n"
    "  -h, --help, --version\n"
    "\n"
    "Flags: unreadable, not-sac, unfinished (the run was killed), empty, cut (shorter than the header "
    "says),\n"
    "extra (longer), no-rate, no-time, qc-reset (statistics are in the QC files), gap, overlap.\n"
    "Status: 0, or 1 if something could not be read or written, or 2 for a mistake on the command line.\n";

namespace {

std::optional<TaskKind> task_of(const std::string& arg)
{
    if (arg == "--json") return TaskKind::json;
    if (arg == "--finish") return TaskKind::finish;
    if (arg == "--set-begin") return TaskKind::set_begin;
    if (arg == "-h" || arg == "--help") return TaskKind::help;
    if (arg == "--version") return TaskKind::version;
    return std::nullopt;
}

/// Takes an option that is allowed with --finish; returns false for any other.
bool take_manner(const std::string& arg, Finishing& how, std::string& manner)
{
    if (arg != "--force" && arg != "--dry-run") return false;
    (arg == "--force" ? how.force : how.dry_run) = true;
    manner = arg;
    return true;
}

bool needs_paths(TaskKind task)
{
    return task == TaskKind::finish || task == TaskKind::set_begin;
}

} // namespace

bool read_options(const std::vector<std::string>& args, Options& options, std::string& complaint)
{
    bool only_paths = false;
    const auto is_option = [&](const std::string& arg) {
        return !only_paths && arg.size() > 1 && arg[0] == '-';
    };
    std::string chosen, manner;
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string& arg = args[i];
        if (!is_option(arg)) {
            options.paths.push_back(arg);
            continue;
        }
        if (arg == "--") {
            only_paths = true;
            continue;
        }
        if (take_manner(arg, options.finishing, manner)) continue;
        const std::optional<TaskKind> task = task_of(arg);
        if (!task) return complaint = "no such option: " + arg, false;
        if (!chosen.empty()) return complaint = chosen + " and " + arg + " do not go together", false;
        chosen = arg;
        options.task = *task;
        if (*task == TaskKind::help || *task == TaskKind::version) return true;
        if (*task != TaskKind::set_begin) continue;
        if (++i == args.size() || args[i].empty()) return complaint = "--set-begin needs a directory", false;
        options.dir = args[i];
    }
    if (!manner.empty() && options.task != TaskKind::finish)
        return complaint = manner + " goes with --finish only", false;
    if (needs_paths(options.task) && options.paths.empty())
        return complaint = chosen + " needs a path", false;
    if (options.paths.empty()) options.paths = {"."};
    return true;
}

} // namespace ls
