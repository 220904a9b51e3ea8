// Tables of sensors, gains, measures and letters, and the search for a sensor.
#pragma once

#include <cstdint>

struct SENSOR {
    uint16_t code;
    char make[31];
    char model[15];
    char name[16];
    double freq; ///< natural frequency, Hz
    double damp; ///< damping
    double vpu;  ///< volts per unit
    double fsa;  ///< full-scale voltage
};
inline constexpr uint16_t Sensor_cnt = 42;
inline constexpr uint16_t Sensor_unknown = 41; ///< the row that matches every sensor
extern const SENSOR Sensor[Sensor_cnt];

struct GAIN {
    float factor;
    float db;
};
inline constexpr int Gain_cnt = 16;
extern const GAIN Gain_info[Gain_cnt];

struct MEASURE {
    uint16_t code;
    char name[16];
};
inline constexpr int Measure_cnt = 22;
extern const MEASURE Measures[Measure_cnt];

inline constexpr char Axis[] = "ZNEZNE"; ///< default orientation letters, by channel (from 0) mod 6

struct UNITS {
    char letter;
    char name[8];
};
// carried: letter-tables
extern const double FSA[6];    ///< full-scale voltages
extern const UNITS Units[5];   ///< sensor unit letters
extern const char Bw_units[6]; ///< bit weight prefixes none, milli, micro, nano, pico

/// The first row whose make and model the texts begin with, in any case. The order of the rows decides:
/// "FBA-1" comes before "FBA-13" and so is found for both. The last row fits every sensor.
uint16_t Sensor_find(const char* make, const char* model);
