// The vectors of a sub-frame of G.723.1.

#include "bench/codecs/g723/g723_input.hpp"

namespace {

using namespace zsp::bench;
using namespace zsp::g723;

void adaptive(benchmark::State& state)
{
    WordPool pool(1, kLoudSpeech);
    const ZspG723Frame f = frameOf(zspG723Rate63, 80);
    std::array<std::int16_t, 60> dst{};
    loop(state, kSubframe, [&] { adaptiveVector(f, 0, take<145>(pool), dst); });
}

void fixed(benchmark::State& state)
{
    const ZspG723Frame f = frameOf(zspG723Rate63, 80);
    std::array<std::int16_t, 60> dst{};
    loop(state, kSubframe, [&] { fixedVector(f, 0, dst); });
}

BENCHMARK(adaptive)->Name("g723AdaptiveVector/definition");
BENCHMARK(fixed)->Name("g723FixedVector/definition");

} // namespace
