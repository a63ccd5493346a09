// The first detector of GSM-AMR: vectors with whole records, and AVX2 against the definition.

#include "codecs/gsmamr/gsmamr_vad1.hpp"

#include "conformance/gsmamr.hpp"
#include "tests/support/contract.hpp"
#include "tests/support/samples.hpp"
#include "tests/support/vectors.hpp"
#include "zspsc/gsmamr_vad.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>

namespace {

using namespace zsp::test;
using zsp::conformance::resetVad1;
using zsp::conformance::wordsOf;
using Words = std::vector<std::int16_t>;

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsVAD1_GSMAMR_16s), {in<std::int16_t>(200),
                                              state(sizeof(Vad1State),
                                                    [](void* p) {
                                                        const Vad1State fresh = resetVad1();
                                                        std::memcpy(p, &fresh, sizeof fresh);
                                                    }),
                                              out<std::int16_t>(1), number(0), number(13106)}),
});

// Flag and whole record after every frame.
TEST(GsmAmrVad1, Vectors)
{
    expectConforms("GSM-AMR", 11, "detector 1");
}

// Any record, with any memories, levels and counters, and frames from full scale down.
TEST(GsmAmrVad1, Avx2EqualsDefinition)
{
    Samples samples(21);
    for (int round = 0; round < 2000; ++round) {
        const bool extreme = round % 4 == 1;
        const Words words = extreme ? samples.extremeWords(sizeof(Vad1State) / 2)
                                    : samples.words(sizeof(Vad1State) / 2);
        Vad1State want, got;
        std::memcpy(&want, words.data(), sizeof want);
        if (round % 4 == 0) want = resetVad1();
        got = want;
        for (int t = 0; t < 3; ++t) {
            Words source = extreme ? samples.extremeWords(200) : samples.words(200);
            for (auto& w : source)
                w = static_cast<std::int16_t>(w >> (extreme ? 0 : round % 16));
            // an impulse on full memories: single words of -32768 in an otherwise quiet band
            if (extreme && t == 0) std::fill(source.begin() + 44, source.end(), std::int16_t{0});
            const auto tone = samples.integer<std::int16_t>();
            const auto bestCorrHp = samples.integer<std::int16_t>();
            const auto frame = std::span(source).first<200>();
            const bool flag = zsp::gsmamr::vad1Avx2(frame, got, tone, bestCorrHp);
            ASSERT_EQ(flag, zsp::gsmamr::vad1Scalar(frame, want, tone, bestCorrHp));
            expectEqual(wordsOf(got), wordsOf(want),
                        "round " + std::to_string(round) + ", frame " + std::to_string(t));
            if (HasFatalFailure()) return;
        }
    }
}

struct HangoverCase {
    std::int16_t bckr_est;     // in every band: 16000 leaves a quiet frame inactive, 40 active
    std::int16_t corr_hp_fast; // kept, as bestCorrHp is the same
    std::int16_t vadreg;       // before the frame
    std::array<std::int16_t, 3> counts; // burst_count, hang_count, complex_hang_count
    std::int16_t timer;                 // complex_hang_timer
    std::int16_t flag;
    std::array<std::int16_t, 3> countsAfter;
    const char* why;
};

constexpr HangoverCase kHangoverCases[] = {
    {16000, 21298, 0, {2, 0, 0}, 0, 0, {0, 0, 0}, "correlation on the threshold"},
    {16000, 21299, 0, {2, 9, 0}, 0, 1, {2, 9, 0}, "correlation above it; no counter moves"},
    {16000, 21299, 0x001f, {2, 9, 0}, 0, 1, {2, 9, 0}, "activity too long ago to count"},
    {16000, 21299, 0x0020, {2, 1, 0}, 0, 1, {0, 0, 0}, "activity ten frames ago: hangover"},
    {16000, 21299, 0x0020, {2, 0, 0}, 0, 0, {0, 0, 0}, "and its end"},
    {40, 21299, 0, {2, 9, 0}, 0, 1, {2, 9, 0}, "this frame's activity is not looked at"},
    {40, 13106, 0, {3, 0, 0}, 0, 1, {4, 0, 0}, "low noise: a burst of 4 is short"},
    {40, 13106, 0, {4, 0, 0}, 0, 1, {5, 4, 0}, "a burst of 5 arms 4 frames"},
    {40, 13106, 0, {32767, 0, 0}, 0, 1, {32767, 4, 0}, "the burst saturates"},
    {16000, 22937, 0, {0, 0, 0}, 99, 1, {0, 0, 0}, "timer at its limit"},
    {16000, 22937, 0, {0, 0, 0}, 100, 1, {4, 0, 249}, "timer beyond it arms the complex hangover"},
    {16000, 22937, 0, {0, 0, 260}, 100, 1, {4, 0, 259}, "which is only raised"},
    {16000, 13106, 0, {0, 5, 1}, 0, 1, {4, 5, 0}, "last frame of the complex hangover"},
};

TEST(GsmAmrVad1, Hangover)
{
    for (const HangoverCase& c : kHangoverCases) {
        Vad1State state = resetVad1();
        std::ranges::fill(state.bckr_est, c.bckr_est);
        state.corr_hp_fast = c.corr_hp_fast;
        state.vadreg = c.vadreg;
        state.burst_count = c.counts[0];
        state.hang_count = c.counts[1];
        state.complex_hang_count = c.counts[2];
        state.complex_hang_timer = c.timer;

        Words source(200);
        for (std::size_t i = 0; i < source.size(); ++i)
            source[i] = i % 2 ? 200 : -200;
        std::int16_t flag = -1;
        ASSERT_EQ(zspsVAD1_GSMAMR_16s(source.data(), &state, &flag, 0, c.corr_hp_fast), 0);
        EXPECT_EQ(flag, c.flag) << c.why;
        expectEqual(std::array{state.burst_count, state.hang_count, state.complex_hang_count},
                    c.countsAfter, c.why);
    }
}

// A record that holds speech goes silent at once: low power clears every counter.
TEST(GsmAmrVad1, SilenceClearsCounters)
{
    Vad1State state = resetVad1();
    state.burst_count = state.hang_count = state.complex_hang_count = 3;
    state.complex_hang_timer = 200;
    state.complex_low = state.pitch = 0x7fff;
    const Words silence(200);
    std::int16_t flag = -1;
    ASSERT_EQ(zspsVAD1_GSMAMR_16s(silence.data(), &state, &flag, 0, 32767), zspStsNoErr);
    EXPECT_EQ(flag, 0);
    EXPECT_EQ(state.burst_count, 0);
    EXPECT_EQ(state.hang_count, 0);
    EXPECT_EQ(state.complex_hang_count, 0);
    EXPECT_EQ(state.complex_hang_timer, 0);
    EXPECT_EQ(state.corr_hp_fast, 13106);
    EXPECT_EQ(state.pitch, 0x3fff);
    EXPECT_EQ(state.complex_low, 0x1fff);
}

// The power is that of samples 0..159, not of the 160 that are filtered.
TEST(GsmAmrVad1, PowerComesBeforeTheFilteredFrame)
{
    struct Case {
        std::size_t loud; // the one sample of 1000
        std::int16_t pitch;
    };
    for (const Case& c : {Case{0, 0x7fff}, Case{159, 0x7fff}, Case{160, 0x3fff}}) {
        Vad1State state = resetVad1();
        state.pitch = 0x7fff;
        Words source(200);
        source[c.loud] = 1000;
        std::int16_t flag = -1;
        ASSERT_EQ(zspsVAD1_GSMAMR_16s(source.data(), &state, &flag, 0, 0), zspStsNoErr);
        EXPECT_EQ(state.pitch, c.pitch) << "sample " << c.loud;
    }
}

} // namespace
