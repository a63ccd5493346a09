// Lag searches: which of equal maxima wins, sums that wrap, and AVX2 against the definitions.

#include "common/correlation/lag_search.hpp"

#include "tests/support/contract.hpp"
#include "tests/support/samples.hpp"
#include "tests/support/vectors.hpp"
#include "zspsc/correlation.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using namespace zsp::test;
using namespace zsp::common;
using Words = std::vector<std::int16_t>;

template <typename Out, typename... P>
Contract searchOfThePast(const char* name, ZspStatus (*function)(P...), const Argument& src)
{
    // The guard before the buffer serves as the past.
    return Contract(name, function,
                    {src, number(40), number(3), number(16), out<Out>(1), out<std::int32_t>(1)})
        .row({{1, number(0)}}, zspStsSizeErr)
        .row({{1, number(-1)}}, zspStsSizeErr)
        .row({{2, number(-1)}}, zspStsRangeErr)
        .row({{3, number(2)}}, zspStsRangeErr)
        .row({{3, number(-1)}}, zspStsRangeErr)
        .row({{2, number(-2)}, {3, number(-1)}}, zspStsRangeErr);
}

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsCrossCorrLagMax_16s),
             {in<std::int16_t>(40), in<std::int16_t>(60), number(40), number(20),
              out<std::int32_t>(1), out<std::int32_t>(1)})
        .row({{2, number(0)}}, zspStsSizeErr)
        .row({{2, number(-1)}}, zspStsSizeErr)
        .row({{3, number(-1)}}, zspStsRangeErr),
    searchOfThePast<std::int32_t>(ZSP_NAMED(zspsAutoCorrLagMax_Fwd_16s), in<std::int16_t>(40)),
    searchOfThePast<std::int32_t>(ZSP_NAMED(zspsAutoCorrLagMax_Inv_16s), in<std::int16_t>(40)),
    searchOfThePast<float>(ZSP_NAMED(zspsAutoCorrLagMax_32f), in<float>(40)),
});

TEST(LagSearch, TiesAndSilence)
{
    // Pulses at 20, 40 and 60: the lags that find one are equally good.
    Words now(40, 0), past(160, 0);
    now[0] = 100;
    for (const int at : {20, 40, 60, 75})
        past[static_cast<std::size_t>(at)] = at == 75 ? -7 : 3;
    std::int32_t corr = -1, lag = -1;
    ASSERT_EQ(zspsCrossCorrLagMax_16s(now.data(), past.data(), 40, 120, &corr, &lag), zspStsNoErr);
    EXPECT_TRUE(corr == 300 && lag == 60) << corr << " at " << lag;
    ASSERT_EQ(zspsCrossCorrLagMax_16s(now.data(), past.data(), 40, 15, &corr, &lag), zspStsNoErr);
    EXPECT_TRUE(corr == 0 && lag == 15) << corr << " at " << lag;

    // The same of the past: src[0] = 100 stands 80, 60 and 40 samples after them.
    past[80] = 100;
    const std::vector<float> pastF(past.begin(), past.end());
    const std::int16_t* src = &past[80];
    ASSERT_EQ(zspsAutoCorrLagMax_Fwd_16s(src, 5, 30, 70, &corr, &lag), zspStsNoErr);
    EXPECT_TRUE(corr == 300 && lag == 40) << corr << " at " << lag;
    ASSERT_EQ(zspsAutoCorrLagMax_Inv_16s(src, 5, 30, 70, &corr, &lag), zspStsNoErr);
    EXPECT_TRUE(corr == 300 && lag == 60) << corr << " at " << lag;
    float corrF = -1;
    ASSERT_EQ(zspsAutoCorrLagMax_32f(&pastF[80], 5, 30, 70, &corrF, &lag), zspStsNoErr);
    EXPECT_TRUE(corrF == 300 && lag == 40) << corrF << " at " << lag;

    // Nothing positive from 3 to 19.
    ASSERT_EQ(zspsAutoCorrLagMax_Fwd_16s(src, 5, 3, 19, &corr, &lag), zspStsNoErr);
    EXPECT_TRUE(corr == 0 && lag == 3) << corr << " at " << lag;
    ASSERT_EQ(zspsAutoCorrLagMax_Inv_16s(src, 5, 3, 19, &corr, &lag), zspStsNoErr);
    EXPECT_TRUE(corr == 0 && lag == 19) << corr << " at " << lag;
    ASSERT_EQ(zspsAutoCorrLagMax_32f(&pastF[80], 5, 3, 19, &corrF, &lag), zspStsNoErr);
    EXPECT_TRUE(corrF == 0 && lag == 3) << corrF << " at " << lag;
    ASSERT_EQ(zspsAutoCorrLagMax_Fwd_16s(src, 5, 0, 32, &corr, &lag), zspStsNoErr);
    EXPECT_TRUE(corr == 10000 && lag == 0) << corr << " at " << lag;
}

// Two products of 2^30 make -2^31, four make 0: sums wrap instead of saturating.
TEST(LagSearch, SumsWrap)
{
    const Words full(60, -32768);
    for (const int len : {2, 3, 4, 5, 40}) {
        std::int32_t corr = -1, lag = -1;
        ASSERT_EQ(zspsCrossCorrLagMax_16s(full.data(), full.data(), len, 20, &corr, &lag),
                  zspStsNoErr);
        EXPECT_EQ(corr, len == 5 ? 1 << 30 : 0) << "length " << len;
        EXPECT_EQ(lag, 20);
    }
}

template <typename T, typename Make>
void compareWithDefinition(Make make)
{
    for (const std::size_t len : {1u, 2u, 3u, 39u, 40u, 41u})
        for (const std::size_t lags : {1u, 15u, 16u, 17u, 31u, 32u, 47u, 144u})
            for (int round = 0; round < 4; ++round)
                for (const Scan scan : {Scan::up, Scan::down}) {
                    const std::vector<T> a = make(len, round), b = make(len + lags - 1, round);
                    const auto want = lagMaxScalar(std::span(a), std::span(b), scan);
                    const auto got = lagMaxAvx2(std::span(a), std::span(b), scan);
                    ASSERT_TRUE(got.corr == want.corr && got.offset == want.offset)
                        << len << " x " << lags << ", round " << round << ": " << got.corr << " at "
                        << got.offset << ", not " << want.corr << " at " << want.offset;
                }
}

TEST(LagSearch, Avx2EqualsDefinition)
{
    Samples samples(31);
    compareWithDefinition<std::int16_t>([&](std::size_t count, int round) {
        Words x = samples.words(count);
        if (round > 0) // few values: many ties
            for (auto& w : x)
                w = static_cast<std::int16_t>(w % (1 + round));
        return x;
    });
}

TEST(LagSearch, FloatAvx2EqualsDefinition)
{
    Samples samples(32);
    compareWithDefinition<float>([&](std::size_t count, int round) {
        auto x = samples.floats(count, 32768);
        if (round == 1)
            for (float& f : x)
                f = static_cast<float>(static_cast<int>(f) % 2);
        if (round == 2) x[count / 2] = std::numeric_limits<float>::quiet_NaN();
        return x;
    });
}

} // namespace
