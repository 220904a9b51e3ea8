// Whole runs: the program's own main over a recording, with real files in a directory of memory, again and
// again in one process.
//
// What is not as in the field: an ending comes out as an exception, see ending.h; settings, units and the
// input are reset by forget_run, whereas two things outlast a run, the writer's buffers and that a lost byte
// no longer ends anything, which nothing here makes happen; a "/" in a station name, which the program tries
// for seconds to open, is made a "_"; and a DR packet has 165 entries at most, not 16,665, whose megabytes of
// text would take nearly all of the time.
//
// Input: two bytes of switches, then packets.
#include "driver/base/run_files.h"
#include "driver/base/settings.h"
#include "fuzz/ending.h"
#include "fuzz/fuzz.h"
#include "model/event.h"
#include "model/record/records.h"
#include "model/record/ring.h"
#include "model/unit.h"
#include "output/dump.h"
#include "output/log.h"
#include "packet/input.h"

#include <algorithm>
#include <dirent.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

int vx_sac_main(int argc, char** argv); // src/driver/main.cc under another name

namespace {

using fuzz::demand;

constexpr char Station_file[] = "[9A2F]\nStation = STA01\nLatitude = 47.55 ; degrees\nLongitude=-122.25\n"
                                "Ch1SnsModel=AX-21/3/INT\nCh1Azm = 90\nCh1Band=H\nCh1Type=N\nCh02Dip=-90\n"
                                "[0001]\nStation=a b\nStatChnCnt=3\n";

bool is_directory(const char* path)
{
    struct stat what;
    return stat(path, &what) == 0 && S_ISDIR(what.st_mode);
}

std::string memory_directory()
{
    const char* told = getenv("TMPDIR");
    const std::string in = told ? told : is_directory("/dev/shm") ? "/dev/shm" : "/tmp";
    return in + "/vx_fuzz_XXXXXX";
}

void write_file(const std::string& path, std::string_view bytes)
{
    FILE* file = fopen(path.c_str(), "wb");
    demand(file && fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size() && fclose(file) == 0,
           "a file can be written");
}

void make_directory(const std::string& path)
{
    demand(mkdir(path.c_str(), 0777) == 0, "a directory can be made");
}

/// After a run that ended well every trace holds what its header says.
void check_trace(const std::string& path)
{
    uint8_t header[632];
    FILE* file = fopen(path.c_str(), "rb");
    demand(file && fread(header, 1, sizeof header, file) == sizeof header, "a trace has a header");
    demand(be32(header + 304) == 6, "a trace is SAC, big-endian");
    demand(fseek(file, 0, SEEK_END) == 0 &&
               ftell(file) == static_cast<long>(sizeof header + 4 * be32(header + 316)),
           "a trace holds what its header says");
    fclose(file);
}

/// Removes a directory and what is in it, looking at the traces first when asked to.
void remove_directory(const std::string& path, bool look)
{
    DIR* folder = opendir(path.c_str());
    demand(folder != nullptr, "a directory can be read");
    if (!folder) return;
    while (const dirent* entry = readdir(folder)) {
        const std::string name = entry->d_name;
        if (name == "." || name == "..") continue;
        std::string inside = path;
        inside.append("/").append(name);
        if (entry->d_type == DT_DIR) {
            remove_directory(inside, look);
            continue;
        }
        if (look && name.ends_with(".sac")) check_trace(inside);
        demand(unlink(inside.c_str()) == 0, "a file can be removed");
    }
    closedir(folder);
    demand(rmdir(path.c_str()) == 0, "a directory can be removed");
}

/// Where the runs take place: TOP/program/vxu.ini, TOP/rec.pkt, and a fresh TOP/runs/N for each run.
class Ground {
public:
    Ground()
    {
        demand(mkdtemp(top_.data()) != nullptr, "there is a scratch directory");
        make_directory(top_ + "/program");
        make_directory(top_ + "/runs");
        write_file(top_ + "/program/vxu.ini", Station_file);
    }
    ~Ground() { remove_directory(top_, false); }
    Ground(const Ground&) = delete;
    Ground& operator=(const Ground&) = delete;

    std::string program(bool with_ini) const { return with_ini ? top_ + "/program/vx_sac" : "vx_sac"; }
    std::string input() const { return top_ + "/rec.pkt"; }

    /// The program remembers the last directory it made, so each run has a new one.
    std::string new_output()
    {
        output_ = top_ + "/runs/" + std::to_string(++runs_);
        make_directory(output_);
        return output_;
    }
    /// Looks at what a run left, and removes it.
    void clear(int status) const
    {
        remove_directory(output_, status == 0);
        demand(rmdir((top_ + "/runs").c_str()) == 0, "a run leaves nothing outside of its output path");
        make_directory(top_ + "/runs");
    }

private:
    std::string top_ = memory_directory();
    std::string output_;
    unsigned long runs_ = 0;
};

void write_input(const std::string& path, std::string_view packets)
{
    std::string spared(packets);
    for (size_t at = 0; at + Packet_size <= spared.size(); at += Packet_size) {
        for (size_t i = at + 59; i < at + 64; ++i) // the station name's five characters
            if (spared[i] == '/') spared[i] = '_';
        if (spared.compare(at, 2, "DR") == 0) spared[at + 26] = 0; // the hundreds of its entries
    }
    write_file(path, spared);
}

std::vector<std::string> switches(unsigned first, unsigned second)
{
    static constexpr const char* limits[] = {"-S4294967295", "-S0", "-S1", "-S700"};
    static constexpr const char* skips[] = {"-T0", "-T1", "-T25", "-T0x10000"};
    return {first & 1 ? "-QY" : "-QN",    first & 2 ? "-DY" : "-DN",
            first & 4 ? "-N1" : "-N0",    "-P" + std::to_string((first >> 3 & 7) % 5),
            first & 0x80 ? "-VN" : "-VY", second & 1 ? "-LN" : "-LY",
            limits[second >> 1 & 3],      skips[second >> 3 & 3]};
}

/// Everything that a run leaves in memory. It has to look like the start of a process again.
void forget_run(int status)
{
    if (status == 1) fclose(FdIn); // an empty input is left to the exit
    FdIn = nullptr;
    Blk_rewind();
    Cmd_line.clear();
    FileIn.clear();
    DirOut.clear();

    Log_on = Qcc_on = false;
    Smp_limit = 0; // nothing is written any more
    static constexpr uint8_t any[Packet_size] = {};
    ring_each(&Unit_find(PACKET(any)), [](UNIT_T& unit) {
        while (unit.evt) Evt_remove(*unit.evt);
    });
    Unit_forget_all();
    take_mark();
    static OUT_FILE nowhere;
    nowhere.broken = true;
    static const std::string full(Packet_size, '\x20');
    log_eh_et(nowhere, PACKET(reinterpret_cast<const uint8_t*>(full.data()))); // whether telemetry was seen
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const bool silent = (fuzz::silence(), true);
    static Ground ground;
    if (!silent || size < 2) return -1;

    fuzz::Bytes in(data, size);
    const unsigned first = in.byte(), second = in.byte();
    write_input(ground.input(), in.rest());
    std::vector<std::string> arguments{ground.program(first & 0x40), ground.input(), ground.new_output()};
    for (std::string& argument : switches(first, second)) arguments.push_back(std::move(argument));
    std::vector<char*> argv(arguments.size() + 1); // null at its end
    std::transform(arguments.begin(), arguments.end(), argv.begin(), [](std::string& a) { return a.data(); });

    const int status = fuzz::status_of([&] { vx_sac_main(static_cast<int>(arguments.size()), argv.data()); });
    demand(status == 0 || status == 23 || (status == 1 && in.rest().empty()),
           "the run ends with a status it may have");
    ground.clear(status);
    forget_run(status);
    return 0;
}
