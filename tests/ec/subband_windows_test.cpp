// The built-in windows: which they are, and that they reconstruct.

#include "ec/subband_windows.hpp"

#include "tests/ec/subband_bank.hpp"
#include "tests/support/samples.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <vector>

namespace {

using namespace zsp::test;

/// A state without a window does what a state with these taps does.
template <typename Family, std::size_t L>
void expectBuiltIn(std::int32_t order, std::int32_t frameSize,
                   const std::array<typename Family::Sample, L>& taps)
{
    Bank<Family> builtIn(order, frameSize, L, nullptr), given(order, frameSize, L, taps.data());
    typename Bank<Family>::Samples frame(bytes(frameSize));
    Samples samples(7);
    for (int i = 0; i < 12; ++i) {
        for (auto& x : frame)
            x = samples.integer<std::int16_t>();
        const auto want = given.analyse(frame), got = builtIn.analyse(frame);
        for (std::size_t k = 0; k < want.size(); ++k)
            ASSERT_TRUE(got[k].re == want[k].re && got[k].im == want[k].im) << i << ", bin " << k;
    }
}

TEST(SubbandWindows, AreTheBuiltInOnes)
{
    using namespace zsp::ec;
    expectBuiltIn<Float>(5, 24, kWindow128);
    expectBuiltIn<Float>(6, 44, kWindow256);
    expectBuiltIn<Fixed>(5, 24, kWindow128_Q13);
    expectBuiltIn<Fixed>(6, 44, kWindow256_Q13);

    const auto sum = [](const auto& window) {
        double all = 0;
        for (const auto tap : window)
            all += static_cast<double>(tap);
        return all;
    };
    EXPECT_NEAR(sum(kWindow128), 27.1875, 5e-5);
    EXPECT_NEAR(sum(kWindow256), 50.3192, 5e-5);
    EXPECT_EQ(sum(kWindow128_Q13), 222718);
    EXPECT_EQ(sum(kWindow256_Q13), 412198);
}

/// The output of both directions in series, the bins untouched.
template <typename Family>
std::vector<double> throughBoth(const Shape& shape, const std::vector<std::int16_t>& in)
{
    Bank<Family> analysis(shape.order, shape.frameSize, shape.windowLen, nullptr);
    Bank<Family> synthesis(shape.order, shape.frameSize, shape.windowLen, nullptr);
    std::vector<double> all;
    for (auto at = in.begin(); at != in.end(); at += shape.frameSize) {
        const auto& out = synthesis.synthesise(analysis.analyse({at, at + shape.frameSize}));
        all.insert(all.end(), out.begin(), out.end());
    }
    return all;
}

// With untouched bins in between, the input comes back one window less one hop later, at its level.
TEST(SubbandWindows, Reconstruct)
{
    for (const Shape& shape : {Shape{5, 24, 128}, Shape{6, 44, 256}}) {
        const auto hop = bytes(shape.frameSize), delay = bytes(shape.windowLen) - hop;
        std::vector<std::int16_t> in(60 * hop);
        Samples samples(8);
        for (auto& x : in)
            x = static_cast<std::int16_t>(samples.uniform(-10000, 10000));
        for (const auto& out : {throughBoth<Float>(shape, in), throughBoth<Fixed>(shape, in)}) {
            double cross = 0, inEnergy = 0, outEnergy = 0;
            for (std::size_t i = 2 * bytes(shape.windowLen); i < out.size(); ++i) {
                const double x = in[i - delay], y = out[i];
                cross += x * y;
                inEnergy += x * x;
                outEnergy += y * y;
            }
            EXPECT_NEAR(cross / inEnergy, 1, 0.02) << shape.name();
            // What is no copy of the input, in the output's energy: aliasing on white noise.
            const double residue = 1 - cross * cross / (inEnergy * outEnergy);
            EXPECT_LT(10 * std::log10(residue), shape.order == 5 ? -15 : -23) << shape.name();
        }
    }
}

} // namespace
