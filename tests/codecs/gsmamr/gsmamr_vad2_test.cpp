// The second detector of GSM-AMR: vectors with whole records, and any record whatever.

#include "codecs/gsmamr/gsmamr_vad2.hpp"

#include "tests/support/contract.hpp"
#include "tests/support/samples.hpp"
#include "tests/support/vectors.hpp"

#include <gtest/gtest.h>

#include <array>
#include <bit>

namespace {

using namespace zsp::test;
using namespace zsp::gsmamr;
using Words = std::vector<std::int16_t>;

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsVAD2_GSMAMR_16s),
             {in<std::int16_t>(160), state(sizeof(Vad2State)), out<std::int16_t>(1), number(0)}),
});

/// The words of a record as the vectors have them.
std::array<std::int16_t, 94> wordsOf(const Vad2State& state)
{
    return std::bit_cast<std::array<std::int16_t, 94>>(state);
}

TEST(GsmamrVad2, Vectors)
{
    bool onlyFirstHalf = false;
    for (const char* signal :
         {"extremes", "music", "silence_steps", "speech_babble15", "speech_car10", "speech_clean",
          "speech_loud_clip", "speech_pink5", "speech_quiet", "speech_white20", "tones"}) {
        const std::string name = std::string("gsmamr/") + signal;
        const auto pcm = readVector<std::int16_t>(name + ".pcm");
        const auto side = readVector<std::int16_t>(name + ".side");
        const auto want = readVector<std::int16_t>(name + ".vad2");
        const std::size_t frames = want.size() / 96;
        ASSERT_GT(frames, 0u);
        ASSERT_GE(pcm.size(), 160 * frames);
        ASSERT_EQ(side.size(), 4 * frames);

        Vad2State state{}, defined{};
        for (std::size_t t = 0; t < frames; ++t) {
            const std::int16_t* frame = &pcm[160 * t];
            const std::int16_t* record = &want[96 * t];
            const bool ltp = side[4 * t + 3] != 0;
            const std::string what = name + ", frame " + std::to_string(t);
            std::int16_t flag = -1;
            // any bit of the flag counts
            ASSERT_EQ(zspsVAD2_GSMAMR_16s(frame, &state, &flag, ltp ? 1 << 16 : 0), zspStsNoErr);
            ASSERT_EQ(flag, record[0]) << what;
            expectEqual(wordsOf(state), std::span(record + 2, 94), what);
            ASSERT_EQ(vad2Scalar(Vad2Frame{frame, 160}, defined, ltp), record[0] != 0) << what;
            expectEqual(wordsOf(defined), std::span(record + 2, 94), what + ", definition");
            onlyFirstHalf |= record[0] == 1 && record[1] == 1;
        }
    }
    EXPECT_TRUE(onlyFirstHalf) << "no frame was speech in its first half only";
}

// From any record whatever, also those that no signal leads to.
TEST(GsmamrVad2, Avx2EqualsDefinition)
{
    Samples samples(1);
    for (int run = 0; run < 4000; ++run) {
        Vad2State want{};
        if (run % 4) {
            std::array<std::int16_t, 94> any{};
            for (auto& word : any)
                word = samples.integer<std::int16_t>();
            want = std::bit_cast<Vad2State>(any);
            if (run % 4 == 2) want.frame_cnt = samples.below(6);
        }
        Vad2State got = want;
        for (int t = 0; t < 4; ++t) {
            Words frame = samples.words(160);
            const int quieter = samples.below(16);
            for (auto& sample : frame)
                sample = static_cast<std::int16_t>(sample >> quieter);
            const Vad2Frame span{frame.data(), 160};
            const bool ltp = samples.below(2) != 0;
            const std::string what = "run " + std::to_string(run) + ", frame " + std::to_string(t);
            ASSERT_EQ(vad2Avx2(span, got, ltp), vad2Scalar(span, want, ltp)) << what;
            expectEqual(wordsOf(got), wordsOf(want), what);
        }
    }
}

} // namespace
