// The weighted domain of G.723.1, sub-frame by sub-frame.

#include "bench/codecs/g723/g723_input.hpp"

namespace {

using namespace zsp::bench;
using namespace zsp::g723;

void weight(benchmark::State& state)
{
    WordPool pool(1, kLoudSpeech);
    const auto coefs = weighting();
    std::array<std::int16_t, 60> dst{};
    std::array<std::int16_t, 20> memory{};
    loop(state, kSubframe, [&] { perceptualWeightingFast(coefs, take<60>(pool), dst, memory); });
}

void search(benchmark::State& state)
{
    WordPool pool(2, 4095);
    loop(state, kSubframe,
         [&] { benchmark::DoNotOptimize(harmonicSearch(pool.next(205).data() + 145, 60)); });
}

void respond(benchmark::State& state)
{
    const auto coefs = weighting();
    std::array<std::int16_t, 60> dst{};
    loop(state, kSubframe, [&] { impulseResponseFast(kLpc, coefs, {60, 9000}, dst); });
}

BENCHMARK(weight)->Name("g723PerceptualWeighting/fast");
BENCHMARK(search)->Name("g723HarmonicSearch/definition");
BENCHMARK(respond)->Name("g723ImpulseResponse/fast");

} // namespace
