// The settings of a run into a scratch directory, for tests that call functions of src without main.
#pragma once

#include "kit/packets.h"
#include "kit/scratch.h"

#include "driver/base/fatal.h"
#include "driver/base/run_files.h"
#include "driver/base/settings.h"
#include "model/event.h"
#include "model/ini.h"
#include "model/record/records.h"
#include "model/unit.h"
#include "output/log.h"
#include "packet/input.h"

#include <gtest/gtest.h>

#include <deque>
#include <set>
#include <string>
#include <vector>

namespace kit {

/// Defaults, no INI file, no logs; finishes what the test opened.
class Stage {
public:
    Stage()
    {
        set_defaults();
        Log_on = false;
        DirOut = scratch.dir() + "/";
        FileIni = "vxu.ini - not found; using defaults";
        FileIn = "rec.pkt";
        Sys_time = 0;
        Blk_cnt = 0;
        take_mark();
    }
    ~Stage()
    {
        for (UNIT_T* unit : units_) {
            while (unit->evt) Evt_remove(*unit->evt);
        }
        Unit_forget_all();
        out_close(FdLog);
        out_close(FdQcc);
        ini_forget();
    }
    Stage(const Stage&) = delete;
    Stage& operator=(const Stage&) = delete;

    /// A packet whose bytes are valid as long as the stage; its buffer ends with its last byte.
    PACKET packet(const std::string& bytes)
    {
        return PACKET(packets_.emplace_back(bytes.begin(), bytes.end()).data());
    }
    UNIT_T& unit(const std::string& bytes)
    {
        UNIT_T& found = Unit_find(packet(bytes));
        units_.insert(&found);
        return found;
    }
    EVT_T& event(const std::string& bytes) { return Evt_find(unit(bytes), packet(bytes)); }

    Scratch scratch;

private:
    std::deque<std::vector<uint8_t>> packets_;
    std::set<UNIT_T*> units_;
};

/// The bytes that `write(file)` writes to a new file.
template <class Write>
std::string written_by(Write write)
{
    const Scratch scratch;
    const std::string name = scratch.path("file");
    OUT_FILE file;
    EXPECT_TRUE(out_open(file, name.c_str(), OUT_MODE::truncate, log_lost));
    write(file);
    out_close(file);
    return scratch.read("file");
}

} // namespace kit
