// The line forms of the dumps.
#include "dump_text.h"

#include "output/form.h"

using kit::Params;

/// What a piece of a dump writes.
static std::string written(const Params& packet, Dump* piece)
{
    return dumped(piece, packet);
}

TEST(form_label, indents_by_5_6_or_3_and_fills_the_column)
{
    EXPECT_EQ(written(Params("SC"),
                      [](OUT_FILE& log, const PACKET&) {
                          form_label(log, Form_a, "Station Number");
                          log.write("\n");
                          form_label(log, Form_b, "Channel Number");
                          log.write("\n");
                          form_label(log, Form_c, "Station Name");
                      }),
              "     Station Number               : \n"
              "      Channel Number              : \n"
              "   Station Name           : ");
}

TEST(form_label, keeps_a_label_whole_that_is_wider_than_its_column)
{
    EXPECT_EQ(
        written(Params("SC"),
                [](OUT_FILE& log, const PACKET&) { form_label(log, Form_c, "MES-DAU Data Chn Position"); }),
        "   MES-DAU Data Chn Position: ");
}

TEST(form_text, reads_blanks_past_the_packets_end)
{
    const Params packet = Params("SC").raw(1020, "abcd");
    EXPECT_EQ(written(packet,
                      [](OUT_FILE& log, const PACKET& pkt) {
                          form_text(log, pkt, {1020, 6});
                      }),
              "abcd  ");
    EXPECT_EQ(written(packet,
                      [](OUT_FILE& log, const PACKET& pkt) {
                          form_text(log, pkt, {1024, 3});
                      }),
              "   ");
    EXPECT_EQ(written(packet,
                      [](OUT_FILE& log, const PACKET& pkt) {
                          form_text(log, pkt, {1100, 2});
                      }),
              "  ");
}

TEST(form_text, ends_at_a_NUL)
{
    const Params packet = Params("SC").raw(100, std::string("ab\0cd", 5));
    EXPECT_EQ(written(packet, [](OUT_FILE& log, const PACKET& pkt) { form_text(log, pkt, {100, 5}); }), "ab");
    EXPECT_EQ(written(packet, [](OUT_FILE& log, const PACKET& pkt) { form_text(log, pkt, {102, 3}); }), "");
}

TEST(form_channel_line, shows_blanks_and_what_is_past_the_packets_end_as_underscores)
{
    const Params packet = Params("DS").raw(1014, "Y y  \xFF"
                                                 "12 3");
    EXPECT_EQ(written(packet,
                      [](OUT_FILE& log, const PACKET& pkt) {
                          form_channel_line(log, Form_b, pkt, {{14, 16}, "Trigger Channels"}, 1000);
                      }),
              "      Trigger Channels            : Y_y__\xFF"
              "12_3______\r\n");
}

TEST(form_lines, counts_places_from_where_the_entry_begins)
{
    EXPECT_EQ(written(Params("SC").raw(200, "abcdef"),
                      [](OUT_FILE& log, const PACKET& pkt) {
                          static constexpr Line lines[] = {{{0, 2}, "One"}, {{3, 3}, "Two"}};
                          form_lines(log, Form_c, pkt, lines, 200);
                      }),
              "   One                    : ab\r\n"
              "   Two                    : def\r\n");
}

TEST(form_entry, begins_an_entry_with_an_empty_line_unless_its_first_byte_is_a_blank)
{
    const auto tell = [](OUT_FILE& log, const PACKET& pkt) {
        log.write(form_entry(log, pkt, 100) ? "yes" : "no");
    };
    EXPECT_EQ(written(Params("SC").raw(100, "1"), tell), "\r\nyes");
    EXPECT_EQ(written(Params("SC").raw(100, std::string(1, '\0')), tell), "\r\nyes");
    EXPECT_EQ(written(Params("SC").raw(100, " 1"), tell), "no");
}
