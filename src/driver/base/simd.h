// VX_WIDE marks loops over samples. On x86 they are compiled twice, with and without AVX2, and the processor
// decides at program start which copy runs. Both give the same bits: the loops use integers, and doubles in a
// fixed order without fused operations.
#pragma once

#if defined(__x86_64__) && defined(__linux__) && !defined(__SANITIZE_ADDRESS__) &&                           \
    !defined(__SANITIZE_THREAD__) && !defined(__clang__)
#define VX_WIDE __attribute__((target_clones("avx2", "default")))
#else
#define VX_WIDE
#endif
