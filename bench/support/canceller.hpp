// What a sub-band canceller has in memory, for the benchmarks of its inner loops: one frame of 2.5
// ms with tails of 128 ms, in rows padded to whole vectors or not.
#pragma once

#include "bench/support/pool.hpp"
#include "bench/support/versions.hpp"
#include "zspsc/types.h"

#include <cstddef>
#include <vector>

namespace zsp::bench {

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
        WordPool pool(1);
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

/// Bins and taps at 8 and 16 kHz, without padding and with.
inline const Runs kCancellerRuns = {{17, 55}, {20, 55}, {33, 55}, {36, 55}};

} // namespace zsp::bench
