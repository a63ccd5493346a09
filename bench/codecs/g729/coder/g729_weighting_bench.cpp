// Widened filters and the residual of G.729, once a subframe.

#include "bench/codecs/g729/coder/g729_coder_input.hpp"

namespace {

using namespace zsp::bench;
using namespace zsp::g729;

void widen(benchmark::State& state)
{
    std::array<Word, 11> weighted{}, lowPass{};
    loop(state, kSubframe, [&] {
        weightA(kLpc, weighted, lowPass);
        benchmark::DoNotOptimize(lowPass);
    });
}

void filter(benchmark::State& state)
{
    WordPool pool(1, kLoudSpeech);
    std::array<Word, 40> y{};
    loop(state, kSubframe, [&] {
        zsp::celp::residual(kLpc, take<50>(pool).data() + 10, y);
        benchmark::DoNotOptimize(y);
    });
}

BENCHMARK(widen)->Name("g729aWeightLPC/definition");
BENCHMARK(filter)->Name("g729Residual/definition");

} // namespace
