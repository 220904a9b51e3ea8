#include "output/sac.h"

#include "driver/base/fatal.h"
#include "driver/base/file.h"
#include "driver/base/settings.h"
#include "model/record/records.h"
#include "model/record/show.h"
#include "output/sample_math.h"
#include "packet/codec.h"

#include <algorithm>
#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <string_view>

namespace {

/// Copies a text into a field of the header: cut at its width, the rest NUL.
template <size_t N>
void put_text(char (&field)[N], std::string_view from)
{
    const size_t n = std::min(from.size(), N);
    memcpy(field, from.data(), n);
    memset(field + n, 0, N - n);
}

/// Sets every field to undefined, and the logicals to 0.
void fill_undefined(SACHDR_T& h)
{
    char* const raw = reinterpret_cast<char*>(&h);
    size_t at = 0;
    for (; at < offsetof(SACHDR_T, NZYEAR); at += 4) memcpy(raw + at, &Undefined_f, 4);
    for (; at < offsetof(SACHDR_T, LEVEN); at += 4) memcpy(raw + at, &Undefined_i, 4);
    memset(raw + at, 0, offsetof(SACHDR_T, KSTNM) - at);
    for (at = offsetof(SACHDR_T, KSTNM); at < Sac_header_len; at += 8) memcpy(raw + at, Undefined_k, 8);
    memcpy(h.KEVNM, Undefined_k, sizeof h.KEVNM);
}

void put_statistics(SACHDR_T& h, const CHN_T& chn)
{
    h.DEPMIN = static_cast<float>(chn.stats.min);
    h.DEPMAX = static_cast<float>(chn.stats.max);
    h.DEPMEN = chn.cnt ? static_cast<float>(chn.stats.sum / chn.cnt) : 0.0F;
    h.NPTS = static_cast<int32_t>(chn.cnt);
}

/// kept: b-and-e-undefined. The reference time is the first sample, and only O is given relative to it.
void put_times(SACHDR_T& h, const EVT_T& evt)
{
    if (evt.smp_rate > 0.0F) h.DELTA = 1.0F / evt.smp_rate;
    h.ODELTA = h.DELTA;
    h.O = static_cast<float>(Time_dif(evt.times.t_trg, evt.times.t_first));
    TIME_T t;
    Time_atoil(t, evt.times.t_first);
    h.NZYEAR = t.year;
    h.NZJDAY = t.day;
    h.NZHOUR = t.hour;
    h.NZMIN = t.minute;
    h.NZSEC = t.second;
    h.NZMSEC = t.milli;
}

void put_station(SACHDR_T& h, const UNIT_T& unit)
{
    if (!unit.stn_name.empty())
        put_text(h.KSTNM, unit.stn_name.view());
    else // kept: station-over-fill. Four digits and a NUL; three bytes of the undefined value remain.
        snprintf(h.KSTNM, sizeof h.KSTNM, "%04hX", unit.unit_id);
    if (!unit.net_name.empty()) put_text(h.KNETWK, unit.net_name.view());
}

void put_component(SACHDR_T& h, const CHN_T& chn)
{
    char id[8];
    snprintf(id, sizeof id, "%04hX-", chn.id.unit_id);
    memcpy(h.KCMPNM, id, 5);
    const bool seed = chn.set.band != ' ';
    h.KCMPNM[5] = seed ? chn.set.band : static_cast<char>('1' + chn.id.stream);
    h.KCMPNM[6] = seed ? chn.set.type : '-';
    h.KCMPNM[7] = seed ? chn.set.axis : static_cast<char>('1' + chn.id.channel);
}

void put_run(SACHDR_T& h)
{
    tm start{};
    localtime_r(&Sys_time, &start);
    char date[32];
    // kept: day-from-zero. The day of the year of the C library, which counts 1 January as 000.
    snprintf(date, sizeof date, "%04d:%03d", start.tm_year + 1900, start.tm_yday);
    memcpy(h.KDATRD, date, sizeof h.KDATRD);
    memcpy(h.KINST, "VX 900  ", sizeof h.KINST);
}

} // namespace

void Sac_dhdr_init(const CHN_T& chn, SACHDR_T& header)
{
    fill_undefined(header);
    header.SCALE = 1.0F;
    put_statistics(header, chn);
    put_times(header, *chn.evt);
    header.CMPAZ = chn.set.azimuth;
    header.CMPINC = chn.set.dip;
    header.NVHDR = Sac_version;
    header.IFTYPE = ITIME;
    header.IDEP = IUNKN;
    header.IZTYPE = IUNKN;
    header.IEVTYP = IUNKN;
    header.IQUAL = IGOOD;
    header.ISYNTH = IRLDTA;
    header.LEVEN = 1;
    header.LPSPOL = 1;
    put_station(header, *chn.unit);
    put_component(header, chn);
    put_run(header);
}

void Sac_dhdr_bytes(const CHN_T& chn, char* bytes)
{
    SACHDR_T header;
    Sac_dhdr_init(chn, header);
    memcpy(bytes, &header, Sac_header_len);
    for (size_t i = 0; i < Sac_words; ++i) {
        uint32_t word;
        memcpy(&word, bytes + 4 * i, 4);
        put_be32(bytes + 4 * i, word);
    }
}

/// Makes the directories of the trace again, which somebody removed between two traces. Not the output path,
/// and none for a "/" in the station's name.
static void make_directories_again(const CHN_T& chn)
{
    Make_dir(chn.name.substr(0, chn.dir_len).c_str(), DirOut.size());
}

bool Chn_file_open(CHN_T& chn)
{
    const char* const name = chn.name.c_str();
    if (out_open(chn.fp, name, OUT_MODE::create_new, trace_lost)) return true;
    if (errno == EEXIST) return false;
    if (errno == ENOENT) make_directories_again(chn);
    return out_open_vx(chn.fp, name, OUT_MODE::create_new, trace_lost);
}

void Chn_file_close(CHN_T& chn)
{
    out_close(chn.fp);
}

void Sac_dhdr_out(CHN_T& chn)
{
    char* const header = chn.fp.room(Sac_header_len);
    Sac_dhdr_bytes(chn, header);
    chn.fp.mark_start({header, Sac_header_len});
    chn.fp.took(Sac_header_len);
}

/// A SAC header counts samples in 32 bits: that samples are dropped for that reason is said once per trace. A
/// limit that -S sets is what the user wants.
static void complain_about_full(CHN_T& chn)
{
    if (Smp_limit_set || chn.full) return;
    chn.full = true;
    fprintf(stderr, "\nNo more than %" PRIu32 " samples fit into '%s': the rest is dropped", Smp_limit,
            chn.name.c_str());
}

void Sac_data_out(CHN_T& chn, const int32_t* samples, uint16_t count)
{
    // kept: trash-takes-the-tail. To drop n samples of a packet, this drops its last n, not its first.
    const uint32_t dropped = std::min<uint32_t>(chn.trash, count);
    chn.trash -= dropped;
    const uint32_t n = std::min<uint32_t>(count - dropped, Smp_limit - chn.cnt);
    if (n < count - dropped) complain_about_full(chn);
    if (n == 0) return;
    add_samples(chn.stats, chn.cnt, samples, n, chn.fp.room(4 * n));
    chn.fp.took(4 * n);
    chn.cnt += n;
}

void Sac_data_close(CHN_T& chn)
{
    if (Smp_limit == 0) return; // there is no trace
    char header[Sac_header_len];
    Sac_dhdr_bytes(chn, header);
    const bool done = chn.fp.replace_start({header, sizeof header}); // a short trace is written once
    Chn_file_close(chn);
    if (done || out_overwrite_start(chn.fp, {header, sizeof header})) return;
    header_lost();
    printf("\n!!!Could not re-open '%s' to update header!!!", chn.name.c_str());
    Chn_show(chn);
}

uint32_t IBM_float(int32_t value)
{
    const uint32_t bits = static_cast<uint32_t>(value);
    const uint32_t sign_bit = bits & 0x80000000U;
    uint32_t fraction = (sign_bit ? 0U - bits : bits) & 0xFFFFFFU;
    if (fraction == 0) return 0;
    uint32_t exponent = 70;
    for (; (fraction & 0xF00000U) == 0; fraction <<= 4) --exponent;
    return fraction | exponent << 24 | sign_bit;
}
