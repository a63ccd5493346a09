// Autocorrelation and recursion of G.729, once a frame.

#include "bench/codecs/g729/coder/g729_coder_input.hpp"

namespace {

using namespace zsp::bench;
using namespace zsp::g729;

template <auto correlate>
void correlateFrame(benchmark::State& state)
{
    WordPool pool(1, kLoudSpeech);
    std::array<Long, 13> corr{};
    Word exponent = 0;
    loop(state, kFrame, [&] { correlate(take<240>(pool), corr, exponent); });
}

void recurse(benchmark::State& state)
{
    constexpr std::array<Long, 11> kCorr = {
        24174 << 16,   21694 << 16,   17334 << 16,    11786 << 16,    4823 << 16,    -1473 * 65536,
        -6583 * 65536, -9392 * 65536, -10755 * 65536, -11411 * 65536, -10465 * 65536};
    Prediction p{};
    loop(state, kFrame, [&] { benchmark::DoNotOptimize(levinsonDurbin(kCorr, p)); });
}

BENCHMARK(correlateFrame<autoCorrScalar>)->Name("g729AutoCorr/definition");
BENCHMARK(correlateFrame<autoCorrAvx2>)->Name("g729AutoCorr/avx2");
BENCHMARK(recurse)->Name("g729LevinsonDurbin/definition");

} // namespace
