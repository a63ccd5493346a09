// The activity decision of G.723.1, once a frame.

#include "bench/codecs/g723/g723_input.hpp"

namespace {

using namespace zsp::bench;
using namespace zsp::g723;

void detect(benchmark::State& state)
{
    WordPool pool(1, kLoudSpeech);
    ZspG723VadState vad;
    zspsVADInit_G723(&vad);
    loop(state, kFrame,
         [&] { benchmark::DoNotOptimize(detectActivity(take<240>(pool), false, vad)); });
}

BENCHMARK(detect)->Name("g723Vad/definition");

} // namespace
