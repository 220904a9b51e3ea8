#include "driver/base/file.h"

#include "driver/base/patience.h"
#include "driver/base/pulse.h"

#include <cerrno>
#include <fcntl.h>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

/// Opens by `attempt`, which returns null on failure; files give up their descriptors if there are none left.
template <class Open>
static FILE* open_somehow(Open attempt)
{
    for (;;) {
        FILE* const file = attempt();
        if (file || (errno != EMFILE && errno != ENFILE) || !out_give_up_oldest()) return file;
    }
}

FILE* fopen_vx(const char* path, const char* mode)
{
    FILE* file = nullptr;
    with_patience([&] { return (file = open_somehow([&] { return fopen(path, mode); })) != nullptr; },
                  write_all_collected);
    return file;
}

/// Opens a file for reading that never has to be waited for: no FIFO, no socket.
static FILE* open_ready(const char* path)
{
    const int fd = open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
    if (fd < 0) return nullptr;
    struct stat what;
    const bool waits = fstat(fd, &what) == 0 && S_ISFIFO(what.st_mode);
    if (waits) errno = ENXIO;
    fcntl(fd, F_SETFL, O_RDONLY); // a terminal is read when something is typed
    FILE* const file = waits ? nullptr : fdopen(fd, "r");
    if (!file) close(fd);
    return file;
}

FILE* fopen_ready_vx(const char* path, bool patient)
{
    FILE* file = nullptr;
    const auto attempt = [&] { return (file = open_somehow([&] { return open_ready(path); })) != nullptr; };
    if (!patient)
        attempt();
    else
        with_patience(attempt, write_all_collected);
    return file;
}

bool out_open_vx(OUT_FILE& file, const char* path, OUT_MODE mode, ON_LOSS on_loss)
{
    bool taken = false;
    const auto attempt = [&] {
        const bool done = out_open(file, path, mode, on_loss);
        taken = !done && errno == EEXIST;
        return done || taken;
    };
    return with_patience(attempt, write_all_collected) && !taken;
}

bool fexist(const char* path)
{
    return access(path, F_OK) == 0;
}

bool look_failed()
{
    switch (errno) {
    case ENOENT:
    case ENOTDIR:
    case EACCES:
    case ELOOP:
    case ENAMETOOLONG: return false; // the path cannot be opened either
    default: return true;
    }
}

bool name_taken(const char* path)
{
    struct stat what;
    return lstat(path, &what) == 0;
}

bool same_file(const char* a, const char* b)
{
    struct stat of_a, of_b;
    if (stat(a, &of_a) != 0 || stat(b, &of_b) != 0) return look_failed();
    return of_a.st_dev == of_b.st_dev && of_a.st_ino == of_b.st_ino;
}

void Make_dir(const char* path, size_t from)
{
    const std::string whole = path;
    for (size_t slash = whole.find('/', from); slash != std::string::npos;
         slash = whole.find('/', slash + 1)) {
        const std::string prefix = whole.substr(0, slash + 1);
        if (!fexist(prefix.c_str())) mkdir(prefix.c_str(), 0777);
    }
}
