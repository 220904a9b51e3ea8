// A bare peer: reads 1024-byte miniSEED records with libmseed, decodes them and writes each channel's samples
// as big-endian floats. It makes no log, no statistics and no headers, so it measures decoding and writing
// alone.
#include <libmseed.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

static void write_samples(FILE* out, const MSRecord* record)
{
    static std::vector<uint32_t> words;
    const auto* samples = static_cast<const int32_t*>(record->datasamples);
    const auto count = static_cast<size_t>(record->numsamples);
    words.resize(count);
    for (size_t i = 0; i < count; ++i) {
        const float value = static_cast<float>(samples[i]);
        uint32_t word;
        memcpy(&word, &value, sizeof word);
        words[i] = __builtin_bswap32(word);
    }
    fwrite(words.data(), sizeof(uint32_t), count, out);
}

int main(int argc, char** argv)
{
    if (argc != 3) {
        fprintf(stderr, "usage: mseed_loop IN.mseed OUT_DIRECTORY\n");
        return 2;
    }
    MSRecord* record = nullptr;
    FILE* out = nullptr;
    std::string open_channel;
    int files = 0;
    while (ms_readmsr(&record, argv[1], 1024, nullptr, nullptr, 1, 1, 0) == MS_NOERROR) {
        char channel[64];
        msr_srcname(record, channel, 0);
        if (open_channel != channel) {
            if (out) fclose(out);
            open_channel = channel;
            out = fopen((std::string(argv[2]) + "/" + std::to_string(files++) + ".bin").c_str(), "wb");
            if (!out) return 1;
        }
        write_samples(out, record);
    }
    ms_readmsr(&record, nullptr, 0, nullptr, nullptr, 0, 0, 0);
    if (!out || fclose(out) != 0) return 1;
    return 0;
}
