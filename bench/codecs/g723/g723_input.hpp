// What the blocks of G.723.1 are measured with: noise of moderate level, a filter, a frame.
#pragma once

#include "bench/support/pool.hpp"
#include "bench/support/versions.hpp"
#include "codecs/g723/g723.hpp"

#include <array>

namespace zsp::bench {

/// A prediction filter of voiced speech, Q13.
inline constexpr std::array<std::int16_t, 10> kLpc = {9333,  -1461, 3460, -6125, 953,
                                                      -3093, 4510,  -222, -414,  -1031};

/// Its weighting, Q13.
inline std::array<std::int16_t, 20> weighting()
{
    std::array<std::int16_t, 20> w{};
    g723::weightingCoefficients(kLpc, w);
    return w;
}

/// A response as that filter has it.
inline std::array<std::int16_t, 60> response()
{
    std::array<std::int16_t, 60> r{};
    g723::impulseResponseScalar(kLpc, weighting(), {40, 9000}, r);
    return r;
}

inline ZspG723Frame frameOf(std::int32_t type, std::int16_t lag)
{
    ZspG723Frame f{};
    f.type = type;
    f.lag[0] = f.lag[1] = lag;
    for (auto& offset : f.lagOffset)
        offset = 1;
    for (auto& gain : f.acbGain)
        gain = 30;
    return f;
}

/// The next `n` words of a pool.
template <std::size_t n>
g723::In<n> take(WordPool& pool)
{
    return g723::In<n>(pool.next(n));
}

} // namespace zsp::bench
