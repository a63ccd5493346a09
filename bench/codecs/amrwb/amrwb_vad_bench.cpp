#include "bench/support/pool.hpp"
#include "codecs/amrwb/amrwb_vad.hpp"

#include <benchmark/benchmark.h>

namespace {

using Kernel = bool (*)(zsp::amrwb::VadFrame, VadWbState&, std::int16_t&) noexcept;

void run(benchmark::State& bench, Kernel kernel)
{
    zsp::bench::WordPool pool(1, 3000);
    VadWbState state{};
    zsp::amrwb::vadInit(state);
    std::int16_t tone = 0;
    for (auto _ : bench)
        benchmark::DoNotOptimize(
            kernel(pool.next(zsp::amrwb::kVadFrame).first<256>(), state, tone));
    bench.SetItemsProcessed(bench.iterations() * 256);
}

BENCHMARK_CAPTURE(run, amrwbVad / definition / 256, zsp::amrwb::vadScalar);
BENCHMARK_CAPTURE(run, amrwbVad / avx2 / 256, zsp::amrwb::vadAvx2);

} // namespace
