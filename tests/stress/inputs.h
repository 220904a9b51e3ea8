// Hostile inputs: recordings, station files and switches that no recorder and no careful person would make.
#pragma once

#include "kit/run.h"
#include "stress/chance.h"

#include <string>
#include <vector>

namespace stress {

struct Input {
    std::string kind; ///< how it was made, for the account of the run
    kit::Recording recording;
    std::string ini;   ///< no station file when empty
    kit::Args args;    ///< switches
    bool slow = false; ///< may hold a station name with "/", which is tried for seconds before it is refused
};

/// What vx_mkrec writes with these options.
kit::Recording made_well(kit::Args options);

/// One input. `bases` are well-made recordings, to be spoilt.
Input make_input(Chance& chance, const std::vector<kit::Recording>& bases);

} // namespace stress
