// Rounded products: known ones, and AVX2 against the definition.

#include "common/scaling/mul_nr.hpp"

#include "tests/support/contract.hpp"
#include "tests/support/samples.hpp"
#include "tests/support/vectors.hpp"
#include "zspsc/products.h"

#include <gtest/gtest.h>

namespace {

using namespace zsp::test;

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsMul_NR_16s_Sfs), {in<std::int16_t>(32), in<std::int16_t>(32),
                                             out<std::int16_t>(32), number(32), number(15)})
        .row({{3, number(0)}}, zspStsSizeErr)
        .row({{3, number(-1)}}, zspStsSizeErr)
        .row({{4, number(-1)}}, zspStsScaleRangeErr),
    Contract(ZSP_NAMED(zspsMul_NR_16s_ISfs),
             {in<std::int16_t>(32), out<std::int16_t>(32), number(32), number(15)})
        .row({{2, number(0)}}, zspStsSizeErr)
        .row({{2, number(-1)}}, zspStsSizeErr)
        .row({{3, number(-1)}}, zspStsScaleRangeErr),
});

struct Product {
    std::int16_t a, b;
    std::int32_t scale;
    std::int16_t want;
    const char* why;
};

constexpr Product kProducts[] = {
    {3, 5, 1, 8, "half rounds up"},
    {-3, 5, 1, -7, "also below zero"},
    {32767, 2, 0, 32767, "no shift saturates"},
    {-32768, 32767, 0, -32768, "on both sides"},
    {-32768, -32768, 15, 32767, "the one Q15 product that saturates"},
    {-32768, -32768, 30, 1, "a shift that leaves one bit"},
    {-32768, -32768, 31, 1, "half rounds up at the top"},
    {-32768, -32768, 32, 0, "nothing is left"},
    {-32768, -32768, 2147483647, 0, "nor by any larger shift"},
    {-32768, 32767, 31, 0, "minus a little less than half rounds to zero"},
};

TEST(MulNr, KnownProducts)
{
    for (const Product& p : kProducts) {
        // 17 copies, so that both the vectors and the tail see them
        std::vector<std::int16_t> a(17, p.a), b(17, p.b), dst(17);
        ASSERT_EQ(zspsMul_NR_16s_Sfs(a.data(), b.data(), dst.data(), 17, p.scale), zspStsNoErr);
        expectEqual(dst, std::vector<std::int16_t>(17, p.want), p.why);
        ASSERT_EQ(zspsMul_NR_16s_ISfs(a.data(), b.data(), 17, p.scale), zspStsNoErr);
        expectEqual(b, dst, std::string("in place: ") + p.why);
    }
}

TEST(MulNr, Avx2EqualsDefinition)
{
    Samples samples(1);
    for (int shift = 0; shift <= 34; ++shift)
        for (const std::size_t len : {1u, 15u, 16u, 17u, 31u, 40u, 160u, 333u}) {
            const auto a = samples.words(len), b = samples.words(len);
            std::vector<std::int16_t> want(len), got(len);
            zsp::common::mulNrScalar(a, b, want, shift);
            zsp::common::mulNrAvx2(a, b, got, shift);
            expectEqual(got, want, "shift " + std::to_string(shift));
        }
}

} // namespace
