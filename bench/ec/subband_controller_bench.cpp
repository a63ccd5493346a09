// The controller's two loops over the bins of a frame.

#include "core/state.hpp"
#include "ec/subband_controller.hpp"
#include "zspsc.h"

#include <benchmark/benchmark.h>

#include <cstddef>
#include <vector>

namespace {

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

} // namespace
