// Real FFT of words with a scale factor: conversion to single precision, the transform there, and
// one rounding of its results.

#include "common/fft/real_fft_16s.hpp"

#include "core/avx2.hpp"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <limits>

namespace zsp::common {

namespace {

/// Floats of an array that is followed by another one in the work area.
std::size_t paddedTo64Bytes(std::size_t floats) noexcept
{
    return (floats + 15) & ~std::size_t{15};
}

/// 2^-scaleFactor. Within 200 places every value has become less than a half, or has saturated.
double scaleOf(std::int32_t scaleFactor) noexcept
{
    const std::int32_t places = std::clamp(scaleFactor, -200, 200);
    return std::bit_cast<double>(static_cast<std::uint64_t>(1023 - places) << 52);
}

void toFloat(In32 from, float* to) noexcept
{
    std::transform(from.begin(), from.end(), to,
                   [](std::int32_t v) { return static_cast<float>(v); });
}

/// floor(value scale + 1/2), saturated to the range of T. Double precision holds the sum exactly as
/// far as it matters.
template <typename T>
void roundTo(InF from, double scale, Out32 to) noexcept
{
    constexpr double kMin = std::numeric_limits<T>::min(), kMax = std::numeric_limits<T>::max();
    const __m256d vScale = _mm256_set1_pd(scale), half = _mm256_set1_pd(0.5);
    const __m256d low = _mm256_set1_pd(kMin), high = _mm256_set1_pd(kMax);
    std::size_t i = 0;
    for (; i + 4 <= from.size(); i += 4) {
        const __m256d value = _mm256_cvtps_pd(_mm_loadu_ps(&from[i]));
        const __m256d rounded = _mm256_floor_pd(_mm256_add_pd(_mm256_mul_pd(value, vScale), half));
        const __m256d limited = _mm256_max_pd(low, _mm256_min_pd(high, rounded));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(&to[i]), _mm256_cvttpd_epi32(limited));
    }
    for (; i < from.size(); ++i) {
        const double rounded = std::floor(static_cast<double>(from[i]) * scale + 0.5);
        to[i] = static_cast<std::int32_t>(std::clamp(rounded, kMin, kMax));
    }
}

/// The parts of the work area.
struct Work {
    Work(const RealFftPlan& plan, float* work) noexcept
        : n(std::size_t{1} << plan.order), time(work), bins(time + paddedTo64Bytes(n)),
          fft(bins + paddedTo64Bytes(n + 2))
    {
    }

    OutBins complexBins() const noexcept
    {
        return {static_cast<Zsp32fc*>(static_cast<void*>(bins)), n / 2 + 1};
    }

    std::size_t n;
    float* time;
    float* bins;
    float* fft;
};

} // namespace

std::int64_t realFft16sWorkSize(int order) noexcept
{
    const std::size_t n = std::size_t{1} << order;
    return realFftWorkSize(order) +
           4 * static_cast<std::int64_t>(paddedTo64Bytes(n) + paddedTo64Bytes(n + 2));
}

void realFftForward16s(const RealFftPlan& plan, In32 time, std::span<Zsp32sc> bins,
                       std::int32_t scaleFactor, float* work) noexcept
{
    const Work w(plan, work);
    toFloat(time, w.time);
    realFftForward(plan, {w.time, w.n}, w.complexBins(), w.fft);
    roundTo<std::int32_t>({w.bins, w.n + 2}, scaleOf(scaleFactor), {&bins[0].re, w.n + 2});
}

void realFftInverse16s(const RealFftPlan& plan, std::span<const Zsp32sc> bins, Out32 time,
                       std::int32_t scaleFactor, float* work) noexcept
{
    const Work w(plan, work);
    toFloat({&bins[0].re, w.n + 2}, w.bins);
    realFftInverse(plan, w.complexBins(), {w.time, w.n}, w.fft);
    roundTo<std::int16_t>({w.time, w.n}, scaleOf(scaleFactor), time);
}

} // namespace zsp::common
