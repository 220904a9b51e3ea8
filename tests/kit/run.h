// Whole runs of the program, each in a process of its own.
#pragma once

#include "kit/packets.h"
#include "kit/scratch.h"

#include <functional>
#include <memory>
#include <string>
#include <sys/types.h>
#include <utility>
#include <vector>

namespace kit {

using Args = std::vector<std::string>;

struct RunOptions {
    std::string argv0 = "vx_sac"; ///< without "/", so that no INI file in the program's folder is used
    std::string program;          ///< empty: the program under test
    std::vector<std::string> env; ///< whole entries, "NAME=value", behind a small fixed environment
    std::string stdin_text;       ///< what the program can read; then end of file
    bool close_stdin = false;     ///< no standard input at all
    std::string stdout_path;      ///< standard output goes there and not into Outcome::out
    int stdin_fd = -1;            ///< standard input instead of a text; run_vx closes it
    int stdout_fd = -1;           ///< standard output, likewise
    bool terminal = false;        ///< standard output is a terminal; Outcome::out is what it showed
    std::vector<std::pair<int, unsigned long>> limits; ///< RLIMIT_... and value; SIGXFSZ is then ignored
    int mask = -1;                                     ///< umask
    bool as_nobody = false;                            ///< as root, changes to another user before the run
    double signal_after = 0;                           ///< seconds until `signal` is sent, 0 for never
    int signal = 0;
    std::function<void(pid_t run)> meanwhile; ///< called in a thread while the program runs
    double timeout = 60;                      ///< seconds; then the whole process group is killed
};

struct Outcome {
    std::string out, err;
    int status = -1; ///< exit status; -1 if a signal ended the run
    int signal = 0;  ///< that signal
    bool timed_out = false;
    double seconds = 0;    ///< elapsed
    long peak_kb = 0;      ///< most resident memory
    double first_out = -1; ///< seconds until the first and the last byte on standard output
    double last_out = -1;
};

/// Runs the program in `dir`.
Outcome run_vx(const std::string& dir, const Args& args, const RunOptions& options = {});

/// A recording converted in a new scratch directory: `vx_sac rec.pkt out <args>`; `out` is empty before.
struct Converted : Outcome {
    std::shared_ptr<Scratch>
        scratch; ///< the working directory: rec.pkt, out/, and vxu.ini when one was given
    Args args;   ///< all arguments
    std::string argv0;
    Tree tree; ///< the files in out/
    const std::string&
    file(const std::string& name) const; ///< a file of the tree; a missing one fails the test
    std::vector<std::string> sac_names() const;
};

struct ConvertOptions {
    std::string ini; ///< text of vxu.ini; none when empty
    std::string name = "rec.pkt";
    RunOptions run;
};

Converted convert(const Recording& recording, const Args& args = {}, const ConvertOptions& options = {});
/// Converts the same recording or another one into the same output directory.
Converted convert_again(const Converted& before, const Recording& recording, const Args& args = {},
                        const ConvertOptions& options = {});

} // namespace kit
