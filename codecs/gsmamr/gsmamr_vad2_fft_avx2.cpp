// The FFT of gsmamr_vad2_fft.cpp in AVX2, equal in every result.
//
// The 64 complex values are eight vectors of eight pairs of words. Bit reversal turns element
// (vector, lane) into (lane reversed, vector reversed): the vectors are loaded in reversed order,
// the three first stages run between vectors, then comes the transposition, and the three last
// stages run between vectors again.

#include "codecs/gsmamr/gsmamr_vad2_fft.hpp"
#include "core/avx2.hpp"

#include <algorithm>
#include <array>
#include <cstddef>

namespace zsp::gsmamr {

using fx::Word;

namespace {

/// What vpmaddwd multiplies [re im] with for minus the real and for the imaginary part of w b:
/// [-c s] and [s c]. -c, unlike -s, is always a word.
struct TwiddleVector {
    __m256i forMinusRe;
    __m256i forIm;
};

/// Either part of a product with a twiddle factor fits 32 bits, its rounding term included, so that
/// the saturation of the words, at the end, is the only one.
static_assert(std::ranges::all_of(kTwiddles_Q15, [](Twiddle w) {
    const std::int64_t c = w.c;
    const std::int64_t s = w.s;
    const std::int64_t magnitudes = std::max(c, -c) + std::max(s, -s);
    return c > fx::kMin16 && 32768 * magnitudes + 16384 <= fx::kMax32;
}));

/// Pairs [-c s] and [s c] of the three last stages: eight, sixteen and thirty-two twiddle factors.
struct LateTwiddles {
    alignas(32) std::array<Word, 2 * 56> forMinusRe;
    alignas(32) std::array<Word, 2 * 56> forIm;
};

constexpr LateTwiddles kLateTwiddles = [] {
    LateTwiddles table{};
    std::size_t n = 0;
    for (std::size_t half = 8; half < kPoints; half *= 2) {
        for (std::size_t k = 0; k < half; ++k, n += 2) {
            const auto [c, s] = kTwiddles_Q15[k * (kPoints / half)];
            table.forMinusRe[n] = static_cast<Word>(-c);
            table.forMinusRe[n + 1] = s;
            table.forIm[n] = s;
            table.forIm[n + 1] = c;
        }
    }
    return table;
}();

/// One twiddle factor in all lanes.
TwiddleVector everywhere(std::size_t k) noexcept
{
    const auto [c, s] = kTwiddles_Q15[k];
    const auto pair = [](int low, int high) {
        return _mm256_set1_epi32((low & 0xffff) | high * 65536);
    };
    return {pair(-c, s), pair(s, c)};
}

/// Eight twiddle factors of the late stages.
TwiddleVector lateTwiddles(std::size_t first) noexcept
{
    return {avx2::load(&kLateTwiddles.forMinusRe[2 * first]),
            avx2::load(&kLateTwiddles.forIm[2 * first])};
}

/// Words of 32-bit lanes: the lower half of `low`, the upper half of `high`.
__m256i lowAndHigh(__m256i low, __m256i high) noexcept
{
    return _mm256_blend_epi16(low, high, 0xaa);
}

void butterfly(__m256i& a, __m256i& b, TwiddleVector w) noexcept
{
    const __m256i half = _mm256_set1_epi32(1 << 14);
    const __m256i re =
        _mm256_srai_epi32(_mm256_sub_epi32(half, _mm256_madd_epi16(b, w.forMinusRe)), 15);
    const __m256i im = _mm256_srai_epi32(_mm256_add_epi32(half, _mm256_madd_epi16(b, w.forIm)), 15);
    // [re0 .. re3 im0 .. im3] of each 128-bit lane to pairs
    const __m256i pairs = _mm256_broadcastsi128_si256(
        _mm_setr_epi8(0, 1, 8, 9, 2, 3, 10, 11, 4, 5, 12, 13, 6, 7, 14, 15));
    const __m256i product = _mm256_shuffle_epi8(_mm256_packs_epi32(re, im), pairs);
    b = _mm256_srai_epi16(_mm256_subs_epi16(a, product), 1);
    a = _mm256_srai_epi16(_mm256_adds_epi16(a, product), 1);
}

void transpose(__m256i (&v)[8]) noexcept
{
    __m256i pairs[8];
    __m256i fours[8];
    for (std::size_t i = 0; i < 8; i += 2) {
        pairs[i] = _mm256_unpacklo_epi32(v[i], v[i + 1]);
        pairs[i + 1] = _mm256_unpackhi_epi32(v[i], v[i + 1]);
    }
    for (std::size_t i = 0; i < 8; i += 4) {
        fours[i] = _mm256_unpacklo_epi64(pairs[i], pairs[i + 2]);
        fours[i + 1] = _mm256_unpackhi_epi64(pairs[i], pairs[i + 2]);
        fours[i + 2] = _mm256_unpacklo_epi64(pairs[i + 1], pairs[i + 3]);
        fours[i + 3] = _mm256_unpackhi_epi64(pairs[i + 1], pairs[i + 3]);
    }
    for (std::size_t i = 0; i < 4; ++i) {
        v[i] = _mm256_permute2x128_si256(fours[i], fours[i + 4], 0x20);
        v[i + 4] = _mm256_permute2x128_si256(fours[i], fours[i + 4], 0x31);
    }
}

/// A stage between vectors that lie `distance` apart; `twiddles` gives the factors of the first
/// vector of a pair.
template <std::size_t distance, typename Twiddles>
void stage(__m256i (&v)[8], Twiddles twiddles) noexcept
{
#pragma GCC unroll 8
    for (std::size_t i = 0; i < 8; ++i)
        if ((i & distance) == 0) butterfly(v[i], v[i + distance], twiddles(i % distance));
}

/// Half a saturated sum: halves of longs whose sum is within 32 bits, limited to halves of a long.
__m256i halfSum(__m256i a, __m256i b) noexcept
{
    const __m256i sum = _mm256_add_epi32(a, b);
    return _mm256_max_epi32(_mm256_min_epi32(sum, _mm256_set1_epi32((1 << 30) - 1)),
                            _mm256_set1_epi32(-(1 << 30)));
}

/// The rounded upper words of re in the lower halves and of im in the upper ones.
__m256i roundedPair(__m256i re, __m256i im) noexcept
{
    const __m256i half = _mm256_set1_epi32(1 << 15);
    return lowAndHigh(_mm256_srli_epi32(_mm256_add_epi32(re, half), 16),
                      _mm256_add_epi32(im, half));
}

/// Bins i to i + 7 and 64 - i down to 57 - i, as `separate` does it.
///
/// The sums are kept at half their scale, rounded down, as they are after the last shift. All terms
/// are even but for a sum that has saturated, so nothing is lost. Factor j has the cosine of factor
/// i with the sign changed and the same sine. The only product that could saturate by itself is
/// that of bin 32, where v is 0 and the sum for u saturates in any case.
void separateEight(FftBlock block, std::size_t i) noexcept
{
    const std::size_t j = kPoints - 7 - i;
    const __m256i backwards = _mm256_setr_epi32(7, 6, 5, 4, 3, 2, 1, 0);
    const __m256i zi = avx2::load(&block[2 * i]);
    const __m256i zj = _mm256_permutevar8x32_epi32(avx2::load(&block[2 * j]), backwards);
    const __m256i sums = _mm256_adds_epi16(zi, zj);        // [p u]
    const __m256i differences = _mm256_subs_epi16(zi, zj); // [.. q]
    const __m256i v = _mm256_subs_epi16(zj, zi);           // [v ..]
    const __m256i w = avx2::load(&kTwiddles_Q15[i].c);     // [c s]

    const __m256i zero = _mm256_setzero_si256();
    const __m256i c = _mm256_slli_epi32(w, 16); // [0 c]
    const __m256i s = lowAndHigh(zero, w);      // [0 s]
    const __m256i uc = _mm256_madd_epi16(sums, c);
    const __m256i us = _mm256_madd_epi16(sums, s);
    const __m256i vc = _mm256_madd_epi16(v, lowAndHigh(w, zero));
    const __m256i vs = _mm256_madd_epi16(v, _mm256_srli_epi32(w, 16));
    const __m256i p = _mm256_srai_epi32(_mm256_slli_epi32(sums, 16), 1);
    const __m256i q = _mm256_srai_epi32(lowAndHigh(zero, differences), 1);
    const auto negated = [&](__m256i x) { return _mm256_sub_epi32(zero, x); };

    const __m256i bi =
        roundedPair(halfSum(halfSum(p, uc), negated(vs)), halfSum(halfSum(q, vc), us));
    const __m256i bj = roundedPair(halfSum(halfSum(p, negated(uc)), vs),
                                   halfSum(halfSum(halfSum(negated(q), zero), vc), us));
    avx2::store(&block[2 * i], bi);
    avx2::store(&block[2 * j], _mm256_permutevar8x32_epi32(bj, backwards));
}

} // namespace

void fftAvx2(FftBlock block) noexcept
{
    constexpr std::array<std::size_t, 8> kReversed = {0, 4, 2, 6, 1, 5, 3, 7};
    __m256i v[8];
    for (std::size_t i = 0; i < 8; ++i)
        v[i] = avx2::load(&block[16 * kReversed[i]]);
    stage<1>(v, [](std::size_t) { return everywhere(0); });
    stage<2>(v, [](std::size_t k) { return everywhere(32 * k); });
    stage<4>(v, [](std::size_t k) { return everywhere(16 * k); });
    transpose(v);
    __m256i z[8];
    for (std::size_t i = 0; i < 8; ++i)
        z[i] = v[kReversed[i]];
    stage<1>(z, [](std::size_t) { return lateTwiddles(0); });
    stage<2>(z, [](std::size_t k) { return lateTwiddles(8 + 8 * k); });
    stage<4>(z, [](std::size_t k) { return lateTwiddles(24 + 8 * k); });
    for (std::size_t i = 0; i < 8; ++i)
        avx2::store(&block[16 * i], z[i]);

    endBins(block);
    for (std::size_t i = 1; i <= kPoints / 2; i += 8)
        separateEight(block, i);
}

} // namespace zsp::gsmamr
