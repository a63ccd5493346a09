// Work arrays from zspMalloc(), whose argument is a size without a sign.

#include "core/memory.hpp"

#include "zspcore.h"

#include <cstddef>

namespace zsp {

void* allocateBytes(std::int32_t bytes) noexcept
{
    return bytes > 0 ? zspMalloc(static_cast<std::size_t>(bytes)) : nullptr;
}

void* allocateElements32(std::int32_t count) noexcept
{
    return count > 0 ? zspMalloc(static_cast<std::size_t>(count) * 4) : nullptr;
}

void release(void* block) noexcept
{
    zspFree(block);
}

} // namespace zsp
