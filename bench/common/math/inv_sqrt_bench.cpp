// Inverse square roots of a vector of longs.

#include "bench/support/plain.hpp"
#include "bench/support/pool.hpp"
#include "bench/support/versions.hpp"
#include "common/math/inv_sqrt.hpp"

#include <algorithm>
#include <vector>

namespace {

using namespace zsp::bench;
using namespace zsp::common;
using InvSqrt = void (*)(zsp::Out32);

void invSqrt(benchmark::State& state, InvSqrt kernel)
{
    const auto len = static_cast<std::size_t>(state.range(0));
    WordPool pool(1);
    std::vector<std::int32_t> all(8192), x(len);
    for (auto& value : all) {
        const auto words = pool.next(2);
        value = (words[0] * 65536 + words[1] + 32768) >> (words[1] & 15);
    }
    std::size_t at = 0;
    loop(state, len, [&] {
        at = (at + 331) % 4096;
        std::copy_n(all.begin() + static_cast<std::ptrdiff_t>(at), len, x.begin());
        kernel(x);
        benchmark::DoNotOptimize(x.data());
    });
}

const bool registered =
    add<InvSqrt>("invSqrt", invSqrt,
                 {{"definition", invSqrtScalar}, {"avx2", invSqrtAvx2}, {"plain", plain::invSqrt}},
                 {{40}, {160}});

} // namespace
