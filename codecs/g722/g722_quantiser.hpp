// The quantisers' outputs and the scale factors of ITU-T G.722, block by block.
#pragma once

#include "codecs/g722/g722_adpcm.hpp"
#include "codecs/g722/g722_tables.hpp"
#include "core/fixed_point.hpp"

#include <algorithm>
#include <cstddef>

namespace zsp::g722 {

using fx::Word;

constexpr Word limit(Word x, Word low, Word high) noexcept
{
    return std::clamp(x, low, high);
}

/// mult(8 * level, det): decision levels and quantiser outputs are in 1/4096 of the scale factor.
constexpr Word scaled(Word level, Word det) noexcept
{
    return static_cast<Word>((level * det) >> 12); // |level| <= 3101, det <= 16384
}

inline Word invqal(int il, Word detl) noexcept
{
    return scaled(kOutput4[static_cast<std::size_t>(il >> 2)], detl);
}

/// INVQBL, the quantiser of the lower band's output.
struct OutputQuantiser {
    const Word* level;
    int unusedBits;

    Word operator()(int il, Word detl) const noexcept
    {
        return scaled(level[il >> unusedBits], detl);
    }
};

inline OutputQuantiser invqbl(int mode) noexcept
{
    if (mode == 1) return {kOutput6.data(), 0};
    if (mode == 2) return {kOutput5.data(), 1};
    return {kOutput4.data(), 2};
}

inline Word invqah(int ih, Word deth) noexcept
{
    return scaled(kOutput2[static_cast<std::size_t>(ih)], deth);
}

/// LOGSCL and SCALEL.
inline void adaptScaleLow(Band& band, int il) noexcept
{
    const Word wl = kMultiplier4[static_cast<std::size_t>(il >> 2)];
    band.nb = limit(fx::add(fx::mult(band.nb, 32512), wl), 0, 18432);
    band.det = kScaleFactor[static_cast<std::size_t>(band.nb >> 6) + 64];
}

/// LOGSCH and SCALEH.
inline void adaptScaleHigh(Band& band, int ih) noexcept
{
    const Word wh = kMultiplier2[static_cast<std::size_t>(ih)];
    band.nb = limit(fx::add(fx::mult(band.nb, 32512), wh), 0, 22528);
    band.det = kScaleFactor[static_cast<std::size_t>(band.nb >> 6)];
}

} // namespace zsp::g722
