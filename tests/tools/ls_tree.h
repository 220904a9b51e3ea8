// What the tests of vx_ls share: runs of the program over traces written by hand.
#pragma once

#include "kit/run.h"
#include "tools/sac_words.h"

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace ls_test {

using Json = nlohmann::json;

inline kit::Outcome run_ls(const kit::Scratch& scratch, const kit::Args& args, kit::RunOptions options = {})
{
    options.program = VX_LS_PROGRAM;
    options.argv0 = "vx_ls";
    return kit::run_vx(scratch.dir(), args, options);
}

/// The listing of a file or tree in JSON.
inline Json list(const kit::Scratch& scratch, const std::string& path = ".")
{
    const Json all = Json::parse(run_ls(scratch, {"--json", path}).out, nullptr, false);
    EXPECT_TRUE(all.is_array());
    return all;
}

/// The flags of a trace alone in its tree.
inline std::string flags_of(const std::string& sac)
{
    const kit::Scratch scratch;
    scratch.write("a.sac", sac);
    const Json all = list(scratch);
    return all.size() == 1 ? all[0]["flags"].dump() : "not one trace";
}

} // namespace ls_test
