// The adaptive codebook search of G.723.1, once a sub-frame.

#include "bench/codecs/g723/g723_input.hpp"

namespace {

using namespace zsp::bench;
using namespace zsp::g723;

void search(benchmark::State& state, std::size_t subframe)
{
    WordPool pool(1, kLoudSpeech);
    const auto r = response();
    constexpr std::array<std::int32_t, 5> kErrors = {4, 4, 4, 4, 4};
    ZspG723Frame f = frameOf(zspG723Rate53, 80);
    loop(state, kSubframe, [&] {
        f.lag[0] = 80;
        adaptiveSearch(take<60>(pool), r, take<145>(pool), kErrors, false, subframe, f);
    });
}

BENCHMARK_CAPTURE(search, threeLags, 0)->Name("g723AdaptiveSearch/threeLags");
BENCHMARK_CAPTURE(search, fourLags, 1)->Name("g723AdaptiveSearch/fourLags");

} // namespace
