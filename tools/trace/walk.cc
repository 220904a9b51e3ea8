#include "trace/walk.h"

#include "driver/base/settings.h"

#include <algorithm>
#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <unistd.h>

namespace trace {

namespace {

struct CloseDir {
    void operator()(DIR* dir) const { closedir(dir); }
};
using Directory = std::unique_ptr<DIR, CloseDir>;

/// The directories still to be entered are in a list, not on the call stack, so that a tree may have any
/// depth.
struct Walker {
    Walk found;
    std::vector<std::string> ahead; ///< each ends in "/"; empty: the working directory
    size_t below = 0;               ///< length of the path on the command line
    const struct stat* leave_out = nullptr;

    void trouble(const std::string& path) { found.troubles.push_back({path, errno}); }

    void meet(const std::string& path)
    {
        struct stat what;
        if (lstat(path.c_str(), &what) != 0) return trouble(path);
        if (S_ISDIR(what.st_mode)) {
            if (!leave_out || what.st_ino != leave_out->st_ino || what.st_dev != leave_out->st_dev)
                ahead.push_back(path + "/");
            return;
        }
        if (!is_trace_name(path)) return;
        if (S_ISLNK(what.st_mode) && stat(path.c_str(), &what) == 0 && S_ISDIR(what.st_mode)) return;
        found.files.push_back({path, below});
    }

    void enter(const std::string& dir, bool asked_for)
    {
        const std::string name = dir.empty() ? "." : dir;
        // Opened without the slash at its end, so that a link put there meanwhile is not followed.
        const std::string bare = asked_for ? name : name.substr(0, name.size() - 1);
        const int fd = open(bare.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | (asked_for ? 0 : O_NOFOLLOW));
        if (fd < 0) return trouble(name);
        const Directory handle(fdopendir(fd));
        if (!handle) {
            trouble(name);
            close(fd);
            return;
        }
        for (;;) {
            errno = 0;
            const dirent* const entry = readdir(handle.get());
            if (!entry) break;
            const std::string_view file = entry->d_name;
            if (file != "." && file != "..") meet(dir + entry->d_name);
        }
        if (errno != 0) trouble(name);
    }

    void enter_all(const std::string& root)
    {
        below = root.size();
        enter(root, true);
        while (!ahead.empty()) {
            const std::string dir = std::move(ahead.back());
            ahead.pop_back();
            enter(dir, false);
        }
    }

    void start(const std::string& path)
    {
        struct stat what;
        if (stat(path.c_str(), &what) != 0) return trouble(path);
        if (!S_ISDIR(what.st_mode)) {
            found.files.push_back({path, path.rfind('/') + 1});
            return;
        }
        std::string root = path;
        while (root.size() > 1 && root.ends_with('/')) root.pop_back();
        if (root == ".")
            root.clear();
        else if (root != "/")
            root += '/';
        enter_all(root);
    }
};

} // namespace

bool is_trace_name(std::string_view name)
{
    const std::string_view ending = Fn_ext_chn;
    return name.size() >= ending.size() &&
           std::equal(ending.rbegin(), ending.rend(), name.rbegin(),
                      [](char e, char c) { return e == ('A' <= c && c <= 'Z' ? c - 'A' + 'a' : c); });
}

Walk find_traces(const std::vector<std::string>& paths, const struct stat* leave_out)
{
    Walker walker;
    walker.leave_out = leave_out;
    for (const std::string& path : paths) walker.start(path);
    std::vector<TracePath>& files = walker.found.files;
    std::stable_sort(files.begin(), files.end(),
                     [](const auto& a, const auto& b) { return a.path < b.path; });
    const auto same = [](const auto& a, const auto& b) { return a.path == b.path; };
    files.erase(std::unique(files.begin(), files.end(), same), files.end());
    return std::move(walker.found);
}

} // namespace trace
