#include "ls/tell.h"

#include "ls/text.h"

#include <cstdio>
#include <cstring>

namespace ls {

void complain(std::string_view path, std::string_view why)
{
    fflush(stdout); // keeps the order of messages on both streams
    fprintf(stderr, "vx_ls: %s: %s\n", printable(path).c_str(), std::string(why).c_str());
}

bool tell_troubles(const trace::Walk& walk)
{
    for (const trace::Trouble& t : walk.troubles) complain(t.path, strerror(t.error));
    return walk.troubles.empty();
}

std::string why_lost(const Entry& entry)
{
    if (entry.has(TraceFlag::unreadable)) return strerror(entry.error);
    if (entry.has(TraceFlag::not_sac)) return "not a SAC file";
    return "shorter than a SAC header: " + std::to_string(entry.file_len) + " bytes";
}

} // namespace ls
