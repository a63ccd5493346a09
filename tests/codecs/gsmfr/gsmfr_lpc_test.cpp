// Linear prediction of GSM full rate: the frame whose scaling wraps, a recursion that stops, and
// AVX2 against the definitions.

#include "codecs/gsmfr/gsmfr_lpc.hpp"

#include "tests/support/contract.hpp"
#include "tests/support/samples.hpp"
#include "tests/support/vectors.hpp"
#include "zspsc/gsmfr/shortterm.h"

#include <gtest/gtest.h>

#include <array>
#include <vector>

namespace {

using namespace zsp::test;
using namespace zsp::gsmfr;
using Words = std::vector<std::int16_t>;
using zsp::spanOf;

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsAutoCorr_GSMFR_16s32s_I),
             {out<std::int16_t>(160), out<std::int32_t>(9), out<std::int32_t>(1)}),
    Contract(ZSP_NAMED(zspsSchur_GSMFR_32s16s), {in<std::int32_t>(9), out<std::int16_t>(8)}),
});

TEST(GsmfrLpc, ScalingWrapsAndSilenceStays)
{
    struct Row {
        std::int16_t sample, want;
        std::int32_t scale;
        const char* why;
    };
    constexpr Row kRows[] = {{32767, -32768, 4, "2048 << 4 wraps"},
                             {32759, 32752, 4, "rounds down to 2047"},
                             {-32768, -32768, 4, "its magnitude counts as 32767"},
                             {2047, 2047, 0, "fits as it is"},
                             {2048, 2048, 1, "halved and doubled"},
                             {1, 1, -10, "is not scaled up"},
                             {0, 0, 0, "silence"}};
    for (const Row& row : kRows) {
        Words s(160, 0);
        s[77] = row.sample;
        std::vector<std::int32_t> acf(9, -1);
        std::int32_t scale = 99;
        ASSERT_EQ(zspsAutoCorr_GSMFR_16s32s_I(s.data(), acf.data(), &scale), zspStsNoErr);
        EXPECT_EQ(scale, row.scale) << row.why;
        EXPECT_EQ(s[77], row.want) << row.why;
    }
}

TEST(GsmfrLpc, RecursionAtItsLimits)
{
    struct Row {
        std::array<std::int32_t, 9> acf;
        std::array<std::int16_t, 8> want;
        const char* why;
    };
    constexpr Row kRows[] = {
        {{0, 5, 5, 5, 5, 5, 5, 5, 5}, {}, "no energy"},
        {{1 << 20, 1 << 20, 0, 0, 0, 0, 0, 0, 0}, {-32767}, "equal: 32767, then larger: stops"},
        {{1 << 20, -(1 << 20), 0, 0, 0, 0, 0, 0, 0}, {32767}, "the same with the other sign"},
        {{1 << 20, 1 << 21, 0, 0, 0, 0, 0, 0, 0}, {}, "larger at once"},
        {{1 << 20, 0, 0, 0, 0, 0, 0, 0, 1 << 19}, {0, 0, 0, 0, 0, 0, 0, -16384}, "the last one"},
        {{-5, 1, 1, 1, 1, 1, 1, 1, 1}, {}, "no autocorrelation at all"},
    };
    for (const Row& row : kRows) {
        Words r(8, 77);
        ASSERT_EQ(zspsSchur_GSMFR_32s16s(row.acf.data(), r.data()), zspStsNoErr);
        expectEqual(r, row.want, row.why);
    }
}

TEST(GsmfrLpc, Avx2EqualsDefinition)
{
    Samples samples(524);
    for (int round = 0; round < 3000; ++round) {
        SCOPED_TRACE(round);
        Words want = samples.words(160);
        if (round % 2) // one power of two after the other as the largest magnitude
            for (auto& x : want)
                x = static_cast<std::int16_t>(x >> (round / 2 % 16));
        Words got = want, wantedR(8), r(8);
        std::vector<std::int32_t> wantedAcf(9), acf(9);
        const int scale = autoCorrScalar(spanOf<160>(want.data()), spanOf<9>(wantedAcf.data()));
        EXPECT_EQ(autoCorrAvx2(spanOf<160>(got.data()), spanOf<9>(acf.data())), scale);
        expectEqual(acf, wantedAcf, "acf");
        expectEqual(got, want, "frame");

        if (round % 3 == 1) { // correlations that hang together, and any at all
            acf = samples.longs(9);
        } else if (round % 3 == 2) {
            const std::int64_t most = acf[0];
            for (auto& x : acf)
                x = static_cast<std::int32_t>(samples.uniform(-most, most));
        }
        schurScalar(spanOf<9>(acf.data()), spanOf<8>(wantedR.data()));
        schurAvx2(spanOf<9>(acf.data()), spanOf<8>(r.data()));
        expectEqual(r, wantedR, "r");
    }
}

} // namespace
