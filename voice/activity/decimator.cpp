// The decimator's taps and its phases.

#include "voice/activity/decimator.hpp"

#include "voice/api/bessel.hpp"

#include <numbers>

namespace zsp::voice::activity {

Decimator::Decimator()
{
    constexpr double kBeta = 5.65, kCutoff = 6200.0 / 64000; // -60 dB; in taps per period
    constexpr std::size_t kLength = kOut * kTaps;
    constexpr double kCentre = (kLength - 1) / 2.0;
    std::array<double, kLength> taps;
    double sum = 0;
    for (std::size_t n = 0; n < kLength; ++n) {
        const double t = static_cast<double>(n) - kCentre;
        const double x = 2 * std::numbers::pi * kCutoff * t; // never 0
        taps[n] = std::sin(x) / x * kaiser(kBeta, t / kCentre);
        sum += taps[n];
    }
    for (std::size_t n = 0; n < kLength; ++n)
        phases_[n % kOut][kTaps - 1 - n / kOut] = static_cast<float>(kOut * taps[n] / sum);
}

void Decimator::run(In16 in, Out16 out)
{
    std::copy(in.begin(), in.end(), &samples_[kPast]);
    for (std::size_t m = 0; m < out.size(); ++m) {
        const float* oldest = &samples_[m / kOut * kIn + m % kOut];
        const auto& taps = phases_[m % kOut];
        std::array<float, 8> sums{}; // side by side, as vectors hold them
        for (std::size_t k = 0; k < kTaps; k += sums.size())
            for (std::size_t lane = 0; lane < sums.size(); ++lane)
                sums[lane] += taps[k + lane] * oldest[k + lane];
        float sum = 0;
        for (const float s : sums)
            sum += s;
        out[m] = static_cast<std::int16_t>(std::lrintf(std::clamp(sum, -32768.0F, 32767.0F)));
    }
    std::copy_n(&samples_[in.size()], kPast, samples_.begin());
}

} // namespace zsp::voice::activity
