// G.729's two conversions of ten line spectral pairs.

#include "bench/support/speech.hpp"
#include "zspsc.h"

#include <benchmark/benchmark.h>

#include <array>
#include <cmath>
#include <numbers>
#include <vector>

namespace {

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

BENCHMARK_CAPTURE(convert, radian, zspsLSPToLSF_G729_16s)->Name("g729LspToLsf/radian");
BENCHMARK_CAPTURE(convert, norm, zspsLSPToLSF_Norm_G729_16s)->Name("g729LspToLsf/norm");

} // namespace
