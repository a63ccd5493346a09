// Level and spectrum of noise: analysis and quantisation.

#include "voice/noise/spectrum_model.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace zsp::voice {

namespace {

constexpr double kOverload = 32768.0 * 32768.0;
constexpr float kReflectionStep = 258.0F / 32768.0F;
constexpr std::size_t kMostSamples = 960;

} // namespace

NoiseStatistics analyseNoise(In16 samples) noexcept
{
    NoiseStatistics s;
    const std::size_t count = std::min(samples.size(), kMostSamples);
    std::array<double, kMostSamples> windowed;
    const double turn = 2 * std::numbers::pi / static_cast<double>(count);
    for (std::size_t i = 0; i < count; ++i) {
        const double x = samples[i];
        s.power += x * x / static_cast<double>(count);
        windowed[i] =
            x * (0.54 - 0.46 * std::cos(turn * (static_cast<double>(i) + 0.5))); // Hamming
    }
    for (std::size_t lag = 0; lag <= kNoiseOrder; ++lag)
        for (std::size_t i = lag; i < count; ++i)
            s.autocorrelation[lag] += windowed[i] * windowed[i - lag] / static_cast<double>(count);
    return s;
}

Reflection reflectionOf(const NoiseStatistics& statistics) noexcept
{
    const auto& r = statistics.autocorrelation;
    // A floor of noise 40 dB below keeps the filter well-behaved for tones and silence.
    double error = r[0] * 1.0001 + 1e-3;
    std::array<double, kNoiseOrder + 1> a{1};
    Reflection reflection{};
    for (std::size_t m = 1; m <= kNoiseOrder; ++m) {
        double sum = r[m];
        for (std::size_t i = 1; i < m; ++i)
            sum += a[i] * r[m - i];
        const double k = std::clamp(-sum / error, -0.999, 0.999);
        auto next = a;
        for (std::size_t i = 1; i < m; ++i)
            next[i] = a[i] + k * a[m - i];
        next[m] = k;
        a = next;
        error *= 1 - k * k;
        reflection[m - 1] = static_cast<float>(k);
    }
    return reflection;
}

std::uint8_t levelOctet(double power) noexcept
{
    const double db = -10 * std::log10(std::max(power, 1e-9) / kOverload);
    return static_cast<std::uint8_t>(std::clamp(std::round(db), 0.0, 127.0));
}

double powerOf(std::uint8_t octet) noexcept
{
    return kOverload * std::pow(10.0, -0.1 * (octet & 127));
}

std::uint8_t reflectionOctet(float k) noexcept
{
    return static_cast<std::uint8_t>(
        std::clamp(std::round(k / kReflectionStep) + 127, 0.0F, 254.0F));
}

float reflectionValue(std::uint8_t octet) noexcept
{
    return octet == 255 ? 0 : kReflectionStep * static_cast<float>(octet - 127);
}

} // namespace zsp::voice
