// Level and spectrum of noise as a few numbers, ITU-T G.711 Appendix II and RFC 3389: mean power,
// and the reflection coefficients of an all-pole filter.
#pragma once

#include "voice/api/spans.hpp"
#include "zspvoice.h"

#include <array>

namespace zsp::voice {

inline constexpr std::size_t kNoiseOrder = ZSPV_NOISE_MAX_ORDER;

using Reflection = std::array<float, kNoiseOrder>;

/// Power per sample and autocorrelation of a windowed signal, up to the largest order.
struct NoiseStatistics {
    double power = 0;
    std::array<double, kNoiseOrder + 1> autocorrelation{};
};

NoiseStatistics analyseNoise(In16 samples) noexcept;

/// Reflection coefficients by the Levinson recursion, in -1..1. Their sign is the Recommendations':
/// the filter is 1 / (1 + a_1 z^-1 + ...), so noise of low frequencies has a negative first one.
Reflection reflectionOf(const NoiseStatistics& statistics) noexcept;

/// The octet of a level, 0..127 in -dBov, and the power per sample that it stands for. 0 dBov is a
/// square wave of full scale.
std::uint8_t levelOctet(double power) noexcept;
double powerOf(std::uint8_t octet) noexcept;

/// The octet of a reflection coefficient, 0..254: 127 + k * 32768 / 258, and what it stands for.
/// 255 is none; it counts as 0.
std::uint8_t reflectionOctet(float k) noexcept;
float reflectionValue(std::uint8_t octet) noexcept;

} // namespace zsp::voice
