// Blocks of WAV files with the format tag 49: two frames of GSM full rate in 65 bytes.
#pragma once

#include <array>
#include <cstdint>
#include <span>

namespace zsp::host {

inline constexpr std::size_t kGsmPair = 65;

/// The two frames as they stand in .gsm files, 33 bytes each.
std::array<std::uint8_t, 66> gsmFrames(std::span<const std::uint8_t, kGsmPair> pair);

} // namespace zsp::host
