// One child process per run: fork, exec, two pipes (or a terminal), wait4.
#include "kit/run.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <poll.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <termios.h>
#include <thread>
#include <unistd.h>

namespace kit {

namespace {

using Clock = std::chrono::steady_clock;

double since(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

/// A fixed environment: UTC, C locale, and an exit status for sanitizer findings that the program never has.
std::vector<std::string> environment(const RunOptions& options)
{
    std::vector<std::string> env = {
        "TZ=UTC", "LC_ALL=C", "ASAN_OPTIONS=exitcode=99:allocator_may_return_null=1",
        "UBSAN_OPTIONS=exitcode=99:print_stacktrace=1", "LSAN_OPTIONS=exitcode=99"};
    if (const char* path = getenv("PATH")) env.push_back(std::string("PATH=") + path);
    for (const std::string& entry : options.env) env.push_back(entry);
    return env;
}

std::vector<char*> pointers(std::vector<std::string>& texts)
{
    std::vector<char*> list;
    for (std::string& t : texts) list.push_back(t.data());
    list.push_back(nullptr);
    return list;
}

int file_with(const std::string& text)
{
    std::string name = testing::TempDir() + "vxinXXXXXX";
    const int fd = mkstemp(name.data());
    unlink(name.c_str());
    for (size_t done = 0; done < text.size();) {
        const ssize_t n = write(fd, text.data() + done, text.size() - done);
        if (n <= 0) break;
        done += static_cast<size_t>(n);
    }
    lseek(fd, 0, SEEK_SET);
    return fd;
}

struct Pipes {
    int in = -1;
    int out[2] = {-1, -1};
    int err[2] = {-1, -1};
};

void open_terminal(int out[2])
{
    out[0] = posix_openpt(O_RDWR | O_NOCTTY);
    grantpt(out[0]);
    unlockpt(out[0]);
    out[1] = open(ptsname(out[0]), O_RDWR | O_NOCTTY);
    termios raw{};
    tcgetattr(out[1], &raw);
    raw.c_oflag &= ~static_cast<tcflag_t>(OPOST); // do not change line ends
    tcsetattr(out[1], TCSANOW, &raw);
}

Pipes open_pipes(const RunOptions& options)
{
    Pipes p;
    p.in = options.stdin_fd >= 0        ? options.stdin_fd
           : options.stdin_text.empty() ? open("/dev/null", O_RDONLY)
                                        : file_with(options.stdin_text);
    if (options.terminal)
        open_terminal(p.out);
    else if (pipe(p.out) != 0)
        abort();
    if (pipe(p.err) != 0) abort();
    return p;
}

/// Runs in the child; uses only calls that are safe between fork and exec.
[[noreturn]] void become_program(const std::string& dir, const RunOptions& options, const Pipes& p,
                                 const char* program, char* const* argv, char* const* envp)
{
    setpgid(0, 0);
    if (chdir(dir.c_str()) != 0) _exit(126);
    const int out = options.stdout_fd >= 0        ? options.stdout_fd
                    : options.stdout_path.empty() ? p.out[1]
                                                  : open(options.stdout_path.c_str(), O_WRONLY);
    dup2(p.in, 0);
    dup2(out, 1);
    dup2(p.err[1], 2);
    for (int fd = 3; fd < 64; ++fd) close(fd);
    if (options.close_stdin) close(0);
    if (options.mask >= 0) umask(static_cast<mode_t>(options.mask));
    if (!options.limits.empty()) signal(SIGXFSZ, SIG_IGN);
    for (const auto& [what, value] : options.limits) {
        const auto resource = static_cast<decltype(RLIMIT_FSIZE)>(what);
        rlimit limit{};
        getrlimit(resource, &limit);
        limit.rlim_cur = value;
        if (resource != RLIMIT_FSIZE) limit.rlim_max = value; // see faults/counting.cc
        setrlimit(resource, &limit);
    }
    if (options.as_nobody && geteuid() == 0 && setgid(65534) + setuid(65534) != 0) _exit(126);
    execve(program, argv, envp);
    _exit(127);
}

/// Reads what is available; returns false at the end of the stream. Reading from a terminal whose other side
/// is closed is an error.
bool take(int fd, std::string& into)
{
    char buffer[65536];
    const ssize_t n = read(fd, buffer, sizeof buffer);
    if (n <= 0) return n < 0 && errno == EINTR;
    into.append(buffer, static_cast<size_t>(n));
    return true;
}

void read_all(Outcome& run, const Pipes& p, const RunOptions& options, pid_t child, Clock::time_point start)
{
    pollfd fds[2] = {{p.out[0], POLLIN, 0}, {p.err[0], POLLIN, 0}};
    bool signal_sent = options.signal_after <= 0;
    while (fds[0].fd >= 0 || fds[1].fd >= 0) {
        const double now = since(start);
        if (!signal_sent && now >= options.signal_after) kill(child, options.signal), signal_sent = true;
        if (now >= options.timeout && !run.timed_out) kill(-child, SIGKILL), run.timed_out = true;
        if (poll(fds, 2, 20) <= 0) continue;
        if (fds[0].revents) {
            if (take(p.out[0], run.out)) {
                run.last_out = since(start);
                if (run.first_out < 0) run.first_out = run.last_out;
            } else {
                fds[0].fd = -1;
            }
        }
        if (fds[1].revents && !take(p.err[0], run.err)) fds[1].fd = -1;
    }
}

} // namespace

Outcome run_vx(const std::string& dir, const Args& args, const RunOptions& options)
{
    const std::string program = options.program.empty() ? VX_SAC_PROGRAM : options.program;
    std::vector<std::string> words = {options.argv0};
    words.insert(words.end(), args.begin(), args.end());
    std::vector<std::string> env = environment(options);
    const std::vector<char*> argv = pointers(words), envp = pointers(env);
    const Pipes p = open_pipes(options);

    Outcome run;
    const Clock::time_point start = Clock::now();
    const pid_t child = fork();
    if (child == 0) become_program(dir, options, p, program.c_str(), argv.data(), envp.data());
    setpgid(child, child);
    close(p.in), close(p.out[1]), close(p.err[1]);
    if (options.stdout_fd >= 0) close(options.stdout_fd);
    std::thread meanwhile;
    if (options.meanwhile) meanwhile = std::thread(options.meanwhile, child);
    read_all(run, p, options, child, start);
    close(p.out[0]), close(p.err[0]);

    int state = 0;
    rusage used{};
    wait4(child, &state, 0, &used);
    run.seconds = since(start);
    if (meanwhile.joinable()) meanwhile.join();
#ifdef __APPLE__ // which counts bytes
    used.ru_maxrss /= 1024;
#endif
    run.peak_kb = used.ru_maxrss;
    if (WIFEXITED(state)) run.status = WEXITSTATUS(state);
    if (WIFSIGNALED(state)) run.signal = WTERMSIG(state);
    if (run.timed_out) ADD_FAILURE() << "the run did not end in " << options.timeout << " seconds";
    if (run.status == 99) ADD_FAILURE() << "a sanitizer stopped the run:\n" << run.err;
    if (run.status == 127) ADD_FAILURE() << "cannot start " << program;
    return run;
}

const std::string& Converted::file(const std::string& name) const
{
    static const std::string nothing;
    const auto at = tree.find(name);
    if (at != tree.end()) return at->second;
    ADD_FAILURE() << "no file " << name << " among\n" << names(tree);
    return nothing;
}

std::vector<std::string> Converted::sac_names() const
{
    std::vector<std::string> list;
    for (const auto& [name, bytes] : tree) {
        if (name.ends_with(".sac")) list.push_back(name);
    }
    return list;
}

/// If the environment names a folder, keeps the inputs of each run there in the form of vx_stress, so that
/// builds for other hosts can convert them, too, and be compared.
static void keep_case(const Recording& recording, const std::string& ini, const Args& args)
{
    constexpr size_t Longest = 4U << 20;
    static unsigned number = 0;
    const char* folder = getenv("VX_KEEP_CASES");
    if (!folder || recording.size() > Longest) return;
    const std::string name =
        std::string(folder) + "/case-" + std::to_string(getpid()) + "-" + std::to_string(++number);
    std::filesystem::create_directories(name);
    write_file(name + "/rec.pkt", recording);
    if (!ini.empty()) write_file(name + "/vxu.ini", ini);
    std::string switches;
    for (const std::string& arg : args) switches += arg + " ";
    write_file(name + "/switches", switches + "\n");
}

static Converted convert_in(std::shared_ptr<Scratch> scratch, const Recording& recording, const Args& args,
                            const ConvertOptions& options)
{
    keep_case(recording, options.ini, args);
    scratch->write(options.name, recording);
    if (!options.ini.empty()) scratch->write("vxu.ini", options.ini);
    scratch->make_dir("out");

    Converted c;
    c.args = {options.name, "out"};
    c.args.insert(c.args.end(), args.begin(), args.end());
    c.argv0 = options.run.argv0;
    static_cast<Outcome&>(c) = run_vx(scratch->dir(), c.args, options.run);
    c.tree = scratch->tree("out");
    c.scratch = std::move(scratch);
    return c;
}

Converted convert(const Recording& recording, const Args& args, const ConvertOptions& options)
{
    return convert_in(std::make_shared<Scratch>(), recording, args, options);
}

Converted convert_again(const Converted& before, const Recording& recording, const Args& args,
                        const ConvertOptions& options)
{
    return convert_in(before.scratch, recording, args, options);
}

} // namespace kit
