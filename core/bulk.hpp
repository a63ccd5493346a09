// Bulk zero-fill and copy. Buffers larger than the data cache go past it.
#pragma once

#include <cstddef>
#include <span>

namespace zsp {

void zeroFill(std::span<std::byte> dst) noexcept;

/// `dst` and `src` have the same length and do not overlap.
void copy(std::span<const std::byte> src, std::span<std::byte> dst) noexcept;

} // namespace zsp
