// The multi-pulse search of G.723.1, once a sub-frame: with trains it takes twice as long.

#include "bench/codecs/g723/g723_input.hpp"

namespace {

using namespace zsp::bench;
using namespace zsp::g723;

void search(benchmark::State& state, std::int16_t lag)
{
    WordPool pool(1, kLoudSpeech);
    const auto r = response();
    ZspG723Frame f = frameOf(zspG723Rate63, lag);
    loop(state, kSubframe, [&] { multiPulseSearch(take<60>(pool), r, 0, f); });
}

BENCHMARK_CAPTURE(search, single, 80)->Name("g723MultiPulse/single");
BENCHMARK_CAPTURE(search, trains, 40)->Name("g723MultiPulse/trains");

} // namespace
