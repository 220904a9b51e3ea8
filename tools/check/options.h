// The command line of vx_check.
#pragma once

#include "check/codes.h"

#include <string>
#include <vector>

namespace check {

enum class View : uint8_t { table, json, gaps, codes, help, version };

struct Options {
    View view = View::table;
    std::string ini;        ///< empty: the one that vx_sac would take
    std::vector<Code> only; ///< empty: all
    std::vector<std::string> files;
    std::vector<std::string> switches; ///< of vx_sac

    bool shows(Code code) const;
};

/// Reads the arguments after the program's name. On failure false, and `complaint` says why.
bool read_options(const std::vector<std::string>& args, Options& options, std::string& complaint);

extern const char Help_text[];

} // namespace check
