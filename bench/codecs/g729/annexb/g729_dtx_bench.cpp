// Discontinuous transmission of G.729 Annex B, once a frame: a descriptor each.

#include "bench/codecs/g729/decoder/g729_decoder_input.hpp"
#include "codecs/g729/annexb/g729_annexb.hpp"

namespace {

using namespace zsp::bench;
using namespace zsp::g729;

void encode(benchmark::State& state)
{
    ZspG729BDtxState dtx;
    zspsDTXInit_G729B_16s(&dtx);
    std::array<Word, kTaps> lpc = {4096};
    std::array<Word, kOrder> reflection{}, sidLsp{};
    std::array<Word, kLsfMemory> memory{};
    std::array<Word, kSidParameters> fields{};
    std::array<Long, kTaps> corr = {30000 << 16, 12000 << 16, 3000 << 16, -2000 * 65536};
    loop(state, kFrame, [&] {
        corr[1] ^= 99 << 16;
        updateDtx(corr, -8, false, dtx);
        benchmark::DoNotOptimize(
            encodeDtx(true, true, kLsp, {lpc, reflection}, memory, sidLsp, fields, dtx));
    });
}

BENCHMARK(encode)->Name("g729bDTXEncode/definition");

} // namespace
