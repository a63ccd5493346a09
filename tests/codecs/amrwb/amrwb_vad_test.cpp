// The detector of AMR-WB: vectors with whole records, and what vectors do not reach.

#include "codecs/amrwb/amrwb_vad.hpp"

#include "tests/support/contract.hpp"
#include "tests/support/samples.hpp"
#include "tests/support/vectors.hpp"
#include "zspsc/amrwb/vad.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <numeric>

namespace {

using namespace zsp::test;
using Words = std::vector<std::int16_t>;

void initialise(void* p)
{
    zspsVADInit_AMRWB_16s(static_cast<VadWbState*>(p));
}

/// The record as words, for comparisons that name the first difference.
Words wordsOf(const VadWbState& state)
{
    Words words(sizeof state / 2);
    std::memcpy(words.data(), &state, sizeof state);
    return words;
}

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsVADGetSize_AMRWB_16s), {out<std::int32_t>(1)}),
    Contract(ZSP_NAMED(zspsVADInit_AMRWB_16s), {state(sizeof(VadWbState))}),
    Contract(ZSP_NAMED(zspsVAD_AMRWB_16s),
             {in<std::int16_t>(256), state(sizeof(VadWbState), initialise), out<std::int16_t>(1),
              out<std::int16_t>(1)}),
    Contract(ZSP_NAMED(zspsVADGetEnergyLevel_AMRWB_16s),
             {in<std::byte>(sizeof(VadWbState)), out<std::int16_t>(12)}),
});

// Flag, tone word and whole record after every frame.
TEST(AmrWbVad, Vectors)
{
    expectConforms("AMR-WB", 8, "detector, ");
}

// Any record, with any memories, levels and counters, and frames from full scale down.
TEST(AmrWbVad, Avx2EqualsDefinition)
{
    Samples samples(22);
    for (int round = 0; round < 4000; ++round) {
        const bool extreme = round % 4 == 1;
        const Words words = extreme ? samples.extremeWords(sizeof(VadWbState) / 2)
                                    : samples.words(sizeof(VadWbState) / 2);
        VadWbState want, got;
        std::memcpy(&want, words.data(), sizeof want);
        if (round % 4 == 0) zspsVADInit_AMRWB_16s(&want);
        got = want;
        for (int t = 0; t < 3; ++t) {
            Words frame = extreme ? samples.extremeWords(256) : samples.words(256);
            for (auto& w : frame)
                w = static_cast<std::int16_t>(w >> (extreme ? 0 : round % 16));
            // an impulse on full memories: single words of -32768 in an otherwise quiet band
            if (extreme && t == 0) std::fill(frame.begin() + 4, frame.end(), std::int16_t{0});
            std::int16_t wantTone = samples.integer<std::int16_t>(), gotTone = wantTone;
            const auto input = std::span(frame).first<256>();
            const bool flag = zsp::amrwb::vadAvx2(input, got, gotTone);
            ASSERT_EQ(flag, zsp::amrwb::vadScalar(input, want, wantTone));
            ASSERT_EQ(gotTone, wantTone);
            expectEqual(wordsOf(got), wordsOf(want),
                        "round " + std::to_string(round) + ", frame " + std::to_string(t));
            if (HasFatalFailure()) return;
        }
    }
}

TEST(AmrWbVad, SizeAndInit)
{
    std::int32_t size = 0;
    zspsVADGetSize_AMRWB_16s(&size);
    EXPECT_EQ(size, 172);

    VadWbState state;
    std::memset(&state, 0x55, sizeof state);
    zspsVADInit_AMRWB_16s(&state);
    Words want(86);
    std::fill_n(want.begin(), 36, std::int16_t{150});
    want[66] = 0x5555; // stat_count stays
    want[71] = 2050;   // speech_level
    expectEqual(wordsOf(state), want, "record after Init");
}

struct PowerCase {
    std::int16_t sample;   // in all places of the frame
    std::int32_t previous; // power of the frame before
    std::int16_t tone;     // what is left of the flags
    const char* why;
};

constexpr PowerCase kPowerCases[] = {
    {0, 686079, 0x1fff, "just below the threshold"},
    {0, 686080, -1, "on the threshold"},
    {1, 685567, 0x1fff, "512 of this frame"},
    {1, 685568, -1, "and one more before it"},
    {-32768, 2147483647, -1, "a sum that saturates"},
    {0, -2147483647 - 1, 0x1fff, "a negative power"},
};

TEST(AmrWbVad, LowPowerMasksTone)
{
    for (const PowerCase& c : kPowerCases) {
        VadWbState state{};
        zspsVADInit_AMRWB_16s(&state);
        state.prev_pow_sum = c.previous;
        const Words frame(256, c.sample);
        std::int16_t tone = -1, flag = -1;
        ASSERT_EQ(zspsVAD_AMRWB_16s(frame.data(), &state, &tone, &flag), zspStsNoErr);
        EXPECT_EQ(tone, c.tone) << c.why;
    }
}

/// A sixteenth of the levels of bands 1 to 11.
int inputLevel(const VadWbState& state)
{
    return std::accumulate(state.energy_level + 1, std::end(state.energy_level), 0) >> 4;
}

// A frame counts for the speech level when it is louder than 129. All frames are active here.
TEST(AmrWbVad, QuietFramesDoNotCountForTheSpeechLevel)
{
    Samples samples(23);
    bool seen[2] = {};
    for (int round = 0; round < 2000; ++round) {
        const auto loudest = static_cast<std::int16_t>(50 + round / 4);
        Words frame(256);
        for (auto& w : frame)
            w = static_cast<std::int16_t>(samples.uniform(-loudest, loudest));
        VadWbState state{};
        zspsVADInit_AMRWB_16s(&state);
        std::ranges::fill(state.bckr_est, std::int16_t{40});
        state.speech_level = 0;
        std::int16_t tone = 0, flag = -1;
        zspsVAD_AMRWB_16s(frame.data(), &state, &tone, &flag);
        const int level = inputLevel(state);
        if (level < 129 || level > 130) continue;
        seen[level - 129] = true;
        EXPECT_EQ(state.sp_est_cnt, 1);
        EXPECT_EQ(state.sp_max_cnt, level > 129) << "round " << round;
        EXPECT_EQ(state.sp_max, level > 129 ? level : 0) << "round " << round;
    }
    EXPECT_TRUE(seen[0] && seen[1]) << "no frame on each side";
}

struct BurstCase {
    std::int16_t speechLevel;
    std::int16_t burst; // active frames that earn a hangover
    const char* why;
};

// Without noise the threshold is 767 and what the speech level adds or takes. The burst is one
// frame shorter below 768.
constexpr BurstCase kBurstCases[] = {
    {1, 7, "the lowest threshold, 671"},
    {2540, 7, "767"},
    {2575, 8, "768"},
    {32767, 8, "the highest, 863"},
};

TEST(AmrWbVad, BurstThatEarnsAHangover)
{
    Words frame(256);
    for (std::size_t i = 0; i < frame.size(); ++i)
        frame[i] = i % 2 ? 300 : -300; // an active frame
    for (const BurstCase& c : kBurstCases)
        for (const bool enough : {false, true}) {
            VadWbState state{};
            zspsVADInit_AMRWB_16s(&state);
            std::ranges::fill(state.bckr_est, std::int16_t{1}); // a sixteenth of their sum is 0
            state.speech_level = c.speechLevel;
            state.burst_count = static_cast<std::int16_t>(c.burst - (enough ? 1 : 2));
            std::int16_t tone = 0, flag = -1;
            zspsVAD_AMRWB_16s(frame.data(), &state, &tone, &flag);
            EXPECT_EQ(flag, 1);
            EXPECT_EQ(state.hang_count > 0, enough) << c.why;
        }
}

struct EstimateCase {
    std::int16_t sp_max, sp_max_cnt, sp_est_cnt;
    std::array<std::int16_t, 4> after; // and speech_level
    const char* why;
};

constexpr EstimateCase kEstimateCases[] = {
    {20000, 23, 60, {20000, 24, 61, 2050}, "24 active frames are no estimate"},
    {20000, 24, 60, {0, 0, 0, 3242}, "25 are: 15 % of the way to 10000"},
    {821, 24, 60, {0, 0, 0, 2050}, "too quiet for an estimate"},
    {822, 24, 60, {0, 0, 0, 1804}, "just not"},
    {20000, 4, 59, {20000, 5, 60, 2050}, "55 inactive frames are as many as may be"},
    {20000, 4, 60, {0, 1, 1, 2050}, "56 are too many: the frame is the first of a new one"},
};

TEST(AmrWbVad, SpeechLevelEstimate)
{
    for (const EstimateCase& c : kEstimateCases) {
        VadWbState state{};
        zspsVADInit_AMRWB_16s(&state);
        state.sp_max = c.sp_max;
        state.sp_max_cnt = c.sp_max_cnt;
        state.sp_est_cnt = c.sp_est_cnt;
        Words frame(256);
        for (std::size_t i = 0; i < frame.size(); ++i)
            frame[i] = i % 2 ? 300 : -300; // an active frame
        std::int16_t tone = 0, flag = -1;
        zspsVAD_AMRWB_16s(frame.data(), &state, &tone, &flag);
        const int level = inputLevel(state);
        ASSERT_GT(level, 129);
        ASSERT_LT(level, 821);

        auto want = c.after;
        if (want[0] == 0 && want[1] == 1) want[0] = static_cast<std::int16_t>(level);
        expectEqual(
            std::array{state.sp_max, state.sp_max_cnt, state.sp_est_cnt, state.speech_level}, want,
            c.why);
    }
}

TEST(AmrWbVad, SilenceClearsCountersAndLevelsAreReadBack)
{
    VadWbState state{};
    zspsVADInit_AMRWB_16s(&state);
    state.burst_count = state.hang_count = 3;
    const Words silence(256);
    std::int16_t tone = 0, flag = -1;
    ASSERT_EQ(zspsVAD_AMRWB_16s(silence.data(), &state, &tone, &flag), zspStsNoErr);
    EXPECT_EQ(flag, 0);
    EXPECT_EQ(state.burst_count, 0);
    EXPECT_EQ(state.hang_count, 0);

    Words levels(12), want(12);
    std::iota(want.begin(), want.end(), std::int16_t{7});
    std::ranges::copy(want, state.energy_level);
    ASSERT_EQ(zspsVADGetEnergyLevel_AMRWB_16s(&state, levels.data()), zspStsNoErr);
    expectEqual(levels, want, "energy levels");
}

} // namespace
