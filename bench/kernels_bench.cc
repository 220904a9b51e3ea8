// Measures single steps that run for every packet or sample: decoders, sample conversion with statistics, the
// summary line, the progress line. The input is a synthetic signal in Steim frames.
#include "driver/base/fatal.h"
#include "driver/base/settings.h"
#include "mkrec/steim_encode.h"
#include "model/record/records.h"
#include "output/log.h"
#include "output/sample_math.h"
#include "packet/loop/progress.h"
#include "packet/samples.h"

#include <benchmark/benchmark.h>

#include <array>
#include <iostream>
#include <vector>

namespace {

/// A random walk whose steps fill up to `bits` bits.
std::vector<int32_t> walk(int bits, int32_t start)
{
    std::vector<int32_t> samples(2000);
    uint32_t random = 12345;
    for (int32_t& sample : samples) {
        random = random * 1664525 + 1013904223;
        start += static_cast<int32_t>(random) >> (32 - bits);
        sample = start;
    }
    return samples;
}

uint8_t bcd_byte(int value)
{
    return static_cast<uint8_t>(value / 10 << 4 | value % 10);
}

struct Made {
    std::array<uint8_t, Packet_size> bytes{};
    int samples;

    Made(mkrec::SteimDecoding level, int bits)
    {
        const auto x = walk(bits, 100000);
        samples = mkrec::steim_encode(level, x.data(), static_cast<int>(x.size()), x[0], &bytes[DT::Frames])
                      .samples;
        bytes[HDR::Type.at] = 'D';
        bytes[HDR::Type.at + 1] = 'T';
        bytes[EVT::Samples.at] = bcd_byte(samples / 100);
        bytes[EVT::Samples.at + 1] = bcd_byte(samples % 100);
    }
    PACKET packet() const { return PACKET(bytes.data()); }
};

using DecodeFunction = Decoded (*)(const PACKET&, uint32_t&, DATA_BUF&);

DATA_BUF Data_buf;

template <DecodeFunction decode, mkrec::SteimDecoding level>
void steim(benchmark::State& state)
{
    const Made made(level, static_cast<int>(state.range(0)));
    const PACKET packet = made.packet();
    bool sound = true;
    for (auto _ : state) {
        uint32_t last = 0;
        sound &= decode(packet, last, Data_buf).sound;
        benchmark::DoNotOptimize(Data_buf.sample[0]);
    }
    if (!sound) state.SkipWithError("the packet failed its check");
    state.SetItemsProcessed(state.iterations() * made.samples);
}
BENCHMARK(steim<Buf_c0, mkrec::SteimDecoding::level1>)->Arg(7)->Arg(14);
BENCHMARK(steim<Buf_c0_by_word, mkrec::SteimDecoding::level1>)->Arg(7)->Arg(14);
BENCHMARK(steim<Buf_c2, mkrec::SteimDecoding::level2>)->Arg(4)->Arg(8)->Arg(14);
BENCHMARK(steim<Buf_c2_by_word, mkrec::SteimDecoding::level2>)->Arg(4)->Arg(8)->Arg(14);

template <void (*decode)(const PACKET&, DATA_BUF&), int count>
void plain(benchmark::State& state)
{
    std::array<uint8_t, Packet_size> bytes{};
<<<<<<< HEAD
    bytes[EVT::Samples.at] = bcd_byte(count / 100);
    CHN_T chn;
=======
    bytes[20] = bcd_byte(count / 100);
    const PACKET packet(bytes.data());
>>>>>>> w-port
    for (auto _ : state) {
        decode(packet, Data_buf);
        benchmark::DoNotOptimize(Data_buf.sample[0]);
    }
    state.SetItemsProcessed(state.iterations() * count);
}
BENCHMARK(plain<Buf_16, 500>);
BENCHMARK(plain<Buf_32, 200>);

/// Appends samples around an offset to a trace. Far from zero the sum of squares soon exceeds 2^53, where
/// doubles no longer hold every integer.
template <void (*add)(TraceStatistics&, uint32_t, const int32_t*, uint32_t, char*)>
void into_trace(benchmark::State& state)
{
    const auto x = walk(10, static_cast<int32_t>(state.range(0)));
    std::array<char, 4 * 700> out;
    TraceStatistics stats;
    for (auto _ : state) {
        stats.sum = 0.0;
        stats.sq_sum = state.range(0) ? 3e17 : 0.0; // after many samples far from zero, or at the start
        add(stats, 0, x.data(), 700, out.data());
        benchmark::DoNotOptimize(stats.sum);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * 700);
}
BENCHMARK(into_trace<add_samples>)->Arg(0)->Arg(8000000);
BENCHMARK(into_trace<add_samples_one_by_one>)->Arg(0)->Arg(8000000);

void summary_line(benchmark::State& state)
{
    const Made made(mkrec::SteimDecoding::level2, 8);
    OUT_FILE log;
    if (!out_open(log, "/dev/null", OUT_MODE::append, log_lost)) state.SkipWithError("no /dev/null");
    const PACKET packet = made.packet();
    for (auto _ : state) log_head(log, packet, ' ');
    out_close(log);
}
BENCHMARK(summary_line);

void progress_line(benchmark::State& state)
{
    Verbose = true;
    UNIT_T unit;
    CHN_T chn;
    for (auto _ : state) Progress_data(unit, chn);
}
BENCHMARK(progress_line);

} // namespace

/// Reports on standard error, because the progress line is printed on standard output.
int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (!freopen("/dev/null", "w", stdout)) return 1;
    benchmark::ConsoleReporter report;
    report.SetOutputStream(&std::cerr);
    report.SetErrorStream(&std::cerr);
    benchmark::RunSpecifiedBenchmarks(&report);
    return 0;
}
