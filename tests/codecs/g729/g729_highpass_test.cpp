// The high-pass filter of G.729: vectors, and a model for any coefficients.

#include "codecs/g729/g729_highpass.hpp"

#include "tests/support/contract.hpp"
#include "tests/support/samples.hpp"
#include "tests/support/vectors.hpp"
#include "zspsc/g729/filters.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace {

using namespace zsp::test;
using Words = std::vector<std::int16_t>;
using Coeffs = std::array<std::int16_t, 6>;

constexpr Coeffs kPre = {4096, 7807, -3733, 1899, -3798, 1899};
constexpr Coeffs kPost = {8192, 15836, -7667, 7699, -15398, 7699};

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsHighPassFilterSize_G729), {out<std::int32_t>(1)}),
    Contract(ZSP_NAMED(zspsFilterHighpassGetStateSize_G7291_16s), {out<std::int32_t>(1)}),
    Contract(ZSP_NAMED(zspsAdaptiveCodebookDecodeGetSize_AMRWB_16s), {out<std::int32_t>(1)}),
    Contract(ZSP_NAMED(zspsHighPassFilterInit_G729), {in<std::int16_t>(6), state(24)}),
    Contract(ZSP_NAMED(zspsHighPassFilter_G729_16s_ISfs),
             {out<std::int16_t>(8), number(8), number(12), state(24)})
        .row({{1, number(0)}}, zspStsSizeErr)
        .row({{1, number(-1)}}, zspStsSizeErr)
        .row({{1, number(-2147483647 - 1)}}, zspStsSizeErr)
        .row({{2, number(11)}}, zspStsScaleRangeErr)
        .row({{2, number(14)}}, zspStsScaleRangeErr)
        .row({{2, number(-2147483647 - 1)}}, zspStsScaleRangeErr),
});

TEST(G729HighPass, Sizes)
{
    for (const auto query : {zspsHighPassFilterSize_G729, zspsFilterHighpassGetStateSize_G7291_16s,
                             zspsAdaptiveCodebookDecodeGetSize_AMRWB_16s}) {
        std::int32_t size = 0;
        EXPECT_EQ(query(&size), zspStsNoErr);
        EXPECT_EQ(size, 24);
    }
}

/// The filter over `samples`, in one call or in random blocks, its state at an odd address.
Words filtered(Words samples, const Coeffs& coeffs, int scaleFactor, Samples* blocks = nullptr)
{
    alignas(16) std::byte storage[32];
    void* state = storage + 3;
    EXPECT_EQ(zspsHighPassFilterInit_G729(coeffs.data(), state), zspStsNoErr);
    for (std::size_t i = 0; i < samples.size();) {
        std::size_t n = samples.size() - i;
        if (blocks) n = std::min(n, static_cast<std::size_t>(1 + blocks->below(100)));
        EXPECT_EQ(zspsHighPassFilter_G729_16s_ISfs(&samples[i], static_cast<std::int32_t>(n),
                                                   scaleFactor, state),
                  zspStsNoErr);
        i += n;
    }
    return samples;
}

TEST(G729HighPass, Vectors)
{
    expectConforms("G.729", 6, "high-pass");
}

/// The filter step by step, in the double-precision format of the reference arithmetic.
Words model(Words samples, const Coeffs& c, int scaleFactor)
{
    const auto wrap = [](std::int64_t sum) { return static_cast<std::int32_t>(sum); };
    const auto product = [](std::int32_t y, std::int16_t coefficient) {
        const std::int32_t upper = y >> 16, lower = static_cast<std::int32_t>(y & 0xffff) >> 1;
        return std::int64_t{upper} * coefficient + ((lower * coefficient) >> 15);
    };
    const std::int32_t top = scaleFactor == 12 ? 134217727 : 268435455;
    std::int32_t y1 = 0, y2 = 0;
    std::int16_t x1 = 0, x2 = 0;
    for (std::int16_t& sample : samples) {
        const std::int16_t x = sample;
        const std::int32_t acc =
            wrap(product(y1, c[1]) + product(y2, c[2]) + std::int64_t{x} * c[3] +
                 std::int64_t{x1} * c[4] + std::int64_t{x2} * c[5]);
        y2 = y1;
        y1 = acc >= top        ? 2147483647
             : acc <= -top - 1 ? -2147483647 - 1
                               : acc * (scaleFactor == 12 ? 16 : 8);
        x2 = x1;
        x1 = x;
        std::int64_t out = (std::int64_t{y1} + 32768) >> 16;
        if (scaleFactor == 13)
            out = acc >= 134215679    ? 32767
                  : acc <= -134217728 ? -32768
                                      : (std::int64_t{acc} + 2048) >> 12;
        sample = static_cast<std::int16_t>(std::min<std::int64_t>(out, 32767));
    }
    return samples;
}

// Any coefficients: unstable filters saturate, and the sum wraps.
TEST(G729HighPass, EqualsModelForAllCoefficients)
{
    Samples samples(31);
    for (int round = 0; round < 2000; ++round) {
        const int scaleFactor = 12 + round % 2;
        Coeffs coeffs = round % 4 < 2 ? kPre : kPost;
        for (auto& c : coeffs)
            if (samples.below(2) == 0) c = samples.integer<std::int16_t>();
        const Words input = samples.words(60);
        expectEqual(filtered(input, coeffs, scaleFactor), model(input, coeffs, scaleFactor),
                    "round " + std::to_string(round));
    }
}

// Quiet runs, saturated ones and the changes between them; states that no filter left behind.
TEST(G729HighPass, FastVersionEqualsDefinition)
{
    Samples samples(37);
    for (int round = 0; round < 4000; ++round) {
        const int scaleFactor = 12 + round % 2;
        zsp::g729::HighPassState want{.coeffs = scaleFactor == 12 ? kPre : kPost};
        for (auto& c : want.coeffs)
            if (round % 3 == 0 && samples.below(3) == 0) c = samples.integer<std::int16_t>();
        if (round % 4 == 0) {
            want.y1 = samples.integer<std::int32_t>();
            want.y2 = samples.integer<std::int32_t>();
            want.x1 = samples.integer<std::int16_t>();
            want.x2 = samples.integer<std::int16_t>();
        }
        Words input = samples.words(static_cast<std::size_t>(1 + samples.below(200)));
        if (round % 5 < 3) // mostly below saturation
            for (auto& x : input)
                x = samples.below(40) ? static_cast<std::int16_t>(x >> 3) : x;
        auto got = want;
        Words out = input, expected = input;
        zsp::g729::highPassScalar(expected, scaleFactor, want);
        zsp::g729::highPassAvx2(out, scaleFactor, got);
        expectEqual(out, expected, "round " + std::to_string(round));
        ASSERT_EQ(std::memcmp(&got, &want, sizeof got), 0) << "state, round " << round;
    }
}

} // namespace
