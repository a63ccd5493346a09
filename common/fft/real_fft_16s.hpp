// Real FFT between words, each in a 32-bit element, and pairs of longs, with a scale factor. The
// transform itself is the one in single precision, with its plan.
//
//   forward   bins = sat32(X 2^-scaleFactor)      inverse   time = sat16(x 2^-scaleFactor)
//
// X and x are the transforms of real_fft.hpp; x has been divided by N. Halves round up, after which
// results saturate. Every scale factor is valid, a negative one scales up.
#pragma once

#include "common/fft/real_fft.hpp"

namespace zsp::common {

/// Bytes of a call's work area, with room for two alignments to kFftAlignment.
std::int64_t realFft16sWorkSize(int order) noexcept;

void realFftForward16s(const RealFftPlan& plan, In32 time, std::span<Zsp32sc> bins,
                       std::int32_t scaleFactor, float* work) noexcept;

void realFftInverse16s(const RealFftPlan& plan, std::span<const Zsp32sc> bins, Out32 time,
                       std::int32_t scaleFactor, float* work) noexcept;

} // namespace zsp::common
