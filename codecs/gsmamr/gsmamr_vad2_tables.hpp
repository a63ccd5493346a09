// Tables of the GSM-AMR voice activity detector, option 2. 3GPP TS 26.094 and 26.073.
#pragma once

#include "core/fixed_point.hpp"

#include <array>
#include <cstddef>

namespace zsp::gsmamr {

inline constexpr std::size_t kChannels = 16;

struct Bins {
    std::size_t first;
    std::size_t last;

    constexpr int count() const noexcept { return static_cast<int>(last - first) + 1; }
};

/// FFT bins of the channels, the first and the last one included.
inline constexpr std::array<Bins, kChannels> kChannelBins = {{
    {2, 3},
    {4, 5},
    {6, 7},
    {8, 9},
    {10, 11},
    {12, 13},
    {14, 16},
    {17, 19},
    {20, 22},
    {23, 26},
    {27, 30},
    {31, 35},
    {36, 41},
    {42, 48},
    {49, 55},
    {56, 63},
}};

/// Weight of a channel's energy, Q15: 1 / number of bins.
inline constexpr auto kChannelGain_Q15 = [] {
    std::array<fx::Word, kChannels> gains{};
    for (std::size_t c = 0; c < kChannels; ++c) {
        const int bins = kChannelBins[c].count();
        gains[c] = static_cast<fx::Word>((32768 + bins / 2) / bins);
    }
    return gains;
}();

/// What depends on the scaling state, which keeps the channel energies of loud signals in Q4
/// instead of Q9.
struct Scaling {
    int fractionBits;    // of the channel energies
    int normShift;       // right shift of a raw energy: twice the block shift minus this
    fx::Long minEnergy;  // 0.0625; in Q4 one unit is as near as it gets
    fx::Long noiseFloor; // 1.0; a noise update needs more energy in all
};

inline constexpr std::array<Scaling, 2> kScalings = {{
    {9, 10, 32, 512},
    {4, 5, 1, 16},
}};

/// Bits between the two scalings.
inline constexpr int kScalingStep = 5;

inline constexpr int kNoiseFractionBits = 9;
inline constexpr fx::Long kMinNoise_Q9 = 32;
inline constexpr fx::Long kInitialNoise_Q9 = 8192;

/// The channel's part in the voice metric, by its SNR in steps of 3/8 dB.
inline constexpr std::array<fx::Word, 90> kVoiceMetric = {
    2,  2,  2,  2,  2,  2,  2,  2,  2,  2,  2,  3,  3,  3,  3,  3,  4,  4,  4,  5,  5,  5,  6,
    6,  7,  7,  7,  8,  8,  9,  9,  10, 10, 11, 12, 12, 13, 13, 14, 15, 15, 16, 17, 17, 18, 19,
    20, 20, 21, 22, 23, 24, 24, 25, 26, 27, 28, 28, 29, 30, 31, 32, 33, 34, 35, 36, 37, 37, 38,
    39, 40, 41, 42, 43, 44, 45, 46, 47, 48, 49, 50, 50, 50, 50, 50, 50, 50, 50, 50, 50};

/// By long-term peak SNR in steps of 3 dB: when a half-frame is speech, and how long it lasts.
struct Thresholds {
    fx::Word voiceMetric; // sums above this are speech
    fx::Word burst;       // bursts longer than this, in half-frames, are followed by a hangover
    fx::Word hangover;    // half-frames
};

inline constexpr std::array<Thresholds, 20> kThresholds = {{
    {34, 8, 30},  {34, 8, 30},  {34, 8, 30}, {34, 8, 30}, {34, 8, 30}, {34, 8, 30}, {34, 8, 28},
    {34, 8, 26},  {34, 7, 24},  {34, 6, 22}, {34, 5, 20}, {40, 4, 18}, {51, 4, 16}, {71, 4, 14},
    {100, 4, 12}, {139, 4, 10}, {191, 4, 8}, {257, 4, 8}, {337, 4, 8}, {432, 4, 8},
}};

} // namespace zsp::gsmamr
