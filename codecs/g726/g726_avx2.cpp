// The coder of g726_adpcm.cpp arranged for speed, equal in every code word, sample and state.
//
// The way from one sample's d to the next one's bounds the encoder, so it stays in vector
// registers, and what does not depend on d is made before d is there. Words that wrap at 16 bits
// stand in the upper halves of 32-bit lanes.

#include "codecs/g726/g726_adpcm.hpp"

#include "codecs/g726/g726_lanes.hpp"
#include "codecs/g726/g726_law.hpp"
#include "codecs/g726/g726_steps.hpp"
#include "core/avx2.hpp"

#include <algorithm>
#include <bit>
#include <cstdlib>

namespace zsp::g726 {

namespace {

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

    /// The quantised difference of d, without the way over the code word.
    Difference difference(__m256i d, const Magnitudes& magnitudes) const noexcept
    {
        const __m256i g = _mm256_abs_epi32(d);
        // The magnitudes fall from lane to lane. Of those whose threshold d reaches, and of the
        // lowest one, the largest is it.
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
        // Half of the smallest number is truncated to 0.
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

template <typename R>
class Coder {
  public:
    explicit Coder(const CoderState& s) noexcept
        : zeros_(s), poles_(s), yu_(s.yu), ap_(s.ap), yl_(s.yl), dms_(s.dms), dml_(s.dml),
          td_(s.td), sez_(_mm256_set1_epi32(upper(s.sez)))
    {
        predict();
    }

    void save(CoderState& s) const noexcept
    {
        zeros_.save(s);
        poles_.save(s);
        s.yu = static_cast<std::int16_t>(yu_);
        s.ap = static_cast<std::int16_t>(ap_);
        s.yl = yl_;
        s.dms = static_cast<std::int16_t>(dms_);
        s.dml = static_cast<std::int16_t>(dml_);
        s.td = static_cast<std::int16_t>(td_);
        s.sez = static_cast<std::int16_t>(_mm256_cvtsi256_si32(sez_) >> 16);
    }

    /// For the coming sample. se stands in the upper half, in all lanes.
    __m256i se() const noexcept { return se_; }
    int y() const noexcept { return y_; }

    /// All that follows from the code word. Returns sr in the upper half.
    [[gnu::always_inline]] __m256i update(const Step& step, const Difference& difference) noexcept
    {
        bool transition = false;
        if (td_) [[unlikely]]
            transition = trans(difference.dq);

        const __m256i sr = _mm256_add_epi32(se_, difference.dq);
        sez_ = half(sum_);
        zeros_.template adapt<R::kTables.leakShift>(difference);
        poles_.adapt(_mm256_add_epi32(sez_, difference.dq), sr);
        td_ = poles_.a2() < -11776 * 65536;
        adaptScale(step);
        if (transition) [[unlikely]] {
            zeros_.clear();
            poles_.clear();
            td_ = 0;
            ap_ = 256;
        }
        predict();
        return sr;
    }

  private:
    bool trans(__m256i dq) const noexcept
    {
        const int magnitude = std::abs(_mm256_cvtsi256_si32(dq) >> 16);
        const int integer = yl_ >> 15;
        const int threshold = integer > 9 ? 31744 : (32 + ((yl_ >> 10) & 31)) << integer;
        return magnitude > (threshold + (threshold >> 1)) >> 1;
    }

    /// FUNCTW, FILTD, LIMB, FILTE; FUNCTF, FILTA, FILTB, SUBTC, FILTC, TRIGA.
    void adaptScale(const Step& step) noexcept
    {
        yu_ = std::clamp(y_ + ((step.w - y_) >> 5), 544, 5120);
        yl_ += yu_ + (-yl_ >> 6);
        dms_ += (step.f - dms_) >> 5;
        dml_ += (4 * step.f - dml_) >> 7;
        const bool fast = y_ < 1536 || td_ || std::abs(4 * dms_ - dml_) >= dml_ >> 3;
        ap_ += ((fast ? 512 : 0) - ap_) >> 4;
    }

    /// A sum halved, in the upper half: there it wraps at 16 bits.
    static __m256i half(__m256i sum) noexcept
    {
        return _mm256_and_si256(_mm256_srai_epi32(_mm256_slli_epi32(sum, 16), 1),
                                kConstants.upperHalf);
    }

    /// ACCUM, LIMA, MIX.
    [[gnu::always_inline]] void predict() noexcept
    {
        sum_ = zeros_.sum();
        se_ = half(_mm256_add_epi32(sum_, poles_.sum()));
        const int slow = yl_ >> 6;
        y_ = slow + (yu_ - slow) * (std::min(ap_, 256) >> 2) / 64;
        poles_.prepare();
    }

    Zeros zeros_;
    Poles poles_;
    int yu_, ap_, yl_, dms_, dml_, td_;
    __m256i sez_;
    __m256i sum_, se_; // of the coming sample; the sum is the zero predictor's
    int y_;
};

template <std::size_t Index>
void encode(CoderState& state, In16 sl, Out8 code) noexcept
{
    using R = Rate<Index>;
    Coder<R> coder(state);
    for (std::size_t n = 0; n < sl.size(); ++n) {
        const Quantiser<R> quan(coder.y());
        const auto magnitudes = Quantiser<R>::magnitudes(coder.y());
        const __m256i d = _mm256_sub_epi32(_mm256_set1_epi32(upper(sl[n])), coder.se());
        const Difference difference = quan.difference(d, magnitudes);
        const Step& step = R::kQuantised[isNegative(d)][quan.above(d)];
        code[n] = static_cast<std::uint8_t>(step.code);
        coder.update(step, difference);
    }
    coder.save(state);
}

/// What SYNC needs to know about a G.711 code word.
struct CodeWord {
    std::int32_t slx;                     // EXPAND, in the upper half
    std::array<std::uint8_t, 4> adjusted; // one step down, itself, one step up; 0
};

template <Law Output>
constexpr std::array<CodeWord, 256> kCodeWords = [] {
    std::array<CodeWord, 256> all{};
    for (int sp = 0; sp < 256; ++sp)
        all[static_cast<std::size_t>(sp)] = {
            expand(Output, sp) * 65536,
            {static_cast<std::uint8_t>(nextSmaller(Output, sp)), static_cast<std::uint8_t>(sp),
             static_cast<std::uint8_t>(nextLarger(Output, sp)), 0}};
    return all;
}();

template <std::size_t Index, Law Output>
void decode(CoderState& state, In8 code, Out16 out) noexcept
{
    using R = Rate<Index>;
    Coder<R> coder(state);
    for (std::size_t n = 0; n < code.size(); ++n) {
        const int y = coder.y();
        const __m256i se = coder.se();
        const std::size_t received = code[n] & (R::kCodes - 1); // any byte stays in the table
        const Step& step = R::kSteps[received];
        const int sr = _mm256_cvtsi256_si32(coder.update(step, Difference::of(step, y))) >> 16;
        if constexpr (Output == Law::uniform) {
            out[n] = static_cast<std::int16_t>(std::clamp(sr, -8192, 8191));
        } else {
            const CodeWord& sp = kCodeWords<Output>[static_cast<std::size_t>(compress(Output, sr))];
            const __m256i dx = _mm256_sub_epi32(_mm256_set1_epi32(sp.slx), se);
            // In the order of the values the sign bit counts upside down.
            constexpr int kHalf = R::kHalf;
            const int id = R::kQuantised[isNegative(dx)][Quantiser<R>(y).above(dx)].code ^ kHalf;
            const int im = static_cast<int>(received) ^ kHalf;
            out[n] = sp.adjusted[static_cast<std::size_t>(1 + (id < im) - (id > im))];
        }
    }
    coder.save(state);
}

template <std::size_t Index>
void decode(CoderState& state, Law law, In8 code, Out16 out) noexcept
{
    switch (law) {
    case Law::mulaw:
        return decode<Index, Law::mulaw>(state, code, out);
    case Law::alaw:
        return decode<Index, Law::alaw>(state, code, out);
    default:
        return decode<Index, Law::uniform>(state, code, out);
    }
}

} // namespace

void encodeAvx2(CoderState& state, In16 sl, Out8 code) noexcept
{
    switch (state.rateIndex) {
    case 0:
        return encode<0>(state, sl, code);
    case 1:
        return encode<1>(state, sl, code);
    case 2:
        return encode<2>(state, sl, code);
    default:
        return encode<3>(state, sl, code);
    }
}

void decodeAvx2(CoderState& state, Law law, In8 code, Out16 out) noexcept
{
    switch (state.rateIndex) {
    case 0:
        return decode<0>(state, law, code, out);
    case 1:
        return decode<1>(state, law, code, out);
    case 2:
        return decode<2>(state, law, code, out);
    default:
        return decode<3>(state, law, code, out);
    }
}

} // namespace zsp::g726
