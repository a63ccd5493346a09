#include "bench/support/pool.hpp"
#include "common/fft/real_fft.hpp"

#include <benchmark/benchmark.h>

#include <cstddef>
#include <vector>

#ifdef ZSPSC_PEER_FFTW
#include <fftw3.h>
#endif

namespace {

using namespace zsp::common;

/// A plan with its work area, and a signal with its bins.
struct Fft {
    explicit Fft(const benchmark::State& state)
        : order(static_cast<int>(state.range(0))), n(std::size_t{1} << order),
          planStorage(static_cast<std::size_t>(realFftPlanSize(order))),
          work(static_cast<std::size_t>(realFftWorkSize(order)) / sizeof(float)), time(n),
          bins(n / 2 + 1), plan(initRealFft(planStorage.data(), order))
    {
    }

    void fill()
    {
        zsp::bench::WordPool pool(1);
        const auto words = pool.next(n);
        time.assign(words.begin(), words.end());
        realFftForward(*plan, time, bins, work.data());
    }

    int order;
    std::size_t n;
    std::vector<std::byte> planStorage;
    std::vector<float> work, time;
    std::vector<Zsp32fc> bins;
    const RealFftPlan* plan;
};

template <typename Transform>
void run(benchmark::State& state, Transform transform)
{
    for (auto _ : state) {
        transform();
        benchmark::ClobberMemory();
    }
}

void forward(benchmark::State& state)
{
    Fft fft(state);
    fft.fill();
    run(state, [&] { realFftForward(*fft.plan, fft.time, fft.bins, fft.work.data()); });
}

void inverse(benchmark::State& state)
{
    Fft fft(state);
    fft.fill();
    run(state, [&] { realFftInverse(*fft.plan, fft.bins, fft.time, fft.work.data()); });
}

BENCHMARK(forward)->Name("realFft/avx2")->DenseRange(1, 12);
BENCHMARK(inverse)->Name("realFftInverse/avx2")->DenseRange(1, 12);

#ifdef ZSPSC_PEER_FFTW
void forwardFftw(benchmark::State& state)
{
    Fft fft(state);
    auto* bins = reinterpret_cast<fftwf_complex*>(fft.bins.data());
    const fftwf_plan plan =
        fftwf_plan_dft_r2c_1d(static_cast<int>(fft.n), fft.time.data(), bins, FFTW_MEASURE);
    fft.fill();
    run(state, [&] { fftwf_execute(plan); });
    fftwf_destroy_plan(plan);
}

// Like ours, the inverse keeps its input.
void inverseFftw(benchmark::State& state)
{
    Fft fft(state);
    auto* bins = reinterpret_cast<fftwf_complex*>(fft.bins.data());
    const fftwf_plan plan = fftwf_plan_dft_c2r_1d(static_cast<int>(fft.n), bins, fft.time.data(),
                                                  FFTW_MEASURE | FFTW_PRESERVE_INPUT);
    fft.fill();
    run(state, [&] { fftwf_execute(plan); });
    fftwf_destroy_plan(plan);
}

BENCHMARK(forwardFftw)->Name("realFft/fftw")->DenseRange(1, 12);
BENCHMARK(inverseFftw)->Name("realFftInverse/fftw")->DenseRange(1, 12);
#endif

} // namespace
