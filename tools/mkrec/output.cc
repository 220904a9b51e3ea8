#include "mkrec/output.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace mkrec {

static constexpr size_t Buffer_len = 256 * 1024;

OUTPUT::OUTPUT() : buffer_(Buffer_len) {}

OUTPUT::~OUTPUT()
{
    if (fd_ >= 0) ::close(fd_);
}

bool OUTPUT::open(const std::string& path)
{
    used_ = 0;
    error_ = 0;
    fd_ = path == "-" ? ::dup(STDOUT_FILENO)
                      : ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (fd_ < 0) error_ = errno;
    return fd_ >= 0;
}

void OUTPUT::write(const uint8_t* bytes, size_t n)
{
    while (n > 0 && !error_) {
        const size_t part = n < Buffer_len - used_ ? n : Buffer_len - used_;
        memcpy(buffer_.data() + used_, bytes, part);
        used_ += part;
        bytes += part;
        n -= part;
        if (used_ == Buffer_len) flush();
    }
}

void OUTPUT::flush()
{
    for (size_t done = 0; done < used_ && !error_;) {
        const ssize_t n = ::write(fd_, buffer_.data() + done, used_ - done);
        if (n >= 0)
            done += static_cast<size_t>(n);
        else if (errno != EINTR)
            error_ = errno;
    }
    used_ = 0;
}

bool OUTPUT::close()
{
    flush();
    if (fd_ >= 0 && ::close(fd_) != 0 && !error_) error_ = errno;
    fd_ = -1;
    return !error_;
}

std::string OUTPUT::why() const
{
    return strerror(error_);
}

} // namespace mkrec
