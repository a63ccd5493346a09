// The LSP quantiser of G.729, once a frame.

#include "bench/codecs/g729/coder/g729_coder_input.hpp"
#include "codecs/g729/coder/g729_searches.hpp"

namespace {

using namespace zsp::bench;
using namespace zsp::g729;

template <auto quantise>
void quantiseFrame(benchmark::State& state)
{
    constexpr LsfVector kLsf = {2028, 4129, 6956, 9220, 11703, 13725, 16522, 18532, 21365, 23386};
    std::array<Word, kLsfMemory> memory{};
    std::array<Word, kOrder> quantised{};
    loop(state, kFrame, [&] { benchmark::DoNotOptimize(quantise(kLsf, memory, quantised)); });
}

BENCHMARK(quantiseFrame<quantiseLsfScalar>)->Name("g729LSPQuant/definition");
BENCHMARK(quantiseFrame<quantiseLsfAvx2>)->Name("g729LSPQuant/avx2");

} // namespace
