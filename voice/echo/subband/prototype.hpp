// Prototype window of the canceller's filter banks.
#pragma once

#include <array>
#include <cstddef>

namespace zsp::voice::echo {

inline constexpr std::size_t kWindowBlocks = 5; // lengths in transforms
inline constexpr std::size_t kMaxWindow = kWindowBlocks * 64;

/// The first kWindowBlocks * fftLen taps hold the window; fftLen is 32 or 64.
std::array<float, kMaxWindow> prototype(std::size_t fftLen, std::size_t hop);

} // namespace zsp::voice::echo
