#include "alc/alc_g169.hpp"
#include "alc/alc_g169_rule.hpp"
#include "bench/support/pool.hpp"

#include <benchmark/benchmark.h>

namespace {

using namespace zsp::alc;

void levelControlScalar(zsp::In16 src, zsp::Out16 dst, State& s) noexcept
{
    for (std::size_t i = 0; i < src.size(); i += kBlock) {
        const InBlock x = src.subspan(i).first<kBlock>();
        update(s, measureScalar(x));
        amplifyScalar(x, s.gain, dst.subspan(i).first<kBlock>());
    }
}

// A frame of 20 ms. The pool's level moves between frames, so that spurts open and close.
void levelControl(benchmark::State& state, void (*control)(zsp::In16, zsp::Out16, State&) noexcept)
{
    const auto len = static_cast<std::size_t>(state.range(0));
    zsp::bench::WordPool loud(1, 3000), quiet(2, 20);
    std::vector<std::int16_t> dst(len);
    State s = initialState();
    std::size_t frame = 0;
    for (auto _ : state) {
        control((++frame & 64 ? quiet : loud).next(len), dst, s);
        benchmark::DoNotOptimize(dst.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

BENCHMARK_CAPTURE(levelControl, definition, levelControlScalar)->Arg(160);
BENCHMARK_CAPTURE(levelControl, avx2, zsp::alc::levelControl)->Arg(160);

} // namespace
