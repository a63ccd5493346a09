// The disabling-tone detector: what is a tone with reversals, and what is not.

#include "core/state.hpp"
#include "ec/tone_detect.hpp"

#include "tests/support/contract.hpp"
#include "zspsc/ec/tone.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace zsp::test;

Argument readyDetector()
{
    return state(80, [](void* s) { zspsToneDetectInit_EC_32f(s, 8000); });
}

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsToneDetectGetStateSize_EC_32f), {number(8000), out<std::int32_t>(1)})
        .row({{0, number(11025)}}, zspStsRangeErr)
        .row({{0, number(0)}}, zspStsRangeErr)
        .row({{0, number(-8000)}}, zspStsRangeErr),
    Contract(ZSP_NAMED(zspsToneDetectInit_EC_32f), {state(80), number(16000)})
        .row({{1, number(11025)}}, zspStsRangeErr)
        .row({{1, number(-16000)}}, zspStsRangeErr),
    Contract(ZSP_NAMED(zspsToneDetect_EC_32f),
             {in<float>(80), number(80), out<std::int32_t>(1), readyDetector()})
        .row({{1, number(0)}}, zspStsBadArgErr)
        .row({{1, number(-2147483647.0 - 1)}}, zspStsBadArgErr),
});

/// A detector in a buffer of the reported size at an odd address.
class Detector {
  public:
    explicit Detector(std::int32_t sampleFreq)
    {
        std::int32_t size = 0;
        EXPECT_EQ(zspsToneDetectGetStateSize_EC_32f(sampleFreq, &size), zspStsNoErr);
        EXPECT_EQ(size, 80);
        buffer_.resize(static_cast<std::size_t>(size) + 1);
        EXPECT_EQ(zspsToneDetectInit_EC_32f(&buffer_[1], sampleFreq), zspStsNoErr);
    }

    bool operator()(const std::vector<float>& signal, std::size_t at, std::size_t len)
    {
        std::int32_t result = -1;
        EXPECT_EQ(zspsToneDetect_EC_32f(&signal[at], static_cast<std::int32_t>(len), &result,
                                        &buffer_[1]),
                  zspStsNoErr);
        EXPECT_TRUE(result == 0 || result == 1);
        return result == 1;
    }

    /// The detections' times in milliseconds, found in blocks of `len` samples.
    std::vector<std::size_t> times(const std::vector<float>& signal, std::size_t len,
                                   std::int32_t sampleFreq)
    {
        std::vector<std::size_t> found;
        for (std::size_t at = 0; at + len <= signal.size(); at += len)
            if ((*this)(signal, at, len))
                found.push_back(at * 1000 / static_cast<std::size_t>(sampleFreq));
        return found;
    }

    const zsp::ec::ToneDetectState& state()
    {
        return *zsp::alignedState<zsp::ec::ToneDetectState>(&buffer_[1]);
    }

  private:
    std::vector<std::byte> buffer_;
};

struct Tone {
    double reversalMs = 450; // 0 for none
    double seconds = 1.5;
    double frequency = 2100;
    double noiseDb = -200; // relative to the tone
    double modulation = 0; // depth, at 15 Hz
    double level = 8000;
    unsigned seed = 1;
};

std::vector<float> make(const Tone& tone, std::int32_t sampleFreq)
{
    std::mt19937 engine(tone.seed);
    std::normal_distribution<double> noise(0, tone.level / std::numbers::sqrt2 *
                                                  std::pow(10.0, tone.noiseDb / 20));
    std::vector<float> signal(static_cast<std::size_t>(tone.seconds * sampleFreq));
    for (std::size_t i = 0; i < signal.size(); ++i) {
        const double t = static_cast<double>(i) / sampleFreq;
        const bool reversed =
            tone.reversalMs > 0 && static_cast<long>(1000 * t / tone.reversalMs) % 2 != 0;
        const double wave = std::sin(2 * std::numbers::pi * tone.frequency * t + tone.seed) *
                            (1 + tone.modulation * std::sin(2 * std::numbers::pi * 15 * t));
        signal[i] =
            static_cast<float>((reversed ? -tone.level : tone.level) * wave + noise(engine));
    }
    return signal;
}

class ToneDetect : public testing::TestWithParam<std::int32_t> {
  protected:
    std::vector<std::size_t> detections(const Tone& tone)
    {
        return Detector(GetParam()).times(make(tone, GetParam()), block(), GetParam());
    }

    std::size_t block() const { return static_cast<std::size_t>(GetParam()) / 100; }
};

TEST_P(ToneDetect, SecondReversalDetects)
{
    for (const double level : {1.0, 100.0, 32767.0}) {
        const auto times = detections({.level = level});
        ASSERT_EQ(times.size(), 2u) << level; // at the second and the third reversal
        EXPECT_NEAR(static_cast<double>(times[0]), 900, 10) << level;
        EXPECT_NEAR(static_cast<double>(times[1]), 1350, 10) << level;
    }
}

TEST_P(ToneDetect, IntervalsOutsideTheBoundsAreNone)
{
    // The dip shortens the counted tone by a few milliseconds.
    for (const double ms : {425.0, 450.0, 460.0})
        EXPECT_FALSE(detections({.reversalMs = ms, .seconds = 2}).empty()) << ms;
    for (const double ms : {0.0, 300.0, 400.0, 480.0, 600.0})
        EXPECT_TRUE(detections({.reversalMs = ms, .seconds = 4}).empty()) << ms;
}

TEST_P(ToneDetect, OtherTonesAreNone)
{
    for (const double frequency : {1000.0, 1800.0, 2400.0, 3000.0})
        EXPECT_TRUE(detections({.seconds = 3, .frequency = frequency}).empty()) << frequency;
}

TEST_P(ToneDetect, NoiseAndModulation)
{
    for (const double modulation : {0.0, 0.2})
        for (unsigned seed = 1; seed <= 20; ++seed) {
            const auto times = detections(
                {.seconds = 1.2, .noiseDb = -15, .modulation = modulation, .seed = seed});
            ASSERT_FALSE(times.empty()) << "seed " << seed << ", modulation " << modulation;
            EXPECT_NEAR(static_cast<double>(times[0]), 900, 10);
        }
}

TEST_P(ToneDetect, SplitCallsEqualOne)
{
    const auto signal = make({.seconds = 1.2, .noiseDb = -20}, GetParam());
    Detector whole(GetParam()), parts(GetParam());
    EXPECT_TRUE(whole(signal, 0, signal.size()));
    std::size_t hits = 0;
    for (std::size_t at = 0, len = 1; at < signal.size(); at += len, len = len % 97 + 1) {
        len = std::min(len, signal.size() - at);
        hits += parts(signal, at, len);
    }
    EXPECT_EQ(hits, 1u);
    EXPECT_EQ(std::memcmp(&whole.state(), &parts.state(), sizeof(whole.state())), 0);
}

// Digital silence ends the tone after its decay and keeps the reversals; nothing stays denormal.
TEST_P(ToneDetect, SilenceEndsTheToneAndKeepsReversals)
{
    Detector detector(GetParam());
    const auto first = make({.seconds = 0.6}, GetParam());
    EXPECT_FALSE(detector(first, 0, first.size()));
    EXPECT_EQ(detector.state().reversals, 1);
    EXPECT_GT(detector.state().toneCount, 0);

    const std::vector<float> silence(static_cast<std::size_t>(GetParam()));
    EXPECT_FALSE(detector(silence, 0, silence.size()));
    const auto& s = detector.state();
    EXPECT_TRUE(s.toneCount == 0 && s.dipCount == 0 && s.reversals == 1);
    EXPECT_TRUE(s.tonePower == 0 && s.inputPower == 0 && s.y1 == 0 && s.y2 == 0);

    const auto second = make({.seconds = 0.6}, GetParam());
    EXPECT_TRUE(detector(second, 0, second.size()));
}

// A tone that stays weakened under noise for longer than the limit loses the count.
TEST_P(ToneDetect, LongDipForgetsReversals)
{
    Detector detector(GetParam());
    const auto first = make({.seconds = 0.6}, GetParam());
    detector(first, 0, first.size());
    EXPECT_EQ(detector.state().reversals, 1);
    const auto dip = make({.reversalMs = 0, .seconds = 0.1, .noiseDb = 3}, GetParam());
    detector(dip, 0, dip.size());
    EXPECT_EQ(detector.state().reversals, 0);
}

INSTANTIATE_TEST_SUITE_P(Rate, ToneDetect, testing::Values(8000, 16000),
                         [](const auto& rate) { return std::to_string(rate.param); });

// An hour-long tone overflows nothing: the count stops, beyond every accepted interval.
TEST(ToneDetectCounter, StopsAtItsLargestValue)
{
    constexpr std::int32_t kMax = std::numeric_limits<std::int32_t>::max();
    zsp::ec::ToneDetectState s = Detector(8000).state();
    const auto tone = make({.reversalMs = 0, .seconds = 0.1}, 8000);
    zsp::ec::toneDetect(s, tone);
    s.toneCount = kMax - 100;
    zsp::ec::toneDetect(s, {&tone[160], 320}); // whole periods further on
    EXPECT_EQ(s.toneCount, kMax);
}

} // namespace
