// The scale factor of ITU-T G.726 and the control of its speed. The functions take any record with
// the fields yu, yl, ap, dms, dml and td: the definition's and the fast coder's.
#pragma once

#include <algorithm>
#include <cstdlib>

namespace zsp::g726 {

/// LIMA and MIX: the scale factor, between the slow and the fast one.
template <typename Record>
int mix(const Record& s) noexcept
{
    const int al = std::min<int>(s.ap, 256) >> 2;
    const int slow = s.yl >> 6;
    return slow + (s.yu - slow) * al / 64; // towards zero
}

/// TRANS: whether a difference is large for a partial-band signal, one that sets td.
template <typename Record>
bool trans(const Record& s, int magnitude) noexcept
{
    const int integer = s.yl >> 15;
    const int fraction = (s.yl >> 10) & 31;
    const int threshold = integer > 9 ? 31744 : (32 + fraction) << integer;
    return magnitude > (threshold + (threshold >> 1)) >> 1;
}

/// FUNCTW, FILTD, LIMB and FILTE, from 32 W(I).
template <typename Record>
void adaptScale(Record& s, int w, int y) noexcept
{
    s.yu = static_cast<decltype(s.yu)>(std::clamp(y + ((w - y) >> 5), 544, 5120));
    s.yl += s.yu + (-s.yl >> 6);
}

/// FUNCTF, FILTA, FILTB, SUBTC, FILTC and TRIGA, from F(I) with 9 fraction bits.
template <typename Record>
void adaptSpeed(Record& s, int f, int y) noexcept
{
    s.dms = static_cast<decltype(s.dms)>(s.dms + ((f - s.dms) >> 5));
    s.dml = static_cast<decltype(s.dml)>(s.dml + ((4 * f - s.dml) >> 7));
    const bool fast = y < 1536 || s.td != 0 || std::abs(4 * s.dms - s.dml) >= s.dml >> 3;
    s.ap = static_cast<decltype(s.ap)>(s.ap + (((fast ? 512 : 0) - s.ap) >> 4));
}

} // namespace zsp::g726
