// Line spectral pairs of G.729, once a frame.

#include "bench/codecs/g729/coder/g729_coder_input.hpp"

namespace {

using namespace zsp::bench;
using namespace zsp::g729;

template <auto convert>
void search(benchmark::State& state)
{
    std::array<Word, 11> lpc{};
    std::array<Word, 10> lsp{};
    lspToLpc(kLsp, lpc);
    loop(state, kFrame, [&] { benchmark::DoNotOptimize(convert(lpc, kLsp, lsp)); });
}

void makeFilter(benchmark::State& state)
{
    std::array<Word, 11> lpc{};
    loop(state, kFrame, [&] {
        lspToLpc(kLsp, lpc);
        benchmark::DoNotOptimize(lpc);
    });
}

BENCHMARK(search<lpcToLspScalar>)->Name("g729LPCToLSP/definition");
BENCHMARK(search<lpcToLsp>)->Name("g729LPCToLSP/fast");
BENCHMARK(search<lpcToLspAScalar>)->Name("g729aLPCToLSP/definition");
BENCHMARK(search<lpcToLspA>)->Name("g729aLPCToLSP/fast");
BENCHMARK(makeFilter)->Name("g729LSPToLPC/definition");

} // namespace
