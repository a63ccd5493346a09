// Version record, companion services, work arrays, bulk fill and copy.

#include "core/bulk.hpp"
#include "core/memory.hpp"
#include "zspcore.h"
#include "zspsc.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <vector>

namespace {

// This program's own cache query takes the place of the companion's, so that the tests choose
// between ordinary and streaming stores and see which question is asked.
std::int32_t cacheSize = 0;
std::int32_t cacheStatus = 0;
int cacheQueries = 0;

} // namespace

std::int32_t zspGetMaxCacheSizeB(std::int32_t* size)
{
    ++cacheQueries;
    if (cacheStatus == 0) *size = cacheSize;
    return cacheStatus;
}

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

struct BulkCase {
    std::size_t length;
    std::int32_t cache, status;
    int queries;
    const char* what;
};

constexpr std::size_t kLimit = 2'097'152;
constexpr BulkCase kBulkCases[] = {
    {0, 1, 0, 0, "empty"},
    {1, 1, 0, 0, "a byte"},
    {kLimit, 1, 0, 0, "the largest that asks nothing"},
    {kLimit + 1, 32768, 0, 1, "streaming"},
    {kLimit + 64 + 63, 32768, 0, 1, "streaming with a tail"},
    {kLimit + 1, kLimit + 1, 0, 1, "not larger than the cache"},
    {kLimit + 1, 0, 0, 1, "no cache"},
    {kLimit + 1, 32768, -1, 1, "the query fails"},
};

TEST(Core, FillAndCopy)
{
    constexpr std::byte kMark{0x5A};
    for (const BulkCase& c : kBulkCases)
        for (const std::size_t offset : {0u, 1u, 63u}) {
            SCOPED_TRACE(std::string(c.what) + ", offset " + std::to_string(offset));
            cacheSize = c.cache;
            cacheStatus = c.status;
            std::vector<std::byte> source(c.length), target(offset + c.length + 64, kMark);
            for (std::size_t i = 0; i < c.length; ++i)
                source[i] = static_cast<std::byte>((i * 131) >> 3);
            const std::span<std::byte> dst(target.data() + offset, c.length);
            const auto edgesKept = [&] {
                return std::count(target.begin(), target.begin() + static_cast<long>(offset),
                                  kMark) == static_cast<long>(offset) &&
                       std::count(target.end() - 64, target.end(), kMark) == 64;
            };

            cacheQueries = 0;
            zsp::copy(source, dst);
            EXPECT_EQ(cacheQueries, c.queries);
            EXPECT_TRUE(std::equal(dst.begin(), dst.end(), source.begin()) && edgesKept());

            cacheQueries = 0;
            zsp::zeroFill(dst);
            EXPECT_EQ(cacheQueries, c.queries);
            EXPECT_TRUE(edgesKept());
            EXPECT_EQ(std::count(dst.begin(), dst.end(), std::byte{0}),
                      static_cast<std::ptrdiff_t>(c.length));
        }
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
