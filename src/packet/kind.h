// Packet type numbers and letters, and the data formats of DT packets.
#pragma once

#include <cstdint>

enum PKT : uint16_t {
    PKT_UNKNOWN = 0,
    PKT_EH, ///< event header
    PKT_ET, ///< event trailer
    PKT_DT, ///< data
    PKT_SH, ///< state of health
    PKT_SC, ///< station and channels
    PKT_DS, ///< data streams
    PKT_CD, ///< calibration
    PKT_OM, ///< operating mode
    PKT_AD, ///< auxiliary data
    PKT_DR, ///< directory of a recording medium
    PKT_NH, ///< network header
    PKT_NT, ///< network trailer
    PKT_FD, ///< filter description
};

/// The letters of all types; a type's number is its place, counted from 1.
inline constexpr char Pkt_codes[] = "EHETDTSHSCDSCDOMADDRNHNTFD";

/// The type of a packet that begins with these two letters, PKT_UNKNOWN when they are not in Pkt_codes.
PKT code_set(const uint8_t* letters);

/// How the samples of a DT packet are encoded.
enum class Encoding : uint8_t { none, int16, int32, steim1, steim2 };

/// The encoding that a data format byte stands for; none for a format the program does not know.
Encoding encoding_of(uint8_t format);

inline constexpr uint8_t Format_16_bit = 0x16; ///< the only format for which a channel's word_bits is 16
