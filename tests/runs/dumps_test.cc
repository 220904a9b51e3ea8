// Parameter packets in the unit log: one whole recording with a packet of every type, and what the packets'
// dumps need of each other.
#include "runs/traces.h"

using namespace kit;
using namespace runs;

namespace {

/// Every "\n" as the "\r\n" that ends the lines of a log.
std::string crlf(std::string_view lines)
{
    std::string text;
    for (const char c : lines) {
        if (c == '\n') text += '\r';
        text += c;
    }
    return text;
}

Params stations()
{
    return Params("SC")
        .raw(16, "07")
        .raw(18, "Valley array, east flank")
        .raw(42, "Aftershocks of the May event, week two. ")
        .raw(82, "0021")
        .raw(86, "Old quarry, lower bench ")
        .raw(110, "Vault under the shed, key at the farm...")
        .raw(150, "Model 900-06")
        .raw(162, "SN0000009A2F")
        .raw(174, "20041200000000")
        .raw(188, "GPS ")
        .raw(192, "CLK0000017")
        .raw(202, "01")
        .raw(204, "Vertical  ")
        .raw(214, "0         ")
        .raw(224, "-90       ")
        .raw(234, "12.5      ")
        .raw(244, "-3.75     ")
        .raw(254, "101       ")
        .raw(264, "DEG ")
        .raw(268, "M   ")
        .raw(272, "32  ")
        .raw(276, "CMG-3T      ")
        .raw(288, "T3000417    ")
        .raw(300, "Levelled on day 120, sealed with wax    ")
        .raw(340, " 1.589uV")
        .raw(786, "05")
        .raw(788, "East      ")
        .raw(798, "90        ")
        .raw(808, "0         ")
        .raw(818, "          ")
        .raw(828, "          ")
        .raw(838, "          ")
        .raw(848, "    ")
        .raw(852, "    ")
        .raw(856, "1   ")
        .raw(860, "FBA-23      ")
        .raw(872, "1234        ")
        .raw(884, "spare                                   ")
        .raw(924, "        ");
}

const char* const Stations_text =
    "     Experiment Number            : 07\n"
    "     Experiment Name              : Valley array, east flank\n"
    "     Experiment Comment           : Aftershocks of the May event, week two. \n"
    "     Station Number               : 0021\n"
    "     Station Name                 : Old quarry, lower bench \n"
    "     Station Comment              : Vault under the shed, key at the farm...\n"
    "     DAS Model                    : Model 900-06\n"
    "     DAS Serial Number            : SN0000009A2F\n"
    "     Experiment Start             : 20041200000000\n"
    "     Time Clock Type              : GPS \n"
    "     Time Clock S/N               : CLK0000017\n"
    "\n"
    "      Channel Number              : 01\n"
    "      Channel Name                : Vertical  \n"
    "      Azimuth                     : 0         \n"
    "      Inclination                 : -90       \n"
    "      X Coordinate                : 12.5      \n"
    "      Y Coordinate                : -3.75     \n"
    "      Z Coordinate                : 101       \n"
    "      Unit type for X, Y          : DEG \n"
    "      Unit type for Z             : M   \n"
    "      Preamp Gain                 : 32  \n"
    "      Sensor Model                : CMG-3T      \n"
    "      Sensor Serial Number        : T3000417    \n"
    "      Comments                    : Levelled on day 120, sealed with wax    \n"
    "      Bit-count Voltage           :  1.589uV\n"
    "\n"
    "      Channel Number              : 05\n"
    "      Channel Name                : East      \n"
    "      Azimuth                     : 90        \n"
    "      Inclination                 : 0         \n"
    "      X Coordinate                :           \n"
    "      Y Coordinate                :           \n"
    "      Z Coordinate                :           \n"
    "      Unit type for X, Y          :     \n"
    "      Unit type for Z             :     \n"
    "      Preamp Gain                 : 1   \n"
    "      Sensor Model                : FBA-23      \n"
    "      Sensor Serial Number        : 1234        \n"
    "      Comments                    : spare                                   \n"
    "      Bit-count Voltage           :         \n"
    "\n";

Params operating_mode()
{
    return Params("OM")
        .raw(16, "UP")
        .raw(18, "ET")
        .raw(20, "1")
        .raw(21, "2")
        .raw(22, "T")
        .raw(23, "D")
        .raw(24, "Y")
        .raw(25, "N")
        .raw(26, "75")
        .raw(28, "0030")
        .raw(32, "Y")
        .raw(33, "y")
        .raw(34, "O")
        .raw(35, "T")
        .raw(48, "01")
        .raw(50, "041240600000")
        .raw(62, "000100")
        .raw(68, "010000")
        .raw(74, "24")
        .raw(496, "08")
        .raw(498, "042001200300")
        .raw(510, "001500")
        .raw(516, "120000")
        .raw(522, "02");
}

const char* const Operating_mode_text = "     Power State                  : UP\n"
                                        "     Recording Mode               : ET\n"
                                        "     Primary Disk ID              : 1\n"
                                        "     Secondary Disk ID            : 2\n"
                                        "     Tape ID                      : T\n"
                                        "     Auto-dump Device             : D\n"
                                        "     Auto-dump on ET Block        : Enabled\n"
                                        "     Auto-dump in Serial Mode     : Disabled\n"
                                        "     Auto-dump Threshold          : 75%\n"
                                        "     SCSI Powerdown Delay         : 0030 seconds\n"
                                        "     SCSI Disk Wrap               : Enabled\n"
                                        "     SCSI Directory               : Disabled\n"
                                        "     SCSI Device Power            : Always On\n"
                                        "     SCSI Termintor Power         : Toggle\n"
                                        "     Wake Sequence Information\n"
                                        "\n"
                                        "      Sequence number             : 01\n"
                                        "      Start time                  : 041240600000\n"
                                        "      Power Duration              :     000100\n"
                                        "      Repeat Interval             :     010000\n"
                                        "      Number of Intervals         : 24\n"
                                        "\n"
                                        "      Sequence number             : 08\n"
                                        "      Start time                  : 042001200300\n"
                                        "      Power Duration              :     001500\n"
                                        "      Repeat Interval             :     120000\n"
                                        "      Number of Intervals         : 02\n"
                                        "\n";

Params streams()
{
    return Params("DS")
        .raw(16, "01")
        .raw(18, "Main stream, triggered  ")
        .raw(42, "YYY   Y         ")
        .raw(58, "100 ")
        .raw(62, "C0")
        .raw(80, "EVT ")
        .raw(84, "YYY             ")
        .raw(100, "02")
        .raw(102, "5.000   ")
        .raw(110, "10.00   ")
        .raw(118, "30.00   ")
        .raw(126, "120.0   ")
        .raw(142, "0.5     ")
        .raw(150, "30      ")
        .raw(158, "60      ")
        .raw(166, "4.0     ")
        .raw(174, "1.5     ")
        .raw(182, "OFF ")
        .raw(706, "04")
        .raw(708, "Continuous, slow        ")
        .raw(732, "YYY             ")
        .raw(748, "1   ")
        .raw(752, "32")
        .raw(770, "CON ")
        .raw(774, "3600    ");
}

const char* const Streams_text = "\n"
                                 "     Data Stream No               : 01\n"
                                 "     Data Stream Name             : Main stream, triggered  \n"
                                 "     Channels Included            : YYY___Y_________\n"
                                 "     Sample Rate                  : 100 \n"
                                 "     Data Format                  : C0\n"
                                 "     Trigger Type                 : EVT \n"
                                 "      Trigger Channels            : YYY_____________\n"
                                 "      Minimum Channels            : 02\n"
                                 "      Trigger Window              : 5.000   \n"
                                 "      Pretrigger Length           : 10.00   \n"
                                 "      Posttrigger Length          : 30.00   \n"
                                 "      Record Length               : 120.0   \n"
                                 "      STA Length                  : 0.5     \n"
                                 "      LTA Length                  : 30      \n"
                                 "      Mean Removal                : 60      \n"
                                 "      Trigger Ratio               : 4.0     \n"
                                 "      Detrigger Ratio             : 1.5     \n"
                                 "      LTA hold                    : OFF \n"
                                 "\n"
                                 "\n"
                                 "     Data Stream No               : 04\n"
                                 "     Data Stream Name             : Continuous, slow        \n"
                                 "     Channels Included            : YYY_____________\n"
                                 "     Sample Rate                  : 1   \n"
                                 "     Data Format                  : 32\n"
                                 "     Trigger Type                 : CON \n"
                                 "      Record Length               : 3600    \n"
                                 "\n";

Params auxiliary()
{
    return Params("AD").raw(18, "Y Y             ").raw(34, "60      ").raw(42, "32").raw(44, "3600    ");
}

const char* const Auxiliary_text = "     Channels Included            : Y_Y_____________\n"
                                   "     Sample Interval              : 60      \n"
                                   "     Data Format                  : 32\n"
                                   "     Record Length                : 3600    \n"
                                   "\n";

Params calibration()
{
    return Params("CD")
        .raw(16, "04124060000000")
        .raw(30, "24000000")
        .raw(38, "0002")
        .raw(42, "00010000")
        .raw(50, "ON  ")
        .raw(54, "5.000   ")
        .raw(62, "1.000   ")
        .raw(70, "2.500   ")
        .raw(78, "SENS");
}

const char* const Calibration_text = "     Start Time                   : 04124060000000\n"
                                     "     Repeat Interval              : 24000000\n"
                                     "     No of Intervals              : 0002\n"
                                     "     Length of Intervals          : 00010000\n"
                                     "     Step                         : ON  \n"
                                     "\n"
                                     "      Step Period                 : 5.000   \n"
                                     "      Step Size                   : 1.000   \n"
                                     "      Step Amplitude              : 2.500   \n"
                                     "      Step Output                 : SENS\n"
                                     "\n";

/// Locations count sectors, two to the block, but for those of the data.
Params directory()
{
    return Params("DR")
        .fill(16, 1024, '\0')
        .raw(16, big_endian(0x101, 4))
        .raw(20, big_endian(0x203, 4))
        .raw(25, "\1")
        .raw(26, big_endian(1, 2))
        .raw(28, big_endian(9, 4))
        .raw(32, big_endian(5, 4))
        .raw(36, "\2\3")
        .raw(38, big_endian(72, 2))
        .raw(40, big_endian(0x9A2F, 2))
        .raw(42, big_endian(12, 2))
        .raw(44, "\1")
        .raw(48, "MainstrmEVT ")
        .raw(60, "\x28\xA1\x67\x42") // 2004, second 10577730
        .raw(68, {0x28, 0x00, 0x00, 0x3D})
        .raw(80, big_endian(250, 2))
        .raw(84, big_endian(5, 2))
        .raw(90, big_endian(0x32, 2))
        .raw(92, big_endian(1000, 4))
        .raw(96, big_endian(40, 4))
        .raw(100, big_endian(7, 4));
}

const char* const Directory_text = "     Prev Dir Location (Block)    : 0000000128\n"
                                   "     Next Dir Location (Block)    : 0000000257\n"
                                   "     Block/Sector Flag            : 1\n"
                                   "     No of dir entries            : 1\n"
                                   "     Last Entry Number            : 9\n"
                                   "\n"
                                   "      Entry Number                : 5\n"
                                   "      Entry Status                : 2\n"
                                   "      Entry Format                : 3\n"
                                   "      Entry Length                : 72\n"
                                   "      Unit ID                     : 39471\n"
                                   "      Event Number                : 12\n"
                                   "      Event Header Flag           : 1\n"
                                   "      Event Trailer Flag          : 0\n"
                                   "      Stream Number               : 0\n"
                                   "      Data Stream Name            : Mainstrm\n"
                                   "      Trigger Type                : EVT \n"
                                   "      Data Format                 : 32\n"
                                   "      Data Location (Block)       : 0000001128\n"
                                   "      Data Length (Blocks)        : 0000000040\n"
                                   "      Disk Errors (Blocks)        : 7\n"
                                   "      Trigger time                : 2004:123:10:15:30.250\n"
                                   "      First sample time           : \n"
                                   "      Detrigger time              : 2004:001:00:01:01.005\n"
                                   "      Last sample time            : \n"
                                   "      Entry time                  : \n"
                                   "\n";

/// Header of the event, with two of its sixteen channels in use.
Eh full_header()
{
    return Eh()
        .event(12)
        .time_source('2')
        .pll_days('?')
        .station("STA1X")
        .stream_name("Main stream, triggered  ")
        .rate("100 ")
        .trigger_type("EVT ")
        .t_trg("2004123101530250")
        .t_first("2004123101520250")
        .micros("123", "456", "   ", "   ")
        .installed("06")
        .comment("Old quarry, lower bench                 ")
        .filters("A1B2C3          ")
        .position("N 3412.345W11823.456001234")
        .channel_name(0, "BHZ")
        .bit_weight(0, "15.89 uV")
        .true_weight(0, "15.91 uV")
        .gain(0, '3')
        .resolution(0, '4')
        .full_scale(0, 'T')
        .seed(0, "BHZ0")
        .sensor_full_scale(0, '1')
        .sensor_vpu(0, "  1500")
        .units_code(0, 'V')
        .channel_name(15, "AUX")
        .bit_weight(15, "2.384 uV")
        .gain(15, 'A');
}

const char* const Header_text =
    "   Station Name           : STA1X\n"
    "   Station Comment        : Old quarry, lower bench                 \n"
    "   Position               : N 3412.345W11823.456001234\n"
    "   Stream Name            : Main stream, triggered  \n"
    "   Sample rate            : 100 \n"
    "   Trigger type           : EVT \n"
    "   Time Source            : GPS       Days since PLL ?\n"
    "   Trigger time           : 2004:123:10:15:30.250123\n"
    "   First sample time      : 2004:123:10:15:20.250456\n"
    "   Detrigger time         : \n"
    "   Last sample time       : \n"
    "   Filter list            : A1B2C3          \n"
    "   Installed channels     : 06\n"
    "   Channel Info :  BitWght   TruWght    Gain  R  FSV  SEED  SFSV   SVPU   U\n"
    "    Chn  1(BHZ) : 15.89 uV  15.91 uV      32  4    T  BHZ0     1    1500  V\n"
    "    Chn 16(AUX) : 2.384 uV                 4                               \n"
    "\n";

template <class Packet>
Packet network(Packet packet)
{
    return packet.event(34)
        .t_trg("2004123101530250")
        .t_first("2004123101520250")
        .t_detrg("2004123101600000")
        .t_last("2004123101700000")
        .rate("100 ")
        .trigger_type("NET ")
        .stream_name("Network of the valley   ");
}

const char* const Network_text = "   Trigger time           : 2004123101530250\n"
                                 "   First sample time      : 2004123101520250\n"
                                 "   Detrigger time         : 2004123101600000\n"
                                 "   Last sample time       : 2004123101700000\n"
                                 "   Sample rate            : 100 \n"
                                 "   Trigger type           : NET \n"
                                 "   Stream Name            : Network of the valley   \n"
                                 "\n";

/// A packet's line, whose sequence number is one more than its block number.
std::string numbered(HeadLine line)
{
    char seq[16];
    snprintf(seq, sizeof seq, "%04u", line.block + 1);
    line.seq = seq;
    return head_line(line);
}

std::string plain(const char* type, unsigned block)
{
    return numbered(plain_line(type, block));
}

std::string health_line(unsigned block)
{
    HeadLine line = plain_line("SH", block);
    line.length = "0046";
    return numbered(line);
}

std::string out_of_sequence(const char* seq)
{
    return "\nBlock sequence # " + std::string(seq) + " is out of sequence in Event #12\n\n";
}

/// The dump that a log has behind the line of its last packet.
std::string last_dump(const Recording& recording, const std::string& line)
{
    const std::string log = unit_log(convert(recording));
    const size_t at = log.rfind(line);
    if (at != log.npos) return log.substr(at + line.size());
    ADD_FAILURE() << "no line " << line << " in\n" << log;
    return log;
}

} // namespace

TEST(Dumps, a_recording_with_every_packet_type_is_logged_field_by_field)
{
    const Recording recording = stations().seq(1) + operating_mode().seq(2) + streams().seq(3) +
                                auxiliary().seq(4) + calibration().seq(5) + directory().seq(6) + Fd().seq(7) +
                                Sh("Power up\r\nClock locked").seq(8) + full_header().seq(9) +
                                data({5, -3, 4}).seq(10) + network(Nh()).seq(11) + network(Nt()).seq(12) +
                                full_header().type("ET").seq(13);
    const Converted run = convert(recording, {"-D+"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");

    const std::string eh = numbered(event_line("EH", "0012", 8)), dt = numbered(data_line("0012", 3, 9));
    const std::string nh = numbered(event_line("NH", "0034", 10)),
                      nt = numbered(event_line("NT", "0034", 11));
    const std::string et = numbered(event_line("ET", "0012", 12));
    Settings s = settings_of(run);
    s.log_dt = true;
    const std::string unit =
        plain("SC", 0) + crlf(Stations_text) + plain("OM", 1) + crlf(Operating_mode_text) + plain("DS", 2) +
        crlf(Streams_text) + plain("AD", 3) + crlf(Auxiliary_text) + plain("CD", 4) + crlf(Calibration_text) +
        plain("DR", 5) + crlf(Directory_text) + plain("FD", 6) + health_line(7) +
        "     Power up\r\n     Clock locked\r\n\r\n" + eh + out_of_sequence("9") + crlf(Header_text) + dt +
        nh + crlf(Network_text) + nt + crlf(Network_text) + et + out_of_sequence("13") + crlf(Header_text);
    const std::string whole = plain("SC", 0) + plain("OM", 1) + plain("DS", 2) + plain("AD", 3) +
                              plain("CD", 4) + plain("DR", 5) + plain("FD", 6) + health_line(7) + eh + dt +
                              nh + nt + et;
    Sac trace = usual_trace().stats(-3, 5, 2);
    trace.kstnm = "STA1X";
    trace.kcmpnm = "9A2F-BHZ";
    trace.o = 10;
    trace.sec = 20;
    EXPECT_TRUE(same_tree(run.tree, {{"2004123101530250_STA1X_1_1.sac", sac_file(trace, {5, -3, 4})},
                                     {"ID9A2F.vxl", log_header(s) + unit},
                                     {"rec.vxl", log_header(s) + whole}}));
}

TEST(Dumps, without_logs_parameter_packets_leave_nothing)
{
    const Converted run = convert(stations() + operating_mode() + streams() + auxiliary() + calibration() +
                                      directory() + full_header() + network(Nh()) + network(Nt()),
                                  {"-L-"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(names(run.tree), "");
}

TEST(Dumps, a_network_packet_shows_telemetry_fields_behind_a_telemetry_header_of_any_unit)
{
    const Nh nh = network(Nh()).rate_telemetry("100.0000").text(960, 8, "V1.00").text(1016, 6, "");
    const Recording recording = Eh().unit(0x1234).event(1).usual().telemetry("010002") + nh.packet();
    EXPECT_EQ(last_dump(recording, head_line(event_line("NH", "0034", 1))),
              crlf("   Trigger time           : 2004123101530250\n"
                   "   First sample time      : 2004123101520250\n"
                   "   Detrigger time         : 2004123101600000\n"
                   "   Last sample time       : 2004123101700000\n"
                   "   Sample rate            : 100.0000\n"
                   "   Stream Name            : Network of the valley   \n"
                   "   MES-CRU Version        : V1.00   \n"
                   "   MES-CRU Xmitter Freq   :         \n"
                   "   MES-CRU Xmitter Id     :         \n"
                   "   MES-CRU Xmitter Site   :         \n"
                   "   MES-CRU (Xmitter Freq) :         \n"
                   "   MES-CRU Site           :         \n"
                   "   MES-CRU Propagatn Delay:     \n"
                   "   MES-CRU Data Chn       :   \n"
                   "   MES-CRU Data Chn Positn:     \n"
                   "\n"));
}

TEST(Dumps, a_short_header_does_not_change_how_network_packets_are_read)
{
    const Recording recording = Eh().event(1).usual() +
                                Eh().event(1).usual().telemetry("010002").short_text("Started") +
                                network(Nh()).packet();
    EXPECT_EQ(last_dump(recording, head_line(event_line("NH", "0034", 2))), crlf(Network_text));
}

TEST(Dumps, a_header_of_less_than_58_bytes_shows_its_text_and_still_describes_the_event)
{
    const Recording recording =
        Eh().event(12).usual().short_text("Recording started") + data({1, 2}).packet();
    const Converted run = convert(recording);
    HeadLine line = event_line("EH", "0012", 0);
    line.length = "0057";
    EXPECT_EQ(unit_log(run), head_line(line) + "Recording started              \r\n\r\n");
    EXPECT_TRUE(
        same_bytes(mask_run_date(only_trace(run)), sac_file(usual_trace().stats(1, 2, 1.5f), {1, 2})));
}

TEST(Dumps, a_short_zero_padded_trailer_takes_rate_and_station_away)
{
    const Recording recording = Eh().event(12).usual() + data({1, 2}) +
                                Et().event(12).bytes(40).fill(24, 1024, '\0').raw(24, "Stopped");
    const Converted run = convert(recording);
    HeadLine line = event_line("ET", "0012", 2);
    line.length = "0040";
    EXPECT_TRUE(ends_with(unit_log(run), head_line(line) + "Stopped\r\n\r\n"));
    Sac s = Sac().stats(1, 2, 1.5f);
    s.kstnm = std::string("9A2F\0005  ", 8);
    s.year = s.day = s.hour = s.min = s.sec = s.ms = 0;
    EXPECT_TRUE(same_bytes(mask_run_date(run.file(Name_1_1)), sac_file(s, {1, 2})));
}

TEST(Dumps, any_flag_of_a_header_counts_its_channels_from_17)
{
    const Converted run = convert(full_header().flags(0x10) + data({1, 2}));
    EXPECT_EQ(count(unit_log(run), "\r\n    Chn 17(BHZ) : 15.89 uV"), 1U);
    EXPECT_EQ(count(unit_log(run), "\r\n    Chn 32(AUX) : 2.384 uV"), 1U);
    EXPECT_EQ(header_text(only_trace(run), 600, 8), "9A2F-BHZ"); // and yet they are the first sixteen
}

TEST(Dumps, a_zero_filled_header_comes_from_a_telemetry_unit)
{
    const Converted run = convert(Eh().event(12).fill(24, 1024, '\0').bytes(1024));
    EXPECT_NE(run.out.find(progress_eh(1, "9A2F", 12, 1, "MIM", "0.0000")), run.out.npos);
    EXPECT_EQ(count(unit_log(run), "\r\n   MES-DAU Version        : \r\n"), 1U);
}

TEST(Dumps, a_device_byte_that_is_NUL_is_written)
{
    const std::string nul(1, '\0');
    EXPECT_EQ(count(unit_log(convert(operating_mode().raw(20, nul))),
                    "     Primary Disk ID              : " + nul + "\r\n"),
              1U);
}

TEST(Dumps, texts_end_at_a_NUL_without_padding)
{
    EXPECT_EQ(count(unit_log(convert(stations().raw(82, std::string("a\0b ", 4)))),
                    "     Station Number               : a\r\n"),
              1U);
}

TEST(Dumps, texts_with_line_ends_and_percent_signs_are_written_as_they_are)
{
    EXPECT_EQ(count(unit_log(convert(stations().raw(18, "%s%n\r\nDT 04:123:10:15:30"))),
                    "     Experiment Name              : %s%n\r\nDT 04:123:10:15:30\r\n"),
              1U);
}

TEST(Dumps, a_directory_that_repeats_one_entry_is_written_as_often_as_it_is_counted)
{
    const Converted run = convert(directory().raw(38, big_endian(0, 2)).raw(26, big_endian(2000, 2)) + Fd());
    EXPECT_EQ(run.status, 0);
    const std::string log = unit_log(run);
    EXPECT_EQ(count(log, "\r\n\r\n      Entry Number                : 5\r\n"), 2000U);
    EXPECT_TRUE(ends_with(log, "\r\n\r\n" + head_line(plain_line("FD", 1))));
}
