// The place of every field of every packet type. A packet has 1024 bytes; integers are big-endian, times and
// counts of the header are BCD (two digits per byte, high nibble first), texts are ASCII padded with blanks.
#pragma once

#include <initializer_list>

inline constexpr int Packet_size = 1024;

/// The place of a field: offset and length in bytes.
struct Span {
    int at, len;
    constexpr int end() const { return at + len; }
};

/// Fields or entries of equal length, one after the other, for instance one per channel of a bank.
struct Row {
    int at, len, count;
    constexpr Span operator[](int i) const { return {at + i * len, len}; }
    constexpr Span all() const { return {at, len * count}; }
    constexpr int end() const { return at + len * count; }
};

/// The place in the packet of a field of the entry that begins at `entry`; `field` counts from there.
constexpr Span in_entry(int entry, Span field)
{
    return {entry + field.at, field.len};
}

/// True when each field begins where the one before it ends.
constexpr bool adjacent(std::initializer_list<Span> fields)
{
    int end = fields.begin()->at;
    for (const Span& field : fields) {
        if (field.at != end) return false;
        end = field.end();
    }
    return true;
}

namespace HDR { // every packet
inline constexpr Span Type{0, 2};
inline constexpr Span Experiment{2, 1}; // BCD
inline constexpr Span Year{3, 1};       // BCD, year of century
inline constexpr Span Unit_id{4, 2};    // binary
inline constexpr Span Time{6, 6};       // BCD: day of year 3, hour 2, minute 2, second 2, millisecond 3
inline constexpr Span Byte_cnt{12, 2};  // BCD, header included
inline constexpr Span Seq{14, 2};       // BCD
inline constexpr Span Digits{2, 14};    // the 28 digits that unbcd makes of the header
static_assert(adjacent({Type, Experiment, Year, Unit_id, Time, Byte_cnt, Seq}));
static_assert(Digits.at == Experiment.at && Digits.end() == Seq.end());
} // namespace HDR

namespace EVT {                       // EH, ET, DT, NH, NT
inline constexpr Span Number{16, 2};  // BCD
inline constexpr Span Stream{18, 1};  // BCD, counted from 0
inline constexpr Span Channel{19, 1}; // DT: BCD, counted from 0
inline constexpr Span Samples{20, 2}; // DT: BCD
inline constexpr Span Flags{22, 1};
inline constexpr Span Format{23, 1};
static_assert(adjacent({HDR::Seq, Number, Stream, Channel, Samples, Flags, Format}));
} // namespace EVT

namespace FLAG {                              // bits of the flags byte
inline constexpr unsigned Second_bank = 0x04; // EH, ET: about channels 17 to 32
inline constexpr unsigned Extension = 0x08;   // DT: an extension of 40 bytes precedes the samples
inline constexpr unsigned Bit4 = 0x10;        // EH, ET, DT: collected in the event record
} // namespace FLAG

namespace DT {                                // data
inline constexpr int Data = 24;               // uncompressed samples, without an extension
inline constexpr int Extension_len = 40;      // length of the extension
inline constexpr Span Micros{24, 4};          // BCD; digits 2 to 4 are microseconds, with an extension
inline constexpr Span Extension_flags{46, 1}; // FLAG::Extension here: uncompressed samples begin at 64
inline constexpr int Frames = 64;             // fifteen Steim frames
inline constexpr int Frame_len = 64;          // one frame: a control word and fifteen words
inline constexpr int Frame_cnt = 15;
inline constexpr int Frame_words = 16;    // in a frame; word 0 (control word) has the codes of all
inline constexpr int X0_word = 1;         // of frame 1: the first sample
inline constexpr int Xn_word = 2;         // of frame 1: the last sample
inline constexpr int First_data_word = 3; // in frame 1; in the others it is 1
static_assert(Frame_words * 4 == Frame_len);
static_assert(EVT::Format.end() == Data && Data + Extension_len == Frames);
static_assert(Extension_flags.at == Data + EVT::Flags.at);
static_assert(Frames + Frame_cnt * Frame_len == Packet_size);
} // namespace DT

namespace EH {                           // event header; the event trailer has the same fields
inline constexpr unsigned Full_len = 58; // with a smaller byte count it holds one text
inline constexpr Span Short_text{24, 31};
inline constexpr Span Time_src{57, 1};
inline constexpr Span Pll_days{58, 1};
inline constexpr Span Stn_name_5th{59, 1};
inline constexpr Span Stn_name{60, 4};
inline constexpr Span Strm_name{64, 24};
inline constexpr Span Rate{88, 4};
inline constexpr Span Rate_telemetry{88, 8}; // includes the bytes of the trigger type
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
inline constexpr Span Overscale{954, 6};
inline constexpr Span Tel_version{960, 8};
inline constexpr Span Tel_freq{968, 8};
inline constexpr Span Tel_id{976, 8};
inline constexpr Span Tel_site{984, 8};
inline constexpr Span Tel_sensor{992, 8};
inline constexpr Span Tel_receiver{1000, 8};
inline constexpr Span Tel_delay{1012, 4};
inline constexpr Span Tel_chn{1016, 2};
inline constexpr Span Tel_chn_position{1018, 4};
inline constexpr Span Telemetry{1016, 6}; // not all blank: the packet comes from a telemetry unit
static_assert(adjacent({Time_src,        Pll_days,    Stn_name_5th,  Stn_name,  Strm_name,  Rate,
                        Trg_type,        T_trg,       T_first,       T_detrg,   T_last,     Bit_wght.all(),
                        True_wght.all(), Gain.all(),  Res.all(),     Fsv.all(), Seed.all(), Sns_fsv.all(),
                        Sns_vpu.all(),   Units.all(), Chn_name.all()}));
static_assert(adjacent({Us_trg, Us_first, Us_detrg, Us_last, Chn_cnt, Comment, Filters, Position}));
static_assert(adjacent({Overscale, Tel_version, Tel_freq, Tel_id, Tel_site, Tel_sensor, Tel_receiver}));
static_assert(adjacent({Tel_delay, Tel_chn, Tel_chn_position}));
static_assert(Rate_telemetry.at == Rate.at && Rate_telemetry.end() == Trg_type.end());
static_assert(Telemetry.at == Tel_chn.at && Telemetry.end() == Tel_chn_position.end());
} // namespace EH

namespace POS { // within EH::Position
inline constexpr Span South{0, 1};
inline constexpr Span Lat_deg{2, 2};
inline constexpr Span Lat_min{4, 6};
inline constexpr Span West{10, 1};
inline constexpr Span Lon_deg{11, 3};
inline constexpr Span Lon_min{14, 6};
inline constexpr Span Elevation{20, 6};
static_assert(adjacent({Lat_deg, Lat_min, West, Lon_deg, Lon_min, Elevation}));
static_assert(Elevation.end() == EH::Position.len);
} // namespace POS

namespace SH { // state of health
inline constexpr int Text = 24;
}

namespace SC { // station and channels
inline constexpr Span Exp_number{16, 2};
inline constexpr Span Exp_name{18, 24};
inline constexpr Span Exp_comment{42, 40};
inline constexpr Span Stn_number{82, 4};
inline constexpr Span Stn_name{86, 24};
inline constexpr Span Stn_comment{110, 40};
inline constexpr Span Das_model{150, 12};
inline constexpr Span Das_serial{162, 12};
inline constexpr Span Exp_start{174, 14};
inline constexpr Span Clock_type{188, 4};
inline constexpr Span Clock_serial{192, 10};
inline constexpr Row Channels{202, 146, 5};
static_assert(adjacent({HDR::Seq, Exp_number, Exp_name, Exp_comment, Stn_number, Stn_name, Stn_comment,
                        Das_model, Das_serial, Exp_start, Clock_type, Clock_serial, Channels.all()}));
static_assert(Channels.end() <= Packet_size);

namespace CHN { // within an entry of SC::Channels
inline constexpr Span Number{0, 2};
inline constexpr Span Name{2, 10};
inline constexpr Span Azimuth{12, 10};
inline constexpr Span Inclination{22, 10};
inline constexpr Span X{32, 10};
inline constexpr Span Y{42, 10};
inline constexpr Span Z{52, 10};
inline constexpr Span Unit_xy{62, 4};
inline constexpr Span Unit_z{66, 4};
inline constexpr Span Preamp{70, 4};
inline constexpr Span Sensor{74, 12};
inline constexpr Span Sensor_serial{86, 12};
inline constexpr Span Comment{98, 40};
inline constexpr Span Bit_volts{138, 8};
static_assert(adjacent({Number, Name, Azimuth, Inclination, X, Y, Z, Unit_xy, Unit_z, Preamp, Sensor,
                        Sensor_serial, Comment, Bit_volts}));
static_assert(Bit_volts.end() == Channels.len);
} // namespace CHN
} // namespace SC

namespace DS { // data streams
inline constexpr Row Streams{16, 230, 5};
inline constexpr int Whole_streams = 4; // the fifth entry runs past the packet's end
static_assert(HDR::Seq.end() == Streams.at);
static_assert(Streams[Whole_streams - 1].end() <= Packet_size && Streams[Whole_streams].end() > Packet_size);

namespace STRM { // within an entry of DS::Streams
inline constexpr Span Number{0, 2};
inline constexpr Span Name{2, 24};
inline constexpr Span Channels{26, 16}; // a character per channel
inline constexpr Span Rate{42, 4};
inline constexpr Span Format{46, 2};
inline constexpr Span Trg_type{64, 4};
inline constexpr Span Trigger{68, 162}; // its fields depend on the trigger type
static_assert(adjacent({Number, Name, Channels, Rate, Format}));
static_assert(adjacent({Trg_type, Trigger}) && Trigger.end() == Streams.len);
} // namespace STRM

namespace EVT { // within STRM::Trigger of type EVT
inline constexpr Span Channels{0, 16};
inline constexpr Span Least_chns{16, 2};
inline constexpr Span Window{18, 8};
inline constexpr Span Pretrigger{26, 8};
inline constexpr Span Posttrigger{34, 8};
inline constexpr Span Length{42, 8};
inline constexpr Span Sta{58, 8};
inline constexpr Span Lta{66, 8};
inline constexpr Span Mean_removal{74, 8};
inline constexpr Span Ratio{82, 8};
inline constexpr Span Detrigger_ratio{90, 8};
inline constexpr Span Lta_hold{98, 4};
static_assert(adjacent({Channels, Least_chns, Window, Pretrigger, Posttrigger, Length}));
static_assert(adjacent({Sta, Lta, Mean_removal, Ratio, Detrigger_ratio, Lta_hold}));
} // namespace EVT

namespace TIM { // within STRM::Trigger of type TIM
inline constexpr Span Start{0, 14};
inline constexpr Span Interval{14, 8};
inline constexpr Span Count{22, 4};
inline constexpr Span Length{34, 8};
static_assert(adjacent({Start, Interval, Count}));
} // namespace TIM

namespace LEV { // within STRM::Trigger of type LEV
inline constexpr Span Level{0, 8};
inline constexpr Span Pretrigger{8, 8};
inline constexpr Span Length{16, 8};
static_assert(adjacent({Level, Pretrigger, Length}));
} // namespace LEV

namespace CON { // within STRM::Trigger of type CON
inline constexpr Span Length{0, 8};
} // namespace CON

namespace EXT { // within STRM::Trigger of type EXT or RAD
inline constexpr Span Pretrigger{0, 8};
inline constexpr Span Length{8, 8};
static_assert(adjacent({Pretrigger, Length}));
} // namespace EXT

namespace CRS { // within STRM::Trigger of type CRS
inline constexpr Span Stream{0, 2};
inline constexpr Span Pretrigger{2, 8};
inline constexpr Span Length{10, 8};
static_assert(adjacent({Stream, Pretrigger, Length}));
} // namespace CRS

namespace TML { // within STRM::Trigger of type TML
inline constexpr Row Starts{0, 14, 11};
inline constexpr Span Length{154, 8};
static_assert(adjacent({Starts.all(), Length}) && Length.end() == STRM::Trigger.len);
} // namespace TML
} // namespace DS

namespace CD { // calibration
inline constexpr Span Start{16, 14};
inline constexpr Span Interval{30, 8};
inline constexpr Span Count{38, 4};
inline constexpr Span Length{42, 8};
inline constexpr Span Step{50, 4};
inline constexpr Span Step_period{54, 8};
inline constexpr Span Step_size{62, 8};
inline constexpr Span Step_amplitude{70, 8};
inline constexpr Span Step_output{78, 4};
static_assert(adjacent({HDR::Seq, Start, Interval, Count, Length, Step, Step_period, Step_size,
                        Step_amplitude, Step_output}));
} // namespace CD

namespace OM { // operating mode
inline constexpr Span Power{16, 2};
inline constexpr Span Mode{18, 2};
inline constexpr Span Disk_1{20, 1};
inline constexpr Span Disk_2{21, 1};
inline constexpr Span Tape{22, 1};
inline constexpr Span Dump_device{23, 1};
inline constexpr Span Dump_on_et{24, 1};
inline constexpr Span Dump_serial{25, 1};
inline constexpr Span Dump_threshold{26, 2};
inline constexpr Span Powerdown{28, 4};
inline constexpr Span Disk_wrap{32, 1};
inline constexpr Span Disk_directory{33, 1};
inline constexpr Span Device_power{34, 1};
inline constexpr Span Terminator_power{35, 1};
inline constexpr Row Wakes{48, 64, 8};
static_assert(adjacent({HDR::Seq, Power, Mode, Disk_1, Disk_2, Tape, Dump_device, Dump_on_et, Dump_serial,
                        Dump_threshold, Powerdown, Disk_wrap, Disk_directory, Device_power,
                        Terminator_power}));
static_assert(Wakes.end() <= Packet_size);

namespace WAKE { // within an entry of OM::Wakes
inline constexpr Span Number{0, 2};
inline constexpr Span Start{2, 12};
inline constexpr Span Duration{14, 6};
inline constexpr Span Interval{20, 6};
inline constexpr Span Count{26, 2};
static_assert(adjacent({Number, Start, Duration, Interval, Count}));
} // namespace WAKE
} // namespace OM

namespace AD { // auxiliary data
inline constexpr Span Channels{18, 16};
inline constexpr Span Interval{34, 8};
inline constexpr Span Format{42, 2};
inline constexpr Span Length{44, 8};
static_assert(adjacent({Channels, Interval, Format, Length}));
} // namespace AD

namespace DR { // directory of a recording medium; its numbers are binary
inline constexpr Span Prev_dir{16, 4};
inline constexpr Span Next_dir{20, 4};
inline constexpr Span Sector_flag{25, 1};
inline constexpr Span Entry_cnt{26, 2};
inline constexpr Span Last_entry{28, 4};
inline constexpr Row Entries{32, 72, 13}; // an entry's own length gives the place of the next
static_assert(adjacent({HDR::Seq, Prev_dir, Next_dir}));
static_assert(adjacent({Sector_flag, Entry_cnt, Last_entry, Entries.all()}));
static_assert(Entries.end() <= Packet_size && Entries.end() + Entries.len > Packet_size);

namespace ENTRY { // within an entry of DR::Entries
inline constexpr Span Number{0, 4};
inline constexpr Span Status{4, 1};
inline constexpr Span Format{5, 1};
inline constexpr Span Length{6, 2};
inline constexpr Span Unit_id{8, 2};
inline constexpr Span Event{10, 2};
inline constexpr Span Header_flag{12, 1};
inline constexpr Span Trailer_flag{13, 1};
inline constexpr Span Stream{14, 2};
inline constexpr Span Strm_name{16, 8};
inline constexpr Span Trg_type{24, 4};
inline constexpr Row Times{28, 4, 5};  // trigger, first sample, detrigger, last sample, entry; packed
inline constexpr Row Millis{48, 2, 5}; // milliseconds of these times
inline constexpr Span Data_format{58, 2};
inline constexpr Span Location{60, 4};
inline constexpr Span Blocks{64, 4};
inline constexpr Span Errors{68, 4};
static_assert(adjacent({Number, Status, Format, Length, Unit_id, Event, Header_flag, Trailer_flag, Stream,
                        Strm_name, Trg_type, Times.all(), Millis.all(), Data_format, Location, Blocks,
                        Errors}));
static_assert(Errors.end() == Entries.len);
} // namespace ENTRY
} // namespace DR
