// Vectors of 32-bit lanes as the fast coder uses them: constants, sums, and FLOATA, FLOATB and
// FMULT of ITU-T G.726.
#pragma once

#include "codecs/g726/g726_adpcm_avx2_steps.hpp"
#include "core/avx2.hpp"

#include <array>
#include <cstdint>

namespace zsp::g726 {

/// The same value in all lanes, in memory.
struct alignas(32) Lanes {
    std::array<std::int32_t, 8> lane;

    operator __m256i() const noexcept { return avx2::load(lane.data()); }
    __m128i low() const noexcept { return _mm256_castsi256_si128(*this); }
};

/// Constants of the sample loop. They are defined out of the compiler's sight: it knows how to
/// build each of them in general registers and would do so in every sample.
struct Constants {
    Lanes one, negative, negativeAndOne, upperHalf;
    Lanes exponent, mantissa, topBitAndOne, topBitAndRound, products; // fmult()
    Lanes coefficient, coefficientZero, dqZero, srZero;               // floating()
    Lanes dqBias, srBias;                                             // fmult()
    Lanes fraction, significand, fourteen;                            // logarithms
    Lanes ugb;                                                        // Quantiser
    Lanes middleLane, laneStep;                                       // Poles
    Lanes a1Clip, a1ClipNegative, a2Limit, a2LimitNegative, poleLimit;
};
extern const Constants kConstants;

/// A word in the upper half.
inline std::int32_t upper(int v) noexcept
{
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(v) << 16);
}

inline bool isNegative(__m256i v) noexcept
{
    return _mm256_cvtsi256_si32(v) < 0;
}

/// The sum and the largest of all lanes, in all lanes.
inline __m256i sumOfLanes(__m256i v) noexcept
{
    v = _mm256_add_epi32(v, _mm256_permute2x128_si256(v, v, 1));
    v = _mm256_add_epi32(v, _mm256_shuffle_epi32(v, 0x4e));
    return _mm256_add_epi32(v, _mm256_shuffle_epi32(v, 0xb1));
}

inline __m256i largestLane(__m256i v) noexcept
{
    v = _mm256_max_epi32(v, _mm256_permute2x128_si256(v, v, 1));
    v = _mm256_max_epi32(v, _mm256_shuffle_epi32(v, 0x4e));
    return _mm256_max_epi32(v, _mm256_shuffle_epi32(v, 0xb1));
}

// FLOATA, FLOATB and FMULT work on the bits of single-precision numbers: their exponents count as
// the Recommendation's do, and the upper five of their fraction bits are its mantissa without the
// top bit. Zero is represented as half the smallest magnitude. Operands may be scaled by a power of
// two: dq is not scaled; sr and the coefficients stand in the upper half, and the coefficients lose
// their lowest two bits.

inline constexpr int kDqScale = 0;
inline constexpr int kSrScale = 16;
inline constexpr int kCoefficientScale = 18;

constexpr std::int32_t floatingZero(int scale) noexcept
{
    return (126 + scale) << 23;
}

/// The bits of magnitudes. -2^31 is no magnitude and counts as 0.
inline __m256i floating(__m256i magnitude, __m256i zero) noexcept
{
    return _mm256_max_epi32(_mm256_castps_si256(_mm256_cvtepi32_ps(magnitude)), zero);
}

/// The magnitudes of coefficients in the upper half, as far as FMULT looks at them.
inline __m256i floatingCoefficient(__m256i a) noexcept
{
    return floating(_mm256_abs_epi32(_mm256_and_si256(a, kConstants.coefficient)),
                    kConstants.coefficientZero);
}

/// What fmult() takes off the sum of the exponents, so that 15 bits of a product are left.
constexpr std::int32_t fmultBias(int scale) noexcept
{
    return static_cast<std::int32_t>(
        static_cast<std::uint32_t>(126 + kCoefficientScale + 126 + scale + 10) << 23);
}

/// FMULT of coefficients `a` in the upper half, whose floating magnitudes are `an`, by delayed
/// values, which are floating with their sign and with bit 0 set.
inline __m256i fmult(__m256i a, __m256i an, __m256i delayed, __m256i bias) noexcept
{
    const Constants& k = kConstants;
    // [mantissa * 4, 1] x [mantissa * 4, 48 * 16]
    const __m256i mantissa = _mm256_or_si256(_mm256_and_si256(an, k.mantissa), k.topBitAndOne);
    const __m256i other = _mm256_or_si256(_mm256_and_si256(delayed, k.mantissa), k.topBitAndRound);
    const __m256i product = _mm256_and_si256(_mm256_madd_epi16(mantissa, other), k.products);
    // A negative count gives 0, which is right: the product is that small then.
    const __m256i exponents =
        _mm256_add_epi32(an, _mm256_sub_epi32(_mm256_and_si256(delayed, k.exponent), bias));
    const __m256i w =
        _mm256_srli_epi32(_mm256_sllv_epi32(product, _mm256_srli_epi32(exponents, 23)), 17);
    return _mm256_sign_epi32(w, _mm256_xor_si256(a, delayed));
}

/// A delayed value from the record's form, and back.
inline std::int32_t fromRecord(std::int16_t delayed, std::int16_t sign, int scale) noexcept
{
    return (sign ? kNegative : 0) | floatingZero(scale + (delayed >> 6)) | (delayed & 31) << 18 | 1;
}

inline std::int16_t toRecord(std::int32_t value, int scale) noexcept
{
    const int exponent = ((value >> 23) & 255) - (126 + scale);
    return static_cast<std::int16_t>(exponent * 64 + 32 + ((value >> 18) & 31));
}

} // namespace zsp::g726
