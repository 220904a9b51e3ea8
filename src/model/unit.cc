#include "model/unit.h"

#include "driver/fatal.h"
#include "driver/file.h"
#include "driver/settings.h"
#include "model/open_files.h"
#include "model/records.h"
#include "model/ring.h"
#include "output/log.h"
#include "output/qcc.h"

#include <cstdio>
#include <memory>
#include <new>

namespace {

UNIT_T* Start;          ///< the current unit: the one that the last packet belonged to
UNIT_T* By_id[0x10000]; ///< the members of the ring, to find one at once

/// kept: id-zero. No unit has the ID 0; such packets are filed under FFFF.
uint16_t unit_id_of(const PACKET& pkt)
{
    const uint16_t id = raw_unit_id(pkt);
    return id ? id : 0xFFFF;
}

void leave_unit(UNIT_T* left)
{
    if (!left) return; // the run's first unit leaves nobody
    if (Qcc_on) Unit_file_close(left, UNIT_QCC);
    if (Log_on) Unit_file_close(left, UNIT_LOG);
}

/// kept: qcc-follows-log. The QC file comes back only with a log.
void enter_again(UNIT_T* unit)
{
    if (!Log_on) return;
    unit->log_open = 1;
    if (Qcc_on) unit->qcc_open = 1;
}

UNIT_T* new_unit(uint16_t id)
try {
    auto made = std::make_unique<UNIT_T>();
    Text<5> name;
    snprintf(name.s, sizeof name.s, "%05hX", id);
    made->unit_id = id;
    made->ini_last = -1;
    made->stn_name = name;
    Unit_ini(made.get());
    UNIT_T* unit = made.release(); // its files are the writer's to see to from here on
    if (Log_on) Unit_file_create(unit, UNIT_LOG);
    if (Qcc_on) Unit_file_create(unit, UNIT_QCC);
    return unit;
} catch (const std::bad_alloc&) {
    shut_down(FATAL_MEMORY, nullptr, nullptr);
}

/// Opens a unit's file behind what it holds. The file stays with the writer for the rest of the run; that
/// it is the current one is the flag's to say.
void open_unit_file(const UNIT_T* unit, OUT_FILE& file, std::string& name, const char* extension)
{
    char base[8];
    snprintf(base, sizeof base, "ID%04hX", unit->unit_id);
    name = DirOut + base + extension;
    if (same_file(name.c_str(), FileIn.c_str())) shut_down(FATAL_OPEN, name.c_str(), nullptr);
    open_file(file, name.c_str(), nullptr);
}

} // namespace

UNIT_T* Unit_find(const PACKET& pkt)
{
    const uint16_t id = unit_id_of(pkt);
    if (Start && Start->unit_id == id) return Start;

    UNIT_T*& unit = By_id[id];
    if (unit) {
        leave_unit(Start);
        enter_again(unit);
    } else {
        unit = new_unit(id);
        ring_join(Start, unit);
        leave_unit(Start);
    }
    return Start = unit;
}

void Unit_file_create(UNIT_T* unit, uint16_t kind)
{
    if (kind == UNIT_LOG) {
        open_unit_file(unit, unit->log_fp, unit->log_name, Fn_ext_log);
        unit->log_open = 1;
        Log_fhdr(unit->log_fp);
    } else if (kind == UNIT_QCC) {
        open_unit_file(unit, unit->qcc_fp, unit->qcc_name, Fn_ext_qcc);
        unit->qcc_open = 1;
        Qcc_fhdr(unit->qcc_fp);
    }
}

void Unit_file_close(UNIT_T* unit, uint16_t kind)
{
    if (kind == UNIT_LOG) {
        unit->log_open = 0;
        Evt_close_files(unit->evt);
    } else if (kind == UNIT_QCC) {
        unit->qcc_open = 0;
    }
}

void Unit_qcc_reopen(UNIT_T* unit)
{
    unit->qcc_open = 1;
}

void Unit_forget_all()
{
    while (Start) {
        UNIT_T* left = Start;
        Start = ring_leave(left);
        By_id[left->unit_id] = nullptr;
        out_close(left->log_fp);
        out_close(left->qcc_fp);
        delete left;
    }
}
