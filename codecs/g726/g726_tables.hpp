// The tables of ITU-T G.726 by rate. Logarithms are to base 2.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace zsp::g726 {

/// A table over all code words: the negative half mirrors the positive one.
template <std::size_t N>
constexpr std::array<std::int16_t, 2 * N> mirrored(const std::int16_t (&positive)[N])
{
    std::array<std::int16_t, 2 * N> all{};
    for (std::size_t i = 0; i < N; ++i)
        all[i] = all[2 * N - 1 - i] = positive[i];
    return all;
}

// Decision levels of QUAN, highest first, in 1/128; 2048 is above every normalised difference. The
// index of the first level that is not greater than the difference chooses the code word, by the
// difference's sign; one entry more than levels for a difference below them all.

inline constexpr std::array<std::int16_t, 3> kDecision16 = {2048, 261, 0};
inline constexpr std::array<std::uint8_t, 4> kPositive16 = {0, 1, 0, 0};
inline constexpr std::array<std::uint8_t, 4> kNegative16 = {3, 2, 3, 3};

inline constexpr std::array<std::int16_t, 5> kDecision24 = {2048, 331, 218, 8, 0};
inline constexpr std::array<std::uint8_t, 6> kPositive24 = {7, 3, 2, 1, 7, 7};
inline constexpr std::array<std::uint8_t, 6> kNegative24 = {7, 4, 5, 6, 7, 7};

inline constexpr std::array<std::int16_t, 9> kDecision32 = {2048, 400, 349, 300, 246,
                                                            178,  80,  0,   -124};
inline constexpr std::array<std::uint8_t, 10> kPositive32 = {15, 7, 6, 5, 4, 3, 2, 1, 1, 15};
inline constexpr std::array<std::uint8_t, 10> kNegative32 = {15, 8, 9, 10, 11, 12, 13, 14, 14, 15};

inline constexpr std::array<std::int16_t, 17> kDecision40 = {
    2048, 553, 528, 502, 475, 445, 413, 378, 339, 298, 250, 198, 139, 68, 0, -16, -122};
inline constexpr std::array<std::uint8_t, 18> kPositive40 = {31, 15, 14, 13, 12, 11, 10, 9, 8,
                                                             7,  6,  5,  4,  3,  2,  2,  1, 31};
inline constexpr std::array<std::uint8_t, 18> kNegative40 = {31, 16, 17, 18, 19, 20, 21, 22, 23,
                                                             24, 25, 26, 27, 28, 29, 29, 30, 31};

// Reconstruction levels of RECONST by code word, in 1/128; -2048 gives a difference of 0.

inline constexpr auto kLevel16 = mirrored({116, 365});
inline constexpr auto kLevel24 = mirrored({-2048, 135, 273, 373});
inline constexpr auto kLevel32 = mirrored({-2048, 4, 135, 213, 273, 323, 373, 425});
inline constexpr auto kLevel40 =
    mirrored({-2048, -66, 28, 104, 169, 224, 274, 318, 358, 395, 429, 459, 488, 514, 539, 566});

// W(I) of FUNCTW by code word, in 1/16.

inline constexpr auto kW16 = mirrored({-22, 439});
inline constexpr auto kW24 = mirrored({-4, 30, 137, 582});
inline constexpr auto kW32 = mirrored({-12, 18, 41, 64, 112, 198, 355, 1122});
inline constexpr auto kW40 =
    mirrored({14, 14, 24, 39, 40, 41, 58, 100, 141, 179, 219, 280, 358, 440, 529, 696});

// F(I) of FUNCTF by code word.

inline constexpr auto kF16 = mirrored({0, 7});
inline constexpr auto kF24 = mirrored({0, 1, 2, 7});
inline constexpr auto kF32 = mirrored({0, 0, 0, 1, 1, 1, 3, 7});
inline constexpr auto kF40 = mirrored({0, 0, 0, 0, 0, 1, 1, 1, 1, 1, 2, 3, 4, 5, 6, 6});

/// What a rate chooses.
struct RateTables {
    int bits;      // of a code word; the top one is the sign
    int leakShift; // decay of b1..b6 in UPB
    std::span<const std::int16_t> decision;
    std::span<const std::uint8_t> positiveCode;
    std::span<const std::uint8_t> negativeCode;
    std::span<const std::int16_t> level;
    std::span<const std::int16_t> w;
    std::span<const std::int16_t> f;
};

/// By rate index: 16, 24, 32 and 40 kbit/s.
inline constexpr std::array<RateTables, 4> kRates = {{
    {2, 8, kDecision16, kPositive16, kNegative16, kLevel16, kW16, kF16},
    {3, 8, kDecision24, kPositive24, kNegative24, kLevel24, kW24, kF24},
    {4, 8, kDecision32, kPositive32, kNegative32, kLevel32, kW32, kF32},
    {5, 9, kDecision40, kPositive40, kNegative40, kLevel40, kW40, kF40},
}};

} // namespace zsp::g726
