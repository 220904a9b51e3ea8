// Finds the name of a trace: the first of 25 that is free.
#include "driver/base/fatal.h"
#include "driver/base/file.h"
#include "driver/base/settings.h"
#include "model/channel.h"
#include "model/record/records.h"
#include "model/trace_name.h"

#include <string>

static constexpr char Spec_char[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZ";

static std::string Made; ///< the directories of the latest trace

/// Creates the directories of a trace, unless they are those of the trace before.
static void make_directories(const std::string& dir)
{
    if (dir == Made) return;
    Make_dir(dir.c_str(), DirOut.size());
    Made = dir;
}

void Chn_name(CHN_T& chn)
{
    const TraceName name{chn.times.t_first, chn.evt->stn_name, chn.id.unit_id, chn.id.stream, chn.id.channel};
    const std::string dir = DirOut + trace_directory(name.first, Path_option);
    chn.dir_len = dir.size();
    make_directories(dir);
    std::string base = trace_base(name, Name_option);
    // kept: letters-a-to-x. The name is tried without a letter and with "A" to "X"; "Y" is set and not tried.
    for (size_t i = 0; i < sizeof Spec_char - 2; ++i) {
        chn.name = dir + base + Fn_ext_chn;
        if (!name_taken(chn.name.c_str())) return;
        base[Trace_letter_place] = Spec_char[i];
    }
    end_without_name();
}
