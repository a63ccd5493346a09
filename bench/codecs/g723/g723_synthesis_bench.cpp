// The filters of a G.723.1 decoder, sub-frame by sub-frame.

#include "bench/codecs/g723/g723_input.hpp"

namespace {

using namespace zsp::bench;
using namespace zsp::g723;

void synthesise(benchmark::State& state)
{
    WordPool pool(1, 300);
    std::array<std::int16_t, 60> dst{};
    std::array<std::int16_t, 10> memory{};
    loop(state, kSubframe, [&] { synthesisFilterScalar(kLpc, take<60>(pool), dst, memory); });
}

void postFilter(benchmark::State& state)
{
    WordPool pool(1, kLoudSpeech);
    std::array<std::int16_t, 60> dst{};
    std::array<std::int16_t, 21> memory{};
    loop(state, kSubframe, [&] {
        benchmark::DoNotOptimize(formantPostFilterScalar(kLpc, take<60>(pool), dst, memory));
    });
}

void control(benchmark::State& state)
{
    WordPool pool(1, kLoudSpeech);
    std::array<std::int16_t, 60> x{};
    std::int16_t gain = 4096;
    loop(state, kSubframe, [&] {
        std::ranges::copy(take<60>(pool), x.begin());
        gainControlScalar(x, 100000000, gain);
    });
}

BENCHMARK(synthesise)->Name("g723Synthesis/definition");
BENCHMARK(postFilter)->Name("g723FormantPostFilter/definition");
BENCHMARK(control)->Name("g723GainControl/definition");

} // namespace
