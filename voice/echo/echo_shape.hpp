// The measures of an echo canceller, which follow from rate and tail, and the small arithmetic that
// its parts share.
#pragma once

#include "zspsc/types.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <span>

namespace zsp::voice::echo {

/// The far end is scaled up so that ordinary speech exceeds the controller's power threshold.
inline constexpr float kFarScale = 16.0F;
/// With it, taps of -24 dB stand for an echo as loud as the far end.
inline constexpr float kUnitTapEnergy = 1.0F / (kFarScale * kFarScale);

struct Shape {
    std::size_t rate; // Hz
    std::size_t hop;  // samples of a frame: 2.5 ms
    std::size_t bins;
    std::size_t rowBins; // of a row in memory, whole vectors
    std::size_t taps;    // frames of history
    std::int32_t order;  // log2 of the transform length

    Shape(std::int32_t sampleRate, std::int32_t tailMs)
        : rate(static_cast<std::size_t>(sampleRate)), hop(rate / 400),
          bins(sampleRate == 16000 ? 33 : 17), rowBins((bins + 3) / 4 * 4),
          taps((static_cast<std::size_t>(tailMs) * rate / 1000 + hop - 1) / hop + 3),
          order(sampleRate == 16000 ? 6 : 5)
    {
    }

    [[nodiscard]] std::size_t fftLen() const { return std::size_t{1} << order; }
    [[nodiscard]] double seconds(double frames) const
    {
        return frames * static_cast<double>(hop) / static_cast<double>(rate);
    }
    /// First-order smoothing factor per frame.
    [[nodiscard]] float smoothing(double timeConstant) const
    {
        return static_cast<float>(std::exp(-seconds(1) / timeConstant));
    }
};

using Spectrum = std::span<const Zsp32fc>;

inline float power(Zsp32fc v)
{
    return v.re * v.re + v.im * v.im;
}

inline Zsp32fc difference(Zsp32fc a, Zsp32fc b)
{
    return {a.re - b.re, a.im - b.im};
}

/// The last term keeps the sums of digital silence away from denormal numbers, which cost time.
inline float smooth(float old, float alpha, float fresh)
{
    return alpha * old + (1.0F - alpha) * fresh + 1e-20F;
}

inline float energy(std::span<const float> x)
{
    float sum = 0;
    for (const float v : x)
        sum += v * v;
    return sum;
}

inline float energy(Spectrum x)
{
    float sum = 0;
    for (const Zsp32fc v : x) {
        sum += v.re * v.re;
        sum += v.im * v.im;
    }
    return sum;
}

template <typename T>
std::int32_t count(std::span<T> s)
{
    return static_cast<std::int32_t>(s.size());
}

} // namespace zsp::voice::echo
