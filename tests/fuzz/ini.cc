// The station file: its sections, the station's keys, the channels' keys, and what traces show of them.
//
// Input: a byte for the channel, the rest is the file.
#include "model/ini.h"
#include "driver/base/settings.h"
#include "fuzz/fuzz.h"
#include "model/channel.h"
#include "model/record/catalogue.h"
#include "model/record/records.h"
#include "model/unit.h"
#include "output/sac.h"

#include <cstdio>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

namespace {

using fuzz::demand;

/// The file, which has a name but stands in no directory. Some systems open such a name where the descriptor
/// was left, so that this goes back to the start.
class NamelessFile {
public:
    void hold(std::string_view text) const
    {
        demand(ftruncate(fd_, 0) == 0 && lseek(fd_, 0, SEEK_SET) == 0, "the file can be emptied");
        demand(pwrite(fd_, text.data(), text.size(), 0) == static_cast<ssize_t>(text.size()),
               "the file can be written");
    }
    const std::string& name() const { return name_; }

private:
#ifdef MFD_CLOEXEC // in memory
    int fd_ = memfd_create("vxu.ini", MFD_CLOEXEC);
    std::string name_ = "/proc/self/fd/" + std::to_string(fd_);
#else
    int fd_ = fileno(tmpfile());
    std::string name_ = "/dev/fd/" + std::to_string(fd_);
#endif
};

template <size_t N>
void ends(const Text<N>& text)
{
    demand(text.s[N] == '\0', "a text ends within its field");
}

/// A section consists of the lines between its header and the next line that begins with "[".
void check_section(const IniSection& section, std::string_view file)
{
    const auto first = static_cast<size_t>(section.first), last = static_cast<size_t>(section.last);
    demand(first <= last && last <= file.size(), "a section lies within the file");
    for (const std::string_view line : section.lines) {
        demand(line.size() <= 99, "lines are at most 99 characters long");
        demand(line.empty() || line[0] != '[', "a header ends the section");
        demand(file.find(line, first) != std::string_view::npos, "a line stands in the file");
    }
}

void check_unit(const UNIT_T& unit)
{
    ends(unit.stn_name);
    ends(unit.geol);
}

void check_channel(const CHN_T& chn)
{
    demand(chn.set.sns_ndx < Sensor_cnt, "a sensor is one of the catalogue");
    demand(chn.set.type_code == 0 || chn.set.type_code == 1 || chn.set.type_code == 3,
           "a type is known, or another");
    ends(chn.set.make);
    ends(chn.set.model);
    ends(chn.set.SeisComp);
}

void read_station(uint16_t id, uint16_t channel, std::string_view file)
{
    UNIT_T unit;
    unit.unit_id = id;
    Unit_ini(unit);
    check_unit(unit);
    const IniSection* section = ini_section(id, unit.ini_first);
    demand(section != nullptr, "a file that is there is read");
    check_section(*section, file);

    EVT_T evt;
    evt.unit = &unit;
    CHN_T chn;
    chn.unit = &unit;
    chn.evt = &evt;
    chn.id.channel = channel;
    Chn_ini(chn);
    check_channel(chn);
    char header[Sac_header_len];
    Sac_dhdr_bytes(chn, header);
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const bool silent = (fuzz::silence(), true);
    static const NamelessFile file;
    if (!silent || size < 1) return -1;

    fuzz::Bytes in(data, size);
    const uint16_t channel = in.byte() % 100;
    file.hold(in.rest());
    FileIni = file.name();
    ini_forget();
    read_station(0x9A2F, channel, in.rest());
    read_station(0x0001, 0, in.rest());
    return 0;
}
