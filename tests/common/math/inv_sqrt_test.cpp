// The inverse square root: vectors, and AVX2 against the definition.

#include "common/math/inv_sqrt.hpp"

#include "tests/support/contract.hpp"
#include "tests/support/samples.hpp"
#include "tests/support/vectors.hpp"
#include "zspsc/correlation.h"

#include <gtest/gtest.h>

namespace {

using namespace zsp::test;
using namespace zsp::common;

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsInvSqrt_32s_I), {out<std::int32_t>(20), number(20)})
        .row({{1, number(0)}}, zspStsSizeErr)
        .row({{1, number(-1)}}, zspStsSizeErr),
});

TEST(InvSqrt, Vectors)
{
    auto x = readVector<std::int32_t>("math/invsqrt.in.s32");
    const auto want = readVector<std::int32_t>("math/invsqrt.out.s32");
    ASSERT_EQ(x.size(), 1687u);
    auto scalar = x;
    invSqrtScalar(scalar);
    expectEqual(scalar, want, "definition");
    expectConforms("G.729", 1, "inverse square root");
}

TEST(InvSqrt, Avx2EqualsDefinition)
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

} // namespace
