// The Levinson-Durbin recursion up to order 10 and from there to 50, and the expansion behind it.
// No package offers this codec: there is nothing else to compare with.

#include "bench/support/pool.hpp"
#include "bench/support/versions.hpp"
#include "codecs/g728/g728_blocks.hpp"

#include <benchmark/benchmark.h>

#include <array>
#include <cmath>
#include <cstdint>

namespace {

using namespace zsp::bench;
using namespace zsp::g728;

using Levinson = bool (*)(std::span<const Word>, int, int, Predictor&) noexcept;

/// The autocorrelation of something like speech.
std::array<Word, kMostLags> correlation()
{
    std::array<Word, kMostLags> r;
    for (std::size_t l = 0; l < r.size(); ++l) {
        const auto t = static_cast<double>(l);
        r[l] = static_cast<Word>(30000 * std::exp(-t / 30) * (0.6 * std::cos(t / 3) + 0.4));
    }
    r[0] = 30300;
    return r;
}

void levinson(benchmark::State& state, Levinson kernel)
{
    const auto r = correlation();
    const auto from = static_cast<int>(state.range(0)), to = static_cast<int>(state.range(1));
    Predictor first;
    if (from > 0) levinsonScalar(r, 0, from, first);
    loop(state, state.range(1), [&] {
        Predictor p = first;
        if (!kernel(r, from, to, p)) state.SkipWithError("no predictor");
        benchmark::DoNotOptimize(p);
    });
}

using Expand = bool (*)(std::span<const Word>, int, std::span<const Word>,
                        std::span<Word>) noexcept;

void expand(benchmark::State& state, Expand kernel)
{
    WordPool pool(1, 7000);
    const auto weights = expansionWeights(0);
    std::array<Word, kLong> wider;
    loop(state, kLong, [&] {
        if (!kernel(pool.next(kLong), 14, weights, wider)) state.SkipWithError("no room");
    });
}

const bool registered =
    add<Expand>("g728Expand", expand,
                {{"definition", expandBandwidthScalar}, {"avx2", expandBandwidthAvx2}}) &&
    add<Levinson>("g728Levinson", levinson,
                  {{"definition", levinsonScalar}, {"avx2", levinsonAvx2}}, {{0, 10}, {10, 50}});

} // namespace
