// Version record, companion services, work arrays.

#include "core/memory.hpp"
#include "zspcore.h"
#include "zspsc.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

TEST(Core, VersionRecord)
{
    const ZspLibraryVersion* v = zspscGetLibVersion();
    ASSERT_NE(v, nullptr);
    EXPECT_EQ(v, zspscGetLibVersion());
    EXPECT_EQ(v->major, 8);
    EXPECT_EQ(v->minor, 1);
    EXPECT_EQ(v->update, 1);
    EXPECT_EQ(v->revision, 42291);
    EXPECT_EQ(std::memcmp(v->cpuTag, "l9\0\0", 4), 0);
    EXPECT_STREQ(v->name, "zspSC AVX2 (l9)");
    EXPECT_STREQ(v->versionText, "8.1.1 (r42291)");
    EXPECT_STREQ(v->buildDate, "Apr 10 2014");
}

TEST(Core, WorkArrays)
{
    for (const std::int32_t bad : {0, -1, -2147483647 - 1}) {
        EXPECT_EQ(zsp::allocateBytes(bad), nullptr);
        EXPECT_EQ(zsp::allocateElements32(bad), nullptr);
    }
    for (const std::int32_t count : {1, 63, 64, 65, 100'000}) {
        void* bytes = zsp::allocateBytes(count);
        void* elements = zsp::allocateElements32(count);
        ASSERT_NE(bytes, nullptr);
        ASSERT_NE(elements, nullptr);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(bytes) % 64, 0u);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(elements) % 64, 0u);
        std::memset(bytes, 1, static_cast<std::size_t>(count)); // the sanitizer watches the length
        std::memset(elements, 1, static_cast<std::size_t>(count) * 4);
        zsp::release(bytes);
        zsp::release(elements);
    }
    zsp::release(nullptr);
    EXPECT_EQ(zspMalloc(0), nullptr);
    EXPECT_EQ(zspMalloc(SIZE_MAX), nullptr);
}

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
