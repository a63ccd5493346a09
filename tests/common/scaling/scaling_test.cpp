#include "common/scaling/scaling.hpp"

#include "tests/support/contract.hpp"
#include "tests/support/samples.hpp"
#include "tests/support/vectors.hpp"

#include <gtest/gtest.h>

namespace {

using namespace zsp::test;
using namespace zsp::common;
using Words = std::vector<std::int16_t>;
using Longs = std::vector<std::int32_t>;
using Floats = std::vector<float>;

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsAutoScale_16s),
             {in<std::int16_t>(40), out<std::int16_t>(40), number(40), out(Longs{2})})
        .row({{2, number(0)}}, zspStsSizeErr)
        .row({{2, number(-1)}}, zspStsSizeErr)
        .row({{3, out(Longs{-1})}}, zspStsScaleRangeErr),
    Contract(ZSP_NAMED(zspsAutoScale_16s_I), {out<std::int16_t>(40), number(40), out(Longs{2})})
        .row({{1, number(0)}}, zspStsSizeErr)
        .row({{1, number(-1)}}, zspStsSizeErr)
        .row({{2, out(Longs{-2147483647 - 1})}}, zspStsScaleRangeErr),
    Contract(ZSP_NAMED(zspsInvSqrt_32s_I), {out<std::int32_t>(20), number(20)})
        .row({{1, number(0)}}, zspStsSizeErr)
        .row({{1, number(-1)}}, zspStsSizeErr),
    Contract(ZSP_NAMED(zspsPreemphasize_32f_I),
             {number(0.68), out<float>(40), number(40), out<float>(1)})
        .row({{2, number(0)}}, zspStsSizeErr)
        .row({{2, number(-1)}}, zspStsSizeErr),
});

struct AutoScaleCase {
    Words src;
    std::int32_t scale;
    Words want;
    std::int32_t shift;
    const char* why;
};

TEST(Scaling, AutoScaleKnownBlocks)
{
    const AutoScaleCase cases[] = {
        {{0, 0}, 3, {0, 0}, -3, "the norm of silence is 0"},
        {{1, -1, 0}, 0, {16384, -16384, 0}, 14, "the largest shift"},
        {{100, -300, 5}, 2, {1600, -4800, 80}, 4, "norm 6 less 2 bits of headroom"},
        {{-32768, 1}, 0, {-32768, 1}, 0, "the magnitude of -32768 has norm 0"},
        {{-16384, 16383}, 0, {-16384, 16383}, 0, "16384 has norm 0, though -16384 has 1"},
        {{-300, 299}, 9, {-38, 37}, -3, "a right shift rounds down"},
        {{-300, 299}, 2147483647, {-1, 0}, 6 - 2147483647, "of any count"},
        {{-32768, 32767}, 15, {-1, 0}, -15, "that leaves the sign alone"},
    };
    for (const AutoScaleCase& c : cases) {
        // 17 copies of the last sample, so that the vectors see the block too
        Words src = c.src, want = c.want;
        src.resize(src.size() + 17, src.back());
        want.resize(src.size(), want.back());
        Words dst(src.size());
        const auto len = static_cast<std::int32_t>(src.size());
        std::int32_t scale = c.scale;
        ASSERT_EQ(zspsAutoScale_16s(src.data(), dst.data(), len, &scale), zspStsNoErr);
        expectEqual(dst, want, c.why);
        EXPECT_EQ(scale, c.shift) << c.why;
        scale = c.scale;
        ASSERT_EQ(zspsAutoScale_16s_I(src.data(), len, &scale), zspStsNoErr);
        expectEqual(src, want, std::string("in place: ") + c.why);
        EXPECT_EQ(scale, c.shift) << c.why;
    }
}

TEST(Scaling, InvSqrtVectors)
{
    auto x = readVector<std::int32_t>("common/invsqrt.in.s32");
    const auto want = readVector<std::int32_t>("common/invsqrt.out.s32");
    ASSERT_EQ(x.size(), 1687u);
    auto scalar = x;
    invSqrtScalar(scalar);
    expectEqual(scalar, want, "definition");
    ASSERT_EQ(zspsInvSqrt_32s_I(x.data(), 1687), zspStsNoErr);
    expectEqual(x, want, "export");
}

TEST(Scaling, InvSqrtAvx2EqualsDefinition)
{
    Samples samples(41);
    for (const std::size_t len : {1u, 7u, 8u, 9u, 40u, 100'003u}) {
        auto want = samples.longs(len);
        auto got = want;
        invSqrtScalar(want);
        invSqrtAvx2(got);
        expectEqual(got, want, "length " + std::to_string(len));
    }
}

TEST(Scaling, PreemphasizeKnownBlock)
{
    Floats x = {8, 4, -2, 1, 0};
    float memory = 2;
    ASSERT_EQ(zspsPreemphasize_32f_I(0.5F, x.data(), 4, &memory), zspStsNoErr);
    expectEqual(x, Floats{7, 0, -4, 2, 0}, "of 8 4 -2 1 after 2");
    EXPECT_EQ(memory, 1);
    ASSERT_EQ(zspsPreemphasize_32f_I(0.5F, &x[4], 1, &memory), zspStsNoErr);
    EXPECT_TRUE(x[4] == -0.5F && memory == 0);
}

TEST(Scaling, PreemphasizeAvx2EqualsDefinition)
{
    Samples samples(42);
    for (std::size_t len = 1; len <= 60; ++len) {
        Floats want = samples.floats(len, 32768);
        Floats got = want;
        preemphasizeScalar(0.68F, want, 100.25F);
        preemphasizeAvx2(0.68F, got, 100.25F);
        expectEqual(got, want, "length " + std::to_string(len));
    }
}

} // namespace
