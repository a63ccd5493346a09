// The three hybrid windows. No package offers this codec: there is nothing else to compare with.

#include "bench/support/pool.hpp"
#include "bench/support/versions.hpp"
#include "codecs/g728/g728_blocks.hpp"

#include <benchmark/benchmark.h>

#include <array>
#include <cstdint>

namespace {

using namespace zsp::bench;
using namespace zsp::g728;

using Correlate = bool (*)(const WindowShape&, std::span<const Word>, int, std::span<Word>, int&,
                           std::span<Word>) noexcept;

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
    add<Correlate>("g728Window", correlate,
                   {{"definition", correlateScalar}, {"avx2", correlateAvx2}}, {{0}, {1}, {2}});

} // namespace
