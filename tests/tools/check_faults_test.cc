// Every kind of fault, planted into a sound recording, is found at its packet, and no other is.
#include "tools/check_run.h"

using namespace check_test;

namespace {

constexpr int Fault_samples = 100;

kit::Eh fault_head()
{
    kit::Eh eh;
    eh.event(12).rate("100 ").station("STA01").pll_days('0').t_first("2004123000000000");
    return eh.at(0, 0, 0, 0);
}

kit::Et fault_tail(unsigned seq)
{
    kit::Et et;
    return et.event(12)
        .rate("100 ")
        .station("STA01")
        .pll_days('0')
        .t_last("2004123000009990")
        .seq(seq)
        .at(0, 0, 10, 0);
}

/// The packets of a sound recording: header, ten data packets of a second each, trailer. Packets count
/// from 1.
std::vector<std::string> sound_packets()
{
    std::vector<std::string> packets{fault_head()};
    Stream stream{.seq = 1};
    for (int i = 0; i < 10; ++i) packets.push_back(stream.next(Fault_samples));
    packets.push_back(fault_tail(11));
    return packets;
}

std::string bytes_of_all(const std::vector<std::string>& packets)
{
    std::string all;
    for (const std::string& p : packets) all += p;
    return all;
}

std::string faults_of(const std::vector<std::string>& packets)
{
    return findings_of(report_of(bytes_of_all(packets)));
}

/// A data packet of the recording with other contents, its place in time and order kept.
kit::Dt fault_packet(int number)
{
    Stream stream{.seq = 1};
    for (int i = 2; i < number; ++i) stream.next(Fault_samples);
    return stream.next(Fault_samples);
}

} // namespace

TEST(Check_faults, none_are_in_a_sound_recording)
{
    const kit::Scratch s;
    s.write("rec.pkt", bytes_of_all(sound_packets()));
    EXPECT_EQ(run_check(s, {"rec.pkt"}).status, 0);
    EXPECT_EQ(faults_of(sound_packets()), "");
}

TEST(Check_faults, a_lost_packet_is_a_gap_and_a_hole_in_the_numbers)
{
    auto packets = sound_packets();
    packets.erase(packets.begin() + 5);
    const Json report = report_of(bytes_of_all(packets));
    EXPECT_EQ(findings_of(report), "sequence@6 gap@6");
    const Json& gap = report["units"][0]["events"][0]["channels"][0]["gaps"][0];
    EXPECT_EQ(gap,
              Json::parse(R"({"at":"2004-05-02T00:00:04.000000Z","packet":6,"seconds":1.0,"samples":100})"));
    EXPECT_EQ(report["metrics"][0]["num_gaps"], 1);
    EXPECT_EQ(report["metrics"][0]["max_gap"], 1.0);
    EXPECT_EQ(report["metrics"][0]["percent_availability"], 90.0);
}

TEST(Check_faults, a_packet_that_comes_early_is_an_overlap)
{
    auto packets = sound_packets();
    packets[6] = kit::Dt(fault_packet(7)).at(0, 0, 4, 500);
    for (size_t i = 7; i < 11; ++i)
        packets[i] =
            kit::Dt(fault_packet(static_cast<int>(i) + 1)).at(0, 0, static_cast<unsigned>(i) - 2, 500);
    const Json report = report_of(bytes_of_all(packets));
    EXPECT_EQ(findings_of(report), "overlap@7");
    EXPECT_EQ(report["units"][0]["events"][0]["channels"][0]["gaps"][0]["seconds"], -0.5);
    EXPECT_EQ(report["metrics"][0]["max_overlap"], 0.5);
}

TEST(Check_faults, an_offset_of_half_a_sample_is_none_and_more_is_one)
{
    auto packets = sound_packets();
    packets[10] = kit::Dt(fault_packet(11)).at(0, 0, 9, 5);
    EXPECT_EQ(faults_of(packets), "");
    packets[10] = kit::Dt(fault_packet(11)).at(0, 0, 9, 6);
    EXPECT_EQ(faults_of(packets), "gap@11");
}

TEST(Check_faults, packets_that_fit_one_by_one_and_run_off_together_are_a_drift)
{
    auto packets = sound_packets();
    for (unsigned i = 1; i <= 10; ++i)
        packets[i] = kit::Dt(fault_packet(static_cast<int>(i) + 1)).at(0, 0, i - 1, 2 * (i - 1));
    EXPECT_EQ(faults_of(packets), "drift@8"); // 12 ms by then; a sample has 10
}

TEST(Check_faults, a_wrong_last_sample_of_a_compressed_packet)
{
    auto packets = sound_packets();
    packets[3] = kit::Dt(fault_packet(4)).steim1(1, 9, {kit::four(0, 0, 0, 0)}).count(100);
    const Json report = report_of(bytes_of_all(packets));
    EXPECT_EQ(findings_of(report), "bad-check@4");
    EXPECT_EQ(report["units"][0]["events"][0]["channels"][0]["bad_packets"], 1);
}

TEST(Check_faults, packets_of_unknown_type_are_one_row)
{
    auto packets = sound_packets();
    packets.insert(packets.begin() + 4, 2, std::string(1024, 'Q'));
    const Json report = report_of(bytes_of_all(packets));
    EXPECT_EQ(findings_of(report), "unknown-type@5");
    EXPECT_EQ(report["types"]["unknown"], 2);
}

TEST(Check_faults, blocks_of_zeros_are_one_row)
{
    auto packets = sound_packets();
    packets.insert(packets.begin() + 4, 3, std::string(1024, '\0'));
    EXPECT_EQ(faults_of(packets), "zeros@5");
}

TEST(Check_faults, a_byte_too_many_shifts_the_rest)
{
    auto packets = sound_packets();
    packets[4] += "x";
    const Json report = report_of(bytes_of_all(packets));
    EXPECT_EQ(findings_of(report), "no-trailer@5 shifted@6 cut-tail@13");
    for (const Json& f : report["findings"])
        if (f["code"] == "shifted") {
            EXPECT_NE(f["text"].get<std::string>().find("byte 5121, 1 bytes into a block; 7 blocks"),
                      std::string::npos)
                << f["text"];
        }
    EXPECT_EQ(report["left_over_bytes"], 1);
}

TEST(Check_faults, a_shift_behind_strange_blocks_is_found_where_packets_go_on)
{
    auto packets = sound_packets();
    packets[4] = std::string(2500, 'Q');
    EXPECT_EQ(faults_of(packets), "no-trailer@4 unknown-type@5 shifted@7 cut-tail@14");
}

TEST(Check_faults, a_cut_tail)
{
    const Json report = report_of(bytes_of_all(sound_packets()) + std::string(1023, 'D'));
    EXPECT_EQ(findings_of(report), "cut-tail@13");
    EXPECT_EQ(report["left_over_bytes"], 1023);
}

TEST(Check_faults, an_unknown_format)
{
    auto packets = sound_packets();
    packets[2] = kit::Dt(fault_packet(3)).format(0x18);
    EXPECT_EQ(faults_of(packets), "unknown-format@3");
}

TEST(Check_faults, more_samples_than_a_packet_holds)
{
    auto packets = sound_packets();
    packets[10] = kit::Dt(fault_packet(11)).count(251);
    EXPECT_EQ(faults_of(packets), "too-many-samples@11");
}

TEST(Check_faults, samples_that_byte_46_eats)
{
    auto packets = sound_packets();
    packets[2] = kit::Dt(fault_packet(3)).bytes(24 + 400).samples(std::vector<int32_t>(100, 0x0808));
    const Json report = report_of(bytes_of_all(packets));
    EXPECT_EQ(findings_of(report), "byte-46@3");
    EXPECT_EQ(report["findings"][0]["severity"], "error");
}

TEST(Check_faults, byte_46_without_harm_is_a_note)
{
    auto packets = sound_packets();
    packets[2] = kit::Dt(fault_packet(3)).extension().flags(0).bytes(64 + 400);
    const Json report = report_of(bytes_of_all(packets));
    EXPECT_EQ(findings_of(report), "byte-46@3");
    EXPECT_EQ(report["findings"][0]["severity"], "note");
}

TEST(Check_faults, a_trailer_with_another_rate)
{
    auto packets = sound_packets();
    packets.back() = fault_tail(11).rate("50  ");
    EXPECT_EQ(faults_of(packets), "rate@12");
}

TEST(Check_faults, an_event_without_its_header_or_trailer)
{
    auto packets = sound_packets();
    packets.erase(packets.begin());
    EXPECT_EQ(faults_of(packets), "no-header@1");
    packets.pop_back();
    EXPECT_EQ(faults_of(packets), "no-header@1 no-trailer@10");
}

TEST(Check_faults, a_channel_that_begins_late_is_a_note_below_a_second)
{
    auto packets = sound_packets();
    packets.erase(packets.begin() + 1, packets.begin() + 3);
    const Json report = report_of(bytes_of_all(packets));
    EXPECT_EQ(findings_of(report), "sequence@2 late-start@2");
    EXPECT_EQ(report["findings"][1]["severity"], "error");
    EXPECT_EQ(report["metrics"][0]["percent_availability"], 80.0);

    packets = sound_packets();
    packets[0] = fault_head().rate("500 ").t_first("2004122235959500");
    packets[11] = fault_tail(11).rate("500 ");
    for (unsigned i = 1; i <= 10; ++i)
        packets[i] =
            kit::Dt(fault_packet(static_cast<int>(i) + 1)).at(0, 0, (i - 1) / 5, 200 * ((i - 1) % 5));
    const Json short_one = report_of(bytes_of_all(packets));
    EXPECT_EQ(findings_of(short_one), "late-start@2");
    EXPECT_EQ(short_one["findings"][0]["severity"], "note");
}

TEST(Check_faults, a_clock_that_lost_its_lock_is_a_note)
{
    auto packets = sound_packets();
    packets[0] = fault_head().pll_days('3');
    const Json report = report_of(bytes_of_all(packets));
    EXPECT_EQ(findings_of(report), "clock@1");
    EXPECT_EQ(report["findings"][0]["severity"], "note");
    EXPECT_EQ(report["units"][0]["clock"][0]["days_since_lock"], 3);
}

TEST(Check_faults, a_packet_that_stands_twice)
{
    auto packets = sound_packets();
    packets.insert(packets.begin() + 5, packets[4]);
    EXPECT_EQ(faults_of(packets), "duplicate@6 sequence@6 overlap@6");
}

TEST(Check_faults, names_of_the_input_that_make_trouble_are_notes)
{
    const kit::Scratch s;
    const std::string folder(140, 'f');
    s.write("ID9A2F.pkt", bytes_of_all(sound_packets()));
    s.write(folder + "/rec.pkt", bytes_of_all(sound_packets()));
    const auto all = reports(s, {"ID9A2F.pkt", folder + "/rec.pkt"});
    ASSERT_EQ(all.size(), 2u);
    EXPECT_EQ(findings_of(all[0]), "log-name");
    EXPECT_EQ(findings_of(all[1]), "long-path");
    EXPECT_EQ(run_check(s, {"ID9A2F.pkt", folder + "/rec.pkt"}).status, 0);
}

TEST(Check_faults, lists_are_bounded_and_counts_are_not)
{
    auto packets = sound_packets();
    packets.pop_back();
    for (unsigned i = 0; i < 500; ++i)
        packets.push_back(kit::Dt(fault_packet(11)).format(0x18).raw(1000, kit::big_endian(i, 4)));
    const Json report = report_of(bytes_of_all(packets));
    EXPECT_EQ(report["counts"]["unknown-format"], 500);
    EXPECT_EQ(report["counts"]["overlap"], 500);
    const auto kept = std::count_if(report["findings"].begin(), report["findings"].end(),
                                    [](const Json& f) { return f["code"] == "unknown-format"; });
    EXPECT_EQ(kept, 200);
}
