// Energies: AVX2 against the definition, and full scale.

#include "common/correlation/energy.hpp"

#include "tests/support/samples.hpp"
#include "tests/support/vectors.hpp"

#include <gtest/gtest.h>

namespace {

using namespace zsp::test;

TEST(Energy, Avx2EqualsDefinition)
{
    Samples samples(11);
    for (std::size_t len = 0; len <= 260; ++len)
        for (int round = 0; round < 20; ++round) {
            auto x = samples.words(len);
            // from full scale down to sums that do not saturate
            for (auto& w : x)
                w = static_cast<std::int16_t>(w >> (round / 2));
            ASSERT_EQ(zsp::common::energyAvx2(x), zsp::common::energyScalar(x))
                << "length " << len << ", round " << round;
        }
}

// Four times -32768: sums of two squares that no signed lane holds.
TEST(Energy, FullScale)
{
    const std::vector<std::int16_t> x(32, -32768);
    EXPECT_EQ(zsp::common::energyAvx2(x), zsp::fx::kMax32);
    EXPECT_EQ(zsp::common::energyScalar(x), zsp::fx::kMax32);
}

} // namespace
