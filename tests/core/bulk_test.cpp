// Fill and copy around the limits of their ways, with a cache of any size.

#include "core/bulk.hpp"

#include "zspcore.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <span>
#include <string>
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

TEST(Bulk, FillAndCopy)
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

} // namespace
