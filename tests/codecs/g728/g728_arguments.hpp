// Arguments of G.728: vectors and scalars with a Q of their own, as the exports take them, and
// words for definitions and fast versions.
#pragma once

#include "tests/support/samples.hpp"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace zsp::test {

/// Five mantissas and their Q.
inline std::vector<std::int16_t> vectorWithQ(std::int16_t q)
{
    return {1, -2, 3, -4, 5, q};
}

/// A mantissa and its Q.
inline std::vector<std::int16_t> scalarWithQ(std::int16_t q, std::int16_t mantissa = 16384)
{
    return {mantissa, q};
}

/// Words of the mix or at the ends of their range; in half of the rounds without -32768, where fast
/// versions give way.
inline std::vector<std::int16_t> wordsOf(Samples& samples, std::size_t count, int round)
{
    auto words = round % 5 ? samples.words(count) : samples.extremeWords(count);
    if (round % 2)
        for (auto& w : words)
            w = std::max<std::int16_t>(w, -32767);
    return words;
}

} // namespace zsp::test
