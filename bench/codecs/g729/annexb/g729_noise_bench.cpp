// Comfort noise of G.729 Annex B, once a sub-frame.

#include "bench/codecs/g729/decoder/g729_decoder_input.hpp"
#include "codecs/g729/annexb/g729_annexb.hpp"

namespace {

using namespace zsp::bench;
using namespace zsp::g729;

void draw(benchmark::State& state)
{
    std::array<Word, kPast + kSubframe> e{};
    Word seed = 11111;
    loop(state, kSubframe, [&] {
        benchmark::DoNotOptimize(comfortNoise(318, seed, e));
        std::copy(e.begin() + 40, e.end(), e.begin());
    });
}

BENCHMARK(draw)->Name("g729bComfortNoise/definition");

} // namespace
