#include "mkrec/output.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace mkrec {

static constexpr size_t Buffer_len = 256 * 1024;

/// Opens an existing file. Returns -1 with errno EEXIST if its bytes would be lost.
static int open_existing(const std::string& path, bool force)
{
    struct stat there;
    const bool is_stream =
        stat(path.c_str(), &there) == 0 && (S_ISCHR(there.st_mode) || S_ISFIFO(there.st_mode));
    if (is_stream) return ::open(path.c_str(), O_WRONLY | O_NOCTTY | O_CLOEXEC);
    if (force) return ::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666);
    errno = EEXIST;
    return -1;
}

RecordingFile::RecordingFile() : buffer_(Buffer_len) {}

RecordingFile::~RecordingFile()
{
    if (fd_ >= 0) ::close(fd_);
    if (is_new()) unlink(made_.c_str());
}

bool RecordingFile::open(const std::string& path, bool force)
{
    used_ = 0;
    error_ = 0;
    emptied_ = true;
    if (path == "-") {
        fd_ = ::dup(STDOUT_FILENO);
    } else {
        fd_ = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (fd_ >= 0) {
            made_ = path;
        } else if (errno == EEXIST) {
            fd_ = open_existing(path, force);
            emptied_ = false;
        }
    }
    if (fd_ < 0) error_ = errno;
    return fd_ >= 0;
}

bool RecordingFile::is_same_as(const RecordingFile& other) const
{
    struct stat here, there;
    if (fstat(fd_, &here) != 0 || fstat(other.fd_, &there) != 0 || S_ISCHR(here.st_mode)) return false;
    return here.st_dev == there.st_dev && here.st_ino == there.st_ino;
}

void RecordingFile::write(const uint8_t* bytes, size_t n)
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

void RecordingFile::empty()
{
    struct stat there;
    const bool has_bytes = !emptied_ && fstat(fd_, &there) == 0 && S_ISREG(there.st_mode);
    if (has_bytes && ftruncate(fd_, 0) != 0) error_ = errno;
    emptied_ = true;
}

void RecordingFile::flush()
{
    if (fd_ >= 0) empty();
    for (size_t done = 0; done < used_ && !error_;) {
        const ssize_t n = ::write(fd_, buffer_.data() + done, used_ - done);
        if (n >= 0)
            done += static_cast<size_t>(n);
        else if (errno != EINTR)
            error_ = errno;
    }
    used_ = 0;
}

bool RecordingFile::close()
{
    flush();
    if (fd_ >= 0 && ::close(fd_) != 0 && !error_) error_ = errno;
    fd_ = -1;
    if (!error_) made_.clear();
    return !error_;
}

std::string RecordingFile::why() const
{
    return strerror(error_);
}

} // namespace mkrec
