// Which dump a packet type has in a recorder's log.
#include "output/log.h"

#include "dump_text.h"

namespace {

using kit::Params;

/// A packet with these two letters that says something in most fields.
std::string packet_of(const char* letters)
{
    return Params(letters).raw(16, "01Twenty-four letters here").raw(58, "100 16").raw(100, "47.5");
}

std::string dumped_by_type(const char* letters)
{
    return dumped(log_dump, packet_of(letters));
}

} // namespace

TEST(log_dump, has_a_dump_with_an_empty_line_behind_it_for_events_networks_and_directories)
{
    EXPECT_EQ(dumped_by_type("EH"), dumped(log_eh_et, packet_of("EH")) + "\r\n");
    EXPECT_EQ(dumped_by_type("ET"), dumped(log_eh_et, packet_of("ET")) + "\r\n");
    EXPECT_EQ(dumped_by_type("NH"), dumped(log_nh_nt, packet_of("NH")) + "\r\n");
    EXPECT_EQ(dumped_by_type("NT"), dumped(log_nh_nt, packet_of("NT")) + "\r\n");
    EXPECT_EQ(dumped_by_type("DR"), dumped(log_dr, packet_of("DR")) + "\r\n");
    for (const char* letters : {"EH", "ET", "NH", "NT", "DR"}) EXPECT_GT(dumped_by_type(letters).size(), 2U);
}

TEST(log_dump, has_a_dump_for_each_kind_of_parameters)
{
    const std::pair<const char*, Dump*> dumps[] = {
        {"SC", log_sc}, {"DS", log_ds}, {"CD", log_cd}, {"OM", log_om}, {"AD", log_ad}};
    for (const auto& [letters, dump] : dumps) {
        EXPECT_EQ(dumped_by_type(letters), dumped(dump, packet_of(letters))) << letters;
        EXPECT_NE(dumped_by_type(letters), "") << letters;
    }
}

TEST(log_dump, shows_the_text_of_a_state_of_health)
{
    EXPECT_EQ(dumped(log_dump, kit::Sh("AB\r\nCD")), "     AB\r\n     CD\r\n\r\n");
}

TEST(log_dump, writes_nothing_for_data_filters_and_unknown_types)
{
    for (const char* letters : {"DT", "FD", "XX", "eh"}) EXPECT_EQ(dumped_by_type(letters), "") << letters;
}

TEST(log_fd, writes_nothing)
{
    EXPECT_EQ(dumped([](OUT_FILE&, const PACKET&) { log_fd(); }, kit::Fd()), "");
}
