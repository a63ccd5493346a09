#include "amrwb_vad.hpp"

#include "support/contract.hpp"
#include "support/samples.hpp"
#include "support/vectors.hpp"

#include <gtest/gtest.h>

#include <algorithm>
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

constexpr const char* kSignals[] = {
    "extremes",     "music",        "silence_steps",    "speech_babble15",
    "speech_clean", "speech_pink5", "speech_loud_clip", "tones",
};

// Flag, tone word and whole record after every frame.
TEST(AmrWbVad, Vectors)
{
    for (const std::string name : kSignals) {
        const Words pcm = readVector<std::int16_t>("amrwb/" + name + ".pcm");
        const Words want = readVector<std::int16_t>("amrwb/" + name + ".vad");
        const std::size_t frames = want.size() / 89;
        ASSERT_GT(frames, 250u);
        ASSERT_EQ(pcm.size(), 256 * frames);

        VadWbState state{};
        zspsVADInit_AMRWB_16s(&state);
        for (std::size_t t = 0; t < frames; ++t) {
            std::int16_t tone = want[89 * t], flag = -1;
            ASSERT_EQ(zspsVAD_AMRWB_16s(&pcm[256 * t], &state, &tone, &flag), 0);

            Words got = wordsOf(state);
            got.insert(got.begin(), {flag, tone});
            expectEqual(got, std::span(&want[89 * t + 1], 88),
                        name + ", frame " + std::to_string(t));
            if (HasFatalFailure()) return;
        }
    }
}

// Any record, with any memories, levels and counters, and frames from full scale down.
TEST(AmrWbVad, Avx2EqualsDefinition)
{
    Samples samples(22);
    for (int round = 0; round < 2000; ++round) {
        const Words words = samples.words(sizeof(VadWbState) / 2);
        VadWbState want, got;
        std::memcpy(&want, words.data(), sizeof want);
        if (round % 4 == 0) zspsVADInit_AMRWB_16s(&want);
        got = want;
        for (int t = 0; t < 3; ++t) {
            Words frame = samples.words(256);
            for (auto& w : frame)
                w = static_cast<std::int16_t>(w >> (round % 16));
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
