// The three hybrid windows: samples weighted, then correlated. No package offers this codec: there
// is nothing else to compare with.

#include "bench/support/pool.hpp"
#include "bench/support/versions.hpp"
#include "codecs/g728/g728_blocks.hpp"

#include <benchmark/benchmark.h>

#include <array>
#include <cstdint>

namespace {

using namespace zsp::bench;
using namespace zsp::g728;

using Apply = int (*)(const WindowShape&, std::span<const Word>, std::span<const Word>,
                      std::span<Word>) noexcept;
using Correlate = bool (*)(const WindowShape&, std::span<const Word>, int, std::span<Word>, int&,
                           std::span<Word>) noexcept;

void apply(benchmark::State& state, Apply kernel)
{
    const WindowShape& shape = windowShape(static_cast<int>(state.range(0)));
    const auto samples = shape.window.size();
    WordPool pool(1, 8191);
    std::array<Word, kMostWindow / kVector> q{};
    std::array<Word, kMostWindow> windowed;
    loop(state, samples, [&] {
        benchmark::DoNotOptimize(kernel(shape, pool.next(samples),
                                        {q.data(), state.range(0) == 0 ? q.size() : 0},
                                        {windowed.data(), samples}));
    });
}

void correlate(benchmark::State& state, Correlate kernel)
{
    const WindowShape& shape = windowShape(static_cast<int>(state.range(0)));
    const auto lags = shape.lags;
    WordPool pool(1, 8000);
    std::array<Word, kMostLags> recursion{}, r;
    int q = 31;
    loop(state, shape.window.size(), [&] {
        kernel(shape, pool.next(shape.window.size()), 2, {recursion.data(), lags}, q,
               {r.data(), lags});
    });
}

const bool registered =
    add<Apply>("g728ApplyWindow", apply,
               {{"definition", applyWindowScalar}, {"avx2", applyWindowAvx2}}, {{0}, {1}, {2}}) &&
    add<Correlate>("g728Window", correlate,
                   {{"definition", correlateScalar}, {"avx2", correlateAvx2}}, {{0}, {1}, {2}});

} // namespace
