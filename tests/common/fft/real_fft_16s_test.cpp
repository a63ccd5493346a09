// The FFT of words: one rounding of the float transform, within a bound of the exact one.

#include "common/fft/real_fft_16s.hpp"
#include "core/state.hpp"

#include "tests/support/samples.hpp"
#include "tests/support/spectrum.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace zsp::common;
using namespace zsp::test;
using Longs = std::vector<std::int32_t>;

/// A plan and its work area in storage of exactly the reported sizes.
class Transform {
  public:
    explicit Transform(int order)
        : plan_(static_cast<std::size_t>(realFftPlanSize(order))),
          work_(static_cast<std::size_t>(realFft16sWorkSize(order))),
          fft_(initRealFft(plan_.data(), order))
    {
    }

    std::size_t points() const { return std::size_t{1} << fft_->order; }

    std::vector<Zsp32sc> forward(const Longs& time, std::int32_t scaleFactor)
    {
        std::vector<Zsp32sc> bins(points() / 2 + 1, {12345, 12345});
        realFftForward16s(*fft_, time, bins, scaleFactor, workArea());
        return bins;
    }

    Longs inverse(const std::vector<Zsp32sc>& bins, std::int32_t scaleFactor)
    {
        Longs time(points(), 12345);
        realFftInverse16s(*fft_, bins, time, scaleFactor, workArea());
        return time;
    }

    const RealFftPlan& plan() const { return *fft_; }
    float* workArea() { return static_cast<float*>(zsp::alignUp(work_.data(), kFftAlignment)); }

  private:
    std::vector<std::byte> plan_, work_;
    const RealFftPlan* fft_;
};

constexpr std::int32_t kScaleFactors[] = {0,
                                          1,
                                          3,
                                          8,
                                          15,
                                          31,
                                          64,
                                          5000,
                                          -1,
                                          -4,
                                          -20,
                                          -5000,
                                          std::numeric_limits<std::int32_t>::max(),
                                          std::numeric_limits<std::int32_t>::min()};

/// floor(x 2^-scaleFactor + 1/2), saturated.
template <typename T>
T rounded(float x, std::int32_t scaleFactor)
{
    const double exact =
        std::floor(std::ldexp(static_cast<double>(x), -std::clamp(scaleFactor, -900, 900)) + 0.5);
    constexpr double kMin = std::numeric_limits<T>::min(), kMax = std::numeric_limits<T>::max();
    return static_cast<T>(std::clamp(exact, kMin, kMax));
}

// Whatever the transform in single precision gives, once rounded and once saturated.
TEST(RealFft16s, IsTheFloatTransformRounded)
{
    Samples samples(16);
    for (int order = 1; order <= 9; ++order) {
        Transform fft(order);
        const std::size_t n = fft.points();
        for (const std::int32_t scaleFactor : kScaleFactors) {
            const std::string what =
                "order " + std::to_string(order) + ", scale factor " + std::to_string(scaleFactor);
            const auto words = samples.words(n);
            std::vector<float> timeF(words.begin(), words.end());
            std::vector<Zsp32fc> binsF(n / 2 + 1);
            realFftForward(fft.plan(), timeF, binsF, fft.workArea());
            auto bins = fft.forward(Longs(words.begin(), words.end()), scaleFactor);
            for (std::size_t k = 0; k < bins.size(); ++k) {
                ASSERT_EQ(bins[k].re, rounded<std::int32_t>(binsF[k].re, scaleFactor)) << what;
                ASSERT_EQ(bins[k].im, rounded<std::int32_t>(binsF[k].im, scaleFactor)) << what;
            }

            for (auto& bin : bins)
                bin = {samples.integer<std::int32_t>() >> 8, samples.integer<std::int32_t>() >> 8};
            for (std::size_t k = 0; k < bins.size(); ++k)
                binsF[k] = {static_cast<float>(bins[k].re), static_cast<float>(bins[k].im)};
            realFftInverse(fft.plan(), binsF, timeF, fft.workArea());
            const auto back = fft.inverse(bins, scaleFactor);
            for (std::size_t i = 0; i < n; ++i)
                ASSERT_EQ(back[i], rounded<std::int16_t>(timeF[i], scaleFactor)) << what;
        }
    }
}

/// The wanted value before rounding is `exact`, limited to T; the bound has the transform's error
/// before scaling.
template <typename T>
void expectRounded(std::int32_t got, long double exact, long double magnitudes,
                   std::int32_t scaleFactor, const std::string& what)
{
    const long double scale = std::ldexp(1.0L, -std::clamp(scaleFactor, -9000, 9000));
    const long double want =
        std::clamp(exact * scale, static_cast<long double>(std::numeric_limits<T>::min()),
                   static_cast<long double>(std::numeric_limits<T>::max()));
    const long double bound = 0.5L + (0.5L + std::ldexp(magnitudes, -20)) * scale;
    ASSERT_LE(std::abs(static_cast<long double>(got) - want), bound)
        << what << ", scale factor " << scaleFactor << ", want " << want;
}

/// Words that load different parts of a transform.
std::vector<Longs> words(Samples& samples, std::size_t n)
{
    const auto mix = samples.words(n);
    std::vector<Longs> all = {Longs(mix.begin(), mix.end()), Longs(n, -32768), Longs(n, 0)};
    all.back()[n - 1] = 32767;
    all.emplace_back(n, -1);
    all.back()[n / 2] = 0;
    all.emplace_back(n);
    for (std::size_t i = 0; i < n; ++i)
        all.back()[i] = static_cast<std::int32_t>(32767 * std::sin(1.1 * static_cast<double>(i)));
    return all;
}

TEST(RealFft16s, ForwardKeepsItsBound)
{
    Samples samples(4);
    for (int order = 1; order <= 12; ++order) {
        Transform fft(order);
        for (const auto& frame : words(samples, fft.points())) {
            const auto want = exactBins(frame);
            long double magnitudes = 0;
            for (const std::int32_t x : frame)
                magnitudes += std::abs(x);
            for (const std::int32_t scaleFactor : kScaleFactors) {
                const auto bins = fft.forward(frame, scaleFactor);
                for (std::size_t k = 0; k < bins.size(); ++k) {
                    const std::string what =
                        "order " + std::to_string(order) + ", bin " + std::to_string(k);
                    expectRounded<std::int32_t>(bins[k].re, want[k].real(), magnitudes, scaleFactor,
                                                what);
                    expectRounded<std::int32_t>(bins[k].im, want[k].imag(), magnitudes, scaleFactor,
                                                what);
                }
                EXPECT_TRUE(bins.front().im == 0 && bins.back().im == 0);
            }
        }
    }
}

TEST(RealFft16s, InverseKeepsItsBound)
{
    Samples samples(5);
    for (int order = 1; order <= 12; ++order) {
        Transform fft(order);
        for (const int limit : {5, 16, 31}) {
            std::vector<Zsp32sc> bins(fft.points() / 2 + 1);
            long double magnitudes = 0;
            for (auto& b : bins) {
                b = {samples.integer<std::int32_t>() >> (31 - limit),
                     samples.integer<std::int32_t>() >> (31 - limit)};
                magnitudes +=
                    2 * std::hypot(static_cast<long double>(b.re), static_cast<long double>(b.im)) /
                    static_cast<long double>(fft.points());
            }
            const auto want = exactTime(bins);
            for (const std::int32_t scaleFactor : kScaleFactors) {
                const auto frame = fft.inverse(bins, scaleFactor);
                for (std::size_t i = 0; i < frame.size(); ++i)
                    expectRounded<std::int16_t>(frame[i], want[i], magnitudes, scaleFactor,
                                                "order " + std::to_string(order) + ", sample " +
                                                    std::to_string(i));
            }
        }
    }
}

TEST(RealFft16s, HalvesRoundUp)
{
    Transform fft(6);
    Longs frame(64);
    for (const auto& [sum, want] : {std::pair{5, 3}, {-5, -2}, {1, 1}, {-1, 0}, {-3, -1}}) {
        frame[0] = sum;
        EXPECT_EQ(fft.forward(frame, 1)[0].re, want) << sum;
    }
    std::vector<Zsp32sc> bins(33);
    for (const auto& [dc, want] : {std::pair{96, 2}, {-96, -1}, {32, 1}, {-32, 0}}) {
        bins[0] = {dc, 12345};
        EXPECT_EQ(fft.inverse(bins, 0)[17], want) << dc;
    }
}

} // namespace
