// The discrete Fourier transform of real signals, summed as it is written: the reference that the
// fast transforms are compared with.
//
//   bin k      X[k] = sum of x[n] e^(-2 pi i k n / N)
//   sample n   x[n] = 1/N sum of X[k] e^(2 pi i k n / N) over k = 0 .. N-1, where X[N-k] is the
//              conjugate of X[k]; of bins 0 and N/2 only the real parts count
//
// In double precision. A root of unity is rotated by one step from term to term, which accumulates
// an error of at most N units in the last place over N steps.
#pragma once

#include <cmath>
#include <cstddef>
#include <numbers>
#include <span>

namespace zsp::common {

struct Root {
    double re, im;

    friend Root operator*(Root a, Root b) noexcept
    {
        return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re};
    }
};

/// e^(-2 pi i k / n), exact at the quarters.
inline Root root(std::size_t k, std::size_t n) noexcept
{
    k %= n;
    if (4 * k % n == 0) {
        constexpr Root kQuarters[] = {{1, 0}, {0, -1}, {-1, 0}, {0, 1}};
        return kQuarters[4 * k / n];
    }
    const double angle = 2 * std::numbers::pi * static_cast<double>(k) / static_cast<double>(n);
    return {std::cos(angle), -std::sin(angle)};
}

/// Bin k of a signal.
template <typename Sample>
Root dftBin(std::span<const Sample> time, std::size_t k) noexcept
{
    const Root step = root(k, time.size());
    Root w{1, 0}, sum{0, 0};
    for (const Sample sample : time) {
        sum.re += static_cast<double>(sample) * w.re;
        sum.im += static_cast<double>(sample) * w.im;
        w = w * step;
    }
    return sum;
}

/// Sample n of the signal with bins 0 .. N/2, records of `re` and `im`.
template <typename Bin>
double dftSample(std::span<const Bin> bins, std::size_t n) noexcept
{
    const std::size_t half = bins.size() - 1;
    const Root step = root(n, 2 * half);
    double sum = static_cast<double>(bins[0].re);
    Root w = step;
    for (std::size_t k = 1; k < half; ++k) {
        // the conjugate bin doubles the real part of bins[k] conj w
        sum +=
            2 * (static_cast<double>(bins[k].re) * w.re + static_cast<double>(bins[k].im) * w.im);
        w = w * step;
    }
    sum += static_cast<double>(bins[half].re) * (n % 2 == 0 ? 1 : -1);
    return sum / static_cast<double>(2 * half);
}

} // namespace zsp::common
