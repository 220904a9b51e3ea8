// EH, ET, NH and NT packets in the unit log.
#include "dump_text.h"

#include <gmock/gmock.h>

using kit::Eh;
using kit::Et;
using kit::Nh;
using kit::Nt;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

/// A header with every text given, each as wide as its field, and no channel.
static Eh full_header()
{
    return Eh()
        .time_source('2')
        .pll_days('3')
        .station("STA1X")
        .stream_name("Twenty-four letters here")
        .rate("100 ")
        .trigger_type("EVT ")
        .t_trg("2004123101530250")
        .t_first("2003365235959999")
        .t_detrg("2004124000000001")
        .t_last("2004125112233444")
        .micros("123", "456", "789", "012")
        .installed("06")
        .comment("A comment of forty characters, no fewer.")
        .filters("FILTER-LIST--16.")
        .position("N 3412.345W11823.456001234");
}

static const std::string Channel_head =
    "   Channel Info :  BitWght   TruWght    Gain  R  FSV  SEED  SFSV   SVPU   U\r\n";

static const std::string Full_text =
    crlf("   Station Name           : STA1X\n"
         "   Station Comment        : A comment of forty characters, no fewer.\n"
         "   Position               : N 3412.345W11823.456001234\n"
         "   Stream Name            : Twenty-four letters here\n"
         "   Sample rate            : 100 \n"
         "   Trigger type           : EVT \n"
         "   Time Source            : GPS       Days since PLL 3\n"
         "   Trigger time           : 2004:123:10:15:30.250123\n"
         "   First sample time      : 2003:365:23:59:59.999456\n"
         "   Detrigger time         : 2004:124:00:00:00.001789\n"
         "   Last sample time       : 2004:125:11:22:33.444012\n"
         "   Filter list            : FILTER-LIST--16.\n"
         "   Installed channels     : 06\n"
         "   Channel Info :  BitWght   TruWght    Gain  R  FSV  SEED  SFSV   SVPU   U\n");

TEST(log_eh_et, shows_every_text_of_a_header)
{
    EXPECT_EQ(dumped(log_eh_et, full_header()), Full_text);
}

TEST(log_eh_et, shows_a_trailer_as_it_shows_a_header)
{
    EXPECT_EQ(dumped(log_eh_et, full_header().type("ET")), Full_text);
    EXPECT_THAT(dumped(log_eh_et, Et().usual()), HasSubstr("   Station Name           : STA01\r\n"));
}

TEST(log_eh_et, shows_a_blank_header_with_the_two_times_that_are_always_there)
{
    EXPECT_EQ(dumped(log_eh_et, Eh()),
              crlf("   Station Name           :      \n"
                   "   Station Comment        :                                         \n"
                   "   Position               :                           \n"
                   "   Stream Name            :                         \n"
                   "   Sample rate            :     \n"
                   "   Trigger type           :     \n"
                   "   Time Source            : Unknown   Days since PLL  \n"
                   "   Trigger time           :     :   :  :  :  .      \n"
                   "   First sample time      :     :   :  :  :  .      \n"
                   "   Detrigger time         : \n"
                   "   Last sample time       : \n"
                   "   Filter list            :                 \n"
                   "   Installed channels     :   \n"
                   "   Channel Info :  BitWght   TruWght    Gain  R  FSV  SEED  SFSV   SVPU   U\n"));
}

TEST(log_eh_et, shows_a_late_time_only_when_its_first_byte_is_given)
{
    const std::string text = dumped(log_eh_et, full_header().t_detrg(" 004124000000001").t_last("2"));
    EXPECT_THAT(text, HasSubstr("   Detrigger time         : \r\n"
                                "   Last sample time       : 2   :   :  :  :  .   012\r\n"));
}

TEST(log_eh_et, names_the_time_source_in_eight_characters)
{
    EXPECT_THAT(dumped(log_eh_et, full_header().time_source('1').pll_days('?')),
                HasSubstr("   Time Source            : Internal  Days since PLL ?\r\n"));
    EXPECT_THAT(dumped(log_eh_et, full_header().time_source('2').pll_days('0')),
                HasSubstr("   Time Source            : GPS       Days since PLL 0\r\n"));
    EXPECT_THAT(dumped(log_eh_et, full_header().time_source('3').pll_days(' ')),
                HasSubstr("   Time Source            : Unknown   Days since PLL  \r\n"));
}

TEST(log_eh_et, shows_a_byte_count_below_58_as_one_text_of_31_characters)
{
    EXPECT_EQ(dumped(log_eh_et, full_header().text(24, 31, "Thirty-one letters, no more ...").bytes(57)),
              "Thirty-one letters, no more ...\r\n");
    EXPECT_EQ(dumped(log_eh_et, Et().short_text("Stopped")), "Stopped                        \r\n");
    EXPECT_EQ(dumped(log_eh_et, Eh().fill(24, 1024, '\0').bytes(0)), "\r\n");
}

TEST(log_eh_et, shows_a_byte_count_of_58_in_full)
{
    EXPECT_EQ(dumped(log_eh_et, full_header().bytes(58)), Full_text);
}

TEST(log_eh_et, counts_the_nibbles_of_a_byte_count_as_what_they_are)
{
    EXPECT_EQ(dumped(log_eh_et, Eh().raw(12, kit::big_endian(0x004F, 2)).text(24, 31, "short")), // 40 + 15
              "short                          \r\n");
    EXPECT_THAT(dumped(log_eh_et, Eh().raw(12, kit::big_endian(0x005A, 2)).text(24, 31, "short")), // 50 + 10
                Not(HasSubstr("short")));
}

static Eh with_channel(int slot)
{
    return full_header()
        .channel_name(slot, "VER")
        .bit_weight(slot, "1.907uV ")
        .true_weight(slot, "1.906uV/")
        .gain(slot, '3')
        .resolution(slot, '4')
        .full_scale(slot, '5')
        .seed(slot, "BHZ1")
        .sensor_full_scale(slot, '6')
        .sensor_vpu(slot, "2.4000")
        .units_code(slot, 'V');
}

TEST(log_eh_et, shows_a_line_per_channel)
{
    EXPECT_THAT(dumped(log_eh_et, with_channel(0)),
                EndsWith(Channel_head +
                         "    Chn  1(VER) : 1.907uV   1.906uV/      32  4    5  BHZ1     6  2.4000  V\r\n"));
    EXPECT_THAT(dumped(log_eh_et, with_channel(15)),
                EndsWith(Channel_head +
                         "    Chn 16(VER) : 1.907uV   1.906uV/      32  4    5  BHZ1     6  2.4000  V\r\n"));
}

TEST(log_eh_et, skips_the_channels_whose_bit_weight_begins_with_a_blank)
{
    const std::string text =
        dumped(log_eh_et, with_channel(1).bit_weight(0, " 2.0uV").bit_weight(2, "3.0uV").gain(2, '1'));
    EXPECT_THAT(text,
                EndsWith(Channel_head +
                         "    Chn  2(VER) : 1.907uV   1.906uV/      32  4    5  BHZ1     6  2.4000  V\r\n"
                         "    Chn  3(   ) : 3.0uV" +
                         std::string(15, ' ') + "     1" + std::string(31, ' ') + "\r\n"));
}

TEST(log_eh_et, counts_channels_from_17_when_any_flag_is_set)
{
    for (const unsigned flags : {0x04U, 0x10U, 0x01U, 0x80U}) {
        EXPECT_THAT(dumped(log_eh_et, with_channel(0).flags(flags)), HasSubstr("    Chn 17(VER) : 1.907uV "));
        EXPECT_THAT(dumped(log_eh_et, with_channel(15).flags(flags)),
                    HasSubstr("    Chn 32(VER) : 1.907uV "));
    }
}

static std::string gain_column(char digit)
{
    const std::string text = dumped(log_eh_et, with_channel(0).gain(0, digit));
    const std::string before = "1.907uV   1.906uV/  ";
    const size_t at = text.find(before);
    return at == std::string::npos ? "not there" : text.substr(at + before.size(), 6);
}

TEST(log_eh_et, shows_the_factor_of_each_gain_digit)
{
    const struct {
        char digit;
        const char* factor;
    } gains[] = {{'0', "     1"}, {'1', "     1"}, {'2', "     8"}, {'3', "    32"}, {'4', "   128"},
                 {'5', "   512"}, {'6', "  2048"}, {'7', "  8192"}, {'8', "   100"}, {'9', "     1"},
                 {'A', "     4"}, {'B', "    16"}, {'C', "    63"}, {'D', "   251"}, {'E', "  1000"},
                 {'F', "     1"}, {'a', "     4"}, {'b', "    16"}, {'c', "    63"}, {'d', "   251"},
                 {'e', "  1000"}, {'f', "     1"}};
    for (const auto& gain : gains) EXPECT_EQ(gain_column(gain.digit), gain.factor) << gain.digit;
}

TEST(log_eh_et, takes_a_gain_that_is_no_hexadecimal_digit_for_0)
{
    for (const char digit : {' ', '\0', '/', ':', '@', 'G', '`', 'g', '\xFF'})
        EXPECT_EQ(gain_column(digit), "     1") << static_cast<int>(digit);
}

TEST(log_eh_et, ends_channel_texts_at_a_NUL_and_writes_codes_that_are_NUL)
{
    using namespace std::string_literals;
    EXPECT_THAT(dumped(log_eh_et, with_channel(0)
                                      .raw(160, "2\0uV"s)
                                      .raw(464, "B\0Z "s)
                                      .raw(656, "\0ER"s)
                                      .resolution(0, '\0')
                                      .units_code(0, '\0')),
                EndsWith("    Chn  1() : 2  1.906uV/      32  \0    5  B     6  2.4000  \0\r\n"s));
}

TEST(log_eh_et, shows_a_zero_filled_header_as_one_from_a_telemetry_unit)
{
    using namespace std::string_literals;
    std::string expected = "   Station Name           : \0\r\n"
                           "   Station Comment        : \r\n"
                           "   Position               : \r\n"
                           "   Stream Name            : \r\n"
                           "   Sample rate            : \r\n"
                           "   Time Source            : Unknown   Days since PLL \0\r\n"
                           "   Trigger time           :     :   :  :  :  .      \r\n"
                           "   First sample time      :     :   :  :  :  .      \r\n"
                           "   Detrigger time         :     :   :  :  :  .      \r\n"
                           "   Last sample time       :     :   :  :  :  .      \r\n"
                           "   Filter list            : \r\n"
                           "   Installed channels     : \r\n"s +
                           Channel_head;
    for (const char* number :
         {" 1", " 2", " 3", " 4", " 5", " 6", " 7", " 8", " 9", "10", "11", "12", "13", "14", "15", "16"})
        expected += "    Chn "s + number + "() :          1  \0    \0       \0    \0\r\n"s;
    expected += "   MES-DAU Version        : \r\n"
                "   MES-DAU Xmitter Freq   : \r\n"
                "   MES-DAU Xmitter Id     : \r\n"
                "   MES-DAU Xmitter Site   : \r\n"
                "   MES-DAU Sensor         : \r\n"
                "   MES-DAU Receiver Site  : \r\n"
                "   MES-DAU Propagatn Delay: \r\n"
                "   MES-DAU Data Chn       : \r\n"
                "   MES-DAU Data Chn Positn: \r\n"
                "   MES-DAU Overscale Count: \r\n";
    EXPECT_EQ(dumped(log_eh_et, Eh().fill(16, 1024, '\0')), expected);
}

/// What a telemetry unit adds: a rate over the trigger type, and its own fields.
template <class Header>
static Header& from_telemetry_unit(Header& header)
{
    return header.rate_telemetry("100.0000")
        .raw(954, "OVERSCVERSION-TX-FREQ-TX-ID---TX-SITE-SENSOR--RX-SITE-")
        .raw(1012, "DLAY")
        .telemetry("CHPOSN");
}

TEST(log_eh_et, shows_a_wider_rate_and_further_fields_of_a_telemetry_unit)
{
    Eh header = full_header();
    const std::string text = dumped(log_eh_et, from_telemetry_unit(header));
    EXPECT_THAT(text, HasSubstr("   Stream Name            : Twenty-four letters here\r\n"
                                "   Sample rate            : 100.0000\r\n"
                                "   Time Source            : GPS "));
    EXPECT_THAT(text, EndsWith(Channel_head + "   MES-DAU Version        : VERSION-\r\n"
                                              "   MES-DAU Xmitter Freq   : TX-FREQ-\r\n"
                                              "   MES-DAU Xmitter Id     : TX-ID---\r\n"
                                              "   MES-DAU Xmitter Site   : TX-SITE-\r\n"
                                              "   MES-DAU Sensor         : SENSOR--\r\n"
                                              "   MES-DAU Receiver Site  : RX-SITE-\r\n"
                                              "   MES-DAU Propagatn Delay: DLAY\r\n"
                                              "   MES-DAU Data Chn       : CH\r\n"
                                              "   MES-DAU Data Chn Positn: POSN\r\n"
                                              "   MES-DAU Overscale Count: OVERSC\r\n"));
}

TEST(log_eh_et, takes_one_byte_that_is_not_blank_for_telemetry)
{
    EXPECT_THAT(dumped(log_eh_et, full_header().telemetry("     x")), Not(HasSubstr("Trigger type")));
    EXPECT_THAT(dumped(log_eh_et, full_header().raw(1022, "xx")), HasSubstr("Trigger type"));
}

static Nh network()
{
    return Nh()
        .stream_name("Twenty-four letters here")
        .rate("50  ")
        .trigger_type("CON ")
        .t_trg("2004123101530250")
        .t_first("2003365235959999")
        .t_detrg(" 004124000000001")
        .t_last("2004125112233444");
}

static const std::string Network_times = crlf("   Trigger time           : 2004123101530250\n"
                                              "   First sample time      : 2003365235959999\n"
                                              "   Detrigger time         :  004124000000001\n"
                                              "   Last sample time       : 2004125112233444\n");
static const std::string Network_text =
    Network_times + crlf("   Sample rate            : 50  \n"
                         "   Trigger type           : CON \n"
                         "   Stream Name            : Twenty-four letters here\n");

TEST(log_nh_nt, shows_times_rate_trigger_and_stream_when_no_event_header_came_before)
{
    EXPECT_EQ(dumped(log_nh_nt, network()), Network_text);
    EXPECT_EQ(dumped(log_nh_nt, network().type("NT")), Network_text);
}

TEST(log_nh_nt, does_not_look_at_its_own_packet_for_telemetry)
{
    EXPECT_EQ(dumped(log_nh_nt, network().telemetry("CHPOSN")), Network_text);
}

TEST(log_nh_nt, shows_telemetry_fields_behind_an_event_header_from_a_telemetry_unit)
{
    Eh header;
    dumped(log_eh_et, from_telemetry_unit(header));
    Nh packet = network();
    packet.raw(92, "CON ").raw(960, "VERSION-TX-FREQ-TX-ID---TX-SITE-(TX-FRQ)SITE----").raw(1012, "DLAY");
    EXPECT_EQ(dumped(log_nh_nt, packet),
              Network_times + crlf("   Sample rate            : 50  CON \n"
                                   "   Stream Name            : Twenty-four letters here\n"
                                   "   MES-CRU Version        : VERSION-\n"
                                   "   MES-CRU Xmitter Freq   : TX-FREQ-\n"
                                   "   MES-CRU Xmitter Id     : TX-ID---\n"
                                   "   MES-CRU Xmitter Site   : TX-SITE-\n"
                                   "   MES-CRU (Xmitter Freq) : (TX-FRQ)\n"
                                   "   MES-CRU Site           : SITE----\n"
                                   "   MES-CRU Propagatn Delay: DLAY\n"
                                   "   MES-CRU Data Chn       :   \n"
                                   "   MES-CRU Data Chn Positn:     \n"));
}

TEST(log_nh_nt, shows_its_own_channel_and_position_when_it_has_them)
{
    Eh header;
    dumped(log_eh_et, from_telemetry_unit(header));
    EXPECT_THAT(dumped(log_nh_nt, Nt().telemetry("12abcd")),
                EndsWith("   MES-CRU Data Chn       : 12\r\n   MES-CRU Data Chn Positn: abcd\r\n"));
}

TEST(log_nh_nt, follows_the_latest_full_header_or_trailer_of_any_unit)
{
    Eh header;
    dumped(log_eh_et, from_telemetry_unit(header.unit(0x1111)));
    dumped(log_eh_et, Et().unit(0x2222));
    EXPECT_EQ(dumped(log_nh_nt, network().unit(0x1111)), Network_text);
    Et trailer;
    dumped(log_eh_et, from_telemetry_unit(trailer.unit(0x3333)));
    EXPECT_THAT(dumped(log_nh_nt, network().unit(0x1111)), HasSubstr("MES-CRU"));
}

TEST(log_nh_nt, pays_no_heed_to_a_short_event_header)
{
    Eh header;
    dumped(log_eh_et, from_telemetry_unit(header));
    dumped(log_eh_et, Eh().short_text("short"));
    EXPECT_THAT(dumped(log_nh_nt, network()), HasSubstr("MES-CRU"));
    dumped(log_eh_et, Eh());
    dumped(log_eh_et, from_telemetry_unit(header).bytes(57));
    EXPECT_EQ(dumped(log_nh_nt, network()), Network_text);
}
