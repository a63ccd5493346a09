// Pitch post-filter and concealment of G.723.1, once a frame.

#include "bench/codecs/g723/g723_input.hpp"

namespace {

using namespace zsp::bench;
using namespace zsp::g723;

void filter(benchmark::State& state)
{
    WordPool pool(1, kLoudSpeech);
    const ZspG723Frame f = frameOf(zspG723Rate63, 40);
    std::array<std::int16_t, 240> dst{};
    loop(state, kFrame, [&] { pitchPostFilter(take<385>(pool), f, dst); });
}

void analyse(benchmark::State& state)
{
    WordPool pool(1, kLoudSpeech);
    loop(state, kFrame, [&] { benchmark::DoNotOptimize(concealAnalysis(take<385>(pool), 40)); });
}

BENCHMARK(filter)->Name("g723PitchPostFilter/definition");
BENCHMARK(analyse)->Name("g723ConcealAnalysis/definition");

} // namespace
