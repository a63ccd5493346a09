// The real FFT by order, forwards and backwards.

#include "bench/support/peers.hpp"
#include "bench/support/pool.hpp"
#include "bench/support/versions.hpp"
#include "common/fft/real_fft.hpp"

#include <cstddef>
#include <vector>

namespace {

using namespace zsp::bench;
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
        WordPool pool(1);
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

using Transform = void (*)(Fft&);

void run(benchmark::State& state, Transform kernel)
{
    Fft fft(state);
    fft.fill();
    loop(state, fft.n, [&] { kernel(fft); });
}

const Runs kOrders = {{1}, {2}, {3}, {4}, {5}, {6}, {7}, {8}, {9}, {10}, {11}, {12}};

const bool registered[] = {
    add<Transform>(
        "realFft", run,
        {{"definition", [](Fft& f) { realFftForwardScalar(f.time, f.bins); }},
         {"avx2", [](Fft& f) { realFftForward(*f.plan, f.time, f.bins, f.work.data()); }}},
        kOrders),
    add<Transform>(
        "realFftInverse", run,
        {{"definition", [](Fft& f) { realFftInverseScalar(f.bins, f.time); }},
         {"avx2", [](Fft& f) { realFftInverse(*f.plan, f.bins, f.time, f.work.data()); }}},
        kOrders),
};

#ifdef ZSPSC_PEER_FFTW
void forwardFftw(benchmark::State& state)
{
    Fft fft(state);
    auto* bins = reinterpret_cast<fftwf_complex*>(fft.bins.data());
    const fftwf_plan plan =
        fftwf_plan_dft_r2c_1d(static_cast<int>(fft.n), fft.time.data(), bins, FFTW_MEASURE);
    fft.fill();
    loop(state, fft.n, [&] { fftwf_execute(plan); });
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
    loop(state, fft.n, [&] { fftwf_execute(plan); });
    fftwf_destroy_plan(plan);
}

BENCHMARK(forwardFftw)->Name("realFft/fftw")->DenseRange(1, 12);
BENCHMARK(inverseFftw)->Name("realFftInverse/fftw")->DenseRange(1, 12);
#endif

} // namespace
