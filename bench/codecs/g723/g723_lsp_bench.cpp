// Line spectral pairs of G.723.1: found, quantised and turned back, once a frame.

#include "bench/codecs/g723/g723_input.hpp"

namespace {

using namespace zsp::bench;
using namespace zsp::g723;

constexpr std::array<std::int16_t, 10> kLsp = {2361,  3765,  5942,  7329,  14963,
                                               18346, 19583, 23111, 25140, 27245};

void find(benchmark::State& state)
{
    std::array<std::int16_t, 10> lsp{};
    loop(state, kFrame, [&] { lpcToLsp(kLpc, kLspMean, lsp); });
}

void quantise(benchmark::State& state)
{
    loop(state, kFrame, [&] { benchmark::DoNotOptimize(lspQuant(kLsp, kLspMean)); });
}

void convert(benchmark::State& state)
{
    std::array<std::int16_t, 40> lpc{};
    loop(state, kFrame, [&] { interpolateToLpc(kLspMean, kLsp, lpc); });
}

BENCHMARK(find)->Name("g723LpcToLsp/definition");
BENCHMARK(quantise)->Name("g723LspQuant/definition");
BENCHMARK(convert)->Name("g723LspToLpc/definition");

} // namespace
