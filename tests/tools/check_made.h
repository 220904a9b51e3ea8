// Recordings of vx_mkrec for the tests of vx_check.
#pragma once

#include "tools/maker.h"

#include <string>
#include <vector>

namespace check_test {

inline std::string made(const std::vector<std::string>& args)
{
    return written(survey_of(args), mkrec::write_recording);
}

} // namespace check_test
