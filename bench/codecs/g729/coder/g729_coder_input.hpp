// What the blocks of the G.729 encoder are measured with: noise of moderate level, a filter.
#pragma once

#include "bench/support/pool.hpp"
#include "bench/support/versions.hpp"
#include "codecs/g729/coder/g729_coder.hpp"

#include <array>

namespace zsp::bench {

/// A prediction filter of voiced speech, Q12, and its line spectral pairs.
inline constexpr std::array<std::int16_t, 11> kLpc = {4096,     -9333 / 2, 1461 / 2, -3460 / 2,
                                                      6125 / 2, -953 / 2,  3093 / 2, -4510 / 2,
                                                      222 / 2,  414 / 2,   1031 / 2};
inline constexpr std::array<std::int16_t, 10> kLsp = {30000, 26000, 21000,  15000,  8000,
                                                      0,     -8000, -15000, -21000, -26000};

/// The next `n` words of a pool.
template <std::size_t n>
g729::In<n> take(WordPool& pool)
{
    return g729::In<n>(pool.next(n));
}

} // namespace zsp::bench
