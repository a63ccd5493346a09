// Excitation and synthesis of G.729, once a sub-frame.

#include "bench/codecs/g729/decoder/g729_decoder_input.hpp"

namespace {

using namespace zsp::bench;
using namespace zsp::g729;

template <auto interpolate>
void adaptive(benchmark::State& state)
{
    WordPool pool(1, kLoudSpeech);
    Lags lags;
    std::array<Word, kPast + kSubframe> x{};
    std::ranges::copy(take<x.size()>(pool), x.begin());
    loop(state, kSubframe, [&] { interpolate(lags.next(), 1, x); });
}

template <auto mix>
void sum(benchmark::State& state)
{
    WordPool pool(1, kLoudSpeech);
    Subframe x{};
    loop(state, kSubframe, [&] { mix(12000, 300, take<40>(pool), x); });
}

void synthesis(benchmark::State& state)
{
    WordPool pool(1, 300);
    std::array<Word, kExcitation> e{};
    std::ranges::copy(take<kExcitation>(pool), e.begin());
    Subframe dst{};
    std::array<Word, 10> memory{};
    loop(state, kSubframe, [&] { synthesise(kLpc, 1, e, dst, memory); });
}

void fixed(benchmark::State& state)
{
    Subframe code{};
    int positions = 0;
    loop(state, kSubframe, [&] {
        positions = (positions + 1234) & 8191;
        fixedVector(positions, positions & 15, code);
        sharpen(25, 9000, code);
    });
}

BENCHMARK(adaptive<adaptiveVectorScalar>)->Name("g729AdaptiveVector/definition");
BENCHMARK(adaptive<adaptiveVector>)->Name("g729AdaptiveVector/fast");
BENCHMARK(sum<excitationScalar>)->Name("g729Excitation/definition");
BENCHMARK(sum<excitationAvx2>)->Name("g729Excitation/avx2");
BENCHMARK(synthesis)->Name("g729Synthesis/fast");
BENCHMARK(fixed)->Name("g729FixedVector/definition");

} // namespace
