// Work arrays: counts, alignment, and memory that can be written to its end.

#include "core/memory.hpp"

#include "zspcore.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>

namespace {

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

} // namespace
