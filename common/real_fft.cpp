// Real FFT of N points: a complex FFT of N/2 points, even samples as real and odd samples as
// imaginary parts, and one pass that separates the two.

#include "real_fft.hpp"

#include "state.hpp"

#include <cassert>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <utility>

namespace zsp::common {

namespace {

std::size_t points(int order) noexcept
{
    return std::size_t{1} << order;
}

Zsp32fc operator+(Zsp32fc a, Zsp32fc b) noexcept
{
    return {a.re + b.re, a.im + b.im};
}

Zsp32fc operator-(Zsp32fc a, Zsp32fc b) noexcept
{
    return {a.re - b.re, a.im - b.im};
}

Zsp32fc operator*(Zsp32fc a, Zsp32fc b) noexcept
{
    return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re};
}

Zsp32fc conj(Zsp32fc a) noexcept
{
    return {a.re, -a.im};
}

/// e^(-2 pi i k / n)
Zsp32fc root(std::size_t k, std::size_t n) noexcept
{
    const double angle = 2 * std::numbers::pi * static_cast<double>(k) / static_cast<double>(n);
    return {static_cast<float>(std::cos(angle)), static_cast<float>(-std::sin(angle))};
}

Zsp32fc swapped(Zsp32fc a) noexcept
{
    return {a.im, a.re};
}

// Complex FFT of n points in natural order (Stockham). Returns the one of x and y with the result.
Zsp32fc* complexFft(Zsp32fc* x, Zsp32fc* y, std::size_t n, const Zsp32fc* roots) noexcept
{
    const std::size_t all = n;
    for (std::size_t stride = 1; n > 1; n /= 2, stride *= 2) {
        const std::size_t half = n / 2;
        for (std::size_t p = 0; p < half; ++p) {
            const Zsp32fc w = roots[2 * p * (all / n)];
            for (std::size_t q = 0; q < stride; ++q) {
                const Zsp32fc a = x[q + stride * p];
                const Zsp32fc b = x[q + stride * (p + half)];
                y[q + stride * 2 * p] = a + b;
                y[q + stride * (2 * p + 1)] = (a - b) * w;
            }
        }
        std::swap(x, y);
    }
    return x;
}

} // namespace

std::int64_t realFftPlanSize(int order) noexcept
{
    const auto n = static_cast<std::int64_t>(points(order));
    return static_cast<std::int64_t>(sizeof(RealFftPlan) + 3 * kFftAlignment) + 4 * n;
}

std::int64_t realFftWorkSize(int order) noexcept
{
    return 8 * static_cast<std::int64_t>(points(order)) +
           static_cast<std::int64_t>(2 * kFftAlignment);
}

const RealFftPlan* initRealFft(void* storage, int order) noexcept
{
    assert(1 <= order && order <= kMaxFftOrder);
    const std::size_t n = points(order);
    auto* plan = static_cast<RealFftPlan*>(alignUp(storage, kFftAlignment));
    auto* factors = static_cast<Zsp32fc*>(alignUp(plan + 1, kFftAlignment));
    for (std::size_t k = 0; k < n / 2; ++k)
        factors[k] = root(k, n);
    *plan = {order, &factors[0].re};
    return plan;
}

void realFftForward(const RealFftPlan& plan, InF time, OutBins bins, float* work) noexcept
{
    const std::size_t half = points(plan.order) / 2;
    const auto* roots = reinterpret_cast<const Zsp32fc*>(plan.factors);
    auto* x = reinterpret_cast<Zsp32fc*>(work);
    for (std::size_t n = 0; n < half; ++n)
        x[n] = {time[2 * n], time[2 * n + 1]};
    const Zsp32fc* z = complexFft(x, x + half, half, roots);
    bins[0] = {z[0].re + z[0].im, 0};
    bins[half] = {z[0].re - z[0].im, 0};
    for (std::size_t k = 1; k < half; ++k) {
        const Zsp32fc even = z[k] + conj(z[half - k]);
        const Zsp32fc odd = roots[k] * (z[k] - conj(z[half - k]));
        bins[k] = {0.5F * (even.re + odd.im), 0.5F * (even.im - odd.re)};
    }
}

void realFftInverse(const RealFftPlan& plan, InBins bins, OutF time, float* work) noexcept
{
    const std::size_t half = points(plan.order) / 2;
    const float scale = 1 / static_cast<float>(points(plan.order));
    const auto* roots = reinterpret_cast<const Zsp32fc*>(plan.factors);
    auto* x = reinterpret_cast<Zsp32fc*>(work);
    // With real and imaginary parts exchanged, the forward transform is the inverse one.
    x[0] = {bins[0].re - bins[half].re, bins[0].re + bins[half].re};
    for (std::size_t k = 1; k < half; ++k) {
        const Zsp32fc even = bins[k] + conj(bins[half - k]);
        const Zsp32fc odd = (bins[k] - conj(bins[half - k])) * conj(roots[k]);
        x[k] = swapped({even.re - odd.im, even.im + odd.re});
    }
    const Zsp32fc* z = complexFft(x, x + half, half, roots);
    for (std::size_t n = 0; n < half; ++n) {
        time[2 * n] = scale * z[n].im;
        time[2 * n + 1] = scale * z[n].re;
    }
}

} // namespace zsp::common
