// The zero-input response of the synthesis filter. No package offers this codec: there is nothing
// else to compare with.

#include "bench/support/pool.hpp"
#include "bench/support/versions.hpp"
#include "codecs/g728/g728_blocks.hpp"

#include <benchmark/benchmark.h>

#include <array>
#include <cstdint>

namespace {

using namespace zsp::bench;
using namespace zsp::g728;

using Filter = Vector (*)(In<kLong>, In<kLong>, In<kShort>) noexcept;

void zeroInput(benchmark::State& state, Filter kernel)
{
    WordPool coefficients(1, 4000), past(2, 8191), shifts(3, 6);
    loop(state, kVector, [&] {
        auto s = kernel(coefficients.next(kLong).first<kLong>(), past.next(kLong).first<kLong>(),
                        shifts.next(kShort).first<kShort>());
        benchmark::DoNotOptimize(s);
    });
}

const bool registered = add<Filter>("g728ZeroInput", zeroInput,
                                    {{"definition", zeroInputScalar}, {"avx2", zeroInputAvx2}});

} // namespace
