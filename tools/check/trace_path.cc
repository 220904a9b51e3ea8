#include "check/trace_path.h"

#include "driver/base/settings.h"

namespace check {

std::optional<std::string> TracePaths::next(const TraceName& name)
{
    if (ended_ || Smp_limit == 0) return std::nullopt;
    const std::string dir = trace_directory(name.first, Path_option);
    std::string base = trace_base(name, Name_option);
    for (char letter = 'A'; letter <= 'Y'; ++letter) { // "Y" is set and not tried
        std::string path = dir + base + Fn_ext_chn;
        if (taken_.insert(path).second) return path;
        if (Trace_letter_place < base.size()) base[Trace_letter_place] = letter;
    }
    ended_ = true;
    return std::nullopt;
}

} // namespace check
