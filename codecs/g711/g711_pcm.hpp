// Blocks of 16-bit linear samples to G.711 code words and back.
#pragma once

#include "core/spans.hpp"

#include <cstdint>

namespace zsp::g711 {

enum class Law : std::int32_t { mu = 0, a = 1 };

/// The definition: one code word per sample. `codes` is as long as `samples`.
void encodeScalar(In16 samples, Out8 codes, Law law) noexcept;

/// The definition: one sample per code word. `samples` is as long as `codes`.
void decodeScalar(In8 codes, Out16 samples, Law law) noexcept;

void encodeAvx2(In16 samples, Out8 codes, Law law) noexcept;
void decodeAvx2(In8 codes, Out16 samples, Law law) noexcept;

} // namespace zsp::g711
