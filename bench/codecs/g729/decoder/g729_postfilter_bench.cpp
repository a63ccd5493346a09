// The short-term post-filter of G.729's main body, tilt and gain, once a sub-frame.

#include "bench/codecs/g729/decoder/g729_decoder_input.hpp"

namespace {

using namespace zsp::bench;
using namespace zsp::g729;

void shortTerm(benchmark::State& state)
{
    WordPool pool(1, kLoudSpeech);
    const PostFilter f;
    std::array<Word, 41> dst{};
    std::array<Word, 10> memory{};
    loop(state, kSubframe, [&] {
        benchmark::DoNotOptimize(
            shortTermPostFilter(f.zeros, f.poles, take<40>(pool), dst, memory));
    });
}

template <auto compensate>
void tilt(benchmark::State& state)
{
    WordPool pool(1, kLoudSpeech);
    Subframe dst{};
    loop(state, kSubframe, [&] { compensate(-9000, take<41>(pool), dst); });
}

template <auto control>
void gain(benchmark::State& state)
{
    WordPool pool(1, kLoudSpeech);
    Subframe x{};
    Word g = 16384;
    loop(state, kSubframe, [&] {
        std::ranges::copy(take<40>(pool), x.begin());
        control(take<40>(pool), x, g);
    });
}

BENCHMARK(shortTerm)->Name("g729ShortTermPostFilter/fast");
BENCHMARK(tilt<tiltCompensationScalar>)->Name("g729TiltCompensation/definition");
BENCHMARK(tilt<tiltCompensationFast>)->Name("g729TiltCompensation/fast");
BENCHMARK(gain<gainControlScalar>)->Name("g729GainControl/definition");
BENCHMARK(gain<gainControlFast>)->Name("g729GainControl/fast");

} // namespace
