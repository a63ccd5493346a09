// The coder of g726_adpcm.cpp arranged for speed, equal in every code word, sample and state.
//
// Words that wrap at 16 bits stand in the upper halves of 32-bit ones where that saves the
// wrapping. FMULT's factors are kept in the form in which the next sample needs them.

#include "g726_adpcm.hpp"

#include "avx2.hpp"
#include "g726_law.hpp"
#include "g726_tables.hpp"

#include <algorithm>
#include <bit>
#include <cstdlib>

namespace zsp::g726 {

namespace {

/// What a code word means to the adaptation.
struct alignas(32) Step {
    std::int32_t level; // RECONST, in 1/128
    std::int32_t w;     // 32 * W(I)
    std::int32_t f;     // F(I) << 9
    std::int32_t ugb;   // UGB for a positive delayed dq, in the upper half; 0 for a dq of 0
    std::int32_t sign;  // of dq: 0 or -1
    std::int32_t code;
};

template <std::size_t Index>
struct Rate {
    static constexpr const RateTables& kTables = kRates[Index];
    static constexpr std::size_t kCodes = std::size_t{1} << kTables.bits;
    static constexpr std::size_t kHalf = kCodes / 2;

    static constexpr Step step(std::size_t code)
    {
        const bool negative = code >= kHalf;
        const std::int32_t ugb = (negative ? -128 : 128) * 65536;
        return {kTables.level[code],   32 * kTables.w[code],
                kTables.f[code] * 512, kTables.level[code] == -2048 ? 0 : ugb,
                negative ? -1 : 0,     static_cast<std::int32_t>(code)};
    }

    static constexpr std::array<Step, kCodes> kSteps = [] {
        std::array<Step, kCodes> steps{};
        for (std::size_t code = 0; code < kCodes; ++code)
            steps[code] = step(code);
        return steps;
    }();

    // The decision levels between two code words, highest first, and after them -2048. The number
    // of levels above a difference chooses its code word; the last one repeats, see Quantiser.
    static constexpr std::size_t kLevels = kHalf - 1;
    static constexpr std::size_t kLanes = kHalf <= 8 ? 8 : 16;
    static constexpr std::array<std::int32_t, kLanes> kDecision = [] {
        std::array<std::int32_t, kLanes> levels{};
        levels.fill(-2048);
        std::size_t n = 0;
        for (std::size_t i = 1; i < kTables.decision.size(); ++i)
            if (kTables.positiveCode[i] != kTables.positiveCode[i + 1])
                levels[n++] = kTables.decision[i];
        return levels;
    }();
    using BySign = std::array<Step, kLanes + 1>;
    static constexpr std::array<BySign, 2> kQuantised = [] {
        std::array<BySign, 2> all{};
        for (std::size_t above = 0; above <= kLanes; ++above) {
            const std::size_t magnitude = kLevels - std::min(above, kLevels);
            // Above 16 kbit/s the smallest differences have one code word for both signs.
            const bool single = Index > 0 && magnitude == 0;
            all[0][above] = step(single ? kCodes - 1 : magnitude);
            all[1][above] = step(kCodes - 1 - magnitude);
        }
        return all;
    }();
};

/// QUAN. The decision levels become magnitudes of d as soon as y is known.
template <typename R>
class Quantiser {
  public:
    explicit Quantiser(int y) noexcept
    {
        const __m256i vy = _mm256_set1_epi32(y >> 2);
        for (std::size_t i = 0; i < kVectors; ++i) {
            // (128 + fraction) << integer, 7 fraction bits, in the upper half. y is at least 544:
            // all levels become positive, but for the fill, whose shift count leaves 0.
            const __m256i level = _mm256_add_epi32(
                vy, _mm256_add_epi32(avx2::load(&R::kDecision[8 * i]), _mm256_set1_epi32(9 * 128)));
            const __m256i significand = _mm256_or_si256(
                _mm256_and_si256(level, _mm256_set1_epi32(127)), _mm256_set1_epi32(128));
            threshold_[i] = _mm256_sllv_epi32(significand, _mm256_srli_epi32(level, 7));
        }
    }

    /// d is a word in the upper half. -32768 counts as 0 in LOG; here it stays below all
    /// thresholds and below the fill.
    const Step& operator()(std::int32_t d) const noexcept
    {
        const __m256i magnitude = _mm256_abs_epi32(_mm256_set1_epi32(d));
        unsigned above = 0;
        for (std::size_t i = 0; i < kVectors; ++i)
            above |= static_cast<unsigned>(_mm256_movemask_ps(
                         _mm256_castsi256_ps(_mm256_cmpgt_epi32(threshold_[i], magnitude))))
                     << (8 * i);
        return R::kQuantised[d < 0][static_cast<std::size_t>(std::popcount(above))];
    }

  private:
    static constexpr std::size_t kVectors = R::kLanes / 8;
    __m256i threshold_[kVectors];
};

/// The zero predictor, six lanes; lanes 6 and 7 stay 0.
class Zeros {
  public:
    explicit Zeros(const CoderState& s) noexcept
    {
        alignas(32) std::array<std::int32_t, 8> b{}, mant{}, place{};
        for (std::size_t i = 0; i < kZeros; ++i) {
            b[i] = s.coefficient[i] * 65536;
            mant[i] = kRound | (s.delayed[i] & 63) << 5;
            place[i] = (s.sign[i] ? kNegative : 0) | (154 - (s.delayed[i] >> 6));
        }
        b_ = avx2::load(b.data());
        mant_ = avx2::load(mant.data());
        place_ = avx2::load(place.data());
    }

    void save(CoderState& s) const noexcept
    {
        alignas(32) std::array<std::int32_t, 8> b, mant, place;
        avx2::store(b.data(), b_);
        avx2::store(mant.data(), mant_);
        avx2::store(place.data(), place_);
        for (std::size_t i = 0; i < kZeros; ++i) {
            s.coefficient[i] = static_cast<std::int16_t>(b[i] >> 16);
            s.delayed[i] =
                static_cast<std::int16_t>((154 - (place[i] & 255)) * 64 + ((mant[i] & 2047) >> 5));
            s.sign[i] = place[i] < 0;
        }
    }

    /// FMULT six times, and the sum.
    int sum() const noexcept
    {
        // |bi >> 2| as a float: 126 + exponent above the mantissa's lower five bits
        const __m256i magnitude =
            _mm256_and_si256(_mm256_abs_epi32(_mm256_srai_epi32(b_, 18)), _mm256_set1_epi32(8191));
        const __m256i floating = _mm256_max_epi32(
            _mm256_srli_epi32(_mm256_castps_si256(_mm256_cvtepi32_ps(magnitude)), 18),
            _mm256_set1_epi32(126 * 32)); // 0 has mantissa 32 as well
        const __m256i mantissa = _mm256_or_si256(_mm256_and_si256(floating, _mm256_set1_epi32(31)),
                                                 _mm256_set1_epi32(1 << 16 | 32));
        // [mant * 32, 48 * 32] x [mantissa, 1]
        const __m256i product =
            _mm256_and_si256(_mm256_madd_epi16(mant_, mantissa), _mm256_set1_epi32(~511));
        const __m256i shift = _mm256_sub_epi32(_mm256_and_si256(place_, _mm256_set1_epi32(255)),
                                               _mm256_srli_epi32(floating, 5));
        const __m256i w =
            _mm256_and_si256(_mm256_srlv_epi32(product, shift), _mm256_set1_epi32(32767));
        return avx2::sum32(_mm256_sign_epi32(w, _mm256_xor_si256(b_, place_)));
    }

    /// XOR, UPB and DELAY of dq.
    template <int LeakShift>
    void adapt(const Step& step, int magnitude) noexcept
    {
        const __m256i ugb = _mm256_sign_epi32(_mm256_set1_epi32(step.ugb), place_);
        const __m256i leak =
            _mm256_and_si256(_mm256_srai_epi32(b_, LeakShift), _mm256_set1_epi32(-65536));
        b_ = _mm256_add_epi32(_mm256_sub_epi32(b_, leak), ugb);

        const auto zeros = _lzcnt_u32(static_cast<unsigned>(magnitude));
        const auto mantissa = static_cast<int>(
            ((static_cast<std::uint64_t>(static_cast<unsigned>(magnitude)) << zeros) >> 21) & 2016);
        shiftIn(mant_, kRound | 1024 | mantissa);
        shiftIn(place_, (step.sign & kNegative) | static_cast<int>(122 + zeros));
    }

    void clear() noexcept { b_ = _mm256_setzero_si256(); }

  private:
    static constexpr std::int32_t kNegative = -2147483647 - 1;
    static constexpr std::int32_t kRound = (48 * 32) << 16;

    static void shiftIn(__m256i& line, int newest) noexcept
    {
        const __m256i older =
            _mm256_permutevar8x32_epi32(line, _mm256_setr_epi32(7, 0, 1, 2, 3, 4, 7, 7));
        line = _mm256_blend_epi32(older, _mm256_castsi128_si256(_mm_cvtsi32_si128(newest)), 1);
    }

    __m256i b_;     // in the upper halves
    __m256i mant_;  // mantissa * 32 of the delayed dq; the rounding term of FMULT in the upper half
    __m256i place_; // 154 - exponent of the delayed dq, and its sign in the top bit
};

/// A delayed sr: mantissa * 32, 32 - exponent, sign 0 or -1.
struct Delayed {
    int mantissa;
    int zeros;
    int sign;

    Delayed(std::int16_t floating, std::int16_t negative) noexcept
        : mantissa((floating & 63) << 5), zeros(32 - (floating >> 6)), sign(-negative)
    {
    }

    /// FLOATB of a word in the upper half.
    explicit Delayed(std::int32_t sr) noexcept
    {
        sign = sr >> 31;
        const auto negative = static_cast<unsigned>(sign);
        const auto magnitude = ((static_cast<unsigned>(sr) ^ negative) - negative) << 1; // 15 bits
        const auto leading = static_cast<int>(_lzcnt_u32(magnitude | 1 << 16)); // 15 for 0
        zeros = leading + 17;
        mantissa = static_cast<int>(
            ((static_cast<std::uint64_t>(magnitude) << leading) >> 21 & 2016) | 1024);
    }

    std::int16_t floating() const noexcept
    {
        return static_cast<std::int16_t>((32 - zeros) * 64 + (mantissa >> 5));
    }
};

/// FMULT of one pole.
int fmult(int a, const Delayed& sr) noexcept
{
    const int sign = a >> 31;
    const auto magnitude = static_cast<unsigned>(((a >> 2) ^ sign) - sign);
    const auto zeros = _lzcnt_u32(magnitude);
    const int mantissa =
        static_cast<int>((static_cast<std::uint64_t>(magnitude) << zeros) >> 26) | 32;
    const int product = (sr.mantissa * mantissa + 48 * 32) & ~511;
    const int w = (product >> (sr.zeros + static_cast<int>(zeros) - 36)) & 32767;
    const int negative = sign ^ sr.sign;
    return (w ^ negative) - negative;
}

template <typename R>
class Coder {
  public:
    explicit Coder(const CoderState& s) noexcept
        : zeros_(s), sr1_(s.delayed[6], s.sign[6]), sr2_(s.delayed[7], s.sign[7]),
          a1_(s.coefficient[6]), a2_(s.coefficient[7]), pk1_(-s.pk1), pk2_(-s.pk2), yu_(s.yu),
          ap_(s.ap), yl_(s.yl), dms_(s.dms), dml_(s.dml), td_(s.td), sez_(s.sez)
    {
    }

    void save(CoderState& s) const noexcept
    {
        zeros_.save(s);
        s.delayed[6] = sr1_.floating();
        s.delayed[7] = sr2_.floating();
        s.sign[6] = static_cast<std::int16_t>(-sr1_.sign);
        s.sign[7] = static_cast<std::int16_t>(-sr2_.sign);
        s.coefficient[6] = static_cast<std::int16_t>(a1_);
        s.coefficient[7] = static_cast<std::int16_t>(a2_);
        s.pk0 = s.pk1 = static_cast<std::int16_t>(-pk1_);
        s.pk2 = static_cast<std::int16_t>(-pk2_);
        s.yu = static_cast<std::int16_t>(yu_);
        s.ap = static_cast<std::int16_t>(ap_);
        s.yl = yl_;
        s.dms = static_cast<std::int16_t>(dms_);
        s.dml = static_cast<std::int16_t>(dml_);
        s.td = static_cast<std::int16_t>(td_);
        s.sez = static_cast<std::int16_t>(sez_);
    }

    struct Estimate {
        int se; // in the upper half
        int y;
    };

    Estimate estimate() noexcept
    {
        const int sum = zeros_.sum();
        sez_ = static_cast<std::int16_t>(sum) >> 1;
        const int both = sum + fmult(a1_, sr1_) + fmult(a2_, sr2_);
        const int slow = yl_ >> 6;
        const int y = slow + (yu_ - slow) * (std::min(ap_, 256) >> 2) / 64;
        return {upper(static_cast<std::int16_t>(both) >> 1), y};
    }

    int update(const Step& step, Estimate e) noexcept
    {
        const int dql = step.level + (e.y >> 2);
        const int magnitude = ((128 + (dql & 127)) << 7) >> ((14 - (dql >> 7)) & 31);
        const int dq = (magnitude ^ step.sign) - step.sign;
        const int sr = upper((e.se >> 16) + dq);

        bool transition = false;
        if (td_) [[unlikely]] {
            const int integer = yl_ >> 15;
            const int threshold = integer > 9 ? 31744 : (32 + ((yl_ >> 10) & 31)) << integer;
            transition = magnitude > (threshold + (threshold >> 1)) >> 1;
        }

        yu_ = std::clamp(e.y + ((step.w - e.y) >> 5), 544, 5120);
        yl_ += yu_ + (-yl_ >> 6);

        const int p = static_cast<std::int16_t>(sez_ + dq);
        const int pk0 = p >> 31;
        const int s1 = pk0 ^ pk1_;
        const int s2 = pk0 ^ pk2_;
        const int fa = 4 * std::clamp(a1_, -8191, 8191);
        int u2 = (((16384 ^ s2) - s2) - ((fa ^ s1) - s1)) >> 7;
        int u1 = (192 ^ s1) - s1;
        if (p == 0) u1 = u2 = 0;
        a2_ = std::clamp(a2_ - (a2_ >> 7) + u2, -12288, 12288);
        a1_ = std::clamp(a1_ - (a1_ >> 8) + u1, a2_ - 15360, 15360 - a2_);
        pk2_ = pk1_;
        pk1_ = pk0;

        zeros_.template adapt<R::kTables.leakShift>(step, magnitude);
        td_ = a2_ < -11776;

        dms_ += (step.f - dms_) >> 5;
        dml_ += (4 * step.f - dml_) >> 7;
        const bool fast = e.y < 1536 || td_ || std::abs(4 * dms_ - dml_) >= dml_ >> 3;
        ap_ += ((fast ? 512 : 0) - ap_) >> 4;
        if (transition) [[unlikely]] {
            zeros_.clear();
            a1_ = a2_ = td_ = 0;
            ap_ = 256;
        }
        sr2_ = sr1_;
        sr1_ = Delayed(sr);
        return sr;
    }

    static int upper(int v) noexcept { return static_cast<int>(static_cast<unsigned>(v) << 16); }

  private:
    Zeros zeros_;
    Delayed sr1_, sr2_;
    int a1_, a2_, pk1_, pk2_, yu_, ap_, yl_, dms_, dml_, td_, sez_;
};

template <std::size_t Index>
void encode(CoderState& state, In16 sl, Out8 code) noexcept
{
    using R = Rate<Index>;
    Coder<R> coder(state);
    for (std::size_t n = 0; n < sl.size(); ++n) {
        const auto e = coder.estimate();
        const Step& step = Quantiser<R>(e.y)(static_cast<int>(
            static_cast<unsigned>(Coder<R>::upper(sl[n])) - static_cast<unsigned>(e.se)));
        code[n] = static_cast<std::uint8_t>(step.code);
        coder.update(step, e);
    }
    coder.save(state);
}

/// What SYNC needs to know about a G.711 code word.
struct CodeWord {
    std::int16_t slx;                     // EXPAND
    std::array<std::uint8_t, 4> adjusted; // one step down, itself, one step up; 0
};

template <Law Output>
constexpr std::array<CodeWord, 256> kCodeWords = [] {
    std::array<CodeWord, 256> all{};
    for (int sp = 0; sp < 256; ++sp)
        all[static_cast<std::size_t>(sp)] = {
            static_cast<std::int16_t>(expand(Output, sp)),
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
        const auto e = coder.estimate();
        const int sr = coder.update(R::kSteps[code[n]], e) >> 16;
        if constexpr (Output == Law::uniform) {
            out[n] = static_cast<std::int16_t>(std::clamp(sr, -8192, 8191));
        } else {
            const CodeWord& sp = kCodeWords<Output>[static_cast<std::size_t>(compress(Output, sr))];
            const int dx = Coder<R>::upper(sp.slx - (e.se >> 16));
            // In the order of the values the sign bit counts upside down.
            const int id = Quantiser<R>(e.y)(dx).code ^ static_cast<int>(R::kHalf);
            const int im = code[n] ^ static_cast<int>(R::kHalf);
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
