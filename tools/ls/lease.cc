#include "ls/lease.h"

#include <cerrno>
#include <cstring>
#include <ctime>
#include <fcntl.h>

namespace ls {

#ifdef F_SETLEASE

std::string take_lease(int fd)
{
    if (fcntl(fd, F_SETLEASE, F_RDLCK) == 0) return "";
    if (errno == EAGAIN) return "another program has it open for writing";
    return std::string("the check for writers failed: ") + strerror(errno);
}

bool holds_lease(int fd)
{
    return fcntl(fd, F_GETLEASE) == F_RDLCK;
}

#else

std::string take_lease(int)
{
    return "the check for writers failed: this system has no leases";
}

bool holds_lease(int)
{
    return false;
}

#endif

std::string why_not_quiet(const struct stat& file)
{
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    if (file.st_mtim.tv_sec > now.tv_sec) return "its time of change is in the future";
    if (now.tv_sec - file.st_mtim.tv_sec < Quiet_seconds) return "changed within the last ten seconds";
    return "";
}

} // namespace ls
