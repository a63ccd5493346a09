#include "bench/support/pool.hpp"
#include "common/scaling/mul_nr.hpp"

#include <benchmark/benchmark.h>

namespace {

using Kernel = void (*)(zsp::In16, zsp::In16, zsp::Out16, int) noexcept;

void run(benchmark::State& state, Kernel kernel)
{
    zsp::bench::WordPool a(1), b(2);
    const auto len = static_cast<std::size_t>(state.range(0));
    std::vector<std::int16_t> out(len);
    for (auto _ : state) {
        kernel(a.next(len), b.next(len), out, 15);
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

BENCHMARK_CAPTURE(run, mulNr / definition, zsp::common::mulNrScalar)->Arg(40)->Arg(160)->Arg(320);
BENCHMARK_CAPTURE(run, mulNr / avx2, zsp::common::mulNrAvx2)->Arg(40)->Arg(160)->Arg(320);

} // namespace
