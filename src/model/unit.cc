#include "model/unit.h"

#include "driver/base/fatal.h"
#include "driver/base/file.h"
#include "driver/base/settings.h"
#include "model/record/records.h"
#include "model/record/ring.h"
#include "output/log.h"
#include "output/qcc.h"

#include <cstdint>
#include <memory>
#include <new>
#include <string>

namespace {

UNIT_T* Start;          ///< the current unit: that of the latest packet
UNIT_T* By_id[0x10000]; ///< the units of the ring, by ID

/// kept: id-zero. Packets of unit 0 are filed under FFFF.
uint16_t unit_id_of(const PACKET& pkt)
{
    return pkt.unit_id ? pkt.unit_id : 0xFFFF;
}

/// Opens a unit's log or QC file for appending, until the end of the run, and writes its header. If this
/// fails, or if it is the input file, the run ends (20).
void open_unit_file(const UNIT_T& unit, OUT_FILE& file, std::string& name, const char* extension,
                    void (*write_header)(OUT_FILE&))
{
    Text<6> base;
    base.print("ID%04hX", unit.unit_id);
    name = DirOut + base.s + extension;
    if (same_file(name.c_str(), FileIn.c_str())) shut_down(FATAL_OPEN, name.c_str());
    open_file(file, name.c_str());
    write_header(file);
}

UNIT_T* new_unit(uint16_t id)
try {
    auto unit = std::make_unique<UNIT_T>();
    unit->unit_id = id;
    unit->ini_last = -1;
    unit->stn_name.print("%05hX", id);
    unit->qcc_open = Qcc_on;
    Unit_ini(*unit);
    return unit.release();
} catch (const std::bad_alloc&) {
    shut_down(FATAL_MEMORY, nullptr);
}

void open_unit_files(UNIT_T& unit)
{
    if (Log_on) open_unit_file(unit, unit.log_fp, unit.log_name, Fn_ext_log, Log_fhdr);
    if (Qcc_on) open_unit_file(unit, unit.qcc_fp, unit.qcc_name, Fn_ext_qcc, Qcc_fhdr);
}

} // namespace

UNIT_T& Unit_find(const PACKET& pkt)
{
    const uint16_t id = unit_id_of(pkt);
    if (Start && Start->unit_id == id) return *Start;

    UNIT_T*& unit = By_id[id];
    if (Start) Start->qcc_open = false;
    if (unit) {
        unit->qcc_open = Qcc_on && Log_on; // kept: qcc-follows-log. Without logs it stays false.
    } else {
        unit = new_unit(id);
        ring_join(Start, unit);
        open_unit_files(*unit);
    }
    Start = unit;
    return *unit;
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
