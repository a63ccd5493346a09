// What an adaptive and a fixed filter leave in all bins of a frame.

#include "ec/subband_filter.hpp"

#include "bench/ec/subband_rows.hpp"

#include <benchmark/benchmark.h>

namespace {

using namespace zsp::bench;

template <bool fast>
void filter(benchmark::State& state)
{
    Canceller c(state);
    const zsp::ec::FilterRows rows = {c.pointers, c.adapt.rows.data(), c.fixed.rows.data(),
                                      c.variance.rows.data()};
    const std::span<const Zsp32fc> src(c.errors.rows[2], c.bands);
    const zsp::ec::FilterResults out = {c.errors.rows[0], c.errors.rows[1], c.powers.rows[0],
                                        c.powers.rows[1]};
    for (auto _ : state) {
        if constexpr (fast)
            zsp::ec::filterAvx2(rows, src, out);
        else
            zsp::ec::filterScalar(rows, src, out, 0);
        benchmark::ClobberMemory();
    }
}

BENCHMARK(filter<false>)->Name("subbandFilter/definition")->Apply(shapes);
BENCHMARK(filter<true>)->Name("subbandFilter/avx2")->Apply(shapes);

} // namespace
