// Both filters of a canceller's bins, and the update of the adaptive taps: one frame of 2.5 ms with
// tails of 128 ms, in rows padded to whole vectors as a canceller has them.

#include "ec/subband_filter.hpp"

#include "bench/support/pool.hpp"

#include <benchmark/benchmark.h>

#include <cstddef>
#include <vector>

namespace {

/// numTaps rows of numBands values, one behind another.
template <typename T>
struct Rows {
    Rows(std::size_t taps, std::size_t bands, T value) : values(taps * bands, value)
    {
        for (std::size_t t = 0; t < taps; ++t)
            rows.push_back(values.data() + t * bands);
    }
    std::vector<T> values;
    std::vector<T*> rows;
};

struct Canceller {
    explicit Canceller(const benchmark::State& state)
        : bands(static_cast<std::size_t>(state.range(0))),
          taps(static_cast<std::size_t>(state.range(1))), history(taps, bands, {}),
          adapt(taps, bands, {}), fixed(taps, bands, {}), variance(taps, bands, 1e-3F),
          errors(3, bands, {1, -2}), powers(2, bands, 0), gain(bands, 1e-9F), forget(bands, 1e-4F)
    {
        zsp::bench::WordPool pool(1);
        for (Rows<Zsp32fc>* rows : {&history, &adapt, &fixed})
            for (Zsp32fc& v : rows->values) {
                const auto words = pool.next(2);
                v = {static_cast<float>(words[0]), static_cast<float>(words[1])};
            }
        pointers.assign(history.rows.begin(), history.rows.end());
    }

    std::size_t bands, taps;
    Rows<Zsp32fc> history, adapt, fixed;
    Rows<float> variance;
    Rows<Zsp32fc> errors;
    Rows<float> powers;
    std::vector<float> gain, forget;
    std::vector<const Zsp32fc*> pointers;
};

template <bool fast>
void filter(benchmark::State& state)
{
    Canceller c(state);
    const zsp::ec::FilterRows rows = {c.pointers, c.adapt.rows.data(), c.fixed.rows.data(),
                                      c.variance.rows.data()};
    const std::span<const Zsp32fc> src(c.errors.rows[2], c.bands);
    const zsp::ec::FilterResults out = {c.errors.rows[0], c.errors.rows[1], c.powers.rows[0],
                                        c.powers.rows[1]};
    for (auto _ : state) {
        if constexpr (fast)
            zsp::ec::filterAvx2(rows, src, out);
        else
            zsp::ec::filterScalar(rows, src, out, 0);
        benchmark::ClobberMemory();
    }
}

template <bool fast>
void adapt(benchmark::State& state)
{
    Canceller c(state);
    const zsp::ec::AdaptRule rule = {
        {c.errors.rows[0], c.bands}, c.gain.data(), c.forget.data(), 0.4F, 1e-9F};
    const zsp::ec::AdaptRows rows = {c.pointers, c.adapt.rows.data(), c.variance.rows.data()};
    for (auto _ : state) {
        if constexpr (fast)
            zsp::ec::adaptAvx2(rule, rows);
        else
            zsp::ec::adaptScalar(rule, rows, 0);
        benchmark::ClobberMemory();
    }
}

/// Bins and taps at 8 and 16 kHz, without padding and with.
void shapes(benchmark::internal::Benchmark* benchmark)
{
    benchmark->Args({17, 55})->Args({20, 55})->Args({33, 55})->Args({36, 55});
}

BENCHMARK(filter<false>)->Name("subbandFilter/definition")->Apply(shapes);
BENCHMARK(filter<true>)->Name("subbandFilter/avx2")->Apply(shapes);
BENCHMARK(adapt<false>)->Name("subbandAdapt/definition")->Apply(shapes);
BENCHMARK(adapt<true>)->Name("subbandAdapt/avx2")->Apply(shapes);

} // namespace
