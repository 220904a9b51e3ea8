// Applies the fields of the event header to a channel's settings. A field that begins with a blank is not
// given.
#include "driver/base/number.h"
#include "model/channel.h"
#include "model/record/catalogue.h"
#include "model/record/records.h"

#include <cstdint>
#include <string_view>

static constexpr int Bank_channels = 16;

/// Sets the true bit weight in volts per count from a text such as "15.89 uV", or the nominal one from the
/// other text if there is no true one.
static void take_bit_weight(CHN_T& chn, std::string_view nominal, std::string_view true_weight)
{
    const std::string_view told = given(true_weight) ? true_weight : nominal;
    if (!given(told)) return;
    double weight = scan_double(told, 0, 5);
    switch (told[6]) {
    case 'm': weight *= 0.001; break;
    case 'u': weight *= 0.000001; break;
    case 'n': weight *= 0.000000001; break;
    default: break; // kept: pico-is-one. A "p" does not scale.
    }
    chn.set.tbw = weight;
}

/// kept: gain-plain-digit. The gain is the distance from "0": "A" gives 17, which is not a gain; ":" gives
/// 10.
static void take_gain(CHN_T& chn, char code)
{
    const auto index = static_cast<uint8_t>(code - '0');
    if (index < Gain_cnt) chn.set.gain_ndx = index;
}

/// Bits of a sample, by the code of the A/D resolution.
static uint8_t bits_of(char code)
{
    switch (code) {
    case '1': return 8;
    case '2': return 16;
    case '4': return 32;
    case 'A': return 10;
    case 'B': return 11;
    case 'C': return 12;
    default: return 24;
    }
}

/// Full-scale voltage of the digitiser, by its code.
static double full_scale_of(char code)
{
    switch (code) {
    case '1': return 3.75;
    case '2': return 5.0;
    case '4': return 20.0;
    case 'R': return 3.34;
    case 'T': return 512.0;
    case 'V': return 20.875;
    default: return 10.0;
    }
}

/// Full-scale voltage of the sensor, by its code.
static double sensor_full_scale_of(char code)
{
    switch (code) {
    case '1': return 3.75;
    case '2': return 5.0;
    case '4': return 20.0;
    default: return 10.0;
    }
}

/// Takes over the SEED letters of band, instrument and orientation, except blanks. A fourth character is
/// ignored; a NUL is a letter like any other.
static void take_seed_letters(CHN_T& chn, std::string_view seed)
{
    if (seed[0] != ' ') chn.set.band = seed[0];
    if (seed[1] != ' ') chn.set.set_type(seed[1]);
    if (seed[2] != ' ') chn.set.axis = seed[2];
}

void Chn_ehet(CHN_T& chn)
{
    const int half = chn.id.channel / Bank_channels;
    const int i = chn.id.channel % Bank_channels;
    if (half > 1 || !chn.evt->bank[half]) return;
    const EventBank& bank = *chn.evt->bank[half];
    const auto field = [&](const Row& row) { return bank.field(row[i]); };

    take_bit_weight(chn, field(EH::Bit_wght), field(EH::True_wght));
    take_gain(chn, field(EH::Gain)[0]);
    if (given(field(EH::Res))) chn.set.bits = bits_of(field(EH::Res)[0]);
    if (given(field(EH::Fsv))) chn.set.fsa = full_scale_of(field(EH::Fsv)[0]);
    take_seed_letters(chn, field(EH::Seed));
    if (given(field(EH::Sns_fsv))) chn.set.sns_fsa = sensor_full_scale_of(field(EH::Sns_fsv)[0]);
    if (given(field(EH::Sns_vpu))) chn.set.vpu = scan_double(field(EH::Sns_vpu), 0, 6);
    // No event header has a station channel number, so `stn_chn` keeps that of the INI file.
}
