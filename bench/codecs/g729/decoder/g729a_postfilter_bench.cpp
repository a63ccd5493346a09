// The post-filter of G.729 Annex A, once a sub-frame.

#include "bench/codecs/g729/decoder/g729_decoder_input.hpp"

namespace {

using namespace zsp::bench;
using namespace zsp::g729;

template <auto filter>
void longTerm(benchmark::State& state)
{
    WordPool pool(1, kLoudSpeech);
    Lags lags;
    Subframe dst{};
    loop(state, kSubframe, [&] { filter(lags.next(), take<183>(pool), dst); });
}

void tilt(benchmark::State& state)
{
    const PostFilter f;
    Subframe x{};
    Word last = 0;
    loop(state, kSubframe, [&] { tiltCompensationA(f.zeros, f.poles, x, last); });
}

template <auto control>
void gain(benchmark::State& state)
{
    WordPool pool(1, kLoudSpeech);
    Subframe x{};
    Word g = 4096;
    loop(state, kSubframe, [&] {
        std::ranges::copy(take<40>(pool), x.begin());
        control(take<40>(pool), x, g);
    });
}

BENCHMARK(longTerm<longTermPostFilterAScalar>)->Name("g729aLongTermPostFilter/definition");
BENCHMARK(longTerm<longTermPostFilterAAvx2>)->Name("g729aLongTermPostFilter/avx2");
BENCHMARK(tilt)->Name("g729aTiltCompensation/definition");
BENCHMARK(gain<gainControlAScalar>)->Name("g729aGainControl/definition");
BENCHMARK(gain<gainControlAFast>)->Name("g729aGainControl/fast");

} // namespace
