// Correlation and convolution: known blocks, and AVX2 against the definitions.

#include "common/correlation/correlation.hpp"

#include "tests/support/contract.hpp"
#include "tests/support/samples.hpp"
#include "tests/support/vectors.hpp"
#include "zspsc/correlation.h"

#include <gtest/gtest.h>

namespace {

using namespace zsp::test;
using namespace zsp::common;
using Words = std::vector<std::int16_t>;
using Longs = std::vector<std::int32_t>;

constexpr std::int32_t kMax32 = 2147483647;

const bool registered = addContracts({
    Contract(
        ZSP_NAMED(zspsAutoCorr_NormE_16s32s),
        {in<std::int16_t>(32), number(32), out<std::int32_t>(11), number(11), out<std::int32_t>(1)})
        .row({{1, number(0)}}, zspStsSizeErr)
        .row({{1, number(-1)}}, zspStsSizeErr)
        .row({{3, number(0)}}, zspStsSizeErr)
        .row({{3, number(-1)}}, zspStsSizeErr)
        .row({{0, in(Words(32, 32767))}}, zspStsOverflow),
    Contract(ZSP_NAMED(zspsCrossCorr_16s32s_Sfs),
             {in<std::int16_t>(32), in<std::int16_t>(32), number(32), out<std::int32_t>(11),
              number(11), number(1)})
        .row({{2, number(0)}}, zspStsSizeErr)
        .row({{4, number(0)}}, zspStsSizeErr)
        .row({{4, number(-1)}}, zspStsSizeErr)
        .row({{5, number(-1)}}, zspStsScaleRangeErr),
    Contract(ZSP_NAMED(zspsCrossCorr_NormM_16s),
             {in<std::int16_t>(40), in<std::int16_t>(40), number(40), out<std::int16_t>(40)})
        .row({{2, number(0)}}, zspStsSizeErr)
        .row({{2, number(-1)}}, zspStsSizeErr),
    Contract(ZSP_NAMED(zspsConvPartial_16s_Sfs), {in<std::int16_t>(40), in<std::int16_t>(40),
                                                  out<std::int16_t>(40), number(40), number(12)})
        .row({{4, number(-1)}}, zspStsBadArgErr)
        .row({{3, number(0)}}, zspStsSizeErr)
        .row({{3, number(-1)}}, zspStsSizeErr),
});

constexpr std::size_t kLengths[] = {1, 2, 14, 15, 16, 17, 29, 31, 32, 33, 39, 40, 41, 80, 240};

// Two sources each, from full scale down to a few bits: the large ones wrap or saturate whatever is
// too narrow, the small ones reach the large norms.
template <typename Check>
void forEachPair(std::uint32_t seed, Check check)
{
    Samples samples(seed);
    for (const std::size_t len : kLengths)
        for (int down = 0; down < 15; ++down) {
            SCOPED_TRACE("length " + std::to_string(len) + ", down " + std::to_string(down));
            Words a = samples.words(len), b = samples.words(len);
            for (auto& x : a)
                x = static_cast<std::int16_t>(x >> down);
            if (down % 3 == 0) b = a;
            check(a, b);
        }
    check(Words(40, -32768), Words(40, -32768));
    check(Words(600, -32768), Words(600, 32767)); // longer than any work array
}

struct AutoCorrCase {
    Words src;
    Longs want;
    std::int32_t norm;
    const char* why;
};

TEST(Correlation, AutoCorrKnownBlocks)
{
    const AutoCorrCase cases[] = {
        {Words(40, 0), {1 << 30, 0, 0}, 30, "silence"},
        {{1, 2, -3}, {29 << 26, -8 * (1 << 26), -6 * (1 << 26), 0, 0}, 26, "lags from 3 on are 0"},
        {{32767, 255, 22, 5}, {kMax32}, 0, "the largest energy"},
        {{23170, 23170}, {2147395601, 2 * 23170 * 23170}, 0, "nearly the largest"},
    };
    for (const AutoCorrCase& c : cases) {
        Longs dst(c.want.size());
        std::int32_t norm = -1;
        ASSERT_EQ(zspsAutoCorr_NormE_16s32s(c.src.data(), static_cast<int>(c.src.size()),
                                            dst.data(), static_cast<int>(dst.size()), &norm),
                  zspStsNoErr);
        expectEqual(dst, c.want, c.why);
        EXPECT_EQ(norm, c.norm) << c.why;
    }
}

TEST(Correlation, AutoCorrRejectsEnergiesThatWouldWrap)
{
    // 2^30, and sums that are 0 modulo 2^32 and 2^33
    for (const Words& src :
         {Words{32767, 255, 22, 5, 1}, Words{-32768}, Words(4, -32768), Words(64, -32768)}) {
        std::int32_t dst = 5, norm = 6;
        EXPECT_EQ(
            zspsAutoCorr_NormE_16s32s(src.data(), static_cast<int>(src.size()), &dst, 1, &norm),
            zspStsOverflow);
        EXPECT_TRUE(dst == 5 && norm == 6) << "written";
    }
}

TEST(Correlation, AutoCorrAvx2EqualsDefinition)
{
    int fits = 0;
    forEachPair(21, [&](const Words& a, const Words&) {
        for (const std::size_t lags : {1u, 2u, 11u, 17u, 18u, 45u}) {
            Longs want(lags, 7), got(lags, 7);
            std::int32_t wantNorm = 8, gotNorm = 8;
            const bool fit = autoCorrNormEScalar(a, want, wantNorm);
            ASSERT_EQ(autoCorrNormEAvx2(a, got, gotNorm), fit);
            ASSERT_EQ(gotNorm, wantNorm);
            expectEqual(got, want, "lags " + std::to_string(lags));
            fits += fit;
        }
    });
    EXPECT_GT(fits, 500);
}

TEST(Correlation, CrossCorrKnownBlocks)
{
    const Words full(40, -32768), steps = {1, 2, 3}, ones = {1, 1, 1};
    Longs dst(5);
    ASSERT_EQ(zspsCrossCorr_16s32s_Sfs(steps.data(), ones.data(), 3, dst.data(), 5, 1),
              zspStsNoErr);
    expectEqual(dst, Longs{3, 3, 2, 0, 0}, "6 5 3 halved, half rounded up");
    ASSERT_EQ(zspsCrossCorr_16s32s_Sfs(full.data(), full.data(), 40, dst.data(), 2, 6),
              zspStsNoErr);
    EXPECT_EQ(dst[0], 40 << 24) << "40 * 2^30 is not lost";
    ASSERT_EQ(zspsCrossCorr_16s32s_Sfs(full.data(), full.data(), 40, dst.data(), 2, 0),
              zspStsNoErr);
    EXPECT_EQ(dst[1], kMax32);
}

TEST(Correlation, CrossCorrAvx2EqualsDefinition)
{
    forEachPair(22, [](const Words& a, const Words& b) {
        for (const std::size_t lags : {1u, 11u, 17u, 45u})
            for (const int shift : {0, 1, 7, 20, 36, 61, 62, 2147483647}) {
                Longs want(lags), got(lags);
                crossCorrScalar(a, b, want, shift);
                crossCorrAvx2(a, b, got, shift);
                expectEqual(got, want, "shift " + std::to_string(shift));
            }
    });
}

struct NormMCase {
    Words src1, src2, want;
    const char* why;
};

TEST(Correlation, NormMKnownBlocks)
{
    const NormMCase cases[] = {
        {{0, 0}, {0, 0}, {0, 0}, "silence"},
        {{9, -3}, {1, 1}, {3, -2}, "norms above 16 count as 16: 12 >> 2 and -6 >> 2"},
        {{16384, 8192}, {4096, 0}, {4096, 2048}, "2^27 has the norm 3"},
        {{-32768}, {-32768}, {8191}, "one product saturates"},
        {{-32768, -32768, 32767}, Words(3, -32768), {0, 0, -8192}, "so does every step"},
    };
    for (const NormMCase& c : cases) {
        Words dst(c.want.size());
        ASSERT_EQ(zspsCrossCorr_NormM_16s(c.src1.data(), c.src2.data(),
                                          static_cast<int>(dst.size()), dst.data()),
                  zspStsNoErr);
        expectEqual(dst, c.want, c.why);
    }
}

TEST(Correlation, NormMAvx2EqualsDefinition)
{
    forEachPair(23, [](const Words& a, const Words& b) {
        Words want(a.size()), got(a.size());
        crossCorrNormMScalar(a, b, want);
        crossCorrNormMAvx2(a, b, got);
        expectEqual(got, want, "dst");
    });
}

TEST(Correlation, ConvPartialKnownBlocks)
{
    const Words x = {1, -2, 3, 20000}, h = {4096, 2048, 0, 4096};
    Words dst(4);
    ASSERT_EQ(zspsConvPartial_16s_Sfs(x.data(), h.data(), dst.data(), 4, 12), zspStsNoErr);
    expectEqual(dst, Words{1, -1, 2, 20003}, "1, -1.5, 2 and 20002.5, half rounded up");
    ASSERT_EQ(zspsConvPartial_16s_Sfs(x.data(), h.data(), dst.data(), 4, 0), zspStsNoErr);
    expectEqual(dst, Words{4096, -6144, 8192, 32767}, "saturated");
}

TEST(Correlation, ConvPartialAvx2EqualsDefinition)
{
    forEachPair(24, [](const Words& a, const Words& b) {
        for (const int shift : {0, 1, 12, 20, 62}) {
            Words want(a.size()), got(a.size());
            convPartialScalar(a, b, want, shift);
            convPartialAvx2(a, b, got, shift);
            expectEqual(got, want, "shift " + std::to_string(shift));
        }
    });
}

} // namespace
