// What the stream has told us so far: units, their events, the events' channels. Plain data, every field
// with its meaning and unit. Who finds and fills the records: unit, event, channel.
#pragma once

#include "driver/outfile.h"
#include "driver/text.h"
#include "packet/layout.h"
#include "packet/timestr.h"

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>

struct CHN_T;
struct EVT_T;

/// One recorder. Lives from its first packet to the end of the run.
struct UNIT_T {
    UNIT_T* prv = nullptr;
    UNIT_T* nxt = nullptr;
    EVT_T* evt = nullptr;  ///< current event; null when the unit has none open
    OUT_FILE log_fp;       ///< packet log
    OUT_FILE qcc_fp;       ///< QC statistics
    int32_t ini_first = 0; ///< position of the unit's section header in the INI file; 0 while none is known
    int32_t ini_last = 0;  ///< position where the scan of the section stopped
    uint16_t unit_id = 0;  ///< the key; 0 never occurs
    uint16_t orient = 0;
    double lat = 0.0; ///< degrees, north positive
    double lon = 0.0; ///< degrees, east positive
    double alt = 0.0; ///< metres
    uint16_t das_type = 0;
    uint16_t das_cnt = 0;
    uint16_t chn_cnt = 0;    ///< channels, as the INI file tells
    uint16_t eh_chn_cnt = 0; ///< channels, as event headers tell
    uint16_t Cnum = 0;
    uint16_t type = 0;    ///< station type code
    uint8_t log_open = 0; ///< the log is this run's current one
    uint8_t qcc_open = 0;
    std::string log_name;
    std::string qcc_name;
    Text<5> stn_name; ///< station name, as SAC headers show it
    Text<30> net_name;
    Text<2> SEED;
    Text<4> COS;
    Text<40> geol;
    std::unordered_map<uint16_t, EVT_T*> event_by_number; ///< the members of the ring, to find one at once
};

/// What an event header tells of sixteen channels, as it stands in the packet. The rows meet there, so that
/// one block holds them all.
struct EHT_BANK {
    char bytes[EH::Units.end() - EH::Bit_wght.at];

    std::string_view field(Span where) const
    {
        return {bytes + (where.at - EH::Bit_wght.at), static_cast<size_t>(where.len)};
    }
};

/// One event of a unit. Freed, with its channels, when its trailer comes or the input ends.
struct EVT_T {
    EVT_T* prv = nullptr;
    EVT_T* nxt = nullptr;
    CHN_T* chn = nullptr; ///< current channel; null when the event has none
    UNIT_T* unit = nullptr;
    uint16_t unit_id = 0;
    uint16_t evt_num = 0;   ///< the key
    uint16_t seq = 0;       ///< sequence number of the latest packet
    uint16_t strm = 0;      ///< data stream, counted from 0
    uint16_t pll_days = 0;  ///< days since the clock's last lock; 10 for "?", 65535 when not given
    uint16_t chn_cnt = 0;   ///< channels in the ring
    uint16_t lo = 99;       ///< lowest channel number seen; 99 until the first
    uint16_t hi = 0;        ///< highest channel number seen
    uint16_t list[32] = {}; ///< sorted channel numbers, filled by Evt_chn_sort
    uint8_t bad = 0;        ///< a packet came out of sequence
    uint8_t wrap = 0;
    uint8_t eh_seen = 0;   ///< the sample rate is known: from a header, or estimated
    uint8_t et_seen = 0;   ///< the trailer of the first bank came
    uint8_t flag_bit4 = 0; ///< bit 4 of the flags byte, over all packets
    float smp_rate = 0.0F; ///< samples per second
    TIMESTR t_first;       ///< first sample
    TIMESTR t_last;        ///< last sample
    TIMESTR t_trg;         ///< trigger
    TIMESTR t_detrg;       ///< detrigger
    Text<16> strm_name;
    Text<4> trg_type;
    Text<5> stn_name; ///< copied from the unit
    Text<40> cmnt;
    std::unique_ptr<EHT_BANK> bank[2]; ///< channels 1 to 16 and 17 to 32; null while no header told of them
    Text<1> evt_name;                  ///< stays empty
};

/// One channel of an event, and its trace.
struct CHN_T {
    CHN_T* prv = nullptr;
    CHN_T* nxt = nullptr;
    EVT_T* evt = nullptr;
    UNIT_T* unit = nullptr;
    double sum = 0.0;    ///< of the samples written, in counts
    double sq_sum = 0.0; ///< of their squares
    double min = 0.0;
    double max = 0.0;
    uint32_t min_ndx = 0; ///< which sample of the file, counted from 1, was the first of that value
    uint32_t max_ndx = 0;
    uint32_t cnt = 0;   ///< samples in the file
    uint32_t trash = 0; ///< samples still to be dropped
    uint32_t last = 0;  ///< last sample of the latest compressed packet; 0: none, or it was 0
    int32_t fpos = 0;
    uint16_t unit_id = 0;
    uint16_t event = 0;
    uint16_t seq = 0;       ///< sequence number of the latest packet
    uint16_t stream = 0;    ///< counted from 0; of the channel's first packet
    uint16_t channel = 0;   ///< counted from 0; the key
    uint16_t stn_chn = 0;   ///< station channel number
    uint8_t bits = 24;      ///< A/D resolution
    uint8_t word_bits = 32; ///< 16 when the first packet has format 0x16
    uint8_t gain_ndx = 0;   ///< row of Gain_info
    uint8_t file_open = 0;
    uint8_t file_made = 0;     ///< the trace exists: this run created it
    uint8_t discontinuous = 0; ///< a packet failed its integrity check
    uint8_t time_tear = 0;     ///< a packet did not begin where the one before ended
    uint8_t type_code = 0;     ///< 0 no type, 1 type "G" or "N", 3 any other
    char band = ' ';           ///< SEED band, instrument and orientation letters
    char type = ' ';
    char axis = ' ';
    OUT_FILE fp;      ///< the trace
    std::string name; ///< its path
    TIMESTR t_nxt;    ///< where the next packet should begin
    TIMESTR t_first;  ///< first packet
    TIMESTR t_prv;    ///< latest packet
    Text<4> SeisComp;
    Text<30> make; ///< sensor
    Text<14> model;
    uint32_t sn = 0;                        ///< sensor serial number
    uint16_t sns_ndx = 0;                   ///< row of Sensor
    uint16_t vpu_units = 0;                 ///< row of Measures
    uint16_t azimuth = 0;                   ///< degrees
    int16_t dip = 0;                        ///< degrees
    double freq = 0.0;                      ///< sensor: natural frequency, Hz
    double damp = 0.0;                      ///< sensor: damping
    double sns_fsa = 0.0;                   ///< sensor: full-scale voltage
    double vpu = 0.0;                       ///< sensor: volts per unit
    double tbw = 0.0;                       ///< true bit weight, volts per count
    double fsa = 0.0;                       ///< digitiser: full-scale voltage
    double lat = 0.0, lon = 0.0, alt = 0.0; ///< position, copied from the unit
    double depth = 0.0;
};

using CHNLST_T = CHN_T; ///< the channel-list record
