// Line spectral pairs to line spectral frequencies, ITU-T G.729 clause 3.2.4.
#pragma once

#include "codecs/g729/g729.hpp"

#include <cstdint>
#include <span>

namespace zsp::g729 {

using LspIn = std::span<const std::int16_t, kOrder>;
using LsfOut = std::span<std::int16_t, kOrder>;

/// The definition: cosines in Q15 to angular frequencies in Q13. Both may be the same memory, here
/// and below.
void lspToLsfScalar(LspIn lsp_Q15, LsfOut lsf_Q13) noexcept;

/// The definition: cosines in Q15 to frequencies in parts of the sampling rate, Q15.
void lspToLsfNormScalar(LspIn lsp_Q15, LsfOut lsf_Q15) noexcept;

/// Equal to the definitions in every result.
void lspToLsfAvx2(LspIn lsp_Q15, LsfOut lsf_Q13) noexcept;
void lspToLsfNormAvx2(LspIn lsp_Q15, LsfOut lsf_Q15) noexcept;

} // namespace zsp::g729
