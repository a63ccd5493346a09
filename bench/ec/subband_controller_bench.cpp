// The controller's two loops over the bins of a frame.

#include "bench/support/versions.hpp"
#include "core/state.hpp"
#include "ec/subband_controller.hpp"
#include "zspsc/ec/controller.h"

#include <cstddef>
#include <vector>

namespace {

using namespace zsp::bench;
using namespace zsp::ec;

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

    ControllerState& state() { return *zsp::alignedState<ControllerState>(buffer.data()); }

    std::size_t bands, taps;
    std::vector<double> steps;
    std::vector<std::byte> buffer;
    std::vector<std::vector<Zsp32fc>> filters;
    std::vector<Zsp32fc*> adapt, fixed;
    FilterPair pair{};
};

using Compare = void (*)(Controller&);

void compareFilters(benchmark::State& state, Compare kernel)
{
    Controller c(state);
    loop(state, c.bands * c.taps, [&] { kernel(c); });
}

using StepSizes = decltype(&stepSizesScalar);

void stepSizes(benchmark::State& state, StepSizes kernel)
{
    Controller c(state);
    loop(state, c.bands, [&] {
        kernel({0.5F, 1e6F, 1e-9F}, c.filters[0], c.filters[1], {c.state().inputPower, c.bands},
               c.steps);
    });
}

const bool registered[] = {
    add<Compare>(
        "compareFilters", compareFilters,
        {{"definition",
          [](Controller& c) {
              benchmark::DoNotOptimize(compareFiltersScalar(c.state(), c.pair, 0, {}));
          }},
         {"avx2",
          [](Controller& c) { benchmark::DoNotOptimize(compareFiltersAvx2(c.state(), c.pair)); }}},
        {{17, 54}, {33, 55}}),
    add<StepSizes>("stepSizes", stepSizes,
                   {{"definition", stepSizesScalar}, {"avx2", stepSizesAvx2}}, {{17, 1}, {33, 1}}),
};

} // namespace
