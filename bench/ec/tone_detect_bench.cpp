// The disabling-tone detector.

#include "bench/support/pool.hpp"
#include "zspsc.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstddef>
#include <vector>

namespace {

/// Ten milliseconds of noise, or of the silence after a tone.
void toneDetect(benchmark::State& state, bool silence)
{
    const auto len = static_cast<std::size_t>(state.range(0)) / 100;
    std::vector<std::byte> detector(80);
    zspsToneDetectInit_EC_32f(detector.data(), static_cast<std::int32_t>(state.range(0)));
    zsp::bench::WordPool pool(1);
    const auto words = pool.next(len);
    std::vector<float> block(words.begin(), words.end());
    std::int32_t result = 0;
    zspsToneDetect_EC_32f(block.data(), static_cast<std::int32_t>(len), &result, detector.data());
    if (silence) std::ranges::fill(block, 0.0F);
    for (auto _ : state) {
        zspsToneDetect_EC_32f(block.data(), static_cast<std::int32_t>(len), &result,
                              detector.data());
        benchmark::DoNotOptimize(result);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(len));
}

BENCHMARK_CAPTURE(toneDetect, noise, false)->Name("toneDetect/noise")->Arg(8000)->Arg(16000);
BENCHMARK_CAPTURE(toneDetect, silence, true)->Name("toneDetect/silence")->Arg(8000)->Arg(16000);

} // namespace
