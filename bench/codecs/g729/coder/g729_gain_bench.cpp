// The gain quantiser of G.729, once a subframe.

#include "bench/codecs/g729/coder/g729_coder_input.hpp"
#include "codecs/g729/coder/g729_searches.hpp"

namespace {

using namespace zsp::bench;
using namespace zsp::g729;

void quantise(benchmark::State& state)
{
    WordPool pool(1, kLoudSpeech);
    std::array<Word, 4> past{};
    Gains gains{};
    constexpr std::array<Word, kSubframe> kCode = {8191, 0, 0, -8192, 0, 0, 8191, 0, 0, 8191};
    loop(state, kSubframe, [&] {
        const auto target = take<kSubframe>(pool), adaptive = take<kSubframe>(pool);
        const GainSums g = gainSums(pitchSums(target, adaptive), target, adaptive, adaptive);
        benchmark::DoNotOptimize(quantiseGains(g, false, kCode, past, gains));
    });
}

BENCHMARK(quantise)->Name("g729GainQuant/definition");

} // namespace
