// The update of the adaptive taps of all bins, with their variances.

#include "ec/subband_filter.hpp"

#include "bench/ec/subband_rows.hpp"

#include <benchmark/benchmark.h>

namespace {

using namespace zsp::bench;

template <bool fast>
void adapt(benchmark::State& state)
{
    Canceller c(state);
    const zsp::ec::AdaptRule rule = {
        {c.errors.rows[0], c.bands}, c.gain.data(), c.forget.data(), 0.4F, 1e-9F};
    const zsp::ec::AdaptRows rows = {c.pointers, c.adapt.rows.data(), c.variance.rows.data()};
    for (auto _ : state) {
        if constexpr (fast)
            zsp::ec::adaptAvx2(rule, rows);
        else
            zsp::ec::adaptScalar(rule, rows, 0);
        benchmark::ClobberMemory();
    }
}

BENCHMARK(adapt<false>)->Name("subbandAdapt/definition")->Apply(shapes);
BENCHMARK(adapt<true>)->Name("subbandAdapt/avx2")->Apply(shapes);

} // namespace
