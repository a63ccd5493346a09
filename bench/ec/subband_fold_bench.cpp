// The filter bank's two loops over its window: 256 taps, 64 points.

#include "bench/support/pool.hpp"
#include "ec/subband_fold.hpp"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <span>
#include <vector>

namespace {

template <typename Sample, typename Folded>
using Fold = void (*)(std::span<const Sample>, std::span<const Sample>, std::span<Folded>) noexcept;

template <typename Sample, typename Folded, Fold<Sample, Folded> kernel>
void fold(benchmark::State& state)
{
    zsp::bench::WordPool pool(1);
    const auto words = pool.next(512);
    const std::vector<Sample> delay(words.begin(), words.begin() + 256);
    const std::vector<Sample> window(words.begin() + 256, words.end());
    std::vector<Folded> block(64);
    for (auto _ : state) {
        kernel(delay, window, block);
        benchmark::ClobberMemory();
    }
}

template <typename Sample, typename Folded>
using OverlapAdd = void (*)(std::span<const Folded>, std::span<const Sample>,
                            std::span<Sample>) noexcept;

template <typename Sample, typename Folded, OverlapAdd<Sample, Folded> kernel>
void overlapAdd(benchmark::State& state)
{
    zsp::bench::WordPool pool(1);
    const auto words = pool.next(512);
    const std::vector<Folded> time(words.begin(), words.begin() + 64);
    const std::vector<Sample> window(words.begin() + 256, words.end());
    std::vector<Sample> delay(256);
    for (auto _ : state) {
        kernel(time, window, delay);
        benchmark::ClobberMemory();
    }
}

using zsp::ec::foldAvx2, zsp::ec::foldScalar;
using zsp::ec::overlapAddAvx2, zsp::ec::overlapAddScalar;
using Word = std::int16_t;
using Long = std::int32_t;

BENCHMARK(fold<float, float, foldScalar>)->Name("fold_32f/definition/256");
BENCHMARK(fold<float, float, foldAvx2>)->Name("fold_32f/avx2/256");
BENCHMARK(fold<Word, Long, foldScalar>)->Name("fold_16s/definition/256");
BENCHMARK(fold<Word, Long, foldAvx2>)->Name("fold_16s/avx2/256");
BENCHMARK(overlapAdd<float, float, overlapAddScalar>)->Name("overlapAdd_32f/definition/256");
BENCHMARK(overlapAdd<float, float, overlapAddAvx2>)->Name("overlapAdd_32f/avx2/256");
BENCHMARK(overlapAdd<Word, Long, overlapAddScalar>)->Name("overlapAdd_16s/definition/256");
BENCHMARK(overlapAdd<Word, Long, overlapAddAvx2>)->Name("overlapAdd_16s/avx2/256");

} // namespace
