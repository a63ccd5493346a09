// What the exports on floats keep, in sizes of tests and of benchmarks: a filter bank, and the rows
// of a canceller.
#pragma once

#include "zspsc/ec/bank.h"
#include "zspsc/ec/controller.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace zsp::test::denormals {

/// 33 bins from frames of 44 samples.
struct Bank {
    Bank()
    {
        std::int32_t stateSize = 0, initSize = 0, workSize = 0;
        zspsSubbandProcessGetSize_32f(6, 256, &stateSize, &initSize, &workSize);
        state.resize(static_cast<std::size_t>(stateSize));
        work.resize(static_cast<std::size_t>(workSize));
        zspsSubbandProcessInit_32f(state.data(), 6, 44, 256, nullptr, nullptr);
    }
    std::vector<std::byte> state, work;
};

/// Rows of bins, as an array of pointers gives them to an export.
template <typename T>
struct BinRows {
    BinRows(std::size_t taps, std::size_t bands, T value = {}) : values(taps * bands, value)
    {
        for (std::size_t t = 0; t < taps; ++t) {
            in.push_back(&values[t * bands]);
            out.push_back(&values[t * bands]);
        }
    }
    BinRows(const BinRows&) = delete;
    BinRows& operator=(const BinRows&) = delete;

    std::vector<T> values;
    std::vector<const T*> in;
    std::vector<T*> out;
};

/// Both filters of a canceller, its far end, and a controller.
struct Canceller {
    Canceller(std::size_t numberOfBands, std::size_t numberOfTaps)
        : bands(numberOfBands), taps(numberOfTaps), far(taps, bands), adapt(taps, bands),
          fixed(taps, bands), variance(taps, bands, 1e-3F), controller(16 * bands + 112)
    {
        zspsSubbandControllerInit_EC_32f(controller.data(), static_cast<std::int32_t>(bands), 40,
                                         static_cast<std::int32_t>(taps), 16000);
    }
    /// Every frame of bins takes the place of the oldest.
    void receive(const Zsp32fc* bins)
    {
        std::copy_n(bins, bands, far.out[newest]);
        newest = (newest + 1) % taps;
    }

    std::size_t bands, taps, newest = 0;
    BinRows<Zsp32fc> far, adapt, fixed;
    BinRows<float> variance;
    std::vector<std::byte> controller;
};

} // namespace zsp::test::denormals
