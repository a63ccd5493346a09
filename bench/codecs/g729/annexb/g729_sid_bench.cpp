// The quantiser of G.729 Annex B's silence descriptors, once a frame.

#include "bench/codecs/g729/decoder/g729_decoder_input.hpp"
#include "codecs/g729/annexb/g729_annexb.hpp"

namespace {

using namespace zsp::bench;
using namespace zsp::g729;

void quantise(benchmark::State& state)
{
    std::array<Word, kLsfMemory> memory{};
    LsfVector lsf = {2500, 4500, 7200, 9100, 11800, 14200, 16100, 18900, 21000, 23100}, quantised{};
    loop(state, kFrame, [&] {
        lsf[3] ^= 33;
        benchmark::DoNotOptimize(quantiseSidLsf(lsf, memory, quantised));
    });
}

BENCHMARK(quantise)->Name("g729bSIDLSFQuant/definition");

} // namespace
