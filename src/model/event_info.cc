// Copies the fields of an event header or trailer into the event and its unit. Begin with Evt_info.
#include "driver/base/fatal.h"
#include "driver/base/number.h"
#include "model/event.h"
#include "model/record/records.h"

#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <string_view>

static void take_rate_and_trigger(EVT_T& evt, const PACKET& pkt)
{
    if (from_telemetry(pkt)) {
        evt.smp_rate = stof(text(pkt, EH::Rate_telemetry), 0);
        evt.trg_type.put("MIM ");
    } else {
        evt.smp_rate = stof(text(pkt, EH::Rate), 0);
        evt.trg_type.put(text(pkt, EH::Trg_type));
    }
}

/// Copies the fields of the packet's sixteen channels. A later packet of the bank replaces them.
static void take_bank(EVT_T& evt, const PACKET& pkt)
{
    std::unique_ptr<EventBank>& bank = evt.bank[flags(pkt) & FLAG::Second_bank ? 1 : 0];
    if (!bank) bank.reset(new (std::nothrow) EventBank);
    if (!bank) end_without_event_memory();
    memcpy(bank->bytes, bytes(pkt, EventBank::Place), sizeof bank->bytes);
}

/// kept: fifth-letter-before. The packet has the fifth character of a station name before the other four.
static void take_station(EVT_T& evt, const PACKET& pkt)
{
    const std::string_view first_four = text(pkt, EH::Stn_name);
    if (given(first_four)) {
        char name[5];
        memcpy(name, first_four.data(), 4);
        name[4] = static_cast<char>(byte(pkt, EH::Stn_name_5th));
        evt.unit->stn_name.put({name, sizeof name});
    }
    evt.stn_name = evt.unit->stn_name;
}

/// Days since the clock's last lock: a digit; "?" gives 10, a blank 65535.
static uint16_t days_since_lock(const PACKET& pkt)
{
    const std::string_view days = text(pkt, EH::Pll_days);
    if (days == "?") return 10;
    return given(days) ? static_cast<uint16_t>(scan_int16(days, 0, 1)) : uint16_t{65535};
}

/// A latitude or longitude in degrees, from whole degrees and decimal minutes; negative if the hemisphere's
/// letter is `negative`, in either case.
static double degrees(std::string_view position, Span deg, Span min, char letter, char negative)
{
    const double angle = scan_int32(position, static_cast<size_t>(deg.at), deg.len) +
                         scan_double(position, static_cast<size_t>(min.at), min.len) / 60.0;
    return (letter | 0x20) == negative ? -angle : angle;
}

static void take_position(UNIT_T& unit, const PACKET& pkt)
{
    const std::string_view p = text(pkt, EH::Position);
    if (p.front() == ' ' || p.front() == '\0') return;
    unit.position.lat = degrees(p, POS::Lat_deg, POS::Lat_min, p[POS::South.at], 's');
    unit.position.lon = degrees(p, POS::Lon_deg, POS::Lon_min, p[POS::West.at], 'w');
    unit.position.alt = scan_int32(p, POS::Elevation.at, POS::Elevation.len);
}

/// kept: short-headers-describe. A short EH or ET, which the log shows as one text, is read like a full one.
static void take_description(EVT_T& evt, const PACKET& pkt)
{
    take_rate_and_trigger(evt, pkt);
    evt.strm_name.put(text(pkt, EH::Strm_name));
    evt.times.t_trg.put(text(pkt, EH::T_trg));
    evt.times.t_first.put(text(pkt, EH::T_first));
    evt.times.t_detrg.put(text(pkt, EH::T_detrg));
    evt.times.t_last.put(text(pkt, EH::T_last));
    take_bank(evt, pkt);
    evt.cmnt.put(text(pkt, EH::Comment));
    take_station(evt, pkt);
    const std::string_view channels = text(pkt, EH::Chn_cnt);
    if (given(channels)) evt.unit->eh_chn_cnt = static_cast<uint16_t>(scan_int16(channels, 0, 2));
    evt.pll_days = days_since_lock(pkt);
    take_position(*evt.unit, pkt);
}

template <size_t N>
static void blank(Text<N>& field)
{
    memset(field.s, ' ', N);
    field.s[N] = '\0';
}

static void blank_description(EVT_T& evt)
{
    blank(evt.trg_type);
    blank(evt.strm_name);
    blank(evt.times.t_trg);
    blank(evt.times.t_first);
    blank(evt.times.t_detrg);
    blank(evt.times.t_last);
    blank(evt.cmnt);
    blank(evt.stn_name);
    evt.smp_rate = 0.0F;
    evt.chn_cnt = 0;
}

void Evt_info(EVT_T& evt, const PACKET& pkt)
{
    if (describes_event(pkt))
        take_description(evt, pkt);
    else
        blank_description(evt);
}
