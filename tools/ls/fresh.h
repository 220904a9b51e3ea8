// A file in the making: written beside its later place under another name, and put there whole or not at all.
#pragma once

#include <string>
#include <string_view>
#include <sys/stat.h>

namespace ls {

/// On every failure false, and errno tells why; what was made is removed at the end of the scope.
struct Fresh {
    Fresh() = default;
    Fresh(const Fresh&) = delete;
    Fresh& operator=(const Fresh&) = delete;
    ~Fresh();

    /// Makes an empty file, for the owner only, in the directory of `target`.
    bool create(const std::string& target);
    bool write(std::string_view bytes);
    bool write_at_start(std::string_view bytes);
    /// Gives it owner and mode of the file at `target`, as far as that is allowed, and brings its bytes to
    /// the medium; then nothing is left to do but to replace.
    bool complete(const struct stat& like);
    /// Takes the place of the file at `target`.
    bool replace();
    /// Gives it the mode, less what the user's mask forbids, and puts it where nothing stands yet (EEXIST).
    bool place(const struct stat& like);

private:
    bool settle();      ///< to the medium
    void settle_name(); ///< the directory too, where that is possible
    int fd_ = -1;
    std::string target_, directory_, name_;
};

} // namespace ls
