// Autocorrelation, correlation and convolution of words.
#pragma once

#include "core/spans.hpp"

namespace zsp::common {

// Two sources of one call have the same length. Each *Scalar function is a definition; the *Avx2
// function beside it equals it in every result.

/// Normalised autocorrelation: dst[0] = (2 * energy + 1) << norm, the other lags are the doubled
/// sums shifted alike, 0 from the length on. Returns false and writes nothing when the energy
/// exceeds 2^30 - 1.
bool autoCorrNormEScalar(In16 src, Out32 dst, std::int32_t& norm) noexcept;
bool autoCorrNormEAvx2(In16 src, Out32 dst, std::int32_t& norm) noexcept;

/// dst[k] = sat32((sum over i of src1[i+k] * src2[i] + half) >> shift), 0 from the length on.
void crossCorrScalar(In16 src1, In16 src2, Out32 dst, int shift) noexcept;
void crossCorrAvx2(In16 src1, In16 src2, Out32 dst, int shift) noexcept;

/// dst[k] = sat16((sum over i = 0..k of src1[i] * src2[k-i] + half) >> shift).
void convPartialScalar(In16 src1, In16 src2, Out16 dst, int shift) noexcept;
void convPartialAvx2(In16 src1, In16 src2, Out16 dst, int shift) noexcept;

/// c[k] = sum of l_mult(src1[i+k], src2[i]) with saturation after each step, dst[k] = c[k] >>
/// (18 - min(16, norm of the largest |c|)).
void crossCorrNormMScalar(In16 src1, In16 src2, Out16 dst) noexcept;
void crossCorrNormMAvx2(In16 src1, In16 src2, Out16 dst) noexcept;

} // namespace zsp::common
