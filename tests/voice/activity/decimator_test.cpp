// The decimator: pass band, stop band, delay, and blocks of any split.

#include "voice/activity/decimator.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <numbers>
#include <vector>

namespace {

using zsp::voice::activity::Decimator;

constexpr std::size_t kFrames = 10;

std::vector<std::int16_t> decimated(double hertz, std::size_t block = 320)
{
    Decimator decimator;
    std::vector<std::int16_t> in(kFrames * 320), out(kFrames * 256);
    for (std::size_t n = 0; n < in.size(); ++n)
        in[n] = static_cast<std::int16_t>(std::lrint(
            16000 * std::sin(2 * std::numbers::pi * hertz * static_cast<double>(n) / 16000)));
    for (std::size_t n = 0; n < in.size(); n += block)
        decimator.run({&in[n], block}, {&out[n / 5 * 4], block / 5 * 4});
    return out;
}

/// Complex amplitude of a tone over the settled part, relative to the input.
std::complex<double> response(double hertz)
{
    const auto out = decimated(hertz);
    std::complex<double> sum = 0;
    for (std::size_t m = 256; m < out.size(); ++m)
        sum += static_cast<double>(out[m]) *
               std::polar(1.0, -2 * std::numbers::pi * hertz * static_cast<double>(m) / 12800);
    return std::complex<double>(0, 1) * sum * 2.0 /
           (16000.0 * static_cast<double>(out.size() - 256));
}

TEST(ActivityDecimator, PassesWithTheStatedDelay)
{
    for (const double hertz : {100.0, 1000.0, 3000.0, 5000.0, 5600.0}) {
        const std::complex<double> r = response(hertz);
        EXPECT_NEAR(20 * std::log10(std::abs(r)), 0, 0.1) << hertz;
        const double want = -2 * std::numbers::pi * hertz * Decimator::kDelayMs / 1000;
        EXPECT_NEAR(std::remainder(std::arg(r) - want, 2 * std::numbers::pi), 0, 0.02) << hertz;
    }
}

TEST(ActivityDecimator, StopsWhatWouldFoldBack)
{
    for (const double hertz : {6900.0, 7200.0, 7950.0}) {
        double power = 0;
        const auto out = decimated(hertz);
        for (std::size_t m = 256; m < out.size(); ++m)
            power += out[m] * out[m];
        const double rms = std::sqrt(power / static_cast<double>(out.size() - 256));
        EXPECT_LE(20 * std::log10(rms / (16000 / std::numbers::sqrt2)), -57) << hertz;
    }
}

TEST(ActivityDecimator, ShortBlocksGiveTheSame)
{
    EXPECT_EQ(decimated(1234), decimated(1234, 5));
    EXPECT_EQ(decimated(1234), decimated(1234, 80));
}

TEST(ActivityDecimator, SaturatesFullScale)
{
    Decimator decimator;
    std::vector<std::int16_t> in(320), out(256);
    for (std::size_t n = 0; n < in.size(); ++n)
        in[n] = n / 40 % 2 ? 32767 : -32768;
    decimator.run(in, out);
    EXPECT_EQ(*std::max_element(out.begin(), out.end()), 32767);
    EXPECT_EQ(*std::min_element(out.begin(), out.end()), -32768);
}

} // namespace
