// SC, CD, OM and AD packets in the unit log.
#include "dump_text.h"

#include <gmock/gmock.h>

using kit::Params;
using testing::HasSubstr;
using testing::Not;

static Params station()
{
    return Params("SC")
        .raw(16, "07")
        .raw(18, "Deep crust experiment 04")
        .raw(42, "Forty characters of experiment comment. ")
        .raw(82, "0012")
        .raw(86, "Station on the old hills")
        .raw(110, "Forty characters of station comment, so.")
        .raw(150, "MODEL-12-ABC")
        .raw(162, "SERIAL-12345")
        .raw(174, "20041231015302")
        .raw(188, "GPS2")
        .raw(192, "CLOCK-0042");
}

static const std::string Station_text = crlf("     Experiment Number            : 07\n"
                                             "     Experiment Name              : Deep crust experiment 04\n"
                                             "     Experiment Comment           : Forty characters of "
                                             "experiment comment. \n"
                                             "     Station Number               : 0012\n"
                                             "     Station Name                 : Station on the old hills\n"
                                             "     Station Comment              : Forty characters of "
                                             "station comment, so.\n"
                                             "     DAS Model                    : MODEL-12-ABC\n"
                                             "     DAS Serial Number            : SERIAL-12345\n"
                                             "     Experiment Start             : 20041231015302\n"
                                             "     Time Clock Type              : GPS2\n"
                                             "     Time Clock S/N               : CLOCK-0042\n");

TEST(log_sc, shows_eleven_station_lines_and_an_empty_one_when_no_channel_is_in_use)
{
    EXPECT_EQ(dumped(log_sc, station()), Station_text + "\r\n");
}

TEST(log_sc, shows_a_channel_that_is_in_use_behind_an_empty_line)
{
    const Params packet = station().raw(202, "01Vertical  AZIMUTH---INCLINE---X-COORD---Y-COORD---Z-COORD---"
                                             "UTM_METR012dSENSOR-MODELSENSOR-SER-NForty characters about the "
                                             "channel, all.1.907uV/");
    EXPECT_EQ(dumped(log_sc, packet),
              Station_text +
                  crlf("\n"
                       "      Channel Number              : 01\n"
                       "      Channel Name                : Vertical  \n"
                       "      Azimuth                     : AZIMUTH---\n"
                       "      Inclination                 : INCLINE---\n"
                       "      X Coordinate                : X-COORD---\n"
                       "      Y Coordinate                : Y-COORD---\n"
                       "      Z Coordinate                : Z-COORD---\n"
                       "      Unit type for X, Y          : UTM_\n"
                       "      Unit type for Z             : METR\n"
                       "      Preamp Gain                 : 012d\n"
                       "      Sensor Model                : SENSOR-MODEL\n"
                       "      Sensor Serial Number        : SENSOR-SER-N\n"
                       "      Comments                    : Forty characters about the channel, all.\n"
                       "      Bit-count Voltage           : 1.907uV/\n"
                       "\n"));
}

TEST(log_sc, finds_all_five_channels)
{
    const std::string text = dumped(log_sc, Params("SC")
                                                .raw(202, "1 first")
                                                .raw(348, "2 second")
                                                .raw(494, "3 third")
                                                .raw(640, "4 fourth")
                                                .raw(786, "5 fifth"));
    for (const char* channel : {"1 \r\n      Channel Name                : first     \r\n",
                                "2 \r\n      Channel Name                : second    \r\n",
                                "3 \r\n      Channel Name                : third     \r\n",
                                "4 \r\n      Channel Name                : fourth    \r\n",
                                "5 \r\n      Channel Name                : fifth     \r\n"})
        EXPECT_THAT(text, HasSubstr(std::string("\r\n\r\n      Channel Number              : ") + channel));
}

TEST(log_sc, skips_only_the_channels_that_begin_with_a_blank)
{
    const std::string text =
        dumped(log_sc, Params("SC").raw(202, " 1").raw(348, "2 ").raw(494, " 3").raw(640, "4 "));
    EXPECT_THAT(text, HasSubstr("Channel Number              : 2 \r\n"));
    EXPECT_THAT(text, HasSubstr("Channel Number              : 4 \r\n"));
    EXPECT_THAT(text, Not(HasSubstr("Channel Number              :  ")));
}

TEST(log_sc, shows_channels_that_begin_with_NUL_with_empty_values)
{
    const std::string channel = "\r\n"
                                "      Channel Number              : \r\n"
                                "      Channel Name                : \r\n"
                                "      Azimuth                     : \r\n"
                                "      Inclination                 : \r\n"
                                "      X Coordinate                : \r\n"
                                "      Y Coordinate                : \r\n"
                                "      Z Coordinate                : \r\n"
                                "      Unit type for X, Y          : \r\n"
                                "      Unit type for Z             : \r\n"
                                "      Preamp Gain                 : \r\n"
                                "      Sensor Model                : \r\n"
                                "      Sensor Serial Number        : \r\n"
                                "      Comments                    : \r\n"
                                "      Bit-count Voltage           : \r\n";
    EXPECT_EQ(dumped(log_sc, Params("SC").fill(16, 1024, '\0')), "     Experiment Number            : \r\n"
                                                                 "     Experiment Name              : \r\n"
                                                                 "     Experiment Comment           : \r\n"
                                                                 "     Station Number               : \r\n"
                                                                 "     Station Name                 : \r\n"
                                                                 "     Station Comment              : \r\n"
                                                                 "     DAS Model                    : \r\n"
                                                                 "     DAS Serial Number            : \r\n"
                                                                 "     Experiment Start             : \r\n"
                                                                 "     Time Clock Type              : \r\n"
                                                                 "     Time Clock S/N               : \r\n" +
                                                                     channel + channel + channel + channel +
                                                                     channel + "\r\n");
}

TEST(log_sc, ends_a_value_at_its_first_NUL_without_padding)
{
    EXPECT_THAT(dumped(log_sc, station().raw(82, std::string("1\0"
                                                             "34",
                                                             4))),
                HasSubstr("     Station Number               : 1\r\n"));
}

TEST(log_sc, shows_texts_as_they_are_whatever_bytes_they_hold)
{
    EXPECT_THAT(dumped(log_sc, station().raw(150, "%s\r\n\x1B[2J\xFF\t%n")),
                HasSubstr("     DAS Model                    : %s\r\n\x1B[2J\xFF\t%n\r\n"
                          "     DAS Serial Number            : SERIAL-12345\r\n"));
}

static Params calibration(const char* step)
{
    return Params("CD")
        .raw(16, "20041231015302REPEAT--0010LENGTH--")
        .raw(50, step)
        .raw(54, "PERIOD--SIZE----AMPLITUDOUT1");
}

static const std::string Calibration_text = crlf("     Start Time                   : 20041231015302\n"
                                                 "     Repeat Interval              : REPEAT--\n"
                                                 "     No of Intervals              : 0010\n"
                                                 "     Length of Intervals          : LENGTH--\n");
static const std::string Step_text = crlf("\n"
                                          "      Step Period                 : PERIOD--\n"
                                          "      Step Size                   : SIZE----\n"
                                          "      Step Amplitude              : AMPLITUD\n"
                                          "      Step Output                 : OUT1\n");

TEST(log_cd, shows_the_step_lines_when_the_step_is_on)
{
    EXPECT_EQ(dumped(log_cd, calibration("on  ")),
              Calibration_text + "     Step                         : on  \r\n" + Step_text + "\r\n");
    EXPECT_EQ(dumped(log_cd, calibration("ON  ")),
              Calibration_text + "     Step                         : ON  \r\n" + Step_text + "\r\n");
}

TEST(log_cd, looks_at_the_first_two_letters_of_the_step)
{
    EXPECT_EQ(dumped(log_cd, calibration("ONCE")),
              Calibration_text + "     Step                         : ONCE\r\n" + Step_text + "\r\n");
}

TEST(log_cd, shows_no_step_lines_when_the_step_is_off)
{
    EXPECT_EQ(dumped(log_cd, calibration("OFF ")),
              Calibration_text + "     Step                         : OFF \r\n\r\n");
    EXPECT_EQ(dumped(log_cd, calibration(" ON ")),
              Calibration_text + "     Step                         :  ON \r\n\r\n");
}

TEST(log_cd, takes_a_step_in_mixed_case_for_off)
{
    EXPECT_EQ(dumped(log_cd, calibration("On  ")),
              Calibration_text + "     Step                         : On  \r\n\r\n");
    EXPECT_EQ(dumped(log_cd, calibration("oN  ")),
              Calibration_text + "     Step                         : oN  \r\n\r\n");
}

static Params mode()
{
    return Params("OM").raw(16, "ONSC12TDYY750030YYOO");
}

TEST(log_om, shows_the_mode_and_the_head_of_the_wake_sequence)
{
    EXPECT_EQ(dumped(log_om, mode()), crlf("     Power State                  : ON\n"
                                           "     Recording Mode               : SC\n"
                                           "     Primary Disk ID              : 1\n"
                                           "     Secondary Disk ID            : 2\n"
                                           "     Tape ID                      : T\n"
                                           "     Auto-dump Device             : D\n"
                                           "     Auto-dump on ET Block        : Enabled\n"
                                           "     Auto-dump in Serial Mode     : Enabled\n"
                                           "     Auto-dump Threshold          : 75%\n"
                                           "     SCSI Powerdown Delay         : 0030 seconds\n"
                                           "     SCSI Disk Wrap               : Enabled\n"
                                           "     SCSI Directory               : Enabled\n"
                                           "     SCSI Device Power            : Always On\n"
                                           "     SCSI Termintor Power         : Always On\n"
                                           "     Wake Sequence Information\n"
                                           "\n"));
}

TEST(log_om, takes_lower_case_letters_for_disabled_and_toggle)
{
    const std::string text = dumped(log_om, mode().raw(24, "yn").raw(32, "yNoX"));
    EXPECT_THAT(text, HasSubstr("     Auto-dump on ET Block        : Disabled\r\n"
                                "     Auto-dump in Serial Mode     : Disabled\r\n"));
    EXPECT_THAT(text, HasSubstr("     SCSI Disk Wrap               : Disabled\r\n"
                                "     SCSI Directory               : Disabled\r\n"
                                "     SCSI Device Power            : Toggle\r\n"
                                "     SCSI Termintor Power         : Toggle\r\n"));
}

TEST(log_om, reads_each_choice_from_its_own_byte)
{
    EXPECT_THAT(dumped(log_om, mode().raw(24, "NY").raw(32, "NYTO")),
                testing::AllOf(HasSubstr("     Auto-dump on ET Block        : Disabled\r\n"
                                         "     Auto-dump in Serial Mode     : Enabled\r\n"),
                               HasSubstr("     SCSI Disk Wrap               : Disabled\r\n"
                                         "     SCSI Directory               : Enabled\r\n"
                                         "     SCSI Device Power            : Toggle\r\n"
                                         "     SCSI Termintor Power         : Always On\r\n")));
}

TEST(log_om, writes_the_device_bytes_as_they_are_even_a_NUL)
{
    using namespace std::string_literals;
    EXPECT_THAT(dumped(log_om, mode().raw(20, "\0 \xFF%"s)),
                HasSubstr("     Primary Disk ID              : \0\r\n"
                          "     Secondary Disk ID            :  \r\n"
                          "     Tape ID                      : \xFF\r\n"
                          "     Auto-dump Device             : %\r\n"s));
}

TEST(log_om, keeps_the_unit_behind_a_value_that_ends_early)
{
    using namespace std::string_literals;
    EXPECT_THAT(dumped(log_om, mode().raw(26, "9\0"s).raw(28, "\0\0\0\0"s)),
                HasSubstr("     Auto-dump Threshold          : 9%\r\n"
                          "     SCSI Powerdown Delay         :  seconds\r\n"));
}

TEST(log_om, shows_the_wake_entries_in_use_two_of_their_values_further_in)
{
    const Params packet =
        mode().raw(48, "01123101530000DURATNREPEAT12").raw(496, "08365235959000OTHDURAGAIN-99");
    EXPECT_THAT(dumped(log_om, packet),
                testing::EndsWith(crlf("     Wake Sequence Information\n"
                                       "\n"
                                       "      Sequence number             : 01\n"
                                       "      Start time                  : 123101530000\n"
                                       "      Power Duration              :     DURATN\n"
                                       "      Repeat Interval             :     REPEAT\n"
                                       "      Number of Intervals         : 12\n"
                                       "\n"
                                       "      Sequence number             : 08\n"
                                       "      Start time                  : 365235959000\n"
                                       "      Power Duration              :     OTHDUR\n"
                                       "      Repeat Interval             :     AGAIN-\n"
                                       "      Number of Intervals         : 99\n"
                                       "\n")));
}

TEST(log_om, skips_a_wake_entry_with_a_blank_sequence_number)
{
    const std::string text = dumped(log_om, mode().raw(48, " 1123101530000").raw(112, "02"));
    EXPECT_THAT(text,
                HasSubstr("Wake Sequence Information\r\n\r\n      Sequence number             : 02\r\n"));
    EXPECT_THAT(text, Not(HasSubstr("123101530000")));
}

TEST(log_om, finds_all_eight_wake_entries)
{
    Params packet = mode();
    for (int i = 0; i < 8; ++i) packet.raw(48 + 64 * i, std::string(1, static_cast<char>('1' + i)) + " ");
    const std::string text = dumped(log_om, packet);
    for (const char* number : {"1", "2", "3", "4", "5", "6", "7", "8"})
        EXPECT_THAT(
            text, HasSubstr(std::string("\r\n\r\n      Sequence number             : ") + number + " \r\n"));
}

TEST(log_ad, shows_blank_channels_as_underscores)
{
    EXPECT_EQ(dumped(log_ad, Params("AD").raw(18, "YY  Y          Y").raw(34, "INTERVAL16LENGTH--")),
              "     Channels Included            : YY__Y__________Y\r\n"
              "     Sample Interval              : INTERVAL\r\n"
              "     Data Format                  : 16\r\n"
              "     Record Length                : LENGTH--\r\n"
              "\r\n");
}

TEST(log_ad, shows_all_sixteen_channel_bytes_even_NULs)
{
    using namespace std::string_literals;
    EXPECT_EQ(dumped(log_ad, Params("AD").fill(16, 1024, '\0')),
              "     Channels Included            : \0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\r\n"
              "     Sample Interval              : \r\n"
              "     Data Format                  : \r\n"
              "     Record Length                : \r\n"
              "\r\n"s);
}
