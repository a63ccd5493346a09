// The two predictors of ITU-T G.726 for the fast coder: their sums, and how they adapt.
#pragma once

#include "codecs/g726/g726_adpcm.hpp"
#include "codecs/g726/g726_adpcm_avx2_lanes.hpp"
#include "codecs/g726/g726_adpcm_avx2_quantiser.hpp"
#include "core/avx2.hpp"

#include <array>
#include <cstddef>
#include <cstdint>

namespace zsp::g726 {

/// The zero predictor, six lanes; lanes 6 and 7 stay 0.
class Zeros {
  public:
    explicit Zeros(const CoderState& s) noexcept
    {
        alignas(32) std::array<std::int32_t, 8> b{}, dq{};
        for (std::size_t i = 0; i < kZeros; ++i) {
            b[i] = upper(s.coefficient[i]);
            dq[i] = fromRecord(s.delayed[i], s.sign[i], kDqScale);
        }
        b_ = avx2::load(b.data());
        dq_ = avx2::load(dq.data());
    }

    void save(CoderState& s) const noexcept
    {
        alignas(32) std::array<std::int32_t, 8> b, dq;
        avx2::store(b.data(), b_);
        avx2::store(dq.data(), dq_);
        for (std::size_t i = 0; i < kZeros; ++i) {
            s.coefficient[i] = static_cast<std::int16_t>(b[i] >> 16);
            s.delayed[i] = toRecord(dq[i], kDqScale);
            s.sign[i] = dq[i] < 0;
        }
    }

    /// FMULT six times, and the sum. Without an exponent lanes 6 and 7 give 0.
    __m256i sum() const noexcept
    {
        return sumOfLanes(fmult(b_, floatingCoefficient(b_), dq_, kConstants.dqBias));
    }

    /// XOR, UPB and DELAY of dq.
    template <int LeakShift>
    void adapt(const Difference& newest) noexcept
    {
        const __m256i ugb = _mm256_sign_epi32(newest.ugb, dq_);
        const __m256i leak =
            _mm256_and_si256(_mm256_srai_epi32(b_, LeakShift), kConstants.upperHalf);
        b_ = _mm256_add_epi32(_mm256_sub_epi32(b_, leak), ugb);
        const __m256i older =
            _mm256_permutevar8x32_epi32(dq_, _mm256_setr_epi32(7, 0, 1, 2, 3, 4, 7, 7));
        dq_ = _mm256_blend_epi32(older, newest.delayed, 1);
    }

    void clear() noexcept { b_ = _mm256_setzero_si256(); }

  private:
    __m256i b_; // in the upper halves
    __m256i dq_;
};

/// The pole predictor. Its coefficients depend on the sign of p: they are there for a negative p,
/// for 0 and for a positive one before p is known. a1 has the lower half of a vector, a2 the upper
/// one.
class Poles {
  public:
    explicit Poles(const CoderState& s) noexcept
        : a_(halves(upper(s.coefficient[6]), upper(s.coefficient[7]))),
          pk1_(_mm_set1_epi32(s.pk1 ? -1 : 1)), pk2_(_mm_set1_epi32(s.pk2 ? -1 : 1)),
          sr1_(_mm256_set1_epi32(fromRecord(s.delayed[6], s.sign[6], kSrScale))),
          sr2_(_mm256_set1_epi32(fromRecord(s.delayed[7], s.sign[7], kSrScale)))
    {
        multiply(floatingCoefficient(a_));
    }

    void save(CoderState& s) const noexcept
    {
        const int sr1 = _mm256_cvtsi256_si32(sr1_), sr2 = _mm256_cvtsi256_si32(sr2_);
        s.coefficient[6] = static_cast<std::int16_t>(_mm256_cvtsi256_si32(a_) >> 16);
        s.coefficient[7] = static_cast<std::int16_t>(a2() >> 16);
        s.pk0 = s.pk1 = _mm_cvtsi128_si32(pk1_) < 0;
        s.pk2 = _mm_cvtsi128_si32(pk2_) < 0;
        s.delayed[6] = toRecord(sr1, kSrScale);
        s.delayed[7] = toRecord(sr2, kSrScale);
        s.sign[6] = sr1 < 0;
        s.sign[7] = sr2 < 0;
    }

    /// The two products of FMULT, in all lanes.
    __m256i sum() const noexcept { return sum_; }

    /// a2, in the upper half.
    std::int32_t a2() const noexcept { return _mm_cvtsi128_si32(_mm256_extracti128_si256(a_, 1)); }

    /// UPA2, LIMC, UPA1 and LIMD for the three signs of p.
    void prepare() noexcept
    {
        const Constants& k = kConstants;
        const __m128i a1 = _mm256_castsi256_si128(a_);
        const __m128i a2 = _mm256_extracti128_si256(a_, 1);

        const __m128i clipped =
            _mm_max_epi32(_mm_min_epi32(a1, k.a1Clip.low()), k.a1ClipNegative.low());
        // In units of 2^-9 to begin with: shifted right by 7 they are in the upper half.
        const __m128i fa1 = _mm_sign_epi32(_mm_srai_epi32(clipped, 5), bySign(1));
        const __m128i uga2 = _mm_and_si128(
            _mm_sub_epi32(_mm_sign_epi32(bySign(16384 * 512), pk2_), _mm_sign_epi32(fa1, pk1_)),
            k.upperHalf.low());
        const __m128i decayed2 =
            _mm_sub_epi32(a2, _mm_and_si128(_mm_srai_epi32(a2, 7), k.upperHalf.low()));
        const __m128i new2 = _mm_max_epi32(
            _mm_min_epi32(_mm_add_epi32(decayed2, uga2), k.a2Limit.low()), k.a2LimitNegative.low());

        const __m128i uga1 = _mm_sign_epi32(bySign(192 * 65536), pk1_);
        const __m128i decayed1 =
            _mm_sub_epi32(a1, _mm_and_si128(_mm_srai_epi32(a1, 8), k.upperHalf.low()));
        const __m128i new1 = _mm_max_epi32(
            _mm_min_epi32(_mm_add_epi32(decayed1, uga1), _mm_sub_epi32(k.poleLimit.low(), new2)),
            _mm_sub_epi32(new2, k.poleLimit.low()));

        bySign_ = _mm256_inserti128_si256(_mm256_castsi128_si256(new1), new2, 1);
        floating_ = floatingCoefficient(bySign_);
    }

    /// p and sr are words in the upper half.
    void adapt(__m256i p, __m256i sr) noexcept
    {
        // The bytes of lane 0, 1 or 2 of each half.
        const __m256i lane =
            _mm256_add_epi32(_mm256_sign_epi32(kConstants.laneStep, p), kConstants.middleLane);
        pk2_ = pk1_;
        pk1_ = _mm_or_si128(_mm256_castsi256_si128(p), kConstants.one.low());
        a_ = _mm256_shuffle_epi8(bySign_, lane);

        sr2_ = sr1_;
        sr1_ = _mm256_or_si256(
            floating(_mm256_abs_epi32(sr), kConstants.srZero),
            _mm256_or_si256(_mm256_and_si256(sr, kConstants.negative), kConstants.one));
        multiply(_mm256_shuffle_epi8(floating_, lane));
    }

    void clear() noexcept
    {
        a_ = _mm256_setzero_si256();
        multiply(kConstants.coefficientZero);
    }

  private:
    static __m128i bySign(std::int32_t v) noexcept { return _mm_setr_epi32(-v, 0, v, 0); }

    static __m256i halves(std::int32_t low, std::int32_t high) noexcept
    {
        return _mm256_setr_epi32(low, low, low, low, high, high, high, high);
    }

    void multiply(__m256i an) noexcept
    {
        const __m256i w = fmult(a_, an, _mm256_blend_epi32(sr1_, sr2_, 0xf0), kConstants.srBias);
        sum_ = _mm256_add_epi32(w, _mm256_permute2x128_si256(w, w, 1));
    }

    __m256i a_;         // in the upper halves
    __m128i pk1_, pk2_; // negative or positive, never 0
    __m256i sr1_, sr2_;
    __m256i sum_;
    __m256i bySign_, floating_; // a_ of the next sample, lanes 0 to 2 of the halves
};

} // namespace zsp::g726
