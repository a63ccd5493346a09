// Levels and ratios of signals in decibels.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace zsp::signals {

/// 10 log10(power / reference), and the least level shown where the power is 0.
double decibels(double power, double reference = 1.0);

/// Mean square of the samples relative to that of a square wave at full scale.
double levelDbfs(std::span<const std::int16_t> samples);

/// Power of `reference` over power of the difference, in dB.
double snrDb(std::span<const std::int16_t> reference, std::span<const std::int16_t> test);

/// The ratio per segment of `length` samples; NaN where the reference is below -55 dBFS, since a
/// ratio says nothing in pauses.
std::vector<double> snrOverTime(std::span<const std::int16_t> reference,
                                std::span<const std::int16_t> test, std::size_t length);

/// Mean of the ratios of 20 ms segments with speech, each limited to -10..45 dB.
double segmentalSnrDb(std::span<const std::int16_t> reference, std::span<const std::int16_t> test,
                      int rate);

/// `reference` minus `test`, saturated.
std::vector<std::int16_t> difference(std::span<const std::int16_t> reference,
                                     std::span<const std::int16_t> test);

} // namespace zsp::signals
