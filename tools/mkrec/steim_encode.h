// Encodes samples as the fifteen Steim-1 or Steim-2 frames of a data packet.
#pragma once

#include "packet/layout.h"

#include <cstdint>

namespace mkrec {

enum class SteimLevel : uint8_t { level1 = 1, level2 = 2 };

inline constexpr int Steim_frames = DT::Frame_cnt;
inline constexpr int Steim_frame_len = DT::Frame_len;
inline constexpr int Steim_len = Steim_frames * Steim_frame_len;

/// Data words of the fifteen frames, and the most samples that they can hold.
inline constexpr int Steim_words = Steim_frames * (DT::Frame_words - 1) - 2; // less X0 and Xn
inline constexpr int Steim1_most = Steim_words * 4;
inline constexpr int Steim2_most = Steim_words * 7;

struct SteimFill {
    int samples;   ///< how many of the samples offered are in the frames
    int frames;    ///< how many frames hold data; the rest is zero
    bool too_wide; ///< the next sample cannot be encoded: its difference needs more than 30 bits (level 2)
};

/// Packs as many of n samples as the frames hold. The first difference is taken to `previous`, the last
/// sample of the packet before. Samples that run out leave the last frames empty, so offer Steim1_most or
/// Steim2_most of them while there are more to come. Writes Steim_len bytes; with no sample all zero.
SteimFill steim_encode(SteimLevel level, const int32_t* x, int n, int32_t previous, uint8_t* frames);

} // namespace mkrec
