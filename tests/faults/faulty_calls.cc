// A preloaded library that makes system calls fail, as the environment says. Calls that stdio makes (station
// file, console) can fail, too, because this file opens those streams with its own calls.
//
//     VX_FAULT_KIND=k     open, read, write, close, mkdir, stat, memory, console or limit (of descriptors);
//                         nothing fails without it
//     VX_FAULT_AT=n       the n-th call of that kind fails
//     VX_FAULT_ALWAYS=1   and all later ones
//     VX_FAULT_HOW=h      a number: it fails with that errno; "short": half of the bytes are read or written;
//                         "kill": the program ends before it; "torn": half is written, then the program ends;
//                         "move": the folder VX_FAULT_FOLDER is renamed to the same name with ".away" before
//                         it
//     VX_FAULT_LEAST=n    requests for memory of fewer bytes do not count
//     VX_FAULT_SPACE=n    so many bytes can be written to files, then the disk is full
//     VX_FAULT_COUNTS=f   the calls of each kind are counted in the file f, which exists and has room: one
//                         32-bit number per kind in the order above, the last one the faults that happened
//
//     VX_FAULT_TICK=n     each look at the clock takes n milliseconds
//
// The clock that nobody sets back stands still otherwise, so that a slow machine sees the calls that a fast
// one sees. A nap passes at once and counts as a second: whoever waits for a file has not long to wait.
#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <dlfcn.h>
#include <fcntl.h>
#include <string>
#include <string_view>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

extern "C" {
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* old, size_t size);
}

namespace {

enum CallKind { OPEN, READ, WRITE, CLOSE, MKDIR, STAT, MEMORY, CONSOLE, LIMIT, KINDS };
constexpr std::string_view Kind_names[KINDS] = {"open", "read",   "write",   "close", "mkdir",
                                                "stat", "memory", "console", "limit"};
constexpr int Done = KINDS; ///< index after the counts: the faults that happened

enum class FailHow { error, part, kill, torn, move };

bool On; ///< from the constructor on
CallKind Kind = KINDS;
uint32_t At;
bool Always;
FailHow How;
int Error;
const char* Folder;
size_t Least;       ///< bytes of a request for memory that counts
int64_t Space = -1; ///< bytes that the disk still has, -1 for no end
uint32_t Own_counts[KINDS + 1];
uint32_t* Counts = Own_counts;
timespec Clock{1000, 0};
long Tick_ms; ///< that a look at the clock takes

template <class Function>
Function* real(const char* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

void move_folder()
{
    if (!Folder) return;
    char away[4096];
    snprintf(away, sizeof away, "%s.away", Folder);
    rename(Folder, away);
}

/// Counts a call. True when it is the one that is to fail; what needs no more than that is done here.
bool struck(CallKind kind)
{
    if (!On) return false;
    const uint32_t n = ++Counts[kind];
    if (kind != Kind || n < At || (n > At && !Always)) return false;
    ++Counts[Done];
    if (How == FailHow::kill) raise(SIGKILL);
    if (How == FailHow::move) move_folder();
    return How != FailHow::move;
}

/// The call fails. False when it is to go on, for less than was asked.
bool fails(CallKind kind)
{
    if (!struck(kind) || How != FailHow::error) return false;
    errno = Error;
    return true;
}

bool memory_fails(size_t size)
{
    return size >= Least && fails(MEMORY);
}

ssize_t read_from(int fd, void* to, size_t n)
{
    if (struck(READ)) {
        if (How == FailHow::error) {
            errno = Error;
            return -1;
        }
        n = (n + 1) / 2;
    }
    return syscall(SYS_read, fd, to, n);
}

ssize_t write_to(CallKind kind, int fd, const void* from, size_t n)
{
    if (struck(kind)) {
        if (How == FailHow::error) {
            errno = Error;
            return -1;
        }
        n = (n + 1) / 2;
        if (How == FailHow::torn) {
            if (syscall(SYS_write, fd, from, n) >= 0) raise(SIGKILL);
        }
    }
    if (Space >= 0 && kind == WRITE) {
        if (Space == 0 && n > 0) {
            ++Counts[Done];
            errno = ENOSPC;
            return -1;
        }
        n = static_cast<size_t>(std::min<int64_t>(Space, static_cast<int64_t>(n)));
        Space -= static_cast<int64_t>(n);
    }
    return syscall(SYS_write, fd, from, n);
}

/// As on Linux, the descriptor is closed even if close() fails. Files that are only read, and devices, do not
/// count, because they have nothing to lose.
int close_it(int fd)
{
    struct stat64 what {};
    const bool is_file = fstatat64(fd, "", &what, AT_EMPTY_PATH) == 0 && S_ISREG(what.st_mode);
    const bool written = is_file && (fcntl(fd, F_GETFL) & O_ACCMODE) != O_RDONLY;
    const bool bad = written && fails(CLOSE);
    const auto status = static_cast<int>(syscall(SYS_close, fd));
    if (bad) errno = Error;
    return bad ? -1 : status;
}

int open_it(const char* path, int flags, mode_t mode)
{
    if (fails(OPEN)) return -1;
    return static_cast<int>(syscall(SYS_openat, AT_FDCWD, path, flags, mode));
}

// A stream whose reading, writing and closing are the calls above. Its cookie is the descriptor.

int descriptor(void* cookie)
{
    return static_cast<int>(reinterpret_cast<intptr_t>(cookie));
}

ssize_t stream_read(void* cookie, char* to, size_t n)
{
    return read_from(descriptor(cookie), to, n);
}

ssize_t stream_console(void* cookie, const char* from, size_t n)
{
    const ssize_t done = write_to(CONSOLE, descriptor(cookie), from, n);
    return std::max<ssize_t>(done, 0); // a stream's own writer tells a failure by 0
}

int stream_seek(void* cookie, off64_t* at, int whence)
{
    const off64_t now = lseek64(descriptor(cookie), *at, whence);
    if (now < 0) return -1;
    *at = now;
    return 0;
}

int stream_close(void* cookie)
{
    return close_it(descriptor(cookie));
}

FILE* Input_stream[16]; ///< by descriptor; those that fileno is asked about

FILE* stream_of(int fd)
{
    FILE* file = fopencookie(reinterpret_cast<void*>(static_cast<intptr_t>(fd)), "r",
                             {stream_read, nullptr, stream_seek, stream_close});
    if (file && fd < 16) Input_stream[fd] = file;
    return file;
}

void pass(long ms)
{
    Clock.tv_nsec += ms % 1000 * 1'000'000;
    Clock.tv_sec += ms / 1000 + Clock.tv_nsec / 1'000'000'000;
    Clock.tv_nsec %= 1'000'000'000;
}

FILE* console_of(int fd, int buffering)
{
    FILE* file = fopencookie(reinterpret_cast<void*>(static_cast<intptr_t>(fd)), "w",
                             {nullptr, stream_console, nullptr, nullptr});
    if (!file) abort();
    setvbuf(file, nullptr, buffering, BUFSIZ);
    return file;
}

void read_orders()
{
    const auto text = [](const char* name) {
        const char* value = getenv(name);
        return std::string_view(value ? value : "");
    };
    const std::string_view kind = text("VX_FAULT_KIND"), how = text("VX_FAULT_HOW"), at = text("VX_FAULT_AT");
    const std::string_view space = text("VX_FAULT_SPACE"), least = text("VX_FAULT_LEAST");
    const std::string_view tick = text("VX_FAULT_TICK");
    if (!kind.empty())
        Kind = static_cast<CallKind>(std::find(Kind_names, Kind_names + KINDS, kind) - Kind_names);
    if ((!kind.empty() && Kind == KINDS) || (!kind.empty() && at.empty())) abort();
    if (!at.empty()) At = static_cast<uint32_t>(strtoul(at.data(), nullptr, 10));
    if (!least.empty()) Least = strtoul(least.data(), nullptr, 10);
    if (!tick.empty()) Tick_ms = strtol(tick.data(), nullptr, 10);
    if (!space.empty()) Space = strtoll(space.data(), nullptr, 10);
    Always = text("VX_FAULT_ALWAYS") == "1";
    Folder = getenv("VX_FAULT_FOLDER");
    How = how == "short"  ? FailHow::part
          : how == "kill" ? FailHow::kill
          : how == "torn" ? FailHow::torn
          : how == "move" ? FailHow::move
                          : FailHow::error;
    if (How == FailHow::error && !how.empty()) Error = static_cast<int>(strtol(how.data(), nullptr, 10));
    if (!kind.empty() && How == FailHow::error && Error == 0) abort();
}

void share_counts()
{
    const char* path = getenv("VX_FAULT_COUNTS");
    if (!path) return;
    const auto fd = static_cast<int>(syscall(SYS_openat, AT_FDCWD, path, O_RDWR | O_CLOEXEC));
    if (fd < 0) abort();
    void* shared = mmap(nullptr, sizeof Own_counts, PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
    if (shared == MAP_FAILED) abort();
    Counts = static_cast<uint32_t*>(shared);
    syscall(SYS_close, fd);
}

[[gnu::constructor]] void start()
{
    read_orders();
    share_counts();
    stdout = console_of(STDOUT_FILENO, _IOFBF);
    stderr = console_of(STDERR_FILENO, _IONBF);
    On = true;
}

} // namespace

extern "C" {

ssize_t read(int fd, void* to, size_t n)
{
    return read_from(fd, to, n);
}

ssize_t pread64(int fd, void* to, size_t n, off64_t at)
{
    return fails(READ) ? -1 : syscall(SYS_pread64, fd, to, n, at);
}

ssize_t write(int fd, const void* from, size_t n)
{
    return write_to(WRITE, fd, from, n);
}

int close(int fd)
{
    return close_it(fd);
}

int open64(const char* path, int flags, ...)
{
    va_list rest;
    va_start(rest, flags);
    const mode_t mode = flags & O_CREAT ? va_arg(rest, mode_t) : 0;
    va_end(rest);
    return open_it(path, flags, mode);
}

/// The program only reads through streams; whoever counts the lines that run also writes.
FILE* fdopen(int fd, const char* mode) noexcept
{
    if (strcmp(mode, "r") != 0) return real<FILE*(int, const char*)>("fdopen")(fd, mode);
    return stream_of(fd);
}

/// Called when the program has ended: nothing fails any more, and nothing is counted.
void vx_faults_end()
{
    On = false;
}

FILE* fopen64(const char* path, const char*)
{
    const int fd = open_it(path, O_RDONLY | O_CLOEXEC, 0);
    FILE* const file = fd < 0 ? nullptr : stream_of(fd);
    if (file || fd < 0) return file;
    const int why = errno;
    syscall(SYS_close, fd);
    errno = why;
    return nullptr;
}

int fileno(FILE* file) noexcept
{
    for (int fd = 0; fd < 16; ++fd)
        if (Input_stream[fd] == file) return fd;
    return real<int(FILE*)>("fileno")(file);
}

int mkdir(const char* path, mode_t mode) noexcept
{
    if (fails(MKDIR)) return -1;
    return static_cast<int>(syscall(SYS_mkdirat, AT_FDCWD, path, mode));
}

int access(const char* path, int mode) noexcept
{
    if (fails(STAT)) return -1;
    return static_cast<int>(syscall(SYS_faccessat, AT_FDCWD, path, mode));
}

int stat64(const char* path, struct stat64* what) noexcept
{
    if (fails(STAT)) return -1;
    return fstatat64(AT_FDCWD, path, what, 0);
}

int lstat64(const char* path, struct stat64* what) noexcept
{
    if (fails(STAT)) return -1;
    return fstatat64(AT_FDCWD, path, what, AT_SYMLINK_NOFOLLOW);
}

int fstat64(int fd, struct stat64* what) noexcept
{
    if (fails(STAT)) return -1;
    return fstatat64(fd, "", what, AT_EMPTY_PATH);
}

void* malloc(size_t size)
{
    return memory_fails(size) ? nullptr : __libc_malloc(size);
}

void* calloc(size_t count, size_t size)
{
    return memory_fails(count * size) ? nullptr : __libc_calloc(count, size);
}

void* realloc(void* old, size_t size)
{
    return memory_fails(size) ? nullptr : __libc_realloc(old, size);
}

int getrlimit64(__rlimit_resource_t what, rlimit64* limit) noexcept
{
    if (what == RLIMIT_NOFILE && fails(LIMIT)) return -1;
    return static_cast<int>(syscall(SYS_prlimit64, 0, what, nullptr, limit));
}

int setrlimit64(__rlimit_resource_t what, const rlimit64* limit) noexcept
{
    if (what == RLIMIT_NOFILE && fails(LIMIT)) return -1;
    return static_cast<int>(syscall(SYS_prlimit64, 0, what, limit, nullptr));
}

int nanosleep(const timespec*, timespec*)
{
    pass(1000);
    return 0;
}

int clock_gettime(clockid_t clock, timespec* now) noexcept
{
    if (clock != CLOCK_MONOTONIC) return static_cast<int>(syscall(SYS_clock_gettime, clock, now));
    pass(Tick_ms);
    *now = Clock;
    return 0;
}

} // extern "C"
