// Runs a fuzz target over stored inputs, for builds without libFuzzer:
//     vx_fuzz_TARGET TIMES FILE_OR_FOLDER...
// Each input is run as it is, and TIMES more with a few of its bytes changed, the same ones every time. A
// finding ends the process. Last line: how often the target was run. The C library alone is used, since
// MemorySanitizer knows it.
#include "fuzz/fuzz.h"

#include <dirent.h>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace {

unsigned long Runs = 0;

std::vector<uint8_t> content(const std::string& path)
{
    FILE* file = fopen(path.c_str(), "rb");
    fuzz::demand(file != nullptr, path.c_str());
    std::vector<uint8_t> bytes;
    for (int c = getc(file); c != EOF; c = getc(file)) bytes.push_back(static_cast<uint8_t>(c));
    fclose(file);
    return bytes;
}

/// The files of a folder in order; a file is itself.
std::vector<std::string> files_of(const std::string& path)
{
    DIR* folder = opendir(path.c_str());
    if (!folder) return {path};
    std::vector<std::string> files;
    while (const dirent* entry = readdir(folder))
        if (entry->d_name[0] != '.') files.push_back(path + "/" + entry->d_name);
    closedir(folder);
    std::sort(files.begin(), files.end());
    return files;
}

/// Runs one input from a block of its own, so that a read behind its end is noticed.
void run(const std::vector<uint8_t>& bytes)
{
    const auto own = std::make_unique<uint8_t[]>(bytes.size());
    std::copy(bytes.begin(), bytes.end(), own.get());
    LLVMFuzzerTestOneInput(own.get(), bytes.size());
    ++Runs;
}

std::vector<uint8_t> changed(std::vector<uint8_t> bytes, std::minstd_rand& random)
{
    static constexpr uint8_t telling[] = {0x00, 0x01, 0x7F, 0x80, 0x99, 0xFF, ' ', '0', '-', '='};
    if (bytes.empty()) return bytes;
    for (unsigned n = 1 + random() % 8; n > 0; --n) {
        uint8_t& byte = bytes[random() % bytes.size()];
        byte = random() % 2 ? static_cast<uint8_t>(random() >> 8) : telling[random() % sizeof telling];
    }
    return bytes;
}

} // namespace

int main(int argc, char** argv)
{
    std::minstd_rand random(1);
    const int times = argc > 1 ? atoi(argv[1]) : 0; // NOLINT(cert-err34-c): what is no number is 0
    for (int i = 2; i < argc; ++i) {
        for (const std::string& path : files_of(argv[i])) {
            const std::vector<uint8_t> bytes = content(path);
            fprintf(stderr, "\r%s", path.c_str()); // the last one shown is the one that was found
            run(bytes);
            for (int t = 0; t < times; ++t) run(changed(bytes, random));
        }
    }
    fuzz::demand(Runs > 0, "there are inputs");
    fprintf(stderr, "\nDone %lu runs\n", Runs);
    return 0;
}
