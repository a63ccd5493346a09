// One frame of the echo canceller's building blocks: filter bank, controller, tone detector.

#include "bench/support/pool.hpp"
#include "core/state.hpp"
#include "ec/subband_controller.hpp"
#include "ec/subband_fold.hpp"

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

template <typename Sample>
using Loop = void (*)(std::span<const Sample>, std::span<const Sample>, std::span<Sample>) noexcept;

template <typename Sample, Loop<Sample> kernel>
void fold(benchmark::State& state)
{
    zsp::bench::WordPool pool(1);
    const auto words = pool.next(512);
    const std::vector<Sample> delay(words.begin(), words.begin() + 256);
    const std::vector<Sample> window(words.begin() + 256, words.end());
    std::vector<Sample> block(64);
    for (auto _ : state) {
        kernel(delay, window, block);
        benchmark::ClobberMemory();
    }
}

template <typename Sample, Loop<Sample> kernel>
void overlapAdd(benchmark::State& state)
{
    zsp::bench::WordPool pool(1);
    const auto words = pool.next(512);
    const std::vector<Sample> time(words.begin(), words.begin() + 64);
    const std::vector<Sample> window(words.begin() + 256, words.end());
    std::vector<Sample> delay(256);
    for (auto _ : state) {
        kernel(time, window, delay);
        benchmark::ClobberMemory();
    }
}

using zsp::ec::foldAvx2, zsp::ec::foldScalar;
using zsp::ec::overlapAddAvx2, zsp::ec::overlapAddScalar;
using Words = std::int16_t;

BENCHMARK(fold<float, foldScalar>)->Name("fold_32f/definition/256");
BENCHMARK(fold<float, foldAvx2>)->Name("fold_32f/avx2/256");
BENCHMARK(fold<Words, foldScalar>)->Name("fold_16s/definition/256");
BENCHMARK(fold<Words, foldAvx2>)->Name("fold_16s/avx2/256");
BENCHMARK(overlapAdd<float, overlapAddScalar>)->Name("overlapAdd_32f/definition/256");
BENCHMARK(overlapAdd<float, overlapAddAvx2>)->Name("overlapAdd_32f/avx2/256");
BENCHMARK(overlapAdd<Words, overlapAddScalar>)->Name("overlapAdd_16s/definition/256");
BENCHMARK(overlapAdd<Words, overlapAddAvx2>)->Name("overlapAdd_16s/avx2/256");

/// A controller of so many bins and taps on filters that neither save nor restore.
struct Controller {
    explicit Controller(const benchmark::State& benchmarkState)
        : bands(static_cast<std::size_t>(benchmarkState.range(0))),
          taps(static_cast<std::size_t>(benchmarkState.range(1))), steps(bands),
          buffer(16 * bands + 112), filters(2 * taps + 2, std::vector<Zsp32fc>(bands, {1, 2}))
    {
        zspsSubbandControllerInit_EC_32f(buffer.data(), static_cast<std::int32_t>(bands), 40,
                                         static_cast<std::int32_t>(taps), 16000);
        for (std::size_t t = 0; t < taps; ++t) {
            adapt.push_back(filters[2 * t].data());
            fixed.push_back(filters[2 * t + 1].data());
        }
        pair = {filters[2 * taps].data(), filters[2 * taps + 1].data(), adapt.data(), fixed.data()};
    }

    zsp::ec::ControllerState& state()
    {
        return *zsp::alignedState<zsp::ec::ControllerState>(buffer.data());
    }

    std::size_t bands, taps;
    std::vector<double> steps;
    std::vector<std::byte> buffer;
    std::vector<std::vector<Zsp32fc>> filters;
    std::vector<Zsp32fc*> adapt, fixed;
    zsp::ec::FilterPair pair{};
};

template <bool fast>
void compareFilters(benchmark::State& state)
{
    Controller c(state);
    for (auto _ : state) {
        if constexpr (fast)
            benchmark::DoNotOptimize(zsp::ec::compareFiltersAvx2(c.state(), c.pair));
        else
            benchmark::DoNotOptimize(zsp::ec::compareFiltersScalar(c.state(), c.pair, 0, {}));
        benchmark::ClobberMemory();
    }
}

template <bool fast>
void stepSizes(benchmark::State& state)
{
    Controller c(state);
    const auto kernel = fast ? zsp::ec::stepSizesAvx2 : zsp::ec::stepSizesScalar;
    for (auto _ : state) {
        kernel({0.5F, 1e6F, 1e-9F}, c.filters[0], c.filters[1], {c.state().inputPower, c.bands},
               c.steps);
        benchmark::ClobberMemory();
    }
}

BENCHMARK(compareFilters<false>)->Name("compareFilters/definition")->Args({17, 54})->Args({33, 55});
BENCHMARK(compareFilters<true>)->Name("compareFilters/avx2")->Args({17, 54})->Args({33, 55});
BENCHMARK(stepSizes<false>)->Name("stepSizes/definition")->Args({17, 1})->Args({33, 1});
BENCHMARK(stepSizes<true>)->Name("stepSizes/avx2")->Args({17, 1})->Args({33, 1});

/// Ten milliseconds of noise, or of the silence after a tone.
void toneDetect(benchmark::State& state, bool silence)
{
    const auto len = static_cast<std::size_t>(state.range(0)) / 100;
    std::vector<std::byte> detector(80);
    zspsToneDetectInit_EC_32f(detector.data(), static_cast<std::int32_t>(state.range(0)));
    zsp::bench::WordPool pool(1);
    const auto words = pool.next(len);
    std::vector<float> block(words.begin(), words.end());
    std::int32_t result = 0;
    zspsToneDetect_EC_32f(block.data(), static_cast<std::int32_t>(len), &result, detector.data());
    if (silence) std::ranges::fill(block, 0.0F);
    for (auto _ : state) {
        zspsToneDetect_EC_32f(block.data(), static_cast<std::int32_t>(len), &result,
                              detector.data());
        benchmark::DoNotOptimize(result);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(len));
}

BENCHMARK_CAPTURE(toneDetect, noise, false)->Name("toneDetect/noise")->Arg(8000)->Arg(16000);
BENCHMARK_CAPTURE(toneDetect, silence, true)->Name("toneDetect/silence")->Arg(8000)->Arg(16000);

} // namespace
