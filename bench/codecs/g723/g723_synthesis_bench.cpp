// The filters of a G.723.1 decoder, sub-frame by sub-frame.

#include "bench/codecs/g723/g723_input.hpp"

namespace {

using namespace zsp::bench;
using namespace zsp::g723;

void synthesise(benchmark::State& state, decltype(&synthesisFilterScalar) kernel)
{
    WordPool pool(1, 300);
    std::array<std::int16_t, 60> dst{};
    std::array<std::int16_t, 10> memory{};
    loop(state, kSubframe, [&] { kernel(kLpc, take<60>(pool), dst, memory); });
}

void postFilter(benchmark::State& state, decltype(&formantPostFilterScalar) kernel)
{
    WordPool pool(1, kLoudSpeech);
    std::array<std::int16_t, 60> dst{};
    std::array<std::int16_t, 21> memory{};
    loop(state, kSubframe,
         [&] { benchmark::DoNotOptimize(kernel(kLpc, take<60>(pool), dst, memory)); });
}

void control(benchmark::State& state, decltype(&gainControlScalar) kernel)
{
    WordPool pool(1, kLoudSpeech);
    std::array<std::int16_t, 60> x{};
    std::int16_t gain = 4096;
    loop(state, kSubframe, [&] {
        std::ranges::copy(take<60>(pool), x.begin());
        kernel(x, 100000000, gain);
    });
}

const bool registered =
    add<decltype(&synthesisFilterScalar)>(
        "g723Synthesis", synthesise,
        {{"definition", synthesisFilterScalar}, {"fast", synthesisFilterFast}}) &&
    add<decltype(&formantPostFilterScalar)>(
        "g723FormantPostFilter", postFilter,
        {{"definition", formantPostFilterScalar}, {"fast", formantPostFilterFast}}) &&
    add<decltype(&gainControlScalar)>(
        "g723GainControl", control, {{"definition", gainControlScalar}, {"fast", gainControlFast}});

} // namespace
