// The dumps of event headers and trailers (log_eh_et), and of network headers and trailers (log_nh_nt), which
// have sample rate and trigger type in the same places.
#include "driver/base/ascii.h"
#include "model/record/catalogue.h"
#include "output/dump.h"
#include "output/form.h"
#include "packet/timestr.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace {

// kept: network-follows-event. A network packet shows telemetry fields if the last full EH or ET dumped, of
// any unit, came from a telemetry unit; its own bytes do not matter. Set: log_eh_et. Read: log_nh_nt.
bool Telemetry_seen = false;

constexpr Line Station_lines[] = {
    {EH::Comment, "Station Comment"},
    {EH::Position, "Position"},
    {EH::Strm_name, "Stream Name"},
};
constexpr Line Installed_lines[] = {
    {EH::Filters, "Filter list"},
    {EH::Chn_cnt, "Installed channels"},
};
constexpr Line Event_telemetry_lines[] = {
    {EH::Tel_version, "MES-DAU Version"},
    {EH::Tel_freq, "MES-DAU Xmitter Freq"},
    {EH::Tel_id, "MES-DAU Xmitter Id"},
    {EH::Tel_site, "MES-DAU Xmitter Site"},
    {EH::Tel_sensor, "MES-DAU Sensor"},
    {EH::Tel_receiver, "MES-DAU Receiver Site"},
    {EH::Tel_delay, "MES-DAU Propagatn Delay"},
    {EH::Tel_chn, "MES-DAU Data Chn"},
    {EH::Tel_chn_position, "MES-DAU Data Chn Positn"},
    {EH::Overscale, "MES-DAU Overscale Count"},
};

constexpr Line Network_time_lines[] = {
    {EH::T_trg, "Trigger time"},
    {EH::T_first, "First sample time"},
    {EH::T_detrg, "Detrigger time"},
    {EH::T_last, "Last sample time"},
};
constexpr Line Network_stream{EH::Strm_name, "Stream Name"};
constexpr Line Network_telemetry_lines[] = {
    {EH::Tel_version, "MES-CRU Version"},
    {EH::Tel_freq, "MES-CRU Xmitter Freq"},
    {EH::Tel_id, "MES-CRU Xmitter Id"},
    {EH::Tel_site, "MES-CRU Xmitter Site"},
    {EH::Tel_sensor, "MES-CRU (Xmitter Freq)"},
    {EH::Tel_receiver, "MES-CRU Site"},
    {EH::Tel_delay, "MES-CRU Propagatn Delay"},
    {EH::Tel_chn, "MES-CRU Data Chn"},
    {EH::Tel_chn_position, "MES-CRU Data Chn Positn"},
};

/// Writes the sample rate and the trigger type. A telemetry unit has no trigger type: its rate includes these
/// bytes.
void log_rate(OUT_FILE& log, const PACKET& pkt, bool telemetry)
{
    form_line(log, Form_c, pkt, {telemetry ? EH::Rate_telemetry : EH::Rate, "Sample rate"});
    if (!telemetry) form_line(log, Form_c, pkt, {EH::Trg_type, "Trigger type"});
}

void log_station_name(OUT_FILE& log, const PACKET& pkt)
{
    form_label(log, Form_c, "Station Name");
    form_text(log, pkt, EH::Stn_name);
    log.print("%c\r\n", byte(pkt, EH::Stn_name_5th));
}

const char* time_source(uint8_t code)
{
    switch (code) {
    case '1': return "Internal";
    case '2': return "GPS     ";
    default: return "Unknown ";
    }
}

void log_clock(OUT_FILE& log, const PACKET& pkt)
{
    log.print("   Time Source            : %s  Days since PLL %c\r\n", time_source(byte(pkt, EH::Time_src)),
              byte(pkt, EH::Pll_days));
}

/// A time: its digits down to the millisecond, the three digits of its microseconds, and the label.
struct TimeLine {
    Span digits, micros;
    const char* label;
    bool may_lack; ///< a time that begins with a blank shows the label alone
};
constexpr TimeLine Event_time_lines[] = {
    {EH::T_trg, EH::Us_trg, "Trigger time", false},
    {EH::T_first, EH::Us_first, "First sample time", false},
    {EH::T_detrg, EH::Us_detrg, "Detrigger time", true},
    {EH::T_last, EH::Us_last, "Last sample time", true},
};

void log_time(OUT_FILE& log, const PACKET& pkt, const TimeLine& line)
{
    form_label(log, Form_c, line.label);
    const std::string_view digits = text(pkt, line.digits);
    const auto from = [digits](size_t place) { return digits.substr(place).data(); };
    if (!line.may_lack || given(digits))
        log.print("%4.4s:%3.3s:%2.2s:%2.2s:%2.2s.%3.3s%3.3s", from(AT::Year), from(AT::Day), from(AT::Hour),
                  from(AT::Minute), from(AT::Second), from(AT::Milli), text(pkt, line.micros).data());
    log.write("\r\n");
}

/// The factor of a hexadecimal gain digit; other characters count as 0.
double gain_factor(uint8_t digit)
{
    const int row = hex_digit(static_cast<char>(digit));
    return static_cast<double>(Gain_info[row < 0 ? 0 : row].factor);
}

void log_channel(OUT_FILE& log, const PACKET& pkt, int slot)
{
    if (!given(text(pkt, EH::Bit_wght[slot]))) return;
    // kept: any-flag-counts-from-17. This tests all flags, not only that of the second bank.
    const unsigned number = static_cast<unsigned>(slot) + (flags(pkt) != 0 ? 17 : 1);
    log.print("    Chn %2u(%.3s) : %.8s  %.8s  %6.0f  %c    %c  %.4s     %c  %.6s  %c\r\n", number,
              text(pkt, EH::Chn_name[slot]).data(), text(pkt, EH::Bit_wght[slot]).data(),
              text(pkt, EH::True_wght[slot]).data(), gain_factor(byte(pkt, EH::Gain[slot])),
              byte(pkt, EH::Res[slot]), byte(pkt, EH::Fsv[slot]), text(pkt, EH::Seed[slot]).data(),
              byte(pkt, EH::Sns_fsv[slot]), text(pkt, EH::Sns_vpu[slot]).data(), byte(pkt, EH::Units[slot]));
}

} // namespace

void log_eh_et(OUT_FILE& log, const PACKET& pkt)
{
    if (bcd(pkt, HDR::Byte_cnt) < EH::Full_len) {
        form_text(log, pkt, EH::Short_text);
        log.write("\r\n");
        return;
    }
    const bool telemetry = Telemetry_seen = from_telemetry(pkt);

    log_station_name(log, pkt);
    form_lines(log, Form_c, pkt, Station_lines);
    log_rate(log, pkt, telemetry);
    log_clock(log, pkt);
    for (const TimeLine& line : Event_time_lines) log_time(log, pkt, line);
    form_lines(log, Form_c, pkt, Installed_lines);
    log.write("   Channel Info :  BitWght   TruWght    Gain  R  FSV  SEED  SFSV   SVPU   U\r\n");
    for (int slot = 0; slot < EH::Bit_wght.count; ++slot) log_channel(log, pkt, slot);
    if (telemetry) form_lines(log, Form_c, pkt, Event_telemetry_lines);
}

void log_nh_nt(OUT_FILE& log, const PACKET& pkt)
{
    form_lines(log, Form_c, pkt, Network_time_lines);
    log_rate(log, pkt, Telemetry_seen);
    form_line(log, Form_c, pkt, Network_stream);
    if (Telemetry_seen) form_lines(log, Form_c, pkt, Network_telemetry_lines);
}
