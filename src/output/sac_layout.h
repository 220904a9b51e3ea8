// The header of a SAC file (header version 6). In the file its numbers are big-endian; here they are in host
// order. The samples follow it in the file, as big-endian IEEE floats.
#pragma once

#include <cstddef>
#include <cstdint>

struct SACHDR_T {
    // 70 floats
    float DELTA, DEPMIN, DEPMAX, SCALE, ODELTA;
    float B, E, O, A, INTERNAL1;
    float T[10];
    float F, RESP[10];
    float STLA, STLO, STEL, STDP;
    float EVLA, EVLO, EVEL, EVDP, MAG;
    float USER[10];
    float DIST, AZ, BAZ, GCARC, INTERNAL2, INTERNAL3;
    float DEPMEN, CMPAZ, CMPINC;
    float XMINIMUM, XMAXIMUM, YMINIMUM, YMAXIMUM;
    float UNUSED_F[7];
    // 15 integers
    int32_t NZYEAR, NZJDAY, NZHOUR, NZMIN, NZSEC, NZMSEC;
    int32_t NVHDR, NORID, NEVID, NPTS;
    int32_t INTERNAL4, NWFID, NXSIZE, NYSIZE, UNUSED_I;
    // 20 enumerated values
    int32_t IFTYPE, IDEP, IZTYPE, UNUSED_E, IINST, ISTREG, IEVREG, IEVTYP, IQUAL, ISYNTH;
    int32_t IMAGTYP, IMAGSRC, UNUSED_E2[8];
    // 5 logicals
    int32_t LEVEN, LPSPOL, LOVROK, LCALDA, UNUSED_L;
    // 23 texts
    char KSTNM[8], KEVNM[16];
    char KHOLE[8], KO[8], KA[8], KT[10][8], KF[8], KUSER[3][8];
    char KCMPNM[8], KNETWK[8], KDATRD[8], KINST[8];
};

inline constexpr size_t Sac_header_len = 632;
inline constexpr size_t Sac_words = 110;  ///< numbers at the start of the header; the rest is text
inline constexpr int32_t Sac_version = 6; ///< NVHDR; readers also detect the byte order by it

// SAC's values for fields that are undefined.
inline constexpr float Undefined_f = -12345.0F;
inline constexpr int32_t Undefined_i = -12345;
inline constexpr char Undefined_k[] = "-12345          "; ///< as wide as the widest text

// Enumerated values of the SAC format.
inline constexpr int32_t ITIME = 1, IUNKN = 5, IGOOD = 45, IRLDTA = 49;

static_assert(sizeof(SACHDR_T) == Sac_header_len);
static_assert(offsetof(SACHDR_T, O) == 4 * 7 && offsetof(SACHDR_T, DEPMEN) == 4 * 56);
static_assert(offsetof(SACHDR_T, NZYEAR) == 4 * 70 && offsetof(SACHDR_T, NVHDR) == 4 * 76);
static_assert(offsetof(SACHDR_T, NPTS) == 4 * 79 && offsetof(SACHDR_T, IFTYPE) == 4 * 85);
static_assert(offsetof(SACHDR_T, IEVTYP) == 4 * 92 && offsetof(SACHDR_T, LEVEN) == 4 * 105);
static_assert(offsetof(SACHDR_T, KSTNM) == 440 && offsetof(SACHDR_T, KCMPNM) == 600);
static_assert(offsetof(SACHDR_T, KINST) == 624);
