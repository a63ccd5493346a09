// Block scaling of known blocks, apart and in place.

#include "common/scaling/auto_scale.hpp"

#include "tests/support/contract.hpp"
#include "tests/support/vectors.hpp"
#include "zspsc/correlation.h"

#include <gtest/gtest.h>

namespace {

using namespace zsp::test;
using namespace zsp::common;
using Words = std::vector<std::int16_t>;
using Longs = std::vector<std::int32_t>;

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
});

struct AutoScaleCase {
    Words src;
    std::int32_t scale;
    Words want;
    std::int32_t shift;
    const char* why;
};

TEST(AutoScale, KnownBlocks)
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

} // namespace
