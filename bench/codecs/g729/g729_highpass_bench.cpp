// G.729's high-pass filter over speech in blocks of 10 ms.

#include "bench/support/speech.hpp"
#include "zspsc.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cstddef>

namespace {

constexpr std::size_t kBlock = 80;

void highPass(benchmark::State& state, std::array<std::int16_t, 6> coeffs, int scaleFactor)
{
    zsp::bench::Blocks blocks(zsp::bench::speech(), kBlock);
    std::array<std::byte, 24> filter;
    zspsHighPassFilterInit_G729(coeffs.data(), filter.data());
    std::array<std::int16_t, kBlock> samples;
    for (auto _ : state) {
        const auto block = blocks.next();
        std::copy(block.begin(), block.end(), samples.begin());
        zspsHighPassFilter_G729_16s_ISfs(samples.data(), kBlock, scaleFactor, filter.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kBlock));
}

BENCHMARK_CAPTURE(highPass, pre, {4096, 7807, -3733, 1899, -3798, 1899}, 12)
    ->Name("g729HighPass/pre");
BENCHMARK_CAPTURE(highPass, post, {8192, 15836, -7667, 7699, -15398, 7699}, 13)
    ->Name("g729HighPass/post");

} // namespace
