// The tables as the field knows them, row by row, and which row a sensor finds.
#include "model/record/catalogue.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

// clang-format off
const struct {
    unsigned code;
    const char *make, *model, *name;
    double freq, damp, vpu, fsa;
} Told_sensors[] = {
    {0, "-------", "-------", "", 0, 0, 0, 0},
    {1, "Optical", "", "Optical-Mechan", 0, 0, 0, 0},
    {2, "Kinemetrics", "FBA-1", "FBA-1", 0, 0, 0, 0},
    {3, "Kinemetrics", "FBA-3", "FBA-3", 0, 0, 0, 0},
    {4, "Kinemetrics", "FBA-11", "FBA-11", 0, 0, 0, 0},
    {5, "Kinemetrics", "FBA-13", "FBA-13", 0, 0, 0, 0},
    {6, "Kinemetrics", "FBA-13DH", "FBA-13DH", 0, 0, 0, 0},
    {7, "Kinemetrics", "FBA-23", "FBA-23", 0, 0, 0, 0},
    {8, "Kinemetrics", "FBA-23DH", "FBA-23DH", 0, 0, 0, 0},
    {20, "Kinemetrics", "Episensor", "ES", 0, 0, 0, 0},
    {21, "Kinemetrics", "Episensor US-U", "ES-U", 0, 0, 0, 0},
    {50, "Sprengnether", "FBX-23", "FBX-23", 0, 0, 0, 0},
    {51, "Sprengnether", "FBX-26", "FBX-26", 0, 0, 0, 0},
    {100, "Terratech", "SSA 120", "SSA 120", 0, 0, 0, 0},
    {101, "Terratech", "SSA 220", "SSA 220", 0, 0, 0, 0},
    {102, "Terratech", "SSA 320", "SSA 320", 0, 0, 0, 0},
    {150, "Wilcoxon", "731A", "731A", 0, 0, 0, 0},
    {200, "Guralp", "CMG-5", "CMG-5", 0, 0, 0, 0},
    {250, "Vexar", "AX-21/1", "AX-21/1", 900, 0.1, 2.4, 10},
    {255, "Vexar", "AX-21/3/INT", "AX-21/3/INT", 900, 0.1, 1.2, 5},
    {251, "Vexar", "AX-21/3", "AX-21/3", 900, 0.1, 2.4, 10},
    {252, "Vexar", "AX-21/BH", "AX-21/BH", 900, 0.1, 2.4, 10},
    {253, "Vexar", "BX-10/1", "BX-10/1", 1300, 0.1, 1.6, 10},
    {254, "Vexar", "BX-10/3", "BX-10/3", 1300, 0.1, 1.6, 10},
    {256, "Vexar", "AX-8800", "AX-8800", 900, 0.1, 2.4, 10},
    {900, "Accelerometer", "Other", "Unknown Accel.", 0, 0, 0, 0},
    {1001, "Kinemetrics", "SS-1", "SS-1", 0, 0, 0, 0},
    {1050, "Sprengnether", "S-3000", "S-3000", 0, 0, 0, 0},
    {1201, "Guralp", "CMG-1", "CMG-1", 0, 0, 0, 0},
    {1202, "Guralp", "CMG-3T", "CMG-3T", 0, 0, 0, 0},
    {1203, "Guralp", "CMG-3ESP", "CMG-3ESP", 0, 0, 0, 0},
    {1204, "Guralp", "CMG-40", "CMG-40", 0, 0, 0, 0},
    {1250, "Strecheisen", "STS-1", "STS-1", 0, 0, 0, 0},
    {1251, "Strecheisen", "STS-2", "STS-2", 0, 0, 0, 0},
    {1300, "Mark", "L-4", "L-4", 0, 0, 0, 0},
    {1301, "Mark", "L-22D", "L-22D", 0, 0, 0, 0},
    {1900, "Seismometer", "Other", "Unknown Seism.", 0, 0, 0, 0},
    {3000, "Pressure", "", "Pressure Snsr.", 0, 0, 0, 0},
    {3500, "Dilatometer", "", "Dilatometer", 0, 0, 0, 0},
    {4000, "Displacement", "Relative", "Rel. Displcmt.", 0, 0, 0, 0},
    {4500, "Rotational", "", "Rotatnl. Snsr.", 0, 0, 0, 0},
    {9000, "", "", "Unknown Sensor", 0, 0, 0, 0},
};

const struct {
    float factor, db;
} Told_gains[] = {
    {1.0F, 0.0F},
    {1.0F, 0.0F},
    {8.0F, 18.06F},
    {32.0F, 30.1F},
    {128.0F, 42.14F},
    {512.0F, 54.19F},
    {2048.0F, 66.23F},
    {8192.0F, 78.27F},
    {100.0F, 40.0F},
    {1.0F, 0.0F},
    {3.98F, 12.0F},
    {15.85F, 24.0F},
    {63.1F, 32.0F},
    {251.19F, 48.0F},
    {1000.0F, 60.0F},
    {1.0F, 0.0F},
};

const struct {
    unsigned code;
    const char* name;
} Told_measures[] = {
    {0, "???"},
    {1, "Seconds"},
    {2, "G"},
    {3, "Seconds&G"},
    {4, "cM/Sec/Sec"},
    {5, "cM/Sec"},
    {6, "cM"},
    {7, "Inches/Sec/Sec"},
    {8, "Inches/Sec"},
    {9, "Inches"},
    {10, "gallons"},
    {11, "mG"},
    {12, "uG"},
    {23, "Degrees/Sec/Sec"},
    {24, "Degrees/Sec"},
    {25, "Degrees"},
    {50, "counts"},
    {51, "Volts"},
    {52, "mV"},
    {60, "PSI"},
    {80, "uStrain"},
    {0, ""},
};
// clang-format on

unsigned row_of(const char* make, const char* model)
{
    return Sensor_find(make, model);
}

TEST(Sensor, has_forty_two_rows_in_the_told_order)
{
    ASSERT_EQ(std::size(Told_sensors), 42U);
    ASSERT_EQ(std::size(Sensor), 42U);
    for (size_t i = 0; i < 42; ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ(Sensor[i].code, Told_sensors[i].code);
        EXPECT_STREQ(Sensor[i].make, Told_sensors[i].make);
        EXPECT_STREQ(Sensor[i].model, Told_sensors[i].model);
        EXPECT_STREQ(Sensor[i].name, Told_sensors[i].name);
        EXPECT_EQ(Sensor[i].freq, Told_sensors[i].freq);
        EXPECT_EQ(Sensor[i].damp, Told_sensors[i].damp);
        EXPECT_EQ(Sensor[i].vpu, Told_sensors[i].vpu);
        EXPECT_EQ(Sensor[i].fsa, Told_sensors[i].fsa);
    }
}

TEST(Sensor, texts_have_room_for_thirty_fourteen_and_fifteen_characters)
{
    EXPECT_EQ(sizeof Sensor[0].make, 31U);
    EXPECT_EQ(sizeof Sensor[0].model, 15U);
    EXPECT_EQ(sizeof Sensor[0].name, 16U);
}

TEST(Sensor, keeps_the_misspelt_make_that_INI_files_use)
{
    EXPECT_STREQ(Sensor[32].make, "Strecheisen");
    EXPECT_EQ(row_of("Strecheisen", "STS-2"), 33U);
}

TEST(Sensor_find, short_models_shadow_the_longer_ones_behind_them)
{
    EXPECT_EQ(row_of("Kinemetrics", "FBA-1"), 2U);
    EXPECT_EQ(row_of("Kinemetrics", "FBA-11"), 2U);
    EXPECT_EQ(row_of("Kinemetrics", "FBA-13"), 2U);
    EXPECT_EQ(row_of("Kinemetrics", "FBA-13DH"), 2U);
    EXPECT_EQ(row_of("Kinemetrics", "FBA-3"), 3U);
    EXPECT_EQ(row_of("Kinemetrics", "FBA-23"), 7U);
    EXPECT_EQ(row_of("Kinemetrics", "FBA-23DH"), 7U);
    EXPECT_EQ(row_of("Kinemetrics", "Episensor US-U"), 9U);
}

TEST(Sensor_find, the_internal_sensor_stands_before_the_one_its_model_begins_with)
{
    EXPECT_EQ(row_of("Vexar", "AX-21/3/INT"), 19U);
    EXPECT_EQ(row_of("Vexar", "AX-21/3"), 20U);
    EXPECT_EQ(row_of("Vexar", "AX-21/1"), 18U);
    EXPECT_EQ(row_of("Vexar", "AX-21/BH"), 21U);
}

TEST(Sensor_find, an_empty_make_finds_only_the_last_row)
{
    EXPECT_EQ(row_of("", "FBA-1"), 41U);
    EXPECT_EQ(row_of("", ""), 41U);
}

TEST(Sensor_find, make_and_model_need_only_begin_with_those_of_the_row_in_any_case)
{
    EXPECT_EQ(row_of("Vexar Inc", "AX-8800 rev B"), 24U);
    EXPECT_EQ(row_of("vEXAR", "ax-8800"), 24U);
    EXPECT_EQ(row_of("Vexa", "AX-8800"), 41U);
    EXPECT_EQ(row_of("Vexar", "AX-880"), 41U);
    EXPECT_EQ(row_of(" Vexar", "AX-8800"), 41U);
}

TEST(Sensor_find, a_row_without_model_takes_every_model_of_its_make)
{
    EXPECT_EQ(row_of("Optical", "whatever"), 1U);
    EXPECT_EQ(row_of("Pressure", ""), 37U);
    EXPECT_EQ(row_of("Dilatometer", "D1"), 38U);
    EXPECT_EQ(row_of("Rotational", "R1"), 40U);
    EXPECT_EQ(row_of("Displacement", "Relative"), 39U);
    EXPECT_EQ(row_of("Displacement", ""), 41U);
}

TEST(Sensor_find, every_row_that_nothing_shadows_finds_itself)
{
    const bool shadowed[42] = {false, false, false, false, true, true, true, false, true, false, true};
    for (unsigned i = 0; i < 42; ++i) {
        if (shadowed[i]) continue;
        EXPECT_EQ(row_of(Told_sensors[i].make, Told_sensors[i].model), i);
    }
}

TEST(Gain_info, has_sixteen_pairs_and_keeps_32_dB_for_a_factor_of_63)
{
    ASSERT_EQ(std::size(Told_gains), 16U);
    ASSERT_EQ(std::size(Gain_info), 16U);
    for (size_t i = 0; i < 16; ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ(Gain_info[i].factor, Told_gains[i].factor);
        EXPECT_EQ(Gain_info[i].db, Told_gains[i].db);
    }
    EXPECT_EQ(Gain_info[12].factor, 63.1F);
    EXPECT_EQ(Gain_info[12].db, 32.0F);
}

TEST(Measures, has_twenty_two_rows_the_last_one_empty)
{
    ASSERT_EQ(std::size(Told_measures), 22U);
    ASSERT_EQ(std::size(Measures), 22U);
    EXPECT_EQ(sizeof Measures[0].name, 16U);
    for (size_t i = 0; i < 22; ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ(Measures[i].code, Told_measures[i].code);
        EXPECT_STREQ(Measures[i].name, Told_measures[i].name);
    }
}

TEST(Axis, repeats_vertical_north_east_twice)
{
    EXPECT_STREQ(Axis, "ZNEZNE");
}

TEST(FSA, lists_six_full_scale_voltages)
{
    const double told[] = {0.0, 3.75, 5.0, 10.0, 20.0, 1000.0};
    ASSERT_EQ(std::size(FSA), 6U);
    for (size_t i = 0; i < 6; ++i) EXPECT_EQ(FSA[i], told[i]);
}

TEST(Units, names_five_letters)
{
    ASSERT_EQ(std::size(Units), 5U);
    EXPECT_EQ(sizeof Units[0].name, 8U);
    const char letters[] = {' ', 'A', 'D', 'G', 'V'};
    const char* const names[] = {"Unknown", "M/S**2", "M", "G", "M/S"};
    for (size_t i = 0; i < 5; ++i) {
        EXPECT_EQ(Units[i].letter, letters[i]);
        EXPECT_STREQ(Units[i].name, names[i]);
    }
}

TEST(Bw_units, goes_from_none_to_pico)
{
    EXPECT_STREQ(Bw_units, " munp");
}

} // namespace
