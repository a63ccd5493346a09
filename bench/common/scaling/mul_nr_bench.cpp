// Rounded products of subframes and frames.

#include "bench/support/pool.hpp"
#include "bench/support/versions.hpp"
#include "common/scaling/mul_nr.hpp"

#include <vector>

namespace {

using namespace zsp::bench;
using namespace zsp::common;
using MulNr = void (*)(zsp::In16, zsp::In16, zsp::Out16, int);

void mulNr(benchmark::State& state, MulNr kernel)
{
    const auto len = static_cast<std::size_t>(state.range(0));
    WordPool a(1), b(2);
    std::vector<std::int16_t> out(len);
    loop(state, len, [&] {
        kernel(a.next(len), b.next(len), out, 15);
        benchmark::DoNotOptimize(out.data());
    });
}

const bool registered = add<MulNr>(
    "mulNr", mulNr, {{"definition", mulNrScalar}, {"avx2", mulNrAvx2}}, {{40}, {160}, {320}});

} // namespace
