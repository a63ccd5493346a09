// The excitation of ITU-T G.729: the adaptive vector from the past in steps of 1/3 sample (clauses
// 3.7.1 and 4.1.3), the fixed vector of four pulses, sharpened (3.8, 4.1.4), and their sum (4.1.6).

#include "codecs/g729/decoder/g729_decoder.hpp"
#include "codecs/g729/decoder/g729_vectors.hpp"
#include "codecs/g729/tables/g729_pitch_tables.hpp"
#include "codecs/shared/words.hpp"
#include "core/entries.hpp"

#include <cassert>

namespace zsp::g729 {

namespace {

/// Where the filter is centred, one word before the present sample or more, and its phase.
struct Place {
    int start, phase;
};

constexpr Place placeOf(Word lag, Word fraction) noexcept
{
    return fraction > 0 ? Place{-lag - 1, 3 - fraction} : Place{-lag, -fraction};
}

/// A sum that is not negative, for subscripts.
constexpr std::size_t indexOf(int i) noexcept
{
    assert(i >= 0);
    return static_cast<std::size_t>(i);
}

} // namespace

void adaptiveVectorScalar(Word lag, Word fraction, Out<kPast + kSubframe> excitation) noexcept
{
    const auto [start, phase] = placeOf(lag, fraction);
    const auto& b = kInterpolateExcitation;
    Word* e = &excitation[kPast];
    for (int n = 0; n < static_cast<int>(kSubframe); ++n) {
        const Word* x = e + (start + n);
        Long sum = 0;
        for (int i = 0; i < 10; ++i) {
            sum = fx::l_mac(sum, *(x - i), b[indexOf(phase + 3 * i)]);
            sum = fx::l_mac(sum, *(x + 1 + i), b[indexOf(3 - phase + 3 * i)]);
        }
        *(e + n) = fx::round_fx(sum);
    }
}

namespace {

/// The twenty taps in the order of the samples, in pairs, for each phase.
constexpr auto kTapPairs = [] {
    std::array<std::array<std::int32_t, 10>, 3> pairs{};
    for (int phase = 0; phase < 3; ++phase) {
        std::array<int, 20> taps{};
        for (int i = 0; i < 10; ++i) {
            taps[indexOf(9 - i)] = kInterpolateExcitation[indexOf(phase + 3 * i)];
            taps[indexOf(10 + i)] = kInterpolateExcitation[indexOf(3 - phase + 3 * i)];
        }
        for (std::size_t k = 0; k < 10; ++k)
            pairs[static_cast<std::size_t>(phase)][k] =
                taps[2 * k + 1] * 65536 + (taps[2 * k] & 0xffff);
    }
    return pairs;
}();

/// The magnitudes of a filter's taps sum to 59398 at most: up to here no sum leaves 31 bits, with
/// what rounding adds.
constexpr int kLargestSafe = 18076;
static_assert(std::int64_t{kLargestSafe} * 59398 + 0x4000 < 1 << 30);

/// Eight outputs from `x`, the first of the 28 words - or 27 - that they are made of.
__m128i eightOutputs(const Word* x, const std::array<std::int32_t, 10>& taps) noexcept
{
    __m256i sum = _mm256_setzero_si256();
    for (int k = 0; k < 10; ++k) {
        const __m128i even = avx2::load8(x + 2 * k), odd = avx2::load8(x + 2 * k + 1);
        const __m256i pairs =
            _mm256_set_m128i(_mm_unpackhi_epi16(even, odd), _mm_unpacklo_epi16(even, odd));
        sum = _mm256_add_epi32(
            sum, _mm256_madd_epi16(pairs, _mm256_set1_epi32(taps[static_cast<std::size_t>(k)])));
    }
    sum = _mm256_srai_epi32(_mm256_add_epi32(sum, _mm256_set1_epi32(0x4000)), 15);
    return _mm_packs_epi32(_mm256_castsi256_si128(sum), _mm256_extracti128_si256(sum, 1));
}

__m256i sixteenOutputs(const Word* x, const std::array<std::int32_t, 10>& taps) noexcept
{
    __m256i low = _mm256_setzero_si256(), high = low;
    for (int k = 0; k < 10; ++k) {
        const __m256i even = avx2::load(x + 2 * k), odd = avx2::load(x + 2 * k + 1);
        const __m256i pair = _mm256_set1_epi32(taps[static_cast<std::size_t>(k)]);
        low = _mm256_add_epi32(low, _mm256_madd_epi16(_mm256_unpacklo_epi16(even, odd), pair));
        high = _mm256_add_epi32(high, _mm256_madd_epi16(_mm256_unpackhi_epi16(even, odd), pair));
    }
    return roundPairs(low, high);
}

} // namespace

void adaptiveVector(Word lag, Word fraction, Out<kPast + kSubframe> excitation) noexcept
{
    assert(lag >= kLowestLag && lag <= kHighestLag);
    const auto [start, phase] = placeOf(lag, fraction);
    const auto& taps = kTapPairs[static_cast<std::size_t>(phase)];
    Word* e = &excitation[kPast];
    const Word* x = e + (start - 9);
    // What the filter reads of the past bounds what it makes; outputs that it reads again are
    // looked at when they stand.
    const auto reaches = [](const Word* from, const Word* to) {
        return codecs::largest({from, static_cast<std::size_t>(to - from)}) > kLargestSafe;
    };
    if (reaches(x, std::min<const Word*>(e, x + 59)))
        return adaptiveVectorScalar(lag, fraction, excitation);
    if (lag >= 50) { // all of it is past
        avx2::store(e, sixteenOutputs(x, taps));
        avx2::store(e + 16, sixteenOutputs(x + 16, taps));
        avx2::store8(e + 32, eightOutputs(x + 32, taps));
        return;
    }
    // Each eight outputs read at most up to the word before them, as lags are 18 and longer.
    for (std::size_t n = 0; n < kSubframe; n += 8)
        avx2::store8(e + n, eightOutputs(x + n, taps));
    if (reaches(e, e + kSubframe)) adaptiveVectorScalar(lag, fraction, excitation);
}

Pulses pulsesOf(int positions, int signs) noexcept
{
    const auto at = [positions](int shift, int track) {
        return indexOf(5 * ((positions >> shift) & 7) + track);
    };
    return {{{at(0, 0), (signs & 1) != 0},
             {at(3, 1), (signs & 2) != 0},
             {at(6, 2), (signs & 4) != 0},
             {at(10, 3 + ((positions >> 9) & 1)), (signs & 8) != 0}}};
}

void fixedVector(int positions, int signs, Out<kSubframe> code) noexcept
{
    std::ranges::fill(code, Word{0});
    for (const auto& [at, positive] : pulsesOf(positions, signs))
        code[at] = positive ? 8191 : -8192;
}

void sharpen(Word lag, Word gain_Q14, Out<kSubframe> x) noexcept
{
    const Word gain = fx::shl(gain_Q14, 1);
    for (std::size_t from = 0, n = static_cast<std::size_t>(lag); n < kSubframe; ++from, ++n)
        x[n] = fx::add(x[n], fx::mult(x[from], gain));
}

void excitationScalar(Word pitchGain_Q14, Word codeGain_Q1, In<kSubframe> code,
                      Out<kSubframe> adaptive) noexcept
{
    for (std::size_t n = 0; n < kSubframe; ++n) {
        const Long sum = fx::l_mac(fx::l_mult(adaptive[n], pitchGain_Q14), code[n], codeGain_Q1);
        adaptive[n] = fx::round_fx(fx::l_shl(sum, 1));
    }
}

/// Gains are not negative, so that both products and the rounding fit 32 bits, and only the words
/// saturate.
void excitationAvx2(Word pitchGain_Q14, Word codeGain_Q1, In<kSubframe> code,
                    Out<kSubframe> adaptive) noexcept
{
    assert(pitchGain_Q14 >= 0 && codeGain_Q1 >= 0);
    const __m256i gains = _mm256_set1_epi32(codeGain_Q1 * 65536 + pitchGain_Q14);
    for (std::size_t n = 0; n < kSubframe; n += 8)
        avx2::store8(&adaptive[n],
                     mixPairs<14>(avx2::load8(&adaptive[n]), avx2::load8(&code[n]), gains));
}

void synthesise(In<kTaps> lpc_Q12, std::size_t subframe, Out<kExcitation> excitation,
                Out<kSubframe> dst, Out<kOrder> memory) noexcept
{
    const In<kSubframe> e = spanOf<kSubframe>(&excitation[kPast + kSubframe * subframe]);
    std::array<Word, kOrder> last;
    std::ranges::copy(memory, last.begin());
    if (!celp::synthesis(lpc_Q12, e, dst.data(), memory)) return;
    for (Word& x : excitation)
        x = static_cast<Word>(x >> 2);
    std::ranges::copy(last, memory.begin());
    celp::synthesis(lpc_Q12, e, dst.data(), memory);
}

} // namespace zsp::g729

namespace zsp::entry {

namespace {

bool isLag(std::int32_t lag)
{
    return lag >= g729::kLowestLag && lag <= g729::kHighestLag;
}

} // namespace

ZspStatus zspsDecodeAdaptiveVector_G729_16s_I(std::int32_t lag, std::int32_t fraction,
                                              std::int16_t* srcDst)
{
    if (!srcDst) return zspStsNullPtrErr;
    if (!isLag(lag) || fraction < -1 || fraction > 1) return zspStsCodecRangeErr;

    g729::adaptiveVector(static_cast<std::int16_t>(lag), static_cast<std::int16_t>(fraction),
                         spanOf<194>(srcDst));
    return zspStsNoErr;
}

ZspStatus zspsFixedCodebookDecode_G729_16s(std::int32_t positions, std::int32_t signs,
                                           std::int16_t* dst)
{
    if (!dst) return zspStsNullPtrErr;
    if (positions < 0 || positions > 8191 || signs < 0 || signs > 15) return zspStsCodecRangeErr;

    g729::fixedVector(positions, signs, spanOf<40>(dst));
    return zspStsNoErr;
}

ZspStatus zspsHarmonicSharpening_G729_16s_I(std::int32_t lag, std::int16_t gain,
                                            std::int16_t* srcDst)
{
    if (!srcDst) return zspStsNullPtrErr;
    if (!isLag(lag)) return zspStsCodecRangeErr;

    g729::sharpen(static_cast<std::int16_t>(lag), gain, spanOf<40>(srcDst));
    return zspStsNoErr;
}

ZspStatus zspsExcitation_G729_16s_I(std::int16_t pitchGain, std::int16_t codeGain,
                                    const std::int16_t* code, std::int16_t* srcDst)
{
    if (!code || !srcDst) return zspStsNullPtrErr;
    if (pitchGain < 0 || codeGain < 0) return zspStsRangeErr;

    g729::excitationAvx2(pitchGain, codeGain, spanOf<40>(code), spanOf<40>(srcDst));
    return zspStsNoErr;
}

ZspStatus zspsSynthesis_G729_16s(const std::int16_t* lpc, std::int32_t subframe,
                                 std::int16_t* excitation, std::int16_t* dst, std::int16_t* memory)
{
    if (!lpc || !excitation || !dst || !memory) return zspStsNullPtrErr;
    if (subframe < 0 || subframe > 1) return zspStsRangeErr;

    g729::synthesise(spanOf<11>(lpc), static_cast<std::size_t>(subframe), spanOf<234>(excitation),
                     spanOf<40>(dst), spanOf<10>(memory));
    return zspStsNoErr;
}

} // namespace zsp::entry
