#include "model/open_files.h"

#include "driver/file.h"
#include "model/records.h"
#include "model/ring.h"

uint16_t N_opn_fls;

static constexpr uint16_t Open_files_max = 32;

uint8_t Chn_file_open(CHN_T* chn, TRACE_MODE mode)
{
    if (chn->file_open) return 1;
    bool opened = chn->file_made != 0;
    if (mode == TRACE_MODE::create) {
        opened = out_open_vx(chn->fp, chn->name.c_str(), OUT_MODE::create_new, ON_LOSS::end_run);
        if (opened) chn->file_made = 1;
    }
    if (!opened) return 0;
    ++N_opn_fls;
    return chn->file_open = 1;
}

void Chn_file_close(CHN_T* chn)
{
    if (chn->file_open && N_opn_fls > 0) --N_opn_fls;
    chn->file_open = 0;
}

void Evt_close_files(EVT_T* evt)
{
    if (!evt) return;
    ring_each(evt->chn, [](CHN_T& chn) {
        if (chn.file_open) Chn_file_close(&chn);
    });
}

void make_room(CHN_T* from, const CHN_T* at_hand)
{
    if (N_opn_fls <= Open_files_max || !from) return;
    for (CHN_T* chn = from; chn != at_hand; chn = chn->prv) {
        if (!chn->file_open) continue;
        Chn_file_close(chn);
        return;
    }
}
