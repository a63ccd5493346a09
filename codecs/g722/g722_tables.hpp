// The constants of ITU-T G.722, clause 6.2 (coder) and clause 5 (filters).
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace zsp::g722 {

/// Decision levels of the 6-bit quantiser by step, q6[0] unused. QUANTL.
inline constexpr std::array<std::int16_t, 30> kDecision6 = {
    0,   35,  72,  110, 150,  190,  233,  276,  323,  370,  422,  473,  530,  587,  650,
    714, 786, 858, 940, 1023, 1121, 1219, 1339, 1458, 1612, 1765, 1980, 2195, 2557, 2919};

/// Decision level of the 2-bit quantiser. QUANTH.
inline constexpr std::int16_t kDecision2 = 564;

/// Signed quantiser outputs by code: 6 bits, the upper 5, the upper 4 (lower band), 2 bits (higher
/// band). An encoder never sends the lowest 6-bit codes. INVQAL, INVQBL, INVQAH.
inline constexpr std::array<std::int16_t, 64> kOutput6 = {
    -17,   -17,   -17,  -17,  -3101, -2738, -2376, -2088, -1873, -1689, -1535, -1399, -1279,
    -1170, -1072, -982, -899, -822,  -750,  -682,  -618,  -558,  -501,  -447,  -396,  -347,
    -300,  -254,  -211, -170, -130,  -91,   3101,  2738,  2376,  2088,  1873,  1689,  1535,
    1399,  1279,  1170, 1072, 982,   899,   822,   750,   682,   618,   558,   501,   447,
    396,   347,   300,  254,  211,   170,   130,   91,    54,    17,    -54,   -17};
inline constexpr std::array<std::int16_t, 32> kOutput5 = {
    -35,  -35,  -2919, -2195, -1765, -1458, -1219, -1023, -858, -714, -587,
    -473, -370, -276,  -190,  -110,  2919,  2195,  1765,  1458, 1219, 1023,
    858,  714,  587,   473,   370,   276,   190,   110,   35,   -35};
inline constexpr std::array<std::int16_t, 16> kOutput4 = {
    0, -2557, -1612, -1121, -786, -530, -323, -150, 2557, 1612, 1121, 786, 530, 323, 150, 0};
inline constexpr std::array<std::int16_t, 4> kOutput2 = {-926, -202, 926, 202};

/// Multipliers of the logarithmic scale factors by 4-bit and by 2-bit code. LOGSCL, LOGSCH.
inline constexpr std::array<std::int16_t, 16> kMultiplier4 = {
    -60, 3042, 1198, 538, 334, 172, 58, -30, 3042, 1198, 538, 334, 172, 58, -30, -60};
inline constexpr std::array<std::int16_t, 4> kMultiplier2 = {798, -214, 798, -214};

/// Linear scale factors in steps of 64 of the logarithmic one, 32 steps an octave: an octave of the
/// inverse logarithm, shifted. SCALEL begins at entry 64, SCALEH at 0. (Method 2 of clause 6.2,
/// whose table holds a quarter less 1.)
inline constexpr std::array<std::int16_t, 353> kScaleFactor = [] {
    constexpr std::array<std::int16_t, 32> kOctave = {
        2048, 2093, 2139, 2186, 2233, 2282, 2332, 2383, 2435, 2489, 2543,
        2599, 2656, 2714, 2774, 2834, 2896, 2960, 3025, 3091, 3158, 3228,
        3298, 3371, 3444, 3520, 3597, 3676, 3756, 3838, 3922, 4008};
    std::array<std::int16_t, 353> t{};
    for (std::size_t i = 0; i < 352; ++i)
        t[i] = static_cast<std::int16_t>((kOctave[i % 32] >> (10 - i / 32)) * 4);
    t[352] = 16384;
    return t;
}();
static_assert(kScaleFactor[0] == 8 && kScaleFactor[64] == 32 && kScaleFactor[351] == 16032);

/// The 24 taps of the quadrature-mirror filter, doubled; symmetric.
inline constexpr std::array<std::int16_t, 24> kQmf = {
    6,    -22,  -22,   106,  24,  -312, 64,   724, -420, -1610, 1902, 7752,
    7752, 1902, -1610, -420, 724, 64,   -312, 24,  106,  -22,   -22,  6};

} // namespace zsp::g722
