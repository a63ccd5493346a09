// The real FFT between words and longs: conversion, transform in single precision, rounding.

#include "bench/support/pool.hpp"
#include "bench/support/versions.hpp"
#include "common/fft/real_fft_16s.hpp"

#include <cstddef>
#include <vector>

namespace {

using namespace zsp::bench;
using namespace zsp::common;

struct Fft {
    explicit Fft(const benchmark::State& state)
        : order(static_cast<int>(state.range(0))), n(std::size_t{1} << order),
          planStorage(static_cast<std::size_t>(realFftPlanSize(order))),
          work(static_cast<std::size_t>(realFft16sWorkSize(order)) / sizeof(float)), time(n),
          bins(n / 2 + 1, {100, -50}), plan(initRealFft(planStorage.data(), order))
    {
        WordPool pool(1);
        const auto words = pool.next(n);
        time.assign(words.begin(), words.end());
    }

    int order;
    std::size_t n;
    std::vector<std::byte> planStorage;
    std::vector<float> work;
    std::vector<std::int32_t> time;
    std::vector<Zsp32sc> bins;
    const RealFftPlan* plan;
};

using Transform = void (*)(Fft&);

void run(benchmark::State& state, Transform kernel)
{
    Fft fft(state);
    loop(state, fft.n, [&] { kernel(fft); });
}

const bool registered[] = {
    add<Transform>(
        "realFft16s", run,
        {{"avx2", [](Fft& f) { realFftForward16s(*f.plan, f.time, f.bins, 2, f.work.data()); }}},
        {{5}, {6}, {8}}),
    add<Transform>(
        "realFftInverse16s", run,
        {{"avx2", [](Fft& f) { realFftInverse16s(*f.plan, f.bins, f.time, 2, f.work.data()); }}},
        {{5}, {6}, {8}}),
};

} // namespace
