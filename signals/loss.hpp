// A network that loses packets, and how much is left of a signal that came through it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace zsp::signals {

/// Which of `count` packets are lost, each with the same probability; the first one never is.
std::vector<bool> lostPackets(std::size_t count, double share, std::uint32_t seed);

/// Log-spectral distance of two equally long pieces: root mean square, over the bins of a Hann
/// window's spectrum, of the difference of their levels in dB. Levels count from 50 dB below the
/// reference's strongest bin on.
double spectralDistanceDb(std::span<const std::int16_t> reference,
                          std::span<const std::int16_t> test);

struct Damage {
    double segmentalSnrDb;     ///< mean ratio, each limited to -10..45 dB
    double spectralDistanceDb; ///< mean distance
};

/// Means over the gaps: the lost packets of each and the first good one behind it as one segment,
/// where the reference is above -45 dBFS. Packets of `length` samples, from the first one on.
Damage damage(std::span<const std::int16_t> reference, std::span<const std::int16_t> test,
              const std::vector<bool>& lost, std::size_t length);

} // namespace zsp::signals
