// The coder of g726_adpcm.cpp arranged for speed, equal in every code word, sample and state.
//
// The speed of the encoder is bounded by the chain from one sample's d to the next one's. The chain
// stays in vector registers, and whatever does not depend on d is computed before d is known. Words
// that wrap at 16 bits are kept in the upper halves of 32-bit lanes.

#include "codecs/g726/g726_adpcm.hpp"
#include "codecs/g726/g726_adpcm_avx2_lanes.hpp"
#include "codecs/g726/g726_adpcm_avx2_predictors.hpp"
#include "codecs/g726/g726_adpcm_avx2_quantiser.hpp"
#include "codecs/g726/g726_adpcm_avx2_steps.hpp"
#include "codecs/g726/g726_law.hpp"
#include "codecs/g726/g726_scale.hpp"

#include <algorithm>
#include <array>
#include <cstdlib>

namespace zsp::g726 {

namespace {

/// The coder at one rate, between samples.
template <typename R>
class Coder {
  public:
    explicit Coder(const CoderState& s) noexcept
        : zeros_(s), poles_(s), scale_{s.yu, s.ap, s.yl, s.dms, s.dml, s.td},
          sez_(_mm256_set1_epi32(upper(s.sez)))
    {
        predict();
    }

    void save(CoderState& s) const noexcept
    {
        zeros_.save(s);
        poles_.save(s);
        s.yu = static_cast<std::int16_t>(scale_.yu);
        s.ap = static_cast<std::int16_t>(scale_.ap);
        s.yl = scale_.yl;
        s.dms = static_cast<std::int16_t>(scale_.dms);
        s.dml = static_cast<std::int16_t>(scale_.dml);
        s.td = static_cast<std::int16_t>(scale_.td);
        s.sez = static_cast<std::int16_t>(_mm256_cvtsi256_si32(sez_) >> 16);
    }

    /// For the coming sample. se stands in the upper half, in all lanes.
    __m256i se() const noexcept { return se_; }
    int y() const noexcept { return y_; }

    /// All that follows from the code word. Returns sr in the upper half.
    [[gnu::always_inline]] __m256i update(const Step& step, const Difference& difference) noexcept
    {
        bool transition = false;
        if (scale_.td) [[unlikely]]
            transition = trans(scale_, std::abs(_mm256_cvtsi256_si32(difference.dq) >> 16));

        const __m256i sr = _mm256_add_epi32(se_, difference.dq);
        sez_ = half(sum_);
        zeros_.template adapt<R::kTables.leakShift>(difference);
        poles_.adapt(_mm256_add_epi32(sez_, difference.dq), sr);
        scale_.td = poles_.a2() < -11776 * 65536; // TONE
        adaptScale(scale_, step.w, y_);
        adaptSpeed(scale_, step.f, y_);
        if (transition) [[unlikely]] { // TRIGB
            zeros_.clear();
            poles_.clear();
            scale_.td = 0;
            scale_.ap = 256;
        }
        predict();
        return sr;
    }

  private:
    struct Scale {
        int yu, ap, yl, dms, dml, td;
    };

    /// A sum halved, in the upper half: there it wraps at 16 bits.
    static __m256i half(__m256i sum) noexcept
    {
        return _mm256_and_si256(_mm256_srai_epi32(_mm256_slli_epi32(sum, 16), 1),
                                kConstants.upperHalf);
    }

    /// ACCUM, and mix().
    [[gnu::always_inline]] void predict() noexcept
    {
        sum_ = zeros_.sum();
        se_ = half(_mm256_add_epi32(sum_, poles_.sum()));
        y_ = mix(scale_);
        poles_.prepare();
    }

    Zeros zeros_;
    Poles poles_;
    Scale scale_;
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
            // When code words are ordered by value, the sign bit counts inverted.
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
