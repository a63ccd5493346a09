// The level control against a model's records, and what it promises about speech, bursts and peaks.

#include "alc/alc_g169.hpp"
#include "alc/alc_g169_rule.hpp"

#include "tests/support/contract.hpp"
#include "tests/support/samples.hpp"
#include "tests/support/vectors.hpp"
#include "zspsc/alc_g169.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>

namespace {

using namespace zsp::test;
using zsp::alc::State;
using Words = std::vector<std::int16_t>;

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

Argument freshState()
{
    return state(124, [](void* s) { zspsALCInit_G169_16s(static_cast<State*>(s)); });
}

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsALCGetStateSize_G169_16s), {out<std::int32_t>(1)}),
    Contract(ZSP_NAMED(zspsALCInit_G169_16s), {state(124)}),
    Contract(ZSP_NAMED(zspsALCSetGain_G169_16s), {number(0), freshState()})
        .row({{0, number(-0.001)}}, zspStsRangeErr)
        .row({{0, number(kNan)}}, zspStsRangeErr),
    Contract(ZSP_NAMED(zspsALCSetLevel_G169_16s), {number(0), number(0), freshState()})
        .row({{0, number(-0.001)}}, zspStsRangeErr)
        .row({{1, number(-0.001)}}, zspStsRangeErr)
        .row({{0, number(kNan)}}, zspStsRangeErr)
        .row({{1, number(kNan)}}, zspStsRangeErr),
    Contract(ZSP_NAMED(zspsALC_G169_16s),
             {in<std::int16_t>(16), out<std::int16_t>(16), number(16), freshState()})
        .row({{2, number(0)}}, zspStsRangeErr)
        .row({{2, number(4)}}, zspStsRangeErr)
        .row({{2, number(12)}}, zspStsRangeErr)
        .row({{2, number(-8)}}, zspStsRangeErr)
        .row({{2, number(-2147483648.0)}}, zspStsRangeErr),
});

State fresh()
{
    State s;
    zspsALCInit_G169_16s(&s);
    return s;
}

Words level(State& s, const Words& src)
{
    Words dst(src.size());
    EXPECT_EQ(zspsALC_G169_16s(src.data(), dst.data(), static_cast<std::int32_t>(src.size()), &s),
              zspStsNoErr);
    return dst;
}

/// Noise with pauses, as loud as speech.
Words speech(std::uint32_t seed, std::size_t blocks, int loudest)
{
    Samples samples(seed);
    Words x(blocks * 8);
    for (std::size_t i = 0; i < x.size(); ++i) {
        const int limit = i / 8 % 20 < 14 ? loudest : loudest / 12;
        x[i] = static_cast<std::int16_t>(samples.uniform(-limit, limit));
    }
    return x;
}

std::array<std::byte, 124> bytesOf(const State& s)
{
    return std::bit_cast<std::array<std::byte, 124>>(s);
}

TEST(Alc, RecordsAndSamplesOfTheModel)
{
    expectConforms("level control", 21);
    std::int32_t size = 0;
    ASSERT_EQ(zspsALCGetStateSize_G169_16s(&size), zspStsNoErr);
    EXPECT_EQ(size, 124);
}

// The first block by hand: m = 800, s = 640, n falls from its start only towards levels below it.
TEST(Alc, FirstBlock)
{
    State s = fresh();
    const Words out = level(s, {800, -800, 800, -800, 800, -800, 800, -800});
    expectEqual(out, Words{25, -25, 25, -25, 25, -25, 25, -25}, "the start gain is 1/32");
    EXPECT_EQ(s.blockMeanAbs, 800);
    EXPECT_EQ(s.smoothLevel, 640);
    EXPECT_EQ(s.peakLevel, 640);
    EXPECT_EQ(s.noiseLevel, 65.38F);
    EXPECT_EQ(s.activityThreshold, 261.52F);
    EXPECT_EQ(s.blockEnergy, 640000);
    EXPECT_EQ(s.blockPeak, 800);
    EXPECT_EQ(s.speechState, 1);
    EXPECT_EQ(s.spurtOpen, 1);
    EXPECT_EQ(s.activeCount, 1);
    EXPECT_EQ(s.hangCount, 0);
    EXPECT_EQ(s.rate, 0) << "the first spurt has to show that it is speech";
    EXPECT_FLOAT_EQ(s.power, 0.09F * 640000);
    EXPECT_FLOAT_EQ(s.rmsLevel, 240 * 0.7F);
    EXPECT_EQ(s.targetGain, 0.03125F);
    EXPECT_EQ(s.gain, 0.03125F);
}

TEST(Alc, SettersChangeTheirFieldsOnly)
{
    State s = fresh(), want = fresh();
    want.maxGain = 1;
    ASSERT_EQ(zspsALCSetGain_G169_16s(0, &s), zspStsNoErr);
    EXPECT_EQ(bytesOf(s), bytesOf(want));
    want.maxGain = 10;
    want.targetLevel = 3276.8F;
    want.peakLimit = 32768;
    ASSERT_EQ(zspsALCSetGain_G169_16s(20, &s), zspStsNoErr);
    ASSERT_EQ(zspsALCSetLevel_G169_16s(20, 0, &s), zspStsNoErr);
    EXPECT_EQ(bytesOf(s), bytesOf(want));
}

TEST(Alc, SplitCallsOddAddressesAndInPlaceEqualOneCall)
{
    const Words src = speech(51, 700, 9000);
    State s = fresh();
    const Words want = level(s, src);

    Words got = src;
    std::array<std::byte, 125> buffer{};
    auto* const odd = reinterpret_cast<State*>(buffer.data() + 1);
    zspsALCInit_G169_16s(odd);
    for (std::size_t i = 0, blocks = 1; i < got.size(); i += 8 * blocks, blocks = blocks % 3 + 1) {
        const auto len = static_cast<std::int32_t>(std::min(8 * blocks, got.size() - i));
        ASSERT_EQ(zspsALC_G169_16s(&got[i], &got[i], len, odd), zspStsNoErr);
    }
    expectEqual(got, want, "samples");
    EXPECT_EQ(std::memcmp(buffer.data() + 1, &s, 124), 0);
}

// Quiet and loud speech come out near the target level: above it by what rmsFactor takes off the
// rms level, 1 to 3 dB, and by what the quieter syllables take off the average.
TEST(Alc, SpeechReachesTheTarget)
{
    for (const int loudest : {1200, 9000}) {
        State s = fresh();
        level(s, speech(52, 4000, loudest));
        const Words out = level(s, speech(53, 1000, loudest));
        double active = 0, count = 0;
        for (std::size_t i = 0; i < out.size(); ++i)
            if (i / 8 % 20 < 14) {
                active += out[i] * out[i];
                ++count;
            }
        const double db = 20 * std::log10(std::sqrt(active / count) / s.targetLevel);
        EXPECT_NEAR(db, 3, 1.5) << "loudest " << loudest;
    }
}

TEST(Alc, ShortBurstIsTakenBack)
{
    State s = fresh();
    level(s, speech(54, 3000, 3000));
    level(s, Words(8 * 900, 0));
    ASSERT_EQ(s.spurtOpen, 0);
    const State before = s;

    // A second burst is just above the threshold, so that its first quiet block already pauses.
    const auto threshold = static_cast<std::int16_t>(1.3F * s.activityThreshold);
    level(s, Words(8, threshold));
    EXPECT_EQ(s.spurtOpen, 1);
    EXPECT_EQ(s.speechState, before.speechState + 1);
    EXPECT_NE(s.targetGain, before.targetGain);
    level(s, Words(8 * 199, 0));
    EXPECT_EQ(s.spurtOpen, 1);
    level(s, Words(8, 0));
    EXPECT_EQ(s.spurtOpen, 0);
    EXPECT_EQ(s.speechState, before.speechState);
    EXPECT_EQ(s.power, before.power);
    EXPECT_EQ(s.targetGain, before.targetGain);
    EXPECT_EQ(s.alpha, before.alpha);
}

TEST(Alc, LimiterHoldsThePeak)
{
    for (const float peakDb : {0.0F, 6.0F, 30.0F}) {
        State s = fresh();
        zspsALCSetGain_G169_16s(40, &s);
        zspsALCSetLevel_G169_16s(10, peakDb, &s);
        level(s, speech(55, 3000, 500));
        const Words out = level(s, Words(8, -32768));
        EXPECT_EQ(s.gainSmoothing, 0.001F);
        for (const int y : out)
            EXPECT_LE(std::abs(y), s.peakLimit) << peakDb << " dB";
        int blocks = 0;
        for (; s.gainSmoothing < 1 && blocks < 100; ++blocks)
            level(s, Words(8, 10));
        EXPECT_NEAR(blocks, 73, 1);
    }
}

TEST(Alc, Avx2EqualsDefinition)
{
    Samples samples(56);
    for (int round = 0; round < 5000; ++round) {
        std::array<std::int16_t, 8> x;
        for (auto& sample : x)
            sample = samples.integer<std::int16_t>();
        const auto want = zsp::alc::measureScalar(x), got = zsp::alc::measureAvx2(x);
        ASSERT_EQ(got.meanAbs, want.meanAbs);
        ASSERT_EQ(got.energy, want.energy);
        ASSERT_EQ(got.peak, want.peak);

        const float gains[] = {samples.floats(1, 4)[0], 1.0F, 1e30F, kNan};
        for (const float gain : gains) {
            std::array<std::int16_t, 8> wantOut, gotOut;
            zsp::alc::amplifyScalar(x, gain, wantOut);
            zsp::alc::amplifyAvx2(x, gain, gotOut);
            ASSERT_EQ(gotOut, wantOut) << "gain " << gain;
        }
    }
}

} // namespace
