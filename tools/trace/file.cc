#include "trace/file.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

#ifdef __APPLE__ // macOS has another name than POSIX
#define st_mtim st_mtimespec
#endif

namespace trace {

InputFile::~InputFile()
{
    if (fd >= 0) close(fd);
}

Found InputFile::open(const std::string& path)
{
    // Checked before it is opened: opening a device can have effects, and opening a pipe would wait.
    if (stat(path.c_str(), &is) != 0) return Found::unreadable;
    if (!S_ISREG(is.st_mode)) return Found::not_sac;
    fd = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (fd < 0 || fstat(fd, &is) != 0) return Found::unreadable;
    return S_ISREG(is.st_mode) ? Found::trace : Found::not_sac;
}

int64_t InputFile::read(char* to, size_t n)
{
    size_t done = 0;
    while (done < n) {
        const ssize_t got = ::read(fd, to + done, n - done);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) return -1;
        if (got == 0) break;
        done += static_cast<size_t>(got);
    }
    return static_cast<int64_t>(done);
}

bool InputFile::is_unchanged() const
{
    struct stat now;
    return fstat(fd, &now) == 0 && now.st_size == is.st_size && now.st_mtim.tv_sec == is.st_mtim.tv_sec &&
           now.st_mtim.tv_nsec == is.st_mtim.tv_nsec;
}

Found open_trace(const std::string& path, InputFile& input, TraceHeader& trace)
{
    const Found opened = input.open(path);
    if (opened != Found::trace) return opened;
    char bytes[Sac_header_len];
    const int64_t got = input.read(bytes, Sac_header_len);
    if (got < 0) return Found::unreadable;
    const auto len = static_cast<int64_t>(Sac_header_len);
    if (got < len || input.is.st_size < len) return Found::too_short;
    trace.order = order_of(bytes);
    if (trace.order == Order::none) return Found::not_sac;
    trace.header = decode(bytes, trace.order);
    trace.data_len = static_cast<uint64_t>(input.is.st_size - len);
    return Found::trace;
}

} // namespace trace
