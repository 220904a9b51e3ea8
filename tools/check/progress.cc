#include "check/progress.h"

#include "ls/text.h"

#include <cstdio>
#include <sys/stat.h>
#include <unistd.h>

namespace check {

Progress::Progress(const std::string& file, int descriptor)
    : name_(ls::printable(file.substr(file.rfind('/') + 1))), on_(isatty(STDERR_FILENO) == 1),
      due_(std::chrono::steady_clock::now() + std::chrono::seconds(1))
{
    struct stat what;
    if (fstat(descriptor, &what) == 0 && S_ISREG(what.st_mode)) size_ = static_cast<uint64_t>(what.st_size);
}

Progress::~Progress()
{
    if (shown_) fputs("\r\033[K", stderr);
}

void Progress::tell(uint64_t bytes)
{
    if (!on_) return;
    const auto now = std::chrono::steady_clock::now();
    if (now < due_) return;
    due_ = now + std::chrono::milliseconds(100);
    shown_ = true;
    fprintf(stderr, "\r%s: %llu MB", name_.c_str(), static_cast<unsigned long long>(bytes / 1000000));
    if (size_ > 0) fprintf(stderr, ", %llu %%", static_cast<unsigned long long>(bytes * 100 / size_));
    fputs("\033[K", stderr);
}

} // namespace check
