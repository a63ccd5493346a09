// The quantiser of ITU-T G.726 and its inverse for the fast coder: a difference among all decision
// levels at once, and what follows from a code word.
#pragma once

#include "codecs/g726/g726_adpcm_avx2_lanes.hpp"
#include "codecs/g726/g726_adpcm_avx2_steps.hpp"
#include "core/avx2.hpp"

#include <bit>
#include <cstddef>
#include <cstdint>

namespace zsp::g726 {

/// The logarithms (7 fraction bits) of a table, scaled by y: significands and integer parts.
struct Scaled {
    __m256i significand;
    __m256i integer;

    Scaled(const std::int32_t* table, int y) noexcept
    {
        const Constants& k = kConstants;
        const __m256i level = _mm256_add_epi32(_mm256_set1_epi32(y >> 2), avx2::load(table));
        significand = _mm256_or_si256(_mm256_and_si256(level, k.fraction), k.significand);
        integer = _mm256_srli_epi32(level, 7);
    }
};

/// A quantised difference, alike in all lanes.
struct Difference {
    __m256i dq;      // in the upper half
    __m256i delayed; // floating, for the zero predictor
    __m256i ugb;     // in the upper half, for a positive delayed dq

    /// RECONST, ADDA, ANTILOG and FLOATA of a code word.
    static Difference of(const Step& step, int y) noexcept
    {
        const int dql = step.level + (y >> 2); // a level of -2048 makes the shift too large: 0
        const __m256i magnitude =
            _mm256_set1_epi32((128 + (dql & 127)) << 7 >> ((14 - (dql >> 7)) & 31));
        const __m256i marked = _mm256_set1_epi32(step.marked);
        return {_mm256_slli_epi32(_mm256_sign_epi32(magnitude, marked), 16),
                _mm256_or_si256(floating(magnitude, kConstants.dqZero), marked),
                _mm256_set1_epi32(step.ugb)};
    }
};

/// QUAN. The decision levels become magnitudes of d as soon as y is known.
template <typename R>
class Quantiser {
    static constexpr std::size_t kVectors = R::kLanes / 8;

  public:
    explicit Quantiser(int y) noexcept
    {
        // y is at least 544: all levels become positive, but for the fill, whose shift leaves 0.
        for (std::size_t i = 0; i < kVectors; ++i) {
            const Scaled level(&R::kDecision[8 * i], y);
            threshold_[i] = _mm256_sllv_epi32(level.significand, level.integer);
        }
    }

    /// How many thresholds lie above d, a word in the upper half. -32768 counts as 0 in LOG; here
    /// it stays below all thresholds.
    std::size_t above(__m256i d) const noexcept
    {
        const __m256i magnitude = _mm256_abs_epi32(d);
        unsigned mask = 0;
        for (std::size_t i = 0; i < kVectors; ++i)
            mask |= static_cast<unsigned>(_mm256_movemask_ps(
                        _mm256_castsi256_ps(_mm256_cmpgt_epi32(threshold_[i], magnitude))))
                    << (8 * i);
        return static_cast<std::size_t>(std::popcount(mask & ((1u << R::kLevels) - 1)));
    }

    /// The floating magnitudes of all quantised differences.
    struct Magnitudes {
        __m256i v[kVectors];
    };

    static Magnitudes magnitudes(int y) noexcept
    {
        Magnitudes all;
        for (std::size_t i = 0; i < kVectors; ++i) {
            const Scaled level(&R::kReconstructed[8 * i], y);
            const __m256i shift = _mm256_sub_epi32(kConstants.fourteen, level.integer);
            all.v[i] = floating(_mm256_srlv_epi32(_mm256_slli_epi32(level.significand, 7), shift),
                                kConstants.dqZero);
        }
        return all;
    }

    /// The quantised difference of d, computed directly, without looking up the code word.
    Difference difference(__m256i d, const Magnitudes& magnitudes) const noexcept
    {
        const __m256i g = _mm256_abs_epi32(d);
        // The magnitudes fall from lane to lane. The result is the largest of those whose threshold
        // d reaches, and the lowest one if it reaches none.
        const __m256i lowest = inAllLanes(magnitudes.v[kVectors - 1], R::kLevels % 8);
        __m256i magnitude = lowest;
        for (std::size_t i = 0; i < kVectors; ++i)
            magnitude = _mm256_max_epi32(
                magnitude,
                _mm256_blendv_epi8(magnitudes.v[i], lowest, _mm256_cmpgt_epi32(threshold_[i], g)));
        magnitude = largestLane(magnitude);

        // Above 16 kbit/s the smallest differences have one code word, with a negative sign.
        __m256i zero = _mm256_setzero_si256();
        if constexpr (R::kSingleZero)
            zero =
                _mm256_cmpgt_epi32(inAllLanes(threshold_[kVectors - 1], (R::kLevels - 1) % 8), g);
        const __m256i sign = _mm256_or_si256(d, kConstants.one);
        const __m256i mark =
            _mm256_and_si256(_mm256_or_si256(sign, zero), kConstants.negativeAndOne);
        // Half the smallest magnitude is truncated to 0.
        const __m256i dq =
            _mm256_sign_epi32(_mm256_cvttps_epi32(_mm256_castsi256_ps(magnitude)), sign);
        return {_mm256_slli_epi32(dq, 16), _mm256_or_si256(magnitude, mark),
                _mm256_andnot_si256(zero, _mm256_sign_epi32(kConstants.ugb, sign))};
    }

  private:
    static __m256i inAllLanes(__m256i v, std::size_t lane) noexcept
    {
        return _mm256_permutevar8x32_epi32(v, _mm256_set1_epi32(static_cast<int>(lane)));
    }

    __m256i threshold_[kVectors];
};

} // namespace zsp::g726
