#include "bench/support/pool.hpp"
#include "codecs/amrwb/amrwb_isf.hpp"

#include <benchmark/benchmark.h>

#include <algorithm>

namespace {

using namespace zsp::amrwb;
using Isf = std::array<std::int16_t, kIsfOrder>;

/// Vectors as the codec has them: the mean and some noise.
std::vector<Isf> frequencies()
{
    zsp::bench::WordPool pool(1, 150);
    std::vector<Isf> all(512);
    for (Isf& isf : all) {
        const auto noise = pool.next(kIsfOrder);
        for (std::size_t i = 0; i < kIsfOrder; ++i)
            isf[i] = static_cast<std::int16_t>(kNoiseMean[i] + noise[i]);
    }
    return all;
}

std::vector<Isf> pairs()
{
    std::vector<Isf> all = frequencies();
    for (Isf& isf : all)
        isfToIspScalar(isf, isf);
    return all;
}

template <typename Kernel>
void run(benchmark::State& state, const std::vector<Isf>& inputs, Kernel kernel)
{
    Isf result{};
    std::size_t next = 0;
    for (auto _ : state) {
        kernel(inputs[next], result);
        benchmark::DoNotOptimize(result.data());
        benchmark::ClobberMemory();
        next = (next + 1) % inputs.size();
    }
}

template <NoiseIndices (*quantise)(InIsf) noexcept>
void quantiseAndDecode(InIsf isf, OutIsf quantised) noexcept
{
    decodeNoise(quantise(isf), quantised);
}

BENCHMARK_CAPTURE(run, isfToIsp / definition / 16, frequencies(), isfToIspScalar);
BENCHMARK_CAPTURE(run, isfToIsp / avx2 / 16, frequencies(), isfToIspAvx2);
BENCHMARK_CAPTURE(run, ispToIsf / definition / 16, pairs(), ispToIsfScalar);
BENCHMARK_CAPTURE(run, ispToIsf / avx2 / 16, pairs(), ispToIsfAvx2);
BENCHMARK_CAPTURE(run, isfQuantDtx / definition, frequencies(),
                  quantiseAndDecode<quantiseNoiseScalar>);
BENCHMARK_CAPTURE(run, isfQuantDtx / avx2, frequencies(), quantiseAndDecode<quantiseNoiseAvx2>);

} // namespace
