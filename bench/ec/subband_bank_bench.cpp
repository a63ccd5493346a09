// One frame of the sub-band filter bank, and the same with a peer's transform.

#include "bench/support/pool.hpp"
#include "ec/subband_fold.hpp"
#include "zspsc/ec/bank.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstddef>
#include <vector>

#ifdef ZSPSC_PEER_FFTW
#include <fftw3.h>
#endif

namespace {

/// A filter bank of (order, hop, taps) in buffers of the reported sizes, with a pool of samples.
template <typename Sample, auto getSize, auto init>
struct Bank {
    explicit Bank(const benchmark::State& benchmarkState)
        : order(static_cast<std::int32_t>(benchmarkState.range(0))),
          hop(static_cast<std::size_t>(benchmarkState.range(1))),
          taps(static_cast<std::size_t>(benchmarkState.range(2))), window(taps)
    {
        zsp::bench::WordPool pool(1, 8191);
        std::ranges::copy(pool.next(taps), window.begin());
        const auto words = pool.next(4096);
        samples.assign(words.begin(), words.end());
        const auto len = static_cast<std::int32_t>(taps);
        std::int32_t stateSize = 0, initSize = 0, workSize = 0;
        getSize(order, len, &stateSize, &initSize, &workSize);
        state.resize(static_cast<std::size_t>(stateSize));
        work.resize(static_cast<std::size_t>(workSize));
        init(state.data(), order, static_cast<std::int32_t>(hop), len, window.data(), nullptr);
    }

    const Sample* next()
    {
        at = (at + hop) % (samples.size() - 2 * hop);
        return &samples[at];
    }

    std::int32_t order;
    std::size_t hop, taps, at = 0;
    std::vector<Sample> window, samples;
    std::vector<std::byte> state, work;
};

using FloatBank = Bank<float, zspsSubbandProcessGetSize_32f, zspsSubbandProcessInit_32f>;
using FixedBank = Bank<std::int16_t, zspsSubbandProcessGetSize_16s, zspsSubbandProcessInit_16s>;

void analysis32f(benchmark::State& state)
{
    FloatBank bank(state);
    std::vector<Zsp32fc> bins(65);
    for (auto _ : state) {
        zspsSubbandAnalysis_32f32fc(bank.next(), bins.data(), bank.state.data(), bank.work.data());
        benchmark::ClobberMemory();
    }
}

void synthesis32f(benchmark::State& state)
{
    FloatBank bank(state);
    const std::vector<Zsp32fc> bins(65, {100, -50});
    std::vector<float> frame(bank.hop);
    for (auto _ : state) {
        zspsSubbandSynthesis_32fc32f(bins.data(), frame.data(), bank.state.data(),
                                     bank.work.data());
        benchmark::ClobberMemory();
    }
}

void analysis16s(benchmark::State& state)
{
    FixedBank bank(state);
    std::vector<Zsp32sc> bins(65);
    for (auto _ : state) {
        zspsSubbandAnalysis_16s32sc_Sfs(bank.next(), bins.data(), bank.state.data(), 2,
                                        bank.work.data());
        benchmark::ClobberMemory();
    }
}

void synthesis16s(benchmark::State& state)
{
    FixedBank bank(state);
    const std::vector<Zsp32sc> bins(65, {100, -50});
    std::vector<std::int16_t> frame(bank.hop);
    for (auto _ : state) {
        zspsSubbandSynthesis_32sc16s_Sfs(bins.data(), frame.data(), bank.state.data(), 2,
                                         bank.work.data());
        benchmark::ClobberMemory();
    }
}

/// Order, hop and taps of the built-in windows.
void shapes(benchmark::internal::Benchmark* benchmark)
{
    benchmark->Args({5, 24, 128})->Args({6, 44, 256});
}

BENCHMARK(analysis32f)->Name("subbandAnalysis_32f/export")->Apply(shapes);
BENCHMARK(synthesis32f)->Name("subbandSynthesis_32f/export")->Apply(shapes);
BENCHMARK(analysis16s)->Name("subbandAnalysis_16s/export")->Apply(shapes);
BENCHMARK(synthesis16s)->Name("subbandSynthesis_16s/export")->Apply(shapes);

#ifdef ZSPSC_PEER_FFTW
// The same frame on a shifted delay line, with the peer's transform.
void analysisFftw(benchmark::State& state)
{
    FloatBank bank(state);
    const std::size_t n = std::size_t{1} << bank.order;
    std::vector<float> delay(bank.taps), fold(n);
    std::vector<Zsp32fc> bins(n / 2 + 1);
    const fftwf_plan plan =
        fftwf_plan_dft_r2c_1d(static_cast<int>(n), fold.data(),
                              reinterpret_cast<fftwf_complex*>(bins.data()), FFTW_MEASURE);
    for (auto _ : state) {
        std::copy(delay.begin() + static_cast<std::ptrdiff_t>(bank.hop), delay.end(),
                  delay.begin());
        std::copy_n(bank.next(), bank.hop, delay.end() - static_cast<std::ptrdiff_t>(bank.hop));
        zsp::ec::foldAvx2(delay, bank.window, fold);
        fftwf_execute(plan);
        benchmark::ClobberMemory();
    }
    fftwf_destroy_plan(plan);
}

BENCHMARK(analysisFftw)->Name("subbandAnalysis_32f/fftw")->Apply(shapes);
#endif

} // namespace
