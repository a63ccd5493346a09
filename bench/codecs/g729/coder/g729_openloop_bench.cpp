// The open-loop lag of G.729, once a frame.

#include "bench/codecs/g729/coder/g729_coder_input.hpp"
#include "codecs/g729/coder/g729_searches.hpp"

namespace {

using namespace zsp::bench;
using namespace zsp::g729;

template <auto search>
void searchFrame(benchmark::State& state)
{
    WordPool pool(1, kLoudSpeech);
    loop(state, kFrame, [&] { benchmark::DoNotOptimize(search(take<kOpenLoop>(pool))); });
}

BENCHMARK(searchFrame<openLoopLagScalar>)->Name("g729OpenLoop/definition");
BENCHMARK(searchFrame<openLoopLagAvx2>)->Name("g729OpenLoop/avx2");
BENCHMARK(searchFrame<openLoopLagAScalar>)->Name("g729aOpenLoop/definition");
BENCHMARK(searchFrame<openLoopLagAAvx2>)->Name("g729aOpenLoop/avx2");

} // namespace
