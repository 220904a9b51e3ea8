// Where the fields lie that the program acts on. One packet is 1024 bytes; integers are big-endian,
// header times and counts BCD (two digits per byte, high nibble first), texts blank-padded ASCII.
// Fields that only a dump of the packet log reads stand in that dump's own table.
#pragma once

inline constexpr int Packet_size = 1024;

struct Span {
    int at, len;
};

/// The same field once per channel of a bank.
struct Row {
    int at, len, count;
    constexpr Span operator[](int i) const { return {at + i * len, len}; }
    constexpr Span all() const { return {at, len * count}; }
    constexpr int end() const { return at + len * count; }
};

namespace HDR { // every packet
inline constexpr Span Type{0, 2};
inline constexpr Span Experiment{2, 1}; // BCD
inline constexpr Span Year{3, 1};       // BCD, year of century
inline constexpr Span Unit_id{4, 2};    // binary
inline constexpr Span Time{6, 6};       // BCD: day of year 3, hour 2, minute 2, second 2, millisecond 3
inline constexpr Span Byte_cnt{12, 2};  // BCD, header included
inline constexpr Span Seq{14, 2};       // BCD
inline constexpr Span Digits{2, 14};    // the 28 digits that unbcd makes of the header
} // namespace HDR

namespace EVT {                       // EH, ET, DT, NH, NT
inline constexpr Span Number{16, 2};  // BCD
inline constexpr Span Stream{18, 1};  // BCD, counted from 0
inline constexpr Span Channel{19, 1}; // DT: BCD, counted from 0
inline constexpr Span Samples{20, 2}; // DT: BCD
inline constexpr Span Flags{22, 1};
inline constexpr Span Format{23, 1};
} // namespace EVT

namespace FLAG {                              // bits of the flags byte
inline constexpr unsigned Second_bank = 0x04; // EH, ET: about channels 17 to 32
inline constexpr unsigned Extension = 0x08;   // DT: 40 bytes stand between header and samples
inline constexpr unsigned Bit4 = 0x10;        // EH, ET, DT: collected in the event record
} // namespace FLAG

namespace DT {                           // data
inline constexpr int Data = 24;          // uncompressed samples, when no extension is there
inline constexpr int Extension_len = 40; // length of the extension
inline constexpr Span Micros{24, 4};     // BCD; digits 2 to 4 are microseconds, with an extension
inline constexpr int Frames = 64;        // fifteen Steim frames
inline constexpr int Frame_len = 64;     // one frame: a control word and fifteen words
inline constexpr int Frame_cnt = 15;
static_assert(Frames + Frame_cnt * Frame_len == Packet_size);
} // namespace DT

namespace EH {                           // event header; the event trailer has the same face
inline constexpr unsigned Full_len = 58; // a smaller byte count means a short packet: one text
inline constexpr Span Short_text{24, 31};
inline constexpr Span Time_src{57, 1};
inline constexpr Span Pll_days{58, 1};
inline constexpr Span Stn_name_5th{59, 1};
inline constexpr Span Stn_name{60, 4};
inline constexpr Span Strm_name{64, 24};
inline constexpr Span Rate{88, 4};
inline constexpr Span Rate_telemetry{88, 8}; // runs over the trigger type
inline constexpr Span Trg_type{92, 4};
inline constexpr Span T_trg{96, 16};
inline constexpr Span T_first{112, 16};
inline constexpr Span T_detrg{128, 16};
inline constexpr Span T_last{144, 16};
inline constexpr Row Bit_wght{160, 8, 16};
inline constexpr Row True_wght{288, 8, 16};
inline constexpr Row Gain{416, 1, 16};
inline constexpr Row Res{432, 1, 16};
inline constexpr Row Fsv{448, 1, 16};
inline constexpr Row Seed{464, 4, 16};
inline constexpr Row Sns_fsv{528, 1, 16};
inline constexpr Row Sns_vpu{544, 6, 16};
inline constexpr Row Units{640, 1, 16};
inline constexpr Row Chn_name{656, 3, 16};
inline constexpr Span Us_trg{848, 3};
inline constexpr Span Us_first{851, 3};
inline constexpr Span Us_detrg{854, 3};
inline constexpr Span Us_last{857, 3};
inline constexpr Span Chn_cnt{860, 2};
inline constexpr Span Comment{862, 40};
inline constexpr Span Filters{902, 16};
inline constexpr Span Position{918, 26};
inline constexpr Span Telemetry{1016, 6}; // not all blank: the packet comes from a telemetry unit
static_assert(Bit_wght.end() == True_wght.at && True_wght.end() == Gain.at && Gain.end() == Res.at);
static_assert(Res.end() == Fsv.at && Fsv.end() == Seed.at && Seed.end() == Sns_fsv.at);
static_assert(Sns_fsv.end() == Sns_vpu.at && Sns_vpu.end() == Units.at && Units.end() == Chn_name.at);
} // namespace EH

namespace POS { // within the 26 characters of EH::Position
inline constexpr int South = 0;
inline constexpr int Lat_deg = 2, Lat_min = 4;
inline constexpr int West = 10;
inline constexpr int Lon_deg = 11, Lon_min = 14;
inline constexpr int Elevation = 20;
} // namespace POS

namespace SH { // state of health
inline constexpr int Text = 24;
}
