// Writes a file under a temporary name in the same directory, then gives it its name. So the file is either
// complete or absent.
#pragma once

#include <string>
#include <string_view>
#include <sys/stat.h>

namespace ls {

/// Functions return false with errno on failure. The destructor removes an unfinished file.
struct Fresh {
    Fresh() = default;
    Fresh(const Fresh&) = delete;
    Fresh& operator=(const Fresh&) = delete;
    ~Fresh();

    /// Makes an empty file in the directory of `target`, readable by its owner only.
    bool create(const std::string& target);
    bool write(std::string_view bytes);
    bool write_at_start(std::string_view bytes);
    /// Gives it owner and mode of the file at `target`, as far as that is allowed, and writes its bytes to
    /// the disk. After that, only replace() remains to be called.
    bool complete(const struct stat& like);
    /// Replaces the file at `target`.
    bool replace();
    /// Gives it the mode, reduced by the umask, and its name. Fails with EEXIST if the name exists.
    bool place(const struct stat& like);

private:
    bool settle();      ///< writes the bytes to the disk
    void settle_name(); ///< writes the directory to the disk, too, if that is possible
    int fd_ = -1;
    std::string target_, directory_, name_;
};

} // namespace ls
