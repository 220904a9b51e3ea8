// The tables of sensors, gains, measures and letters, and the search for a sensor.
#include "model/record/catalogue.h"

#include <cstring>
#include <strings.h>

// clang-format off
// kept: sensor-order. The first row that fits is taken, so "FBA-1" is found for "FBA-11" to "FBA-13DH", too,
// "FBA-23" for "FBA-23DH", and "Episensor" for "Episensor US-U". "AX-21/3/INT" comes before "AX-21/3".
const SENSOR Sensor[Sensor_cnt] = {
    //code  make             model             name               freq  damp  vpu  fsa
    {   0, "-------",       "-------",        "",                    0, 0.0, 0.0,  0},
    {   1, "Optical",       "",               "Optical-Mechan",      0, 0.0, 0.0,  0},
    {   2, "Kinemetrics",   "FBA-1",          "FBA-1",               0, 0.0, 0.0,  0},
    {   3, "Kinemetrics",   "FBA-3",          "FBA-3",               0, 0.0, 0.0,  0},
    {   4, "Kinemetrics",   "FBA-11",         "FBA-11",              0, 0.0, 0.0,  0},
    {   5, "Kinemetrics",   "FBA-13",         "FBA-13",              0, 0.0, 0.0,  0},
    {   6, "Kinemetrics",   "FBA-13DH",       "FBA-13DH",            0, 0.0, 0.0,  0},
    {   7, "Kinemetrics",   "FBA-23",         "FBA-23",              0, 0.0, 0.0,  0},
    {   8, "Kinemetrics",   "FBA-23DH",       "FBA-23DH",            0, 0.0, 0.0,  0},
    {  20, "Kinemetrics",   "Episensor",      "ES",                  0, 0.0, 0.0,  0},
    {  21, "Kinemetrics",   "Episensor US-U", "ES-U",                0, 0.0, 0.0,  0},
    {  50, "Sprengnether",  "FBX-23",         "FBX-23",              0, 0.0, 0.0,  0},
    {  51, "Sprengnether",  "FBX-26",         "FBX-26",              0, 0.0, 0.0,  0},
    { 100, "Terratech",     "SSA 120",        "SSA 120",             0, 0.0, 0.0,  0},
    { 101, "Terratech",     "SSA 220",        "SSA 220",             0, 0.0, 0.0,  0},
    { 102, "Terratech",     "SSA 320",        "SSA 320",             0, 0.0, 0.0,  0},
    { 150, "Wilcoxon",      "731A",           "731A",                0, 0.0, 0.0,  0},
    { 200, "Guralp",        "CMG-5",          "CMG-5",               0, 0.0, 0.0,  0},
    { 250, "Vexar",         "AX-21/1",        "AX-21/1",           900, 0.1, 2.4, 10},
    { 255, "Vexar",         "AX-21/3/INT",    "AX-21/3/INT",       900, 0.1, 1.2,  5},
    { 251, "Vexar",         "AX-21/3",        "AX-21/3",           900, 0.1, 2.4, 10},
    { 252, "Vexar",         "AX-21/BH",       "AX-21/BH",          900, 0.1, 2.4, 10},
    { 253, "Vexar",         "BX-10/1",        "BX-10/1",          1300, 0.1, 1.6, 10},
    { 254, "Vexar",         "BX-10/3",        "BX-10/3",          1300, 0.1, 1.6, 10},
    { 256, "Vexar",         "AX-8800",        "AX-8800",           900, 0.1, 2.4, 10},
    { 900, "Accelerometer", "Other",          "Unknown Accel.",      0, 0.0, 0.0,  0},
    {1001, "Kinemetrics",   "SS-1",           "SS-1",                0, 0.0, 0.0,  0},
    {1050, "Sprengnether",  "S-3000",         "S-3000",              0, 0.0, 0.0,  0},
    {1201, "Guralp",        "CMG-1",          "CMG-1",               0, 0.0, 0.0,  0},
    {1202, "Guralp",        "CMG-3T",         "CMG-3T",              0, 0.0, 0.0,  0},
    {1203, "Guralp",        "CMG-3ESP",       "CMG-3ESP",            0, 0.0, 0.0,  0},
    {1204, "Guralp",        "CMG-40",         "CMG-40",              0, 0.0, 0.0,  0},
    {1250, "Strecheisen",   "STS-1",          "STS-1",               0, 0.0, 0.0,  0}, // kept: strecheisen.
    {1251, "Strecheisen",   "STS-2",          "STS-2",               0, 0.0, 0.0,  0}, // INI files spell it so.
    {1300, "Mark",          "L-4",            "L-4",                 0, 0.0, 0.0,  0},
    {1301, "Mark",          "L-22D",          "L-22D",               0, 0.0, 0.0,  0},
    {1900, "Seismometer",   "Other",          "Unknown Seism.",      0, 0.0, 0.0,  0},
    {3000, "Pressure",      "",               "Pressure Snsr.",      0, 0.0, 0.0,  0},
    {3500, "Dilatometer",   "",               "Dilatometer",         0, 0.0, 0.0,  0},
    {4000, "Displacement",  "Relative",       "Rel. Displcmt.",      0, 0.0, 0.0,  0},
    {4500, "Rotational",    "",               "Rotatnl. Snsr.",      0, 0.0, 0.0,  0},
    {9000, "",              "",               "Unknown Sensor",      0, 0.0, 0.0,  0},
};

const GAIN Gain_info[Gain_cnt] = {
    {1.0F, 0.0F},      {1.0F, 0.0F},      {8.0F, 18.06F},    {32.0F, 30.1F},
    {128.0F, 42.14F},  {512.0F, 54.19F},  {2048.0F, 66.23F}, {8192.0F, 78.27F},
    {100.0F, 40.0F},   {1.0F, 0.0F},      {3.98F, 12.0F},    {15.85F, 24.0F},
    {63.1F, 32.0F}, // kept: gain-12. A factor of 63.1 is 36 dB.
    {251.19F, 48.0F},  {1000.0F, 60.0F},  {1.0F, 0.0F},
};

const MEASURE Measures[Measure_cnt] = {
    {0, "???"},             {1, "Seconds"},      {2, "G"},           {3, "Seconds&G"},
    {4, "cM/Sec/Sec"},      {5, "cM/Sec"},       {6, "cM"},          {7, "Inches/Sec/Sec"},
    {8, "Inches/Sec"},      {9, "Inches"},       {10, "gallons"},    {11, "mG"},
    {12, "uG"},             {23, "Degrees/Sec/Sec"}, {24, "Degrees/Sec"}, {25, "Degrees"},
    {50, "counts"},         {51, "Volts"},       {52, "mV"},         {60, "PSI"},
    {80, "uStrain"},        {0, ""},
};
// clang-format on

const double FSA[6] = {0.0, 3.75, 5.0, 10.0, 20.0, 1000.0};
const UNITS Units[5] = {{' ', "Unknown"}, {'A', "M/S**2"}, {'D', "M"}, {'G', "G"}, {'V', "M/S"}};
const char Bw_units[6] = " munp";

/// True when `text` begins with all of `start`, in any case.
static bool begins_with(const char* text, const char* start)
{
    return strncasecmp(text, start, strlen(start)) == 0;
}

uint16_t Sensor_find(const char* make, const char* model)
{
    uint16_t row = 0;
    // The last row fits any sensor.
    while (!(begins_with(make, Sensor[row].make) && begins_with(model, Sensor[row].model))) ++row;
    return row;
}
