#include "common/fft/real_fft_16s.hpp"

#include "tests/support/samples.hpp"
#include "tests/support/vectors.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

namespace {

using namespace zsp::common;
using namespace zsp::test;

constexpr std::int32_t kScaleFactors[] = {0,
                                          1,
                                          2,
                                          7,
                                          15,
                                          31,
                                          32,
                                          200,
                                          -1,
                                          -3,
                                          -16,
                                          -200,
                                          201,
                                          -5000,
                                          100000,
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

struct Storage {
    explicit Storage(int order)
        : plan(static_cast<std::size_t>(realFftPlanSize(order))),
          work(static_cast<std::size_t>(realFft16sWorkSize(order)) / sizeof(float)),
          fft(initRealFft(plan.data(), order))
    {
    }

    std::vector<std::byte> plan;
    std::vector<float> work;
    const RealFftPlan* fft;
};

// Whatever the transform in single precision gives, once rounded and once saturated.
TEST(RealFft16s, IsTheFloatTransformRounded)
{
    Samples samples(16);
    for (int order = 1; order <= 9; ++order) {
        Storage s(order);
        const std::size_t n = std::size_t{1} << order;
        for (const std::int32_t scaleFactor : kScaleFactors) {
            const std::string what =
                "order " + std::to_string(order) + ", scale factor " + std::to_string(scaleFactor);
            const auto time = samples.words(n);
            std::vector<float> timeF(time.begin(), time.end());
            std::vector<Zsp32fc> binsF(n / 2 + 1);
            std::vector<Zsp32sc> bins(n / 2 + 1);
            realFftForward(*s.fft, timeF, binsF, s.work.data());
            realFftForward16s(*s.fft, time, bins, scaleFactor, s.work.data());
            for (std::size_t k = 0; k < bins.size(); ++k) {
                ASSERT_EQ(bins[k].re, rounded<std::int32_t>(binsF[k].re, scaleFactor)) << what;
                ASSERT_EQ(bins[k].im, rounded<std::int32_t>(binsF[k].im, scaleFactor)) << what;
            }

            for (auto& bin : bins)
                bin = {samples.integer<std::int32_t>() >> 8, samples.integer<std::int32_t>() >> 8};
            for (std::size_t k = 0; k < bins.size(); ++k)
                binsF[k] = {static_cast<float>(bins[k].re), static_cast<float>(bins[k].im)};
            std::vector<std::int16_t> back(n);
            realFftInverse(*s.fft, binsF, timeF, s.work.data());
            realFftInverse16s(*s.fft, bins, back, scaleFactor, s.work.data());
            for (std::size_t i = 0; i < n; ++i)
                ASSERT_EQ(back[i], rounded<std::int16_t>(timeF[i], scaleFactor)) << what;
        }
    }
}

} // namespace
