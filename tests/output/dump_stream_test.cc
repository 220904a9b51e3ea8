// DS packets in the unit log.
#include "dump_text.h"

#include <gmock/gmock.h>

using kit::Params;
using testing::HasSubstr;
using testing::Not;

/// One stream in the first entry, with nothing but blanks in its trigger block.
static Params stream(const char* trigger_type)
{
    return Params("DS")
        .raw(16, "01Twenty-four letters here")
        .raw(42, "Y Y            Y")
        .raw(58, "100 16")
        .raw(80, trigger_type);
}

static std::string head(const std::string& trigger_type)
{
    return "\r\n"
           "     Data Stream No               : 01\r\n"
           "     Data Stream Name             : Twenty-four letters here\r\n"
           "     Channels Included            : Y_Y____________Y\r\n"
           "     Sample Rate                  : 100 \r\n"
           "     Data Format                  : 16\r\n"
           "     Trigger Type                 : " +
           trigger_type + "\r\n";
}

TEST(log_ds, writes_nothing_when_no_stream_is_in_use)
{
    EXPECT_EQ(dumped(log_ds, Params("DS")), "");
}

TEST(log_ds, ends_each_stream_with_an_empty_line_and_the_dump_with_no_other)
{
    EXPECT_EQ(dumped(log_ds, stream("XXXX")), head("XXXX") + "\r\n");
}

static const char Event_block[] = "1 1 11          03WINDOW--PRETRIG-POSTTRIGRECORD--########STA-----LTA-----"
                                  "MEAN----RATIO---DETRIG--HOLD";
static const std::string Event_text = crlf("      Trigger Channels            : 1_1_11__________\n"
                                           "      Minimum Channels            : 03\n"
                                           "      Trigger Window              : WINDOW--\n"
                                           "      Pretrigger Length           : PRETRIG-\n"
                                           "      Posttrigger Length          : POSTTRIG\n"
                                           "      Record Length               : RECORD--\n"
                                           "      STA Length                  : STA-----\n"
                                           "      LTA Length                  : LTA-----\n"
                                           "      Mean Removal                : MEAN----\n"
                                           "      Trigger Ratio               : RATIO---\n"
                                           "      Detrigger Ratio             : DETRIG--\n"
                                           "      LTA hold                    : HOLD\n");

TEST(log_ds, shows_an_event_trigger_but_not_the_eight_bytes_within_it)
{
    EXPECT_EQ(dumped(log_ds, stream("EVT ").raw(84, Event_block)), head("EVT ") + Event_text + "\r\n");
    EXPECT_EQ(dumped(log_ds, stream("evt ").raw(84, Event_block)), head("evt ") + Event_text + "\r\n");
}

TEST(log_ds, passes_over_one_leading_blank_of_the_trigger_type)
{
    EXPECT_EQ(dumped(log_ds, stream(" EVT").raw(84, Event_block)), head(" EVT") + Event_text + "\r\n");
    EXPECT_EQ(dumped(log_ds, stream("  EV").raw(84, Event_block)), head("  EV") + "\r\n");
}

TEST(log_ds, knows_no_trigger_type_in_mixed_case)
{
    for (const char* type : {"Evt ", "eVT ", "Tim ", "LEv ", "Con ", "eXt ", "Rad ", "cRS ", "TMl "})
        EXPECT_EQ(dumped(log_ds, stream(type).raw(84, Event_block)), head(type) + "\r\n");
}

TEST(log_ds, looks_at_three_characters_of_the_trigger_type)
{
    EXPECT_EQ(dumped(log_ds, stream("EVTX").raw(84, Event_block)), head("EVTX") + Event_text + "\r\n");
    EXPECT_EQ(dumped(log_ds, stream("EV  ").raw(84, Event_block)), head("EV  ") + "\r\n");
}

TEST(log_ds, shows_a_time_trigger)
{
    const std::string block = crlf("      Start Time                  : 20041231015302\n"
                                   "      Repeat Interval             : REPEAT--\n"
                                   "      Number of Intervals         : 0010\n"
                                   "      Record Length               : RECORD--\n");
    for (const char* type : {"TIM ", "tim "})
        EXPECT_EQ(dumped(log_ds, stream(type).raw(84, "20041231015302REPEAT--0010########RECORD--")),
                  head(type) + block + "\r\n");
}

TEST(log_ds, shows_a_level_trigger)
{
    const std::string block = crlf("      Trigger Level               : LEVEL---\n"
                                   "      Pretrigger Length           : PRETRIG-\n"
                                   "      Record Length               : RECORD--\n");
    for (const char* type : {"LEV ", "lev "})
        EXPECT_EQ(dumped(log_ds, stream(type).raw(84, "LEVEL---PRETRIG-RECORD--")),
                  head(type) + block + "\r\n");
}

TEST(log_ds, shows_a_continuous_recording)
{
    for (const char* type : {"CON ", "con "})
        EXPECT_EQ(dumped(log_ds, stream(type).raw(84, "RECORD--")),
                  head(type) + "      Record Length               : RECORD--\r\n\r\n");
}

TEST(log_ds, shows_external_and_radio_triggers_alike)
{
    const std::string block = crlf("      Pretrigger Length           : PRETRIG-\n"
                                   "      Record Length               : RECORD--\n");
    for (const char* type : {"EXT ", "ext ", "RAD ", "rad "})
        EXPECT_EQ(dumped(log_ds, stream(type).raw(84, "PRETRIG-RECORD--")), head(type) + block + "\r\n");
}

TEST(log_ds, shows_a_cross_trigger)
{
    const std::string block = crlf("      Trigger Stream Number       : 02\n"
                                   "      Pretrigger Length           : PRETRIG-\n"
                                   "      Record Length               : RECORD--\n");
    for (const char* type : {"CRS ", "crs "})
        EXPECT_EQ(dumped(log_ds, stream(type).raw(84, "02PRETRIG-RECORD--")), head(type) + block + "\r\n");
}

TEST(log_ds, shows_a_time_list_with_eleven_start_times_less_indented_than_their_neighbours)
{
    Params packet = stream("TML ");
    packet.raw(84, "START-TIME--01START-TIME--02START-TIME--03START-TIME--04START-TIME--05START-TIME--06"
                   "START-TIME--07START-TIME--08START-TIME--09START-TIME--10START-TIME--11RECORD--");
    const std::string block = crlf("   Start Time 01               : START-TIME--01\n"
                                   "   Start Time 02               : START-TIME--02\n"
                                   "   Start Time 03               : START-TIME--03\n"
                                   "   Start Time 04               : START-TIME--04\n"
                                   "   Start Time 05               : START-TIME--05\n"
                                   "   Start Time 06               : START-TIME--06\n"
                                   "   Start Time 07               : START-TIME--07\n"
                                   "   Start Time 08               : START-TIME--08\n"
                                   "   Start Time 09               : START-TIME--09\n"
                                   "   Start Time 10               : START-TIME--10\n"
                                   "   Start Time 11               : START-TIME--11\n"
                                   "      Record Length               : RECORD--\n");
    EXPECT_EQ(dumped(log_ds, packet), head("TML ") + block + "\r\n");
    EXPECT_EQ(dumped(log_ds, packet.raw(80, "tml ")), head("tml ") + block + "\r\n");
}

TEST(log_ds, finds_all_five_streams)
{
    const std::string text = dumped(
        log_ds, Params("DS").raw(16, "1 A").raw(246, "2 B").raw(476, "3 C").raw(706, "4 D").raw(936, "5 E"));
    for (const char* stream :
         {"1 \r\n     Data Stream Name             : A", "2 \r\n     Data Stream Name             : B",
          "3 \r\n     Data Stream Name             : C", "4 \r\n     Data Stream Name             : D",
          "5 \r\n     Data Stream Name             : E"})
        EXPECT_THAT(text, HasSubstr(std::string("\r\n     Data Stream No               : ") + stream));
}

TEST(log_ds, skips_only_the_streams_that_begin_with_a_blank)
{
    const std::string text = dumped(log_ds, Params("DS").raw(16, " 1").raw(246, "2 "));
    EXPECT_THAT(text, testing::StartsWith("\r\n     Data Stream No               : 2 \r\n"));
    EXPECT_THAT(text, Not(HasSubstr("No               :  1")));
}

TEST(log_ds, shows_streams_that_begin_with_NUL_with_empty_values)
{
    using namespace std::string_literals;
    const std::string entry = "\r\n"
                              "     Data Stream No               : \r\n"
                              "     Data Stream Name             : \r\n"
                              "     Channels Included            : \0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\r\n"
                              "     Sample Rate                  : \r\n"
                              "     Data Format                  : \r\n"
                              "     Trigger Type                 : \r\n"
                              "\r\n"s;
    EXPECT_EQ(dumped(log_ds, Params("DS").fill(16, 1024, '\0')), entry + entry + entry + entry + entry);
}

/// The fifth entry; all the packet's last 20 bytes belong to its trigger block.
static Params fifth_stream(const char* trigger_type, const char* block)
{
    return Params("DS")
        .raw(936, "05Twenty-four letters here")
        .raw(962, "YYYYYYYYYYYYYYYY")
        .raw(978, "20  C0")
        .raw(1000, trigger_type)
        .raw(1004, block);
}

static const std::string Fifth_head = crlf("\n"
                                           "     Data Stream No               : 05\n"
                                           "     Data Stream Name             : Twenty-four letters here\n"
                                           "     Channels Included            : YYYYYYYYYYYYYYYY\n"
                                           "     Sample Rate                  : 20  \n"
                                           "     Data Format                  : C0\n");

TEST(log_ds, reads_blanks_past_the_packets_end)
{
    EXPECT_EQ(dumped(log_ds, fifth_stream("EVT ", "YYYYYYYYYYYYYYYY02WI")),
              Fifth_head + crlf("     Trigger Type                 : EVT \n"
                                "      Trigger Channels            : YYYYYYYYYYYYYYYY\n"
                                "      Minimum Channels            : 02\n"
                                "      Trigger Window              : WI      \n"
                                "      Pretrigger Length           :         \n"
                                "      Posttrigger Length          :         \n"
                                "      Record Length               :         \n"
                                "      STA Length                  :         \n"
                                "      LTA Length                  :         \n"
                                "      Mean Removal                :         \n"
                                "      Trigger Ratio               :         \n"
                                "      Detrigger Ratio             :         \n"
                                "      LTA hold                    :     \n"
                                "\n"));
}

TEST(log_ds, reads_blanks_past_the_packets_end_in_a_time_list_too)
{
    EXPECT_EQ(dumped(log_ds, fifth_stream(" tml", "START-TIME--01START-")),
              Fifth_head + crlf("     Trigger Type                 :  tml\n"
                                "   Start Time 01               : START-TIME--01\n"
                                "   Start Time 02               : START-        \n"
                                "   Start Time 03               :               \n"
                                "   Start Time 04               :               \n"
                                "   Start Time 05               :               \n"
                                "   Start Time 06               :               \n"
                                "   Start Time 07               :               \n"
                                "   Start Time 08               :               \n"
                                "   Start Time 09               :               \n"
                                "   Start Time 10               :               \n"
                                "   Start Time 11               :               \n"
                                "      Record Length               :         \n"
                                "\n"));
}

TEST(log_ds, adds_no_blanks_to_a_value_that_ended_at_a_NUL_before_the_packets_end)
{
    const std::string text =
        dumped(log_ds, fifth_stream("EVT ", "YYYYYYYYYYYYYYYY02W").raw(1023, std::string(1, '\0')));
    EXPECT_THAT(text, HasSubstr("      Trigger Window              : W\r\n"
                                "      Pretrigger Length           :         \r\n"));
}
