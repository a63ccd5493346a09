// G.729's high-pass filter over speech in blocks of 10 ms, and its two LSF conversions.

#include "bench/support/speech.hpp"
#include "zspsc.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <vector>

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

/// Sets of ten cosines around even distances, all different.
std::vector<std::int16_t> lspSets()
{
    std::vector<std::int16_t> lsp;
    for (int set = 0; set < 1000; ++set)
        for (int i = 0; i < 10; ++i) {
            const double shift = 0.8 * std::sin(set * (1.0 + 0.37 * i));
            lsp.push_back(static_cast<std::int16_t>(
                32767 * std::cos(std::numbers::pi * (i + 1 + shift / 2) / 11)));
        }
    return lsp;
}

void convert(benchmark::State& state, ZspStatus (*conversion)(const std::int16_t*, std::int16_t*))
{
    zsp::bench::Blocks sets(lspSets(), 10);
    std::array<std::int16_t, 10> lsf;
    for (auto _ : state) {
        conversion(sets.next().data(), lsf.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations());
}

BENCHMARK_CAPTURE(highPass, pre, {4096, 7807, -3733, 1899, -3798, 1899}, 12)
    ->Name("g729HighPass/pre");
BENCHMARK_CAPTURE(highPass, post, {8192, 15836, -7667, 7699, -15398, 7699}, 13)
    ->Name("g729HighPass/post");
BENCHMARK_CAPTURE(convert, radian, zspsLSPToLSF_G729_16s)->Name("g729LspToLsf/radian");
BENCHMARK_CAPTURE(convert, norm, zspsLSPToLSF_Norm_G729_16s)->Name("g729LspToLsf/norm");

} // namespace
