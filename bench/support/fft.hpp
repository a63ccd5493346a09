// A real transform of state.range(0)'s order with its memory, for longs as for floats.
#pragma once

#include "bench/support/pool.hpp"
#include "bench/support/versions.hpp"
#include "common/fft/real_fft.hpp"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace zsp::bench {

template <typename Sample, typename Bin, std::int64_t (*workSize)(int) noexcept>
struct Fft {
    explicit Fft(const benchmark::State& state)
        : order(static_cast<int>(state.range(0))), n(std::size_t{1} << order),
          planStorage(static_cast<std::size_t>(common::realFftPlanSize(order))),
          work(static_cast<std::size_t>(workSize(order)) / sizeof(float)),
          plan(common::initRealFft(planStorage.data(), order))
    {
        fill();
    }

    void fill()
    {
        WordPool pool(1);
        const auto words = pool.next(n);
        time.assign(words.begin(), words.end());
        bins.assign(n / 2 + 1, {100, -50});
    }

    int order;
    std::size_t n;
    std::vector<std::byte> planStorage;
    std::vector<float> work;
    std::vector<Sample> time;
    std::vector<Bin> bins;
    const common::RealFftPlan* plan;
};

/// Measures transform(fft).
template <typename Memory>
void runTransform(benchmark::State& state, void (*transform)(Memory&))
{
    Memory fft(state);
    loop(state, fft.n, [&] { transform(fft); });
}

} // namespace zsp::bench
