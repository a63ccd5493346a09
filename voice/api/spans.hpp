// Sample and byte arrays inside of the voice layer, where entry points have checked their lengths.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace zsp::voice {

using In8 = std::span<const std::uint8_t>;
using Out8 = std::span<std::uint8_t>;
using In16 = std::span<const std::int16_t>;
using Out16 = std::span<std::int16_t>;

/// Length of a span as the public headers count.
template <typename T>
constexpr std::int32_t countOf(std::span<T> s) noexcept
{
    return static_cast<std::int32_t>(s.size());
}

} // namespace zsp::voice
