#include "ls/fresh.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

namespace ls {

Fresh::~Fresh()
{
    if (fd_ >= 0) close(fd_);
    if (!name_.empty()) unlink(name_.c_str());
}

bool Fresh::create(const std::string& target)
{
    target_ = target;
    directory_ = target.substr(0, target.rfind('/') + 1);
    std::string name = directory_ + ".vx_ls-XXXXXX";
    fd_ = mkstemp(name.data());
    if (fd_ < 0) return false;
    name_ = name;
    return true;
}

bool Fresh::write(std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t n = ::write(fd_, bytes.data(), bytes.size());
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) return false;
        bytes.remove_prefix(static_cast<size_t>(n));
    }
    return true;
}

bool Fresh::write_at_start(std::string_view bytes)
{
    return lseek(fd_, 0, SEEK_SET) == 0 && write(bytes);
}

bool Fresh::settle()
{
    if (fsync(fd_) != 0) return false;
    const int fd = fd_;
    fd_ = -1;
    return close(fd) == 0;
}

/// Failure is ignored: not every file system can do this, and the file has its name already.
void Fresh::settle_name()
{
    const int fd = open(directory_.empty() ? "." : directory_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0) return;
    fsync(fd);
    close(fd);
}

bool Fresh::complete(const struct stat& like)
{
    // Only root may change the owner; others can at least keep the group.
    if (fchown(fd_, like.st_uid, like.st_gid) != 0 && fchown(fd_, static_cast<uid_t>(-1), like.st_gid) != 0)
        errno = 0;
    return fchmod(fd_, like.st_mode & 07777) == 0 && settle();
}

bool Fresh::replace()
{
    if (rename(name_.c_str(), target_.c_str()) != 0) return false;
    name_.clear();
    settle_name();
    return true;
}

bool Fresh::place(const struct stat& like)
{
    const mode_t mask = umask(0);
    umask(mask);
    if (fchmod(fd_, like.st_mode & 0777 & ~mask) != 0 || !settle()) return false;
    // link() fails if the name exists; rename() would replace the file.
    if (link(name_.c_str(), target_.c_str()) != 0) {
        struct stat there;
        if (errno == EEXIST) return false;
        // A file system without hard links.
        if (lstat(target_.c_str(), &there) == 0) {
            errno = EEXIST;
            return false;
        }
        if (rename(name_.c_str(), target_.c_str()) != 0) return false;
        name_.clear();
    }
    settle_name();
    return true;
}

} // namespace ls
