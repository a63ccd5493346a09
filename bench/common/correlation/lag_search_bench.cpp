// Searches of 40 or 80 samples among 144 or 124 lags: definition, fast version and plain loop.

#include "bench/support/plain.hpp"
#include "bench/support/pool.hpp"
#include "bench/support/versions.hpp"
#include "common/correlation/lag_search.hpp"

#include <algorithm>
#include <span>
#include <vector>

namespace {

using namespace zsp::bench;
using namespace zsp::common;

template <typename Peak>
void keep(const Peak& peak)
{
    benchmark::DoNotOptimize(peak);
}

using Search = void (*)(zsp::In16, zsp::In16);

void lagSearch(benchmark::State& state, Search kernel)
{
    const auto len = static_cast<std::size_t>(state.range(0));
    const auto lags = static_cast<std::size_t>(state.range(1));
    WordPool a(1, kLoudSpeech), b(2, kLoudSpeech);
    loop(state, len * lags, [&] { kernel(a.next(len), b.next(len + lags - 1)); });
}

using SearchFloat = void (*)(zsp::InF, zsp::InF);

void lagSearchFloat(benchmark::State& state, SearchFloat kernel)
{
    const auto len = static_cast<std::size_t>(state.range(0));
    const auto lags = static_cast<std::size_t>(state.range(1));
    WordPool words(1, kLoudSpeech);
    std::vector<float> pool(8192);
    std::ranges::copy(words.next(4096), pool.begin());
    std::ranges::copy(words.next(4096), pool.begin() + 4096);
    std::size_t at = 0;
    loop(state, len * lags, [&] {
        at = (at + 331) % 4096;
        const std::span<const float> past(&pool[at], len + lags - 1);
        kernel(past.last(len), past);
    });
}

const bool registered[] = {
    add<Search>(
        "lagSearch", lagSearch,
        {{"definition", [](zsp::In16 a, zsp::In16 b) { keep(lagMaxScalar(a, b, Scan::down)); }},
         {"avx2", [](zsp::In16 a, zsp::In16 b) { keep(lagMaxAvx2(a, b, Scan::down)); }},
         {"plain", [](zsp::In16 a, zsp::In16 b) { keep(plain::lagMax(a, b)); }}},
        {{40, 144}, {80, 124}}),
    add<SearchFloat>(
        "lagSearchFloat", lagSearchFloat,
        {{"definition", [](zsp::InF a, zsp::InF b) { keep(lagMaxScalar(a, b, Scan::down)); }},
         {"avx2", [](zsp::InF a, zsp::InF b) { keep(lagMaxAvx2(a, b, Scan::down)); }},
         {"plain", [](zsp::InF a, zsp::InF b) { keep(plain::lagMax(a, b)); }}},
        {{40, 144}}),
};

} // namespace
