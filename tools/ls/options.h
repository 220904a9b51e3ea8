// The command line of vx_ls.
#pragma once

#include "ls/finish.h"

#include <cstdint>
#include <string>
#include <vector>

namespace ls {

enum class TASK_KIND : uint8_t { table, json, finish, set_begin, help, version };

struct OPTIONS {
    TASK_KIND task = TASK_KIND::table;
    std::string dir; ///< of --set-begin
    FINISHING finishing;
    std::vector<std::string> paths;
};

/// Reads the arguments after the program's name. On failure false, and `complaint` says why.
bool read_options(const std::vector<std::string>& args, OPTIONS& options, std::string& complaint);

extern const char Help_text[];

} // namespace ls
