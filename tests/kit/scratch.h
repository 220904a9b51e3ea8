// A scratch directory for each test, and the files and trees in it.
#pragma once

#include <map>
#include <string>
#include <string_view>

namespace kit {

/// Relative path to bytes. Directories end in "/" and hold nothing.
using Tree = std::map<std::string, std::string>;

/// A new directory under the test's temporary directory, removed with its contents at the end of the scope.
class Scratch {
public:
    Scratch();
    ~Scratch();
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    const std::string& dir() const { return dir_; } ///< full path, no "/" at its end
    std::string path(std::string_view relative) const { return dir_ + "/" + std::string(relative); }
    /// Writes a file and makes the directories above it; returns its full path.
    std::string write(std::string_view relative, std::string_view bytes) const;
    std::string read(std::string_view relative) const;
    void make_dir(std::string_view relative) const;
    bool exists(std::string_view relative) const;
    Tree tree(std::string_view below = "") const;

private:
    std::string dir_;
};

void write_file(const std::string& path, std::string_view bytes);
bool full_device_is_there();                    ///< true if /dev/full exists, which behaves like a full disk
std::string read_file(const std::string& path); ///< fails the test if the file cannot be read
Tree read_tree(const std::string& dir);
std::string names(const Tree& tree); ///< the paths, one per line

} // namespace kit
