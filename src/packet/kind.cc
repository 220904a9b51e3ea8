#include "packet/kind.h"

PKT code_set(const uint8_t* letters)
{
    for (uint16_t i = 0; Pkt_codes[2 * i]; ++i)
        if (letters[0] == Pkt_codes[2 * i] && letters[1] == Pkt_codes[2 * i + 1])
            return static_cast<PKT>(i + 1);
    return PKT_UNKNOWN;
}

Encoding encoding_of(uint8_t format)
{
    switch (format) {
    case 0x01:
    case 0x16:
    case 0x17: return Encoding::int16;
    case 0x00:
    case 0x32:
    case 0x33: return Encoding::int32;
    case 0x02:
    case 0x03:
    case 0xC0:
    case 0xC1: return Encoding::steim1;
    case 0xC2:
    case 0xC3: return Encoding::steim2;
    default: return Encoding::none;
    }
}
