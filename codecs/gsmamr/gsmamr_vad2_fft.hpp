#pragma once

#include "core/fixed_point.hpp"
#include "core/spans.hpp"

#include <cstddef>
#include <cstdint>
#include <span>

namespace zsp::gsmamr {

/// The definition: dst[i] = add(src[i], mult(factor, src[i - 1])), src[-1] being `memory`, which
/// becomes the last sample. `dst` may be `src`.
void preEmphasiseScalar(fx::Word factor, In16 src, Out16 dst, fx::Word& memory) noexcept;

/// Equal to preEmphasiseScalar in every result.
void preEmphasiseAvx2(fx::Word factor, In16 src, Out16 dst, fx::Word& memory) noexcept;

inline constexpr std::size_t kFftLength = 128;
using FftBlock = std::span<std::int16_t, kFftLength>;

/// The definition of the real FFT: 128 samples become the spectrum over 128, packed.
void fftScalar(FftBlock block) noexcept;

/// Equal to fftScalar in every result.
void fftAvx2(FftBlock block) noexcept;

} // namespace zsp::gsmamr
