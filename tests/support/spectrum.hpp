// Transforms to compare with: the library's definition, over vectors.
#pragma once

#include "common/fft/dft.hpp"
#include "zspsc/types.h"

#include <cmath>
#include <complex>
#include <cstddef>
#include <span>
#include <vector>

namespace zsp::test {

using Exact = std::complex<long double>;

/// Bins 0 .. N/2 of a real signal.
template <typename T>
std::vector<Exact> exactBins(const std::vector<T>& time)
{
    std::vector<Exact> bins(time.size() / 2 + 1);
    for (std::size_t k = 0; k < bins.size(); ++k) {
        const common::Root bin = common::dftBin(std::span<const T>(time), k);
        bins[k] = {bin.re, bin.im};
    }
    return bins;
}

/// The real signal of bins 0 .. N/2, whose first and last imaginary parts do not count.
template <typename Complex>
std::vector<long double> exactTime(const std::vector<Complex>& bins)
{
    std::vector<long double> time(2 * (bins.size() - 1));
    for (std::size_t i = 0; i < time.size(); ++i)
        time[i] = common::dftSample(std::span<const Complex>(bins), i);
    return time;
}

inline Exact exact(const Zsp32fc& value)
{
    return {value.re, value.im};
}

inline Exact exact(float value)
{
    return value;
}

/// Energy of the error over energy of the wanted values, in decibels; -200 for no error.
template <typename Got, typename Want>
double errorDb(const std::vector<Got>& got, const std::vector<Want>& want)
{
    long double error = 0, energy = 0;
    for (std::size_t i = 0; i < want.size(); ++i) {
        error += std::norm(exact(got[i]) - Exact(want[i]));
        energy += std::norm(Exact(want[i]));
    }
    return error == 0 ? -200 : static_cast<double>(10 * std::log10(error / energy));
}

} // namespace zsp::test
