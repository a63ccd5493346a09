// The real FFT against its definition, and the definition against what needs no transform.

#include "common/fft/real_fft.hpp"
#include "core/state.hpp"

#include "tests/support/samples.hpp"
#include "tests/support/spectrum.hpp"

#include <gtest/gtest.h>

#include <complex>
#include <limits>
#include <numbers>
#include <string>
#include <vector>

namespace {

using namespace zsp::common;
using namespace zsp::test;

/// A plan and its work area in storage of exactly the reported sizes, at an awkward address.
class Transform {
  public:
    explicit Transform(int order)
        : plan_(static_cast<std::size_t>(realFftPlanSize(order)) - kFftAlignment),
          work_(static_cast<std::size_t>(realFftWorkSize(order)) - kFftAlignment)
    {
        fft_ = initRealFft(plan_.data(), order);
    }

    std::vector<Zsp32fc> forward(const std::vector<float>& time)
    {
        constexpr float kUnset = std::numeric_limits<float>::quiet_NaN();
        std::vector<Zsp32fc> bins(time.size() / 2 + 1, {kUnset, kUnset});
        realFftForward(*fft_, time, bins, workArea());
        return bins;
    }

    std::vector<float> inverse(const std::vector<Zsp32fc>& bins)
    {
        std::vector<float> time(2 * (bins.size() - 1));
        realFftInverse(*fft_, bins, time, workArea());
        return time;
    }

  private:
    float* workArea() { return static_cast<float*>(zsp::alignUp(work_.data(), kFftAlignment)); }

    std::vector<std::byte> plan_, work_;
    const RealFftPlan* fft_;
};

/// Signals that load different parts of a transform.
std::vector<std::vector<float>> signals(std::size_t n)
{
    Samples samples(static_cast<std::uint32_t>(n));
    std::vector<std::vector<float>> all = {samples.floats(n, 32768), std::vector<float>(n, 1.0F)};
    for (const std::size_t at : {std::size_t{0}, n / 2 - 1, n / 2, n - 1}) {
        all.emplace_back(n, 0.0F);
        all.back()[at] = 0.7F;
    }
    for (const double bin : {1.0, static_cast<double>(n) / 4, static_cast<double>(n) / 2 - 0.5}) {
        all.emplace_back(n);
        for (std::size_t i = 0; i < n; ++i)
            all.back()[i] = static_cast<float>(
                1000 * std::sin(0.3 + 2 * std::numbers::pi * bin * static_cast<double>(i) /
                                          static_cast<double>(n)));
    }
    return all;
}

/// The spectrum of a one at a place: e^(-2 pi i k at / n).
std::vector<Exact> impulseBins(std::size_t n, std::size_t at)
{
    std::vector<Exact> bins(n / 2 + 1);
    for (std::size_t k = 0; k < bins.size(); ++k)
        bins[k] = std::polar(1.0L, -2 * std::numbers::pi_v<long double> *
                                       static_cast<long double>(at * k % n) /
                                       static_cast<long double>(n));
    return bins;
}

class RealFft : public testing::TestWithParam<int> {};

// An impulse has a spectrum that needs no transform.
TEST_P(RealFft, ImpulseByDefinition)
{
    const std::size_t n = std::size_t{1} << GetParam(), at = n / 3;
    std::vector<float> impulse(n), back(n);
    impulse[at] = 1;
    std::vector<Zsp32fc> bins(n / 2 + 1);
    realFftForwardScalar(impulse, bins);
    EXPECT_LT(errorDb(bins, impulseBins(n, at)), -140);
    realFftInverseScalar(bins, back);
    EXPECT_LT(errorDb(back, impulse), -140);
}

TEST_P(RealFft, ForwardIsTheTransform)
{
    Transform transform(GetParam());
    for (const auto& signal : signals(std::size_t{1} << GetParam())) {
        const auto bins = transform.forward(signal);
        EXPECT_LT(errorDb(bins, exactBins(signal)), -130);
        EXPECT_TRUE(bins.front().im == 0 && bins.back().im == 0);
    }
}

TEST_P(RealFft, InverseIsTheInverse)
{
    const std::size_t n = std::size_t{1} << GetParam();
    Transform transform(GetParam());
    Samples samples(7);
    for (int i = 0; i < 3; ++i) {
        const auto values = samples.floats(n + 2, 32768);
        std::vector<Zsp32fc> bins(n / 2 + 1);
        for (std::size_t k = 0; k < bins.size(); ++k)
            bins[k] = {values[2 * k], values[2 * k + 1]};
        if (i == 0) std::fill(bins.begin() + 1, bins.end(), Zsp32fc{});
        if (i == 1) std::fill(bins.begin(), bins.end() - 1, Zsp32fc{});
        bins.front().im = bins.back().im = std::numeric_limits<float>::quiet_NaN();
        EXPECT_LT(errorDb(transform.inverse(bins), exactTime(bins)), -130);
    }
}

// The way back restores a signal.
TEST(RealFftLong, ImpulseAndRoundTrip)
{
    for (int order = 13; order <= 17; ++order) {
        const std::size_t n = std::size_t{1} << order, at = n / 3;
        Transform transform(order);
        std::vector<float> impulse(n);
        impulse[at] = 1;
        EXPECT_LT(errorDb(transform.forward(impulse), impulseBins(n, at)), -130) << order;

        const auto signal = Samples(9).floats(n, 32768);
        EXPECT_LT(errorDb(transform.inverse(transform.forward(signal)), signal), -130) << order;
    }
}

INSTANTIATE_TEST_SUITE_P(Order, RealFft, testing::Range(1, 13),
                         [](const auto& order) { return std::to_string(order.param); });

} // namespace
