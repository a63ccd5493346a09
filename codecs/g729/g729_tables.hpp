// Constants of the ITU-T G.729 fixed-point arithmetic.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace zsp::g729 {

/// cos(pi k / 64) in Q15, 1 limited to 32767. The second half is the first, mirrored and negated.
inline constexpr std::array<std::int16_t, 64> kCosine = [] {
    constexpr std::array<std::int16_t, 33> kFirstHalf = {
        32767, 32729, 32610, 32413, 32138, 31786, 31357, 30853, 30274, 29622, 28899,
        28106, 27246, 26320, 25330, 24279, 23170, 22006, 20788, 19520, 18205, 16846,
        15447, 14010, 12540, 11039, 9512,  7962,  6393,  4808,  3212,  1608,  0};
    std::array<std::int16_t, 64> t{};
    for (std::size_t k = 0; k < t.size(); ++k)
        t[k] = static_cast<std::int16_t>(k <= 32 ? kFirstHalf[k] : -kFirstHalf[64 - k]);
    return t;
}();

/// Slope of the arc cosine from point k to point k + 1, -2^20 over the difference of the cosines,
/// rounded. Here the first cosine is 32768, and -32768 follows the last.
inline constexpr std::array<std::int16_t, 64> kArcCosineSlope = [] {
    std::array<std::int16_t, 64> t{};
    for (std::size_t k = 0; k < t.size(); ++k) {
        const int from = k == 0 ? 32768 : kCosine[k];
        const int to = k == 63 ? -32768 : kCosine[k + 1];
        t[k] = static_cast<std::int16_t>(-((1 << 21) / (from - to) + 1) / 2);
    }
    return t;
}();
static_assert(kArcCosineSlope[0] == -26887 && kArcCosineSlope[63] == -26887);
static_assert(kArcCosineSlope[1] == -8812 && kArcCosineSlope[32] == -652);

} // namespace zsp::g729
