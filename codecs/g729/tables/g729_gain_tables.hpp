// Gain quantiser of ITU-T G.729, clause 3.9.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace zsp::g729 {

/// A pair of a gain book.
struct GainPair {
    std::int16_t pitch_Q14, code_Q13;
};

/// First stage, in the order of the search.
inline constexpr std::array<GainPair, 8> kGainBook1 = {{{1, 1516},
                                                        {1551, 2425},
                                                        {1831, 5022},
                                                        {57, 5404},
                                                        {1921, 9291},
                                                        {3242, 9949},
                                                        {356, 14756},
                                                        {2678, 27162}}};

/// Second stage.
inline constexpr std::array<GainPair, 16> kGainBook2 = {{{826, 2005},
                                                         {1994, 0},
                                                         {5142, 592},
                                                         {6160, 2395},
                                                         {8091, 4861},
                                                         {9120, 525},
                                                         {10573, 2966},
                                                         {11569, 1196},
                                                         {13260, 3256},
                                                         {14194, 1630},
                                                         {15132, 4914},
                                                         {15161, 14276},
                                                         {15434, 237},
                                                         {16112, 3392},
                                                         {17299, 1861},
                                                         {18973, 5935}}};

/// What is sent for an entry of the first stage.
inline constexpr std::array<std::int16_t, 8> kGainCode1 = {5, 1, 4, 7, 3, 0, 6, 2};

/// What is sent for an entry of the second stage.
inline constexpr std::array<std::int16_t, 16> kGainCode2 = {4,  6,  0, 2,  12, 14, 8, 10,
                                                            15, 11, 9, 13, 7,  3,  1, 5};

/// The entry of the first stage that is meant by what was sent.
inline constexpr std::array<std::int16_t, 8> kGainEntry1 = {5, 1, 7, 4, 2, 0, 6, 3};

/// The same of the second stage.
inline constexpr std::array<std::int16_t, 16> kGainEntry2 = {2, 14, 3, 13, 0, 15, 1, 12,
                                                             6, 10, 7, 9,  4, 11, 5, 8};

/// Predictor of the code energy, Q13, the newest first.
inline constexpr std::array<std::int16_t, 4> kGainPrediction = {5571, 4751, 2785, 1556};

/// Where the preselection of the first stage moves on, Q14.
inline constexpr std::array<std::int16_t, 4> kGainThreshold1 = {10808, 12374, 19778, 32567};

/// The same of the second stage, Q15.
inline constexpr std::array<std::int16_t, 8> kGainThreshold2 = {14087, 16188, 20274, 21321,
                                                                23525, 25232, 27873, 30542};

} // namespace zsp::g729
