// Sample arrays below the entry points: spans, read-only in, writable out.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace zsp {

using In8 = std::span<const std::uint8_t>;
using Out8 = std::span<std::uint8_t>;
using In16 = std::span<const std::int16_t>;
using Out16 = std::span<std::int16_t>;
using In32 = std::span<const std::int32_t>;
using Out32 = std::span<std::int32_t>;
using InF = std::span<const float>;
using OutF = std::span<float>;

/// A fixed number of words.
template <std::size_t n>
using In = std::span<const std::int16_t, n>;
template <std::size_t n>
using Out = std::span<std::int16_t, n>;

/// The N elements that begin at `p`.
template <std::size_t N, typename T>
constexpr std::span<T, N> spanOf(T* p) noexcept
{
    return std::span<T, N>(p, N);
}

} // namespace zsp
