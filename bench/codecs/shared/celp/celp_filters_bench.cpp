// Synthesis of a subframe by a filter of ten coefficients.

#include "codecs/shared/celp/filters.hpp"

#include "bench/support/pool.hpp"
#include "bench/support/versions.hpp"

#include <array>

namespace {

using namespace zsp::bench;
using namespace zsp::celp;

constexpr std::array<Word, 11> kFilter = {4096, -2100, 900, -500, 300, -200,
                                          150,  -100,  80,  -60,  40};

template <bool isFast>
void synthesise(benchmark::State& state)
{
    WordPool pool(1, kLoudSpeech);
    std::array<Word, 40> y{};
    std::array<Word, 10> memory{};
    loop(state, std::size_t{40}, [&] {
        const auto x = pool.next(40);
        if constexpr (isFast)
            synthesis(kFilter, x, y.data(), memory);
        else
            synthesisScalar(kFilter, x, y.data(), memory);
        benchmark::DoNotOptimize(y);
    });
}

BENCHMARK(synthesise<false>)->Name("celpSynthesis/definition/40");
BENCHMARK(synthesise<true>)->Name("celpSynthesis/fast/40");

} // namespace
