// Sums of products in the arithmetic of the basic operators: contracts, known sums, and what tells
// saturation of each step from that of the whole.

#include "tests/support/contract.hpp"
#include "tests/support/samples.hpp"
#include "tests/support/vectors.hpp"
#include "zspsc.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace {

using namespace zsp::test;
using Words = std::vector<std::int16_t>;
using Longs = std::vector<std::int32_t>;

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsAutoCorr_16s32s),
             {in<std::int16_t>(20), number(20), out<std::int32_t>(5), number(5)})
        .row({{1, number(0)}}, zspStsSizeErr)
        .row({{3, number(0)}}, zspStsSizeErr),
    Contract(
        ZSP_NAMED(zspsAutoCorr_NormE_NR_16s),
        {in<std::int16_t>(20), number(20), out<std::int16_t>(5), number(5), out<std::int32_t>(1)})
        .row({{1, number(0)}}, zspStsSizeErr)
        .row({{3, number(0)}}, zspStsSizeErr),
    Contract(ZSP_NAMED(zspsCrossCorr_NR_16s32s), {in<std::int16_t>(20), in<std::int16_t>(20),
                                                  number(20), out<std::int32_t>(5), number(5)})
        .row({{2, number(0)}}, zspStsSizeErr)
        .row({{4, number(0)}}, zspStsSizeErr),
    Contract(ZSP_NAMED(zspsCrossCorr_NR_16s), {in<std::int16_t>(20), in<std::int16_t>(20),
                                               number(20), out<std::int16_t>(5), number(5)})
        .row({{2, number(0)}}, zspStsSizeErr)
        .row({{4, number(0)}}, zspStsSizeErr),
    Contract(ZSP_NAMED(zspsCrossCorr_NR_16s_Sfs),
             {in<std::int16_t>(20), in<std::int16_t>(20), number(20), out<std::int16_t>(5),
              number(5), number(0)})
        .row({{2, number(0)}}, zspStsSizeErr)
        .row({{4, number(0)}}, zspStsSizeErr)
        .row({{5, number(-1)}}, zspStsScaleRangeErr),
    Contract(ZSP_NAMED(zspsConvPartial_NR_16s),
             {in<std::int16_t>(20), in<std::int16_t>(20), out<std::int16_t>(20), number(20)})
        .row({{3, number(0)}}, zspStsSizeErr),
    Contract(ZSP_NAMED(zspsDotProdAutoScale_16s32s_Sfs),
             {in<std::int16_t>(20), in<std::int16_t>(20), number(20), out<std::int32_t>(1),
              out<std::int32_t>(1)})
        .row({{2, number(0)}}, zspStsSizeErr),
});

TEST(CorrelationNr, KnownSums)
{
    const Words x = {1, 2, 3}, y = {10, -20, 5};
    Longs sums(5);
    zspsAutoCorr_16s32s(x.data(), 3, sums.data(), 5);
    EXPECT_EQ(sums, (Longs{28, 16, 6, 0, 0}));
    zspsCrossCorr_NR_16s32s(x.data(), y.data(), 3, sums.data(), 5);
    EXPECT_EQ(sums, (Longs{2 * (10 - 40 + 15), 2 * (20 - 60), 60, 0, 0}));
    Words words(4);
    zspsCrossCorr_NR_16s_Sfs(x.data(), y.data(), 3, words.data(), 4, 1);
    EXPECT_EQ(words, (Words{-7, -20, 15, 0})) << "half rounds up, also below zero";
    zspsCrossCorr_NR_16s_Sfs(x.data(), y.data(), 3, words.data(), 4, 2000000000);
    EXPECT_EQ(words, Words(4));
}

TEST(CorrelationNr, WordsAreUpperWordsRounded)
{
    const Words x = {128, 64}, y = {128, 128}; // 2 * 16384 is half of an upper word
    Words words(3);
    zspsCrossCorr_NR_16s(x.data(), y.data(), 2, words.data(), 3);
    EXPECT_EQ(words, (Words{1, 0, 0}));
    std::int32_t norm = 0;
    zspsAutoCorr_NormE_NR_16s(x.data(), 2, words.data(), 3, &norm);
    EXPECT_EQ(norm, 15);
    EXPECT_EQ(words, (Words{20480, 8192, 0}));
    const Words silence(4);
    zspsAutoCorr_NormE_NR_16s(silence.data(), 4, words.data(), 3, &norm);
    EXPECT_EQ(norm, 0);
    EXPECT_EQ(words, Words(3));
}

TEST(CorrelationNr, EveryStepSaturates)
{
    // Twice beyond the range, then back: what has been cut off does not come back.
    const Words x = {32767, 32767, 32767}, y = {32767, 32767, -32768};
    Longs sums(1);
    zspsCrossCorr_NR_16s32s(x.data(), y.data(), 3, sums.data(), 1);
    EXPECT_EQ(sums[0], 2147483647 - 2147418112);
    Words words(3);
    zspsCrossCorr_NR_16s_Sfs(x.data(), y.data(), 3, words.data(), 1, 15);
    EXPECT_EQ(words[0], 32765) << "the exact sum";
    const Words h = {-32768, 32767, 32767};
    zspsConvPartial_NR_16s(x.data(), h.data(), words.data(), 3);
    EXPECT_EQ(words, (Words{-32768, -8, 8})) << "before the shift as well as in it";
}

TEST(CorrelationNr, ConvolutionRounds)
{
    const Words x = {1, 0, 3, -3}, h = {4096, 2048, 2047, 0};
    Words y(4);
    zspsConvPartial_NR_16s(x.data(), h.data(), y.data(), 4);
    EXPECT_EQ(y, (Words{1, 1, 3, -1})); // 2047 is below a half; -12288 + 6144 is -1.5
}

TEST(CorrelationNr, DotProductsShiftNoMoreThanTheyHaveTo)
{
    struct Row {
        Words x, y;
        std::int32_t want, shift;
    };
    const Row rows[] = {{{3, -4}, {5, 6}, -9, 0},
                        {{-32768, -32768}, {-32768, 32767}, 32768, 0},
                        {{-32768, -32767, 0}, {-32768, -32767, 1}, 2147418113, 0},
                        {{-32768, -32768}, {-32768, -32768}, 1 << 30, 1},
                        {{-32768, -32768, 1}, {-32768, -32768, 1}, (1 << 30) + 1, 1},
                        {{-32768, -32768, -32768}, {32767, 32767, 32767}, -1610563584, 1}};
    for (const Row& r : rows) {
        std::int32_t sum = 7, shift = 7;
        zspsDotProdAutoScale_16s32s_Sfs(r.x.data(), r.y.data(),
                                        static_cast<std::int32_t>(r.x.size()), &sum, &shift);
        EXPECT_EQ(sum, r.want);
        EXPECT_EQ(shift, r.shift);
    }
}

} // namespace
