// The command line of vx_ls.
#pragma once

#include "ls/finish.h"

#include <cstdint>
#include <string>
#include <vector>

namespace ls {

enum class TaskKind : uint8_t { table, json, finish, set_begin, help, version };

struct Options {
    TaskKind task = TaskKind::table;
    std::string dir; ///< of --set-begin
    Finishing finishing;
    std::vector<std::string> paths;
};

/// Reads the arguments after the program's name. On failure false, and `complaint` says why.
bool read_options(const std::vector<std::string>& args, Options& options, std::string& complaint);

extern const char Help_text[];

} // namespace ls
