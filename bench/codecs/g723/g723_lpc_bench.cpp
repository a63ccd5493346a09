// Autocorrelation and recursion of G.723.1, once a sub-frame.

#include "bench/codecs/g723/g723_input.hpp"

namespace {

using namespace zsp::bench;
using namespace zsp::g723;

void correlate(benchmark::State& state)
{
    WordPool pool(1, kLoudSpeech);
    std::array<std::int16_t, 11> corr{};
    std::int16_t shift = 0;
    loop(state, kSubframe, [&] { autoCorrAvx2(take<180>(pool), corr, shift); });
}

void recurse(benchmark::State& state)
{
    constexpr std::array<std::int16_t, 11> kCorr = {24174, 21694, 17334,  11786,  4823,  -1473,
                                                    -6583, -9392, -10755, -11411, -10465};
    std::array<std::int16_t, 10> lpc{};
    loop(state, kSubframe, [&] { benchmark::DoNotOptimize(levinsonDurbin(kCorr, lpc)); });
}

BENCHMARK(correlate)->Name("g723AutoCorr/avx2");
BENCHMARK(recurse)->Name("g723LevinsonDurbin/definition");

} // namespace
