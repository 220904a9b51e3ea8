// The lower limit of the time: reads the input and writes files of given sizes, in large pieces, and does
// nothing else. The sizes come on standard input, one per line. It reads and writes in turn.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <fcntl.h>
#include <string>
#include <unistd.h>
#include <vector>

static char Piece[256 * 1024];

static bool read_up_to(int in, uint64_t& done, uint64_t goal)
{
    while (done < goal) {
        const ssize_t n = read(in, Piece, sizeof Piece);
        if (n < 0) return false;
        if (n == 0) return true;
        done += static_cast<uint64_t>(n);
    }
    return true;
}

int main(int argc, char** argv)
{
    if (argc != 3) {
        fprintf(stderr, "usage: copy_loop IN OUT_DIRECTORY <SIZES\n");
        return 2;
    }
    std::vector<uint64_t> sizes;
    uint64_t total = 0;
    for (unsigned long long size; scanf("%llu", &size) == 1; total += size) sizes.push_back(size);
    const int in = open(argv[1], O_RDONLY);
    if (in < 0 || total == 0) return 1;
    const auto length = static_cast<uint64_t>(lseek(in, 0, SEEK_END));
    lseek(in, 0, SEEK_SET);

    uint64_t read_bytes = 0;
    uint64_t written = 0;
    for (size_t i = 0; i < sizes.size(); ++i) {
        const std::string name = std::string(argv[2]) + "/" + std::to_string(i) + ".bin";
        const int out = open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL, 0666);
        if (out < 0) return 1;
        for (uint64_t left = sizes[i]; left > 0;) {
            const auto part = static_cast<uint64_t>(static_cast<double>(written) /
                                                    static_cast<double>(total) * static_cast<double>(length));
            if (!read_up_to(in, read_bytes, part)) return 1;
            const size_t n = std::min<uint64_t>(left, 64 * 1024);
            if (write(out, Piece, n) != static_cast<ssize_t>(n)) return 1;
            left -= n;
            written += n;
        }
        if (close(out) != 0) return 1;
    }
    return read_up_to(in, read_bytes, length) ? 0 : 1;
}
