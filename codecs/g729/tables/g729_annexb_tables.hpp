// Tables of ITU-T G.729 Annex B: activity decision, silence descriptors, comfort noise.
#pragma once

#include <array>
#include <cstdint>

namespace zsp::g729 {

/// Autocorrelation of the low-band filter, Q15; lags 1 to 12 count twice. Clause B.3.1.3.
inline constexpr std::array<std::int16_t, 13> kLowBand = {7869, 7011, 4838, 2299, 321, -660, -782,
                                                          -484, -164, 3,    39,   21,  4};

/// What the means of the first 32 frames are multiplied and shifted by, by the number of quiet ones
/// among them, which count for nothing. Clause B.3.3.
inline constexpr std::array<std::int16_t, 33> kStartFactor = {
    32767, 16913, 17476, 18079, 18725, 19418, 20165, 20972, 21845, 22795, 23831,
    24966, 26214, 27594, 29127, 30840, 32767, 17476, 18725, 20165, 21845, 23831,
    26214, 29127, 32767, 18725, 21845, 26214, 32767, 21845, 32767, 32767, 0};
inline constexpr std::array<std::int8_t, 33> kStartShift = {0, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1,
                                                            1, 1, 1, 1, 1, 1, 2, 2, 2, 2, 2,
                                                            2, 2, 2, 3, 3, 3, 3, 4, 4, 5, 0};

/// Factor and headroom of the energies behind a gain index, by their number; 0: one that a decoder
/// has kept. Clause B.4.2.1.
inline constexpr std::array<std::int16_t, 3> kEnergyFactor = {410, 26, 13};
inline constexpr std::array<std::int8_t, 3> kEnergyMargin = {0, 0, 1};

/// Gains of silence descriptors, eight times the root mean square of the excitation. Clause
/// B.4.2.1.
inline constexpr std::array<std::int16_t, 32> kSidGain = {
    2,   5,   8,   13,   20,   32,   50,   64,   80,   101,  127,  160,  201,  253,   318,   401,
    505, 635, 800, 1007, 1268, 1596, 2010, 2530, 3185, 4009, 5048, 6355, 8000, 10071, 12679, 15962};

/// Predictors of the LSF of silence descriptors, Q15, a set per past frame, the newest first: the
/// first of speech, and the mean of both of speech, weighted 3 to 2. Clause B.4.2.2.
inline constexpr std::array<std::array<std::array<std::int16_t, 10>, 4>, 2> kSidPredictor = {{
    {{{8421, 9109, 9175, 8965, 9034, 9057, 8765, 8775, 9106, 8673},
      {7018, 7189, 7638, 7307, 7444, 7379, 7038, 6956, 6930, 6868},
      {5472, 4990, 5134, 5177, 5246, 5141, 5206, 5095, 4830, 5147},
      {4056, 3031, 2614, 3024, 2916, 2713, 3309, 3237, 2857, 3473}}},
    {{{8145, 8617, 8779, 8648, 8718, 8829, 8713, 8705, 8806, 8231},
      {5894, 5525, 5603, 5773, 6016, 5968, 5896, 5835, 5721, 5707},
      {4568, 3765, 3605, 3963, 4144, 4038, 4225, 4139, 3914, 4255},
      {3643, 2455, 1944, 2466, 2438, 2259, 2798, 2775, 2479, 3124}}},
}};

/// What the predictors leave of 1, Q15, and its reciprocal, Q12.
inline constexpr std::array<std::array<std::int16_t, 10>, 2> kSidSum = {{
    {7798, 8447, 8205, 8293, 8126, 8477, 8447, 8703, 9043, 8604},
    {10514, 12402, 12833, 11914, 11447, 11670, 11132, 11311, 11844, 11447},
}};
inline constexpr std::array<std::array<std::int16_t, 10>, 2> kSidSumInverse = {{
    {17210, 15888, 16357, 16183, 16516, 15833, 15888, 15421, 14840, 15597},
    {12764, 10821, 10458, 11264, 11724, 11500, 12056, 11865, 11331, 11724},
}};

/// The vectors of the first stage of speech that silence descriptors use.
inline constexpr std::array<std::uint8_t, 32> kSidFirstStage = {
    96, 52,  20, 54,  86, 114, 82, 68,  36, 121, 48, 92,  18,  120, 94,  124,
    50, 125, 4,  100, 28, 76,  12, 117, 81, 22,  90, 116, 127, 21,  108, 66};

/// Those of the second stage, for the lower and the upper half.
inline constexpr std::array<std::array<std::uint8_t, 16>, 2> kSidSecondStage = {{
    {31, 21, 9, 3, 10, 2, 19, 26, 4, 3, 11, 29, 15, 27, 21, 12},
    {16, 1, 0, 0, 8, 25, 22, 20, 19, 23, 20, 31, 4, 31, 20, 31},
}};

/// Weights of the error of the first stage by predictor, Q15.
inline constexpr std::array<std::int16_t, 2> kSidPredictorWeight = {8644, 16572};

} // namespace zsp::g729
