// What Kaiser windows are made of.
#pragma once

#include <algorithm>
#include <cmath>

namespace zsp::voice {

/// Modified Bessel function of order 0, by its power series.
inline double besselI0(double x) noexcept
{
    double term = 1, sum = 1;
    for (int k = 1; term > 1e-12 * sum; ++k) {
        term *= (x / (2 * k)) * (x / (2 * k));
        sum += term;
    }
    return sum;
}

/// A Kaiser window, not normalised, at u from -1 to 1.
inline double kaiser(double beta, double u) noexcept
{
    return besselI0(beta * std::sqrt(std::max(0.0, 1 - u * u)));
}

} // namespace zsp::voice
