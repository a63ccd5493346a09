// The two loops of the sub-band filter bank over its window of L taps, with N the transform's
// length, a divisor of L.
#pragma once

#include "core/spans.hpp"

namespace zsp::ec {

/// The definition of the windowed fold onto N = fold.size() points:
///   fold[i] = sum of delay[i + m N] window[i + m N] over m, fused, in increasing m.
void foldScalar(InF delay, InF window, OutF fold) noexcept;

/// Equal to foldScalar in every result.
void foldAvx2(InF delay, InF window, OutF fold) noexcept;

/// The definition of the overlap-add with the reversed window, N = time.size():
///   delay[i] += time[i mod N] window[L-1-i], fused.
void overlapAddScalar(InF time, InF window, OutF delay) noexcept;

/// Equal to overlapAddScalar in every result.
void overlapAddAvx2(InF time, InF window, OutF delay) noexcept;

/// The fold of words with a window in Q13. Each product is rounded, (d w + 4096) >> 13, and may
/// be larger than a word; the sum saturates to a word at each addition and is stored in 32 bits.
void foldScalar(In16 delay, In16 window_Q13, Out32 fold) noexcept;

/// Equal to its definition in every result.
void foldAvx2(In16 delay, In16 window_Q13, Out32 fold) noexcept;

/// The overlap-add of words, with the products and the saturation of the fold. `time` holds words
/// in 32 bits.
void overlapAddScalar(In32 time, In16 window_Q13, Out16 delay) noexcept;

/// Equal to its definition in every result.
void overlapAddAvx2(In32 time, In16 window_Q13, Out16 delay) noexcept;

} // namespace zsp::ec
