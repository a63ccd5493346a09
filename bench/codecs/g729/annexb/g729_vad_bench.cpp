// Activity decision of G.729 Annex B, once a frame.

#include "bench/codecs/g729/decoder/g729_decoder_input.hpp"
#include "codecs/g729/annexb/g729_annexb.hpp"

namespace {

using namespace zsp::bench;
using namespace zsp::g729;

void decide(benchmark::State& state)
{
    WordPool pool(1, kLoudSpeech);
    ZspG729BVadState vad;
    zspsVADInit_G729B_16s(&vad);
    const std::array<Word, 10> lsf = {1500, 2900,  4300,  5800,  7500,
                                      8900, 10300, 11900, 13400, 14800};
    std::array<Long, kLags> corr{};
    corr[0] = 1 << 30;
    loop(state, kFrame, [&] {
        corr[1] += 99991;
        benchmark::DoNotOptimize(detectActivity(take<240>(pool), corr, -4, lsf, 9000, vad));
    });
}

BENCHMARK(decide)->Name("g729bVAD/definition");

} // namespace
