// Where a channel's trace goes: directory levels and a file name that nothing stands at yet.
#include "model/channel.h"

#include "driver/fatal.h"
#include "driver/file.h"
#include "driver/settings.h"
#include "model/records.h"

#include <cstdio>

namespace {

constexpr char Spec_char[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZ";
constexpr size_t Spec_place = 24; ///< of the letter in the base name, from 0

/// The levels below the output path, from the time of the channel's first packet.
std::string sub_directory(const char* t)
{
    Text<31> dir;
    switch (Path_option) {
    case 1: snprintf(dir.s, sizeof dir.s, "%4.4s_%3.3s%s", t, t + AT::Day, Dir_sep); break;
    case 2:
        snprintf(dir.s, sizeof dir.s, "%4.4s_%3.3s%s%2.2s%s", t, t + AT::Day, Dir_sep, t + AT::Hour, Dir_sep);
        break;
    case 3:
        snprintf(dir.s, sizeof dir.s, "%4.4s_%3.3s%s%2.2s_%2.2s%s", t, t + AT::Day, Dir_sep, t + AT::Hour,
                 t + AT::Minute, Dir_sep);
        break;
    case 4:
        snprintf(dir.s, sizeof dir.s, "%4.4s_%3.3s%s%2.2s_%2.2s_%2.2s%s", t, t + AT::Day, Dir_sep,
                 t + AT::Hour, t + AT::Minute, t + AT::Second, Dir_sep);
        break;
    default: break;
    }
    return dir.s;
}

/// The part of the name that tells the station.
Text<5> name_part(const CHN_T* chn)
{
    const Text<5>& station = chn->evt->stn_name;
    const bool by_station = Name_option == 2 || (Name_option == 0 && station.view() != "     ");
    Text<5> part;
    if (by_station) {
        part.put_right(station.view());
        for (char& c : part.s)
            if (c == ' ') c = '_';
    } else {
        snprintf(part.s, sizeof part.s, "%05hX", chn->unit_id);
    }
    return part;
}

std::string base_name(const CHN_T* chn, const char* t)
{
    const Text<5> part = name_part(chn);
    Text<63> base;
    snprintf(base.s, sizeof base.s, "%4.4s%3.3s%2.2s%2.2s%2.2s%3.3s_%s_%01u_%01X", t, t + AT::Day,
             t + AT::Hour, t + AT::Minute, t + AT::Second, t + AT::Milli, part.s, chn->stream + 1U,
             chn->channel + 1U);
    return base.s;
}

std::string Made; ///< the latest channel's directories

/// Most channels go where the one before went: its directories are there.
void make_directories(const std::string& dir)
{
    if (dir == Made) return;
    Make_dir(dir.c_str());
    Made = dir;
}

} // namespace

void Chn_name(CHN_T* chn, const TIMESTR& time)
{
    const std::string dir = DirOut + sub_directory(time.s);
    make_directories(dir);
    std::string base = base_name(chn, time.s);
    // kept: letters-a-to-x. After each name that is taken the next letter is placed; the last one placed is
    // not tried.
    for (size_t i = 0; i < sizeof Spec_char - 2; ++i) {
        chn->name = dir + base + Fn_ext_chn;
        if (!name_taken(chn->name.c_str())) return;
        base[Spec_place] = Spec_char[i];
    }
    end_without_name();
}
