// The second detector of GSM-AMR: vectors with whole records, and any record whatever.

#include "codecs/gsmamr/gsmamr_vad2.hpp"

#include "tests/support/contract.hpp"
#include "tests/support/samples.hpp"
#include "tests/support/vectors.hpp"
#include "zspsc/gsmamr_vad.h"

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
    expectConforms("GSM-AMR", 11, "detector 2");
}

// The vectors have a frame that is speech in its first half only.
TEST(GsmamrVad2, VectorsTellTheHalves)
{
    bool onlyFirstHalf = false;
    const Words records = readVector<std::int16_t>("gsmamr/speech_clean.vad2");
    for (std::size_t i = 0; i + 96 <= records.size(); i += 96)
        onlyFirstHalf |= records[i] == 1 && records[i + 1] == 1;
    EXPECT_TRUE(onlyFirstHalf);
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
