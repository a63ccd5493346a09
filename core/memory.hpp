// Temporary work arrays from the companion library, for the few families that need them.
#pragma once

#include <cstdint>

namespace zsp {

/// `bytes` bytes, 64-byte aligned; null when `bytes` is zero or less, or memory is short.
void* allocateBytes(std::int32_t bytes) noexcept;

/// `count` 32-bit elements, 64-byte aligned; null when `count` is zero or less, or memory is short.
void* allocateElements32(std::int32_t count) noexcept;

/// Gives back what either of the two returned.
void release(void* block) noexcept;

} // namespace zsp
