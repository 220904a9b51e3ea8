// Loops over samples are compiled twice on x86, for plain and for wide vector units; the host picks one when
// the program starts. Integers and single operations only: both give the same bits.
#pragma once

#if defined(__x86_64__) && defined(__linux__) && !defined(__SANITIZE_ADDRESS__) &&                           \
    !defined(__SANITIZE_THREAD__) && !defined(__clang__)
#define VX_WIDE __attribute__((target_clones("avx2", "default")))
#else
#define VX_WIDE
#endif
