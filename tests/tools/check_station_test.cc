// What vx_check says of station files.
#include "check/station_keys.h"
#include "tools/check_run.h"

#include <regex>
#include <set>

using namespace check_test;

namespace {

/// "ini-key: line 2: ..." of each finding about the station file, in its order.
std::string station_findings(const std::string& ini)
{
    const kit::Scratch s;
    s.write("rec.pkt", kit::Eh().event(12).usual().pll_days('0') + kit::Dt().event(12).seq(1).samples({1}) +
                           kit::Et().event(12).usual().seq(2));
    s.write("my.ini", ini);
    std::string all;
    const Json report = reports(s, {"--ini", "my.ini", "rec.pkt"}).at(0);
    for (const Json& f : report["findings"])
        if (f["code"].get<std::string>().starts_with("ini-"))
            all += f["code"].get<std::string>() + ": " + f["text"].get<std::string>() + "\n";
    return all;
}

std::set<std::string> keys_in(const std::string& source)
{
    const std::string text = kit::read_file(std::string(VX_MODEL_SOURCES "/") + source);
    const std::regex row(R"re(\n    \{"([A-Za-z]+)", )re");
    std::set<std::string> keys;
    for (std::sregex_iterator i(text.begin(), text.end(), row), end; i != end; ++i) keys.insert((*i)[1]);
    return keys;
}

template <size_t n>
std::set<std::string> names_of(const check::StationKey (&keys)[n])
{
    std::set<std::string> names;
    for (const check::StationKey& key : keys) names.insert(std::string(key.name));
    return names;
}

} // namespace

TEST(Check_station, knows_the_keys_that_the_converter_knows)
{
    EXPECT_EQ(names_of(check::Unit_keys), keys_in("unit_ini.cc"));
    EXPECT_EQ(names_of(check::Channel_keys), keys_in("chn_ini.cc"));
}

TEST(Check_station, a_good_file_is_not_mentioned)
{
    EXPECT_EQ(station_findings(
                  "; stations\n[9A2F]  ; the first\nStation = ASPEN ; name\nLatitude=46.5\nAltitude = -3\n"
                  "Ch1Azm = 12 ; degrees\nch02SnsModel = CMG-3T\nChABand = H\n\n"),
              "");
}

TEST(Check_station, unknown_keys_have_the_nearest_known_one)
{
    EXPECT_EQ(station_findings("[9A2F]\nLattitude = 4\nCh1Azimut = 3\n Station = A\n"),
              "ini-key: line 2: 'Lattitude' is not known; the nearest known key is Latitude\n"
              "ini-key: line 3: 'Ch1Azimut' is not known; the nearest known key is Azm\n"
              "ini-key: line 4: a blank before 'Station' hides it\n");
}

TEST(Check_station, values_that_do_not_convert_or_are_cut)
{
    EXPECT_EQ(station_findings("[9A2F]\nLatitude = north\nCh1Azm = 12.5\nStation = LONGNAME\nCh1Band = BH\n"),
              "ini-value: line 2: 'north' of Latitude is no number\n"
              "ini-value: line 3: of '12.5' for Azm only '12' is used\n"
              "ini-cut: line 4: 'LONGNAME' is cut to 5 characters\n"
              "ini-cut: line 5: 'BH' is cut to 1 character\n");
    EXPECT_EQ(station_findings("[9A2F]\nCosGeology = rock ;" + std::string(100, 'x') + "\n"),
              "ini-cut: line 2: the converter takes no more than 99 of its 119 characters for one line\n");
}

TEST(Check_station, heads_that_are_hidden_or_repeated)
{
    EXPECT_EQ(station_findings("\xEF\xBB\xBF[9A2F]\nStation = A\n"),
              "ini-bom: line 1: a byte order mark, which hides what the line says\n"
              "ini-hidden: line 1: '\xEF\xBB\xBF[9A2F]' begins no section: blanks or a mark hide it\n"
              "ini-no-section: the recorder has no section in the station file\n");
    EXPECT_EQ(station_findings("  [9A2F]\n"),
              "ini-hidden: line 1: '[9A2F]' begins no section: blanks or a mark hide it\n"
              "ini-no-section: the recorder has no section in the station file\n");
    EXPECT_EQ(station_findings("[9A2F]\n[9A2F]\nNonsense = 1\n"),
              "ini-repeated: line 2: the section stands above already, and only that one is used\n");
}

TEST(Check_station, recorders_without_a_section_and_sections_without_a_recorder_are_notes)
{
    EXPECT_EQ(station_findings("[9A30]\nStation = B\n"),
              "ini-no-section: the recorder has no section in the station file\n"
              "ini-unused: the recording has no packets of this recorder\n");
    const kit::Scratch s;
    s.write("rec.pkt", kit::Eh().event(12).usual() + kit::Et().event(12).usual().seq(1));
    s.write("vxu.ini", "[9A30]\nStation = B\n"); // the one that vx_sac takes
    const kit::Outcome run = run_check(s, {"rec.pkt"});
    EXPECT_EQ(run.status, 0);
    EXPECT_NE(run.out.find("ini-unused, 1 note: "), std::string::npos) << run.out;
}

TEST(Check_station, a_file_that_is_named_and_absent_is_told)
{
    const kit::Scratch s;
    s.write("rec.pkt", kit::Eh().event(12).usual().packet());
    const kit::Outcome run = run_check(s, {"--ini", "absent.ini", "rec.pkt"});
    EXPECT_EQ(run.status, 3);
    EXPECT_NE(run.err.find("absent.ini"), std::string::npos) << run.err;
}
