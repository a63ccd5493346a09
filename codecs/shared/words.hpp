// What the coders of several families do with vectors of words.
#pragma once

#include "core/fixed_point.hpp"
#include "core/spans.hpp"

#include <algorithm>
#include <cstddef>

namespace zsp::codecs {

/// The largest absolute value, saturated.
constexpr fx::Word largest(In16 x) noexcept
{
    fx::Word low = 0, high = 0; // which a compiler finds many at a time
    for (const fx::Word v : x) {
        low = std::min(low, v);
        high = std::max(high, v);
    }
    return std::max(fx::abs_s(low), high);
}

/// Puts new words in front; the oldest fall out.
constexpr void push(Out16 buffer, In16 fresh) noexcept
{
    std::copy_backward(buffer.begin(), buffer.end() - static_cast<std::ptrdiff_t>(fresh.size()),
                       buffer.end());
    std::copy(fresh.begin(), fresh.end(), buffer.begin());
}
constexpr void push(Out16 buffer, fx::Word fresh) noexcept
{
    push(buffer, In16(&fresh, 1));
}

} // namespace zsp::codecs
