// A Kaiser-windowed sinc, five transform lengths long, whose squares sum to the hop. Its power
// response overlaps so that analysis and synthesis pass a signal with an error of -45 dB.

#include "voice/echo/subband/prototype.hpp"

#include "voice/api/bessel.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace zsp::voice::echo {

std::array<float, kMaxWindow> prototype(std::size_t fftLen, std::size_t hop)
{
    constexpr double kBeta = 5.0, kWidth = 1.159;
    const std::size_t length = kWindowBlocks * fftLen;
    const double centre = 0.5 * static_cast<double>(length - 1);
    std::array<double, kMaxWindow> taps{};
    double energy = 0;
    for (std::size_t n = 0; n < length; ++n) {
        const double t = static_cast<double>(n) - centre;
        const double x = std::numbers::pi * kWidth * t / static_cast<double>(fftLen);
        const double u = t / centre;
        taps[n] = std::sin(x) / x * kaiser(kBeta, u);
        energy += taps[n] * taps[n];
    }
    const double scale = std::sqrt(static_cast<double>(hop) / energy);
    std::array<float, kMaxWindow> window{};
    std::transform(taps.begin(), taps.end(), window.begin(),
                   [scale](double w) { return static_cast<float>(w * scale); });
    return window;
}

} // namespace zsp::voice::echo
