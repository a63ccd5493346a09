// The adaptive codebook of G.729, once a subframe.

#include "bench/codecs/g729/coder/g729_coder_input.hpp"
#include "codecs/g729/coder/g729_searches.hpp"

#include <algorithm>

namespace {

using namespace zsp::bench;
using namespace zsp::g729;

constexpr std::array<Word, kSubframe> kResponse = {4096, 1412, -783, -49, -199, -26, 43, -91, -106};

template <auto search>
void searchMain(benchmark::State& state)
{
    WordPool pool(1, kLoudSpeech);
    std::array<Word, kPast + kSubframe> e{};
    loop(state, kSubframe, [&] {
        std::ranges::copy(take<kPast + kSubframe>(pool), e.begin());
        benchmark::DoNotOptimize(search(take<kSubframe>(pool), kResponse, 60, 69, false, e));
    });
}

template <auto search>
void searchA(benchmark::State& state)
{
    WordPool pool(1, 1000);
    std::array<Word, kPast + kSubframe> e{};
    loop(state, kSubframe, [&] {
        std::ranges::copy(take<kPast + kSubframe>(pool), e.begin());
        benchmark::DoNotOptimize(search(take<kSubframe>(pool), 60, 69, false, e));
    });
}

BENCHMARK(searchMain<adaptiveSearchScalar>)->Name("g729AdaptiveSearch/definition");
BENCHMARK(searchMain<adaptiveSearchAvx2>)->Name("g729AdaptiveSearch/avx2");
BENCHMARK(searchA<adaptiveSearchAScalar>)->Name("g729aAdaptiveSearch/definition");
BENCHMARK(searchA<adaptiveSearchAAvx2>)->Name("g729aAdaptiveSearch/avx2");

} // namespace
