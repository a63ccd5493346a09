// Correlation and convolution of a subframe in the arithmetic of the basic operators.

#include "bench/support/pool.hpp"
#include "bench/support/versions.hpp"
#include "common/correlation/correlation_nr.hpp"

#include <array>

namespace {

using namespace zsp::bench;
using namespace zsp::common;

constexpr std::size_t kLength = 40;

void correlate(benchmark::State& state)
{
    WordPool pool(1, kLoudSpeech);
    std::array<std::int32_t, kLength> sums{};
    loop(state, kLength, [&] {
        const auto x = pool.next(kLength);
        crossCorrSteps(x, x, sums);
        benchmark::DoNotOptimize(sums);
    });
}

void convolve(benchmark::State& state)
{
    WordPool pool(1, kLoudSpeech);
    std::array<std::int16_t, kLength> y{};
    loop(state, kLength, [&] {
        const auto x = pool.next(kLength);
        convolveRounded(x, x, y);
        benchmark::DoNotOptimize(y);
    });
}

BENCHMARK(correlate)->Name("crossCorrNr/definition/40");
BENCHMARK(convolve)->Name("convPartialNr/definition/40");

} // namespace
