// The records of what the packets have said so far: recorders (units), their events, the channels of the
// events. Plain data; each field has its meaning and its unit. Rooms unit, event and channel find and fill
// them.
//
// carried: unset-fields. net_name, SEED, COS, Cnum, das_type, wrap, fpos, evt_name: no packet and no key sets
// them. carried: unread-fields. type_code, word_bits, stn_chn, discontinuous, time_tear, pll_days, flag_bit4:
// set, not read.
#pragma once

#include "driver/base/outfile.h"
#include "driver/base/text.h"
#include "packet/layout.h"
#include "packet/timestr.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

struct CHN_T;
struct EVT_T;

/// The place of a recorder.
struct Position {
    double lat = 0.0; ///< degrees, north positive
    double lon = 0.0; ///< degrees, east positive
    double alt = 0.0; ///< metres
};

/// The settings of a channel: first from the INI file and the catalogue's row of its sensor, then from the
/// event header. Copied whole for the next event, so that a new field cannot be forgotten.
struct ChannelSettings {
    uint8_t bits = 24;     ///< A/D resolution
    uint8_t gain_ndx = 0;  ///< row of Gain_info
    uint8_t type_code = 0; ///< 0 no type, 1 type "G" or "N", 3 any other
    char band = ' ';       ///< SEED band, instrument and orientation letters
    char type = ' ';
    char axis = ' ';
    uint16_t stn_chn = 0; ///< station channel number
    Text<4> SeisComp;
    Text<30> make; ///< of the sensor
    Text<14> model;
    uint32_t sn = 0;        ///< sensor serial number
    uint16_t sns_ndx = 0;   ///< row of Sensor
    uint16_t vpu_units = 0; ///< row of Measures
    uint16_t azimuth = 0;   ///< degrees
    int16_t dip = 0;        ///< degrees
    double freq = 0.0;      ///< sensor: natural frequency, Hz
    double damp = 0.0;      ///< sensor: damping
    double sns_fsa = 0.0;   ///< sensor: full-scale voltage
    double vpu = 0.0;       ///< sensor: volts per unit
    double tbw = 0.0;       ///< true bit weight, volts per count
    double fsa = 0.0;       ///< digitiser: full-scale voltage
    double depth = 0.0;     ///< of the sensor, metres

    /// Sets `type` and the code that belongs to it.
    void set_type(char letter)
    {
        type = letter;
        type_code = letter == 'G' || letter == 'N' ? 1 : 3;
    }
};

/// One recorder. Lives from its first packet to the end of the run.
struct UNIT_T {
    UNIT_T* prv = nullptr;
    UNIT_T* nxt = nullptr;
    EVT_T* evt = nullptr;                                 ///< current event; null when the unit has none open
    std::unordered_map<uint16_t, EVT_T*> event_by_number; ///< the events of the ring, by number

    uint16_t unit_id = 0;  ///< the key; 0 never occurs
    OUT_FILE log_fp;       ///< packet log
    OUT_FILE qcc_fp;       ///< QC statistics
    bool qcc_open = false; ///< QC lines of its events are also written to its own QC file
    std::string log_name;
    std::string qcc_name;

    int32_t ini_first = 0; ///< position of the unit's section header in the INI file; 0 while none is known
    int32_t ini_last = 0;  ///< position where the scan of the section stopped
    std::map<uint16_t, ChannelSettings>
        ini_settings; ///< what its section says of channels, by number: read once
    Position position;
    Text<5> stn_name; ///< station name, as SAC headers show it
    Text<30> net_name;
    Text<2> SEED;
    Text<4> COS;
    Text<40> geol;       ///< geology of the site
    uint16_t type = 0;   ///< station type code
    uint16_t orient = 0; ///< orientation of the recorder, degrees
    uint16_t das_type = 0;
    uint16_t das_cnt = 0;    ///< recorders at the station, as the INI file says
    uint16_t chn_cnt = 0;    ///< channels, as the INI file says
    uint16_t eh_chn_cnt = 0; ///< channels, as event headers say
    uint16_t Cnum = 0;
};

/// The fields of an event header for sixteen channels, copied from the packet. They are adjacent there, so
/// that one copy takes all of them.
struct EventBank {
    static constexpr Span Place{EH::Bit_wght.at, EH::Units.end() - EH::Bit_wght.at};
    char bytes[Place.len];

    /// A field, given by its place in the packet.
    std::string_view field(Span where) const
    {
        return {bytes + (where.at - Place.at), static_cast<size_t>(where.len)};
    }
};

/// The times of an event.
struct EventTimes {
    TIMESTR t_first; ///< first sample
    TIMESTR t_last;  ///< last sample
    TIMESTR t_trg;   ///< trigger
    TIMESTR t_detrg; ///< detrigger
};

/// One event of a unit. Freed, with its channels, when its trailer comes or the input ends.
struct EVT_T {
    EVT_T* prv = nullptr;
    EVT_T* nxt = nullptr;
    CHN_T* chn = nullptr; ///< current channel; null when the event has none
    UNIT_T* unit = nullptr;

    uint16_t unit_id = 0;
    uint16_t evt_num = 0;   ///< the key
    uint16_t strm = 0;      ///< data stream, counted from 0
    uint16_t seq = 0;       ///< sequence number of the latest packet
    uint16_t chn_cnt = 0;   ///< channels in the ring
    uint16_t lo = 99;       ///< lowest channel number seen; 99 until the first
    uint16_t hi = 0;        ///< highest channel number seen
    uint16_t list[32] = {}; ///< sorted channel numbers, filled by Evt_chn_sort
    bool bad = false;       ///< a packet came out of sequence
    bool wrap = false;
    bool eh_seen = false;   ///< the sample rate is known: from a header, or estimated
    bool et_seen = false;   ///< the trailer of the first bank came
    bool flag_bit4 = false; ///< bit 4 of the flags byte, over all packets

    float smp_rate = 0.0F; ///< samples per second
    EventTimes times;
    Text<16> strm_name;
    Text<4> trg_type;
    Text<5> stn_name; ///< copied from the unit
    Text<40> cmnt;
    uint16_t pll_days = 0; ///< days since the clock's last lock; 10 for "?", 65535 when not given
    std::unique_ptr<EventBank>
        bank[2]; ///< channels 1 to 16 and 17 to 32; null while no header described them
    Text<1> evt_name;
};

inline constexpr double Qcc_start = 2147483647.0; ///< minimum starts here, maximum at its negative

/// Statistics of the samples written, in counts. Qcc_store resets them.
struct TraceStatistics {
    double sum = 0.0;
    double sq_sum = 0.0; ///< sum of the squares
    double min = Qcc_start;
    double max = -Qcc_start; // kept: not-quite-the-lowest. The lowest 32-bit sample is 1 lower.
    uint32_t min_ndx = 0;    ///< the first sample of that value in the trace, counted from 1
    uint32_t max_ndx = 0;    ///< the same of the maximum
};

/// Where a channel belongs, from its first packet.
struct ChannelIdentity {
    uint16_t unit_id = 0;
    uint16_t event = 0;
    uint16_t stream = 0;  ///< counted from 0
    uint16_t channel = 0; ///< counted from 0; the key
};

/// The times of a channel.
struct ChannelTimes {
    TIMESTR t_first; ///< first packet's time
    TIMESTR t_prv;   ///< latest packet's time
    TIMESTR t_nxt;   ///< expected time of the next packet
};

/// One channel of an event, and its trace.
struct CHN_T {
    CHN_T* prv = nullptr;
    CHN_T* nxt = nullptr;
    EVT_T* evt = nullptr;
    UNIT_T* unit = nullptr;

    ChannelIdentity id;
    uint8_t word_bits = 32; ///< 16 when the first packet has format 0x16
    uint16_t seq = 0;       ///< sequence number of the latest packet
    Position position;      ///< copied from the unit
    ChannelSettings set;
    ChannelTimes times;
    bool discontinuous = false; ///< a packet failed its integrity check
    bool time_tear = false;     ///< a packet did not begin at the expected time
    uint32_t trash = 0;         ///< samples still to be dropped
    uint32_t last = 0;          ///< last sample of the latest compressed packet; 0: none, or it was 0

    OUT_FILE fp;        ///< the trace
    std::string name;   ///< path of the trace
    size_t dir_len = 0; ///< the first characters of the path: the output path and the levels of -P
    uint32_t cnt = 0;   ///< samples in the trace
    bool full = false;  ///< samples are dropped because a SAC header cannot count them
    int32_t fpos = 0;
    TraceStatistics stats; ///< of these samples
};

using CHNLST_T = CHN_T; ///< carried: channel-list-record. The record's name in the message about its memory
