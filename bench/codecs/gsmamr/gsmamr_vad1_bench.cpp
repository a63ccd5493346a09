#include "bench/support/pool.hpp"
#include "codecs/gsmamr/gsmamr_vad1.hpp"

#include <benchmark/benchmark.h>

#include <algorithm>

namespace {

using Kernel = bool (*)(zsp::gsmamr::Vad1Source, Vad1State&, std::int16_t, std::int16_t) noexcept;

void run(benchmark::State& bench, Kernel kernel)
{
    zsp::bench::WordPool pool(1, 3000);
    Vad1State state{};
    std::ranges::fill(state.old_level, std::int16_t{150});
    std::ranges::fill(state.ave_level, std::int16_t{150});
    std::ranges::fill(state.bckr_est, std::int16_t{150});
    state.corr_hp_fast = 13106;
    for (auto _ : bench)
        benchmark::DoNotOptimize(
            kernel(pool.next(zsp::gsmamr::kVad1Source).first<200>(), state, 0, 13106));
    bench.SetItemsProcessed(bench.iterations() * 160);
}

BENCHMARK_CAPTURE(run, vad1 / definition / 160, zsp::gsmamr::vad1Scalar);
BENCHMARK_CAPTURE(run, vad1 / avx2 / 160, zsp::gsmamr::vad1Avx2);

} // namespace
