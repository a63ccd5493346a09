// Pre-emphasis of floats: a known block, and AVX2 against the definition.

#include "common/filter/preemphasis.hpp"

#include "tests/support/contract.hpp"
#include "tests/support/samples.hpp"
#include "tests/support/vectors.hpp"
#include "zspsc/correlation.h"

#include <gtest/gtest.h>

namespace {

using namespace zsp::test;
using namespace zsp::common;
using Floats = std::vector<float>;

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsPreemphasize_32f_I),
             {number(0.68), out<float>(40), number(40), out<float>(1)})
        .row({{2, number(0)}}, zspStsSizeErr)
        .row({{2, number(-1)}}, zspStsSizeErr),
});

TEST(Preemphasis, KnownBlock)
{
    Floats x = {8, 4, -2, 1, 0};
    float memory = 2;
    ASSERT_EQ(zspsPreemphasize_32f_I(0.5F, x.data(), 4, &memory), zspStsNoErr);
    expectEqual(x, Floats{7, 0, -4, 2, 0}, "of 8 4 -2 1 after 2");
    EXPECT_EQ(memory, 1);
    ASSERT_EQ(zspsPreemphasize_32f_I(0.5F, &x[4], 1, &memory), zspStsNoErr);
    EXPECT_TRUE(x[4] == -0.5F && memory == 0);
}

TEST(Preemphasis, Avx2EqualsDefinition)
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
