// The real FFT by order, forwards and backwards.

#include "bench/support/fft.hpp"
#include "bench/support/peers.hpp"
#include "common/fft/real_fft.hpp"

namespace {

using namespace zsp::bench;
using namespace zsp::common;

using Memory = Fft<float, Zsp32fc, realFftWorkSize>;
using Transform = void (*)(Memory&);

const Runs kOrders = {{1}, {2}, {3}, {4}, {5}, {6}, {7}, {8}, {9}, {10}, {11}, {12}};

const bool registered[] = {
    add<Transform>(
        "realFft", runTransform<Memory>,
        {{"definition", [](Memory& f) { realFftForwardScalar(f.time, f.bins); }},
         {"avx2", [](Memory& f) { realFftForward(*f.plan, f.time, f.bins, f.work.data()); }}},
        kOrders),
    add<Transform>(
        "realFftInverse", runTransform<Memory>,
        {{"definition", [](Memory& f) { realFftInverseScalar(f.bins, f.time); }},
         {"avx2", [](Memory& f) { realFftInverse(*f.plan, f.bins, f.time, f.work.data()); }}},
        kOrders),
};

#ifdef ZSPSC_PEER_FFTW
void forwardFftw(benchmark::State& state)
{
    Memory fft(state);
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
    Memory fft(state);
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
