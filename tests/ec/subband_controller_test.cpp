// The sub-band controller: start, step sizes, powers, saving and restoring of filters.

#include "tests/ec/subband_controller.hpp"

#include "tests/support/contract.hpp"
#include "tests/support/samples.hpp"
#include "tests/support/vectors.hpp"
#include "zspsc/ec/controller.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

namespace {

using namespace zsp::test;

constexpr double kMaxInt = std::numeric_limits<std::int32_t>::max();
constexpr double kMinInt = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kBands = 33, kTaps = 5;

Argument readyController()
{
    return state(16 * kBands + 112,
                 [](void* s) { zspsSubbandControllerInit_EC_32f(s, kBands, 40, kTaps, 16000); });
}

Argument pointers(Argument::Kind kind)
{
    static Vectors zero(kTaps, kBands);
    return buffer(kind, zero.out);
}

/// The checks of both set-up functions, whose numbers start at argument `n`.
Contract setUpRows(Contract contract, std::size_t n)
{
    return contract.nullChecksInRows()
        .row({{n, number(0)}}, zspStsBadArgErr)
        .row({{n, number(kMinInt)}}, zspStsBadArgErr)
        .row({{n, number(134217721)}}, zspStsBadArgErr) // 16 bytes more than 2^31 - 1
        .row({{n, number(kMaxInt)}}, zspStsBadArgErr)
        .row({{n + 1, number(0)}}, zspStsBadArgErr)
        .row({{n + 2, number(0)}}, zspStsBadArgErr)
        .row({{n + 2, number(-1)}}, zspStsBadArgErr)
        .row({{n + 3, number(11025)}}, zspStsRangeErr)
        .row({{n + 3, number(0)}}, zspStsRangeErr)
        .row({{n == 0 ? std::size_t{4} : std::size_t{0}, null()}}, zspStsNullPtrErr);
}

const double kNan = std::numeric_limits<double>::quiet_NaN();

const bool registered = addContracts({
    setUpRows(
        Contract(ZSP_NAMED(zspsSubbandControllerGetSize_EC_32f),
                 {number(kBands), number(40), number(kTaps), number(16000), out<std::int32_t>(1)}),
        0),
    setUpRows(Contract(ZSP_NAMED(zspsSubbandControllerInit_EC_32f),
                       {state(16 * kBands + 112), number(kBands), number(40), number(kTaps),
                        number(8000)}),
              1),
    Contract(ZSP_NAMED(zspsSubbandControllerReset_EC_32f), {readyController()}),
    Contract(ZSP_NAMED(zspsSubbandAPControllerUpdate_EC_32f),
             {pointers(Argument::Kind::input), in<Zsp32fc>(kBands).optional(), out<double>(kBands),
              number(1), readyController()})
        .row({{3, number(1.01)}}, zspStsRangeErr)
        .row({{3, number(-0.01)}}, zspStsRangeErr)
        .row({{3, number(kNan)}}, zspStsRangeErr),
    Contract(ZSP_NAMED(zspsSubbandControllerUpdate_EC_32f),
             {in<Zsp32fc>(kBands), in<Zsp32fc>(kBands), pointers(Argument::Kind::input),
              in<Zsp32fc>(kBands).optional(), out<double>(kBands), readyController()}),
    Contract(ZSP_NAMED(zspsSubbandController_EC_32f),
             {in<Zsp32fc>(kBands), in<Zsp32fc>(kBands), pointers(Argument::Kind::output),
              pointers(Argument::Kind::output), out<float>(1), readyController()}),
});

TEST(SubbandController, InitialValues)
{
    Canceller c(65, 51, 20, 8000);
    const ControllerState& s = c.state();
    const auto alpha = [](double seconds) {
        const double x = -20 / (8000 * seconds);
        return static_cast<float>(1 + x + x * x / 2);
    };
    EXPECT_TRUE(s.numBands == 65 && s.frameSize == 20 && s.numTaps == 51 && s.sampleFreq == 8000);
    EXPECT_TRUE(s.alpha15 == alpha(0.015) && s.alpha9 == alpha(0.009));
    EXPECT_TRUE(s.alpha20 == alpha(0.020) && s.alpha10 == alpha(0.010));
    EXPECT_TRUE(s.adaptFactor == 1 && s.auxFactor == 1 && s.convergence == 1);
    EXPECT_EQ(s.powerThreshold, 65 * 100000.0F * 51);
    EXPECT_EQ(s.minStep, static_cast<float>(0.05 / 331500000.0));
    EXPECT_TRUE(s.refValid == 0 && s.refPower == 0);
    EXPECT_EQ(powersOf(c.state()), std::vector<float>(4 * 65));

    // numBands times numTaps beyond 32 bits
    Canceller many(3000, 30);
    EXPECT_EQ(many.state().powerThreshold, 9e9F);

    // 541,500,000, which a float holds rounded: the step follows the float.
    Canceller rounded(57, 95);
    ASSERT_EQ(rounded.state().powerThreshold, 541500032.0F);
    ASSERT_NE(static_cast<float>(0.05 / 541500000.0), static_cast<float>(0.05 / 541500032.0));
    EXPECT_EQ(rounded.state().minStep, static_cast<float>(0.05 / 541500032.0));
}

TEST(SubbandController, StepsFollowTheFarEndPower)
{
    Canceller c(kBands, kTaps);
    const float threshold = c.state().powerThreshold;
    c.update(0.8F);
    EXPECT_EQ(c.steps, std::vector<double>(kBands, static_cast<double>(c.state().minStep)));

    // A steady input of 1.5 times the threshold a frame: the step is taken with numTaps frames in
    // the sum, of which the oldest leaves afterwards.
    const float level = std::sqrt(1.5F * threshold);
    for (auto& vector : c.history.values)
        vector.assign(kBands, {0, 0});
    for (int frame = 1; frame <= 2 * kTaps; ++frame) {
        for (std::size_t t = 0; t < c.taps; ++t)
            c.history.values[t].assign(kBands, {static_cast<int>(t) < frame ? level : 0.0F, 0});
        c.update(0.8F);
        const float sum = 1.5F * threshold * static_cast<float>(std::min(frame, kTaps));
        EXPECT_NEAR(c.steps[7], 0.8 / static_cast<double>(sum), 1e-5 / static_cast<double>(sum));
        const float left = 1.5F * threshold * static_cast<float>(std::min(frame, kTaps - 1));
        EXPECT_NEAR(c.state().inputPower[7], left, 1e-5F * left);
    }

    // What rounding leaves of a loud past is not below zero.
    Canceller clamp(kBands, 2);
    clamp.history.values[1].assign(kBands, {level, level});
    clamp.update(1);
    EXPECT_EQ(clamp.state().inputPower[32], 0);
}

TEST(SubbandController, ReferencePowerIsSmoothed)
{
    Canceller c(kBands, kTaps);
    const std::vector<Zsp32fc> ref(kBands, {3, 4});
    c.update(0.5F);
    EXPECT_EQ(c.state().refValid, 0);
    c.update(0.5F, ref.data());
    const float a = c.state().alpha15;
    EXPECT_EQ(c.state().refValid, 1);
    EXPECT_FLOAT_EQ(c.state().refPower, (1 - a) * 25 * kBands);
    const float before = c.state().refPower;
    EXPECT_EQ(zspsSubbandControllerUpdate_EC_32f(c.errors.in[0], c.errors.in[1],
                                                 c.history.in.data(), nullptr, c.steps.data(),
                                                 &c.buffer[1]),
              zspStsNoErr);
    EXPECT_EQ(c.state().refValid, 1);
    EXPECT_FLOAT_EQ(c.state().refPower, a * before);
}

TEST(SubbandController, WorseTapsAreRestored)
{
    Samples samples(1);
    Canceller c(kBands, kTaps);
    c.adapt.fill(samples, 1);
    c.fixed.fill(samples, 1);
    const Vectors kept = c.adapt;
    c.setErrors(100, 100);
    c.errors.values[0][9] = {200, 0};
    c.control();
    for (std::size_t t = 0; t < c.taps; ++t)
        for (std::size_t k = 0; k < c.bands; ++k) {
            const Zsp32fc want = k == 9 ? c.fixed.values[t][k] : kept.values[t][k];
            EXPECT_EQ(c.adapt.values[t][k].re, want.re) << t << ' ' << k;
        }
    EXPECT_EQ(c.state().adaptErrPower[9], c.state().fixedErrPower[9]);
}

// Taps settle over some frames: only then are they saved, and with them saved in every frame the
// factor falls. A weak reference forbids it; restoring brings it back.
TEST(SubbandController, SavingLowersTheFactor)
{
    Samples samples(2);
    Canceller c(kBands, kTaps);
    c.adapt.fill(samples, 1);
    c.setErrors(10, 100);
    EXPECT_EQ(c.control(), 1) << "the taps have just changed";
    EXPECT_EQ(c.fixed.values[0][3].re, 0);
    float factor = 1;
    for (int frame = 0; frame < 60; ++frame)
        factor = c.control();
    expectSameTaps(c.fixed, c.adapt, "saved");
    EXPECT_LT(c.state().convergence, 0.01F);
    EXPECT_LT(factor, 0.01F);

    for (int frame = 0; frame < 100; ++frame) {
        c.setErrors(400, 100);
        factor = c.control();
    }
    EXPECT_GT(factor, 0.99F);

    const std::vector<Zsp32fc> weak(kBands, {1, 0});
    for (int frame = 0; frame < 60; ++frame) {
        c.setErrors(10, 100);
        c.update(0.5F, weak.data());
        factor = c.control();
    }
    EXPECT_GT(factor, 0.99F);
}

TEST(SubbandController, ResetClearsThreePowers)
{
    Samples samples(3);
    Canceller c(kBands, kTaps);
    c.history.fill(samples, 1e5F);
    c.adapt.fill(samples, 1);
    c.setErrors(10, 100);
    const std::vector<Zsp32fc> ref(kBands, {3, 4});
    for (int frame = 0; frame < 5; ++frame) {
        c.update(0.5F, ref.data());
        c.control();
    }
    const ControllerState before = c.state();
    auto want = powersOf(c.state());
    ASSERT_TRUE(want[0] > 0 && want[kBands] > 0 && want[3 * kBands] > 0);
    for (std::size_t i = 0; i < want.size(); ++i)
        if (i < 2 * kBands || i >= 3 * kBands) want[i] = 0;
    EXPECT_EQ(zspsSubbandControllerReset_EC_32f(&c.buffer[1]), zspStsNoErr);
    expectEqual(powersOf(c.state()), want, "powers");
    EXPECT_EQ(std::memcmp(&c.state(), &before, sizeof before), 0);
}

// More bins than a cache has room for: the powers are cleared past it, and no more than they.
TEST(SubbandController, ResetClearsLargeArrays)
{
    constexpr std::size_t kMany = 600'000;
    std::vector<std::byte> buffer(16 * kMany + 112);
    ASSERT_EQ(zspsSubbandControllerInit_EC_32f(buffer.data(), kMany, 40, 1, 16000), zspStsNoErr);
    auto& s = *zsp::alignedState<ControllerState>(buffer.data());
    std::fill_n(s.adaptErrPower, 4 * kMany, 1.0F);
    EXPECT_EQ(zspsSubbandControllerReset_EC_32f(buffer.data()), zspStsNoErr);
    const auto left = [](const float* powers) {
        return static_cast<std::size_t>(std::count(powers, powers + kMany, 1.0F));
    };
    EXPECT_EQ(left(s.adaptErrPower) + left(s.fixedErrPower) + left(s.coefPower), 0u);
    EXPECT_EQ(left(s.inputPower), kMany);
}

} // namespace
