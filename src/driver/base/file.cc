#include "driver/base/file.h"

#include <cerrno>
#include <ctime>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

/// Whole seconds of the monotonic clock.
static time_t steady_seconds()
{
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec;
}

/// Calls `attempt` every 20 ms until it succeeds, for five to six seconds. False if it never does.
template <class Try>
static bool with_patience(Try attempt)
{
    const time_t start = steady_seconds();
    const timespec nap{0, 20'000'000};
    do {
        if (attempt()) return true;
        fflush(stdout); // shows how far the run is while it waits
        nanosleep(&nap, nullptr);
    } while (steady_seconds() <= start + 5);
    return false;
}

FILE* fopen_vx(const char* path, const char* mode)
{
    FILE* file = nullptr;
    with_patience([&] {
        do {
            file = fopen(path, mode);
        } while (!file && (errno == EMFILE || errno == ENFILE) && out_give_up_oldest());
        return file != nullptr;
    });
    return file;
}

bool out_open_vx(OUT_FILE& file, const char* path, OUT_MODE mode, ON_LOSS on_loss)
{
    bool taken = false;
    const bool opened = with_patience([&] {
        const bool done = out_open(file, path, mode, on_loss);
        taken = !done && errno == EEXIST;
        return done || taken;
    });
    return opened && !taken;
}

bool out_overwrite_start_vx(const char* path, std::string_view bytes, ON_LOSS on_loss)
{
    return with_patience([&] { return out_overwrite_start(path, bytes, on_loss); });
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

void Make_dir(const char* path)
{
    const std::string whole = path;
    for (size_t slash = whole.find('/'); slash != std::string::npos; slash = whole.find('/', slash + 1)) {
        const std::string prefix = whole.substr(0, slash + 1);
        if (!fexist(prefix.c_str())) mkdir(prefix.c_str(), 0777);
    }
}
