// Exact transforms to compare with, straight from the sums in long double.
#pragma once

#include "zspsc.h"

#include <cmath>
#include <complex>
#include <cstddef>
#include <numbers>
#include <vector>

namespace zsp::test {

using Exact = std::complex<long double>;

/// e^(2 pi i k / n) for k = 0 .. n-1
inline std::vector<Exact> roots(std::size_t n)
{
    std::vector<Exact> all(n);
    for (std::size_t k = 0; k < n; ++k)
        all[k] = std::polar(1.0L, 2 * std::numbers::pi_v<long double> *
                                      static_cast<long double>(k) / static_cast<long double>(n));
    return all;
}

/// Bins 0 .. N/2 of a real signal.
template <typename T>
std::vector<Exact> exactBins(const std::vector<T>& time)
{
    const std::size_t n = time.size();
    const auto root = roots(n);
    std::vector<Exact> bins(n / 2 + 1);
    for (std::size_t k = 0; k < bins.size(); ++k)
        for (std::size_t i = 0; i < n; ++i)
            bins[k] += static_cast<long double>(time[i]) * std::conj(root[i * k % n]);
    return bins;
}

/// The real signal of bins 0 .. N/2, whose first and last imaginary parts do not count.
template <typename Complex>
std::vector<long double> exactTime(const std::vector<Complex>& bins)
{
    const std::size_t half = bins.size() - 1, n = 2 * half;
    const auto root = roots(n);
    std::vector<long double> time(n);
    for (std::size_t i = 0; i < n; ++i) {
        long double sum = static_cast<long double>(bins[0].re) +
                          static_cast<long double>(bins[half].re) * (i % 2 ? -1 : 1);
        for (std::size_t k = 1; k < half; ++k) {
            const Exact& w = root[i * k % n];
            sum += 2 * (static_cast<long double>(bins[k].re) * w.real() -
                        static_cast<long double>(bins[k].im) * w.imag());
        }
        time[i] = sum / static_cast<long double>(n);
    }
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
