// The fixed codebook of G.729, once a subframe.

#include "bench/codecs/g729/coder/g729_coder_input.hpp"
#include "codecs/g729/coder/g729_searches.hpp"

namespace {

using namespace zsp::bench;
using namespace zsp::g729;

constexpr std::array<Word, kSubframe> kResponse = {4096, 1412, -783, -49, -199, -26, 43, -91, -106};

template <auto make>
void makeMatrix(benchmark::State& state)
{
    std::array<Word, kMatrix> matrix{};
    loop(state, kSubframe, [&] {
        make(kResponse, matrix);
        benchmark::DoNotOptimize(matrix);
    });
}

template <auto search>
void searchPulses(benchmark::State& state)
{
    WordPool pool(1, 2000);
    std::array<Word, kMatrix> matrix{};
    toeplizMatrixScalar(kResponse, matrix);
    loop(state, kSubframe,
         [&] { benchmark::DoNotOptimize(search(take<kSubframe>(pool), matrix)); });
}

template <auto search>
FixedCode ofFirst(In<kSubframe> corr, In<kMatrix> matrix)
{
    Word extra = 0;
    return search(corr, matrix, true, extra);
}

BENCHMARK(makeMatrix<toeplizMatrixScalar>)->Name("g729Matrix/definition");
BENCHMARK(makeMatrix<toeplizMatrixAvx2>)->Name("g729Matrix/avx2");
BENCHMARK(searchPulses<ofFirst<fixedSearchScalar>>)->Name("g729FixedSearch/definition");
BENCHMARK(searchPulses<ofFirst<fixedSearchAvx2>>)->Name("g729FixedSearch/avx2");
BENCHMARK(searchPulses<fixedSearchAScalar>)->Name("g729aFixedSearch/definition");
BENCHMARK(searchPulses<fixedSearchAAvx2>)->Name("g729aFixedSearch/avx2");

} // namespace
