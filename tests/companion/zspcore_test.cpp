// The companion's answer about this processor.

#include "zspcore.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace {

TEST(Core, FeaturesOfThisProcessor)
{
    const std::uint64_t mask = zspGetEnabledCpuFeatures();
    EXPECT_EQ(mask, zspGetEnabledCpuFeatures());
    EXPECT_EQ((mask & ZSP_CPU_AVX2) != 0, __builtin_cpu_supports("avx2") != 0);
    EXPECT_EQ((mask & ZSP_CPU_AVX) != 0, __builtin_cpu_supports("avx") != 0);
    EXPECT_EQ((mask & ZSP_CPU_FMA) != 0, __builtin_cpu_supports("fma") != 0);
    EXPECT_EQ((mask & ZSP_CPU_BMI2) != 0, __builtin_cpu_supports("bmi2") != 0);
    EXPECT_NE(mask & ZSP_CPU_SSE2, 0u);
}

} // namespace
