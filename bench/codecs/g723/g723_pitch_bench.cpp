// The open-loop pitch of G.723.1, once a frame.

#include "bench/codecs/g723/g723_input.hpp"

namespace {

using namespace zsp::bench;
using namespace zsp::g723;

void search(benchmark::State& state)
{
    WordPool pool(1, kLoudSpeech);
    std::array<std::int16_t, 385> normalised{};
    std::array<std::int16_t, 2> lags{};
    loop(state, kFrame, [&] { openLoopSearch(take<385>(pool), normalised, lags); });
}

BENCHMARK(search)->Name("g723OpenLoopPitch/definition");

} // namespace
