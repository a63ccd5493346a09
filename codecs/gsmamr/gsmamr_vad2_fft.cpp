// Pre-emphasis and 128-point real FFT of the GSM-AMR voice activity detector, option 2.
// 3GPP TS 26.094 and 26.073.
//
//   y[i] = x[i] + factor x[i-1]
//   X[k] = 1/64 sum x[n] e^(-2 pi i n k / 128)
//
// The FFT takes the samples as 64 complex values, transforms those in six stages that each halve,
// and separates the spectra of the even and the odd samples.

#include "codecs/gsmamr/gsmamr_vad2_fft.hpp"

#include "common/math/cosine.hpp"
#include "core/avx2.hpp"
#include "core/entries.hpp"

#include <algorithm>
#include <array>
#include <cassert>

namespace zsp::gsmamr {

using fx::Long;
using fx::Word;

void preEmphasiseScalar(Word factor, In16 src, Out16 dst, Word& memory) noexcept
{
    assert(src.size() == dst.size());
    for (std::size_t i = 0; i < src.size(); ++i) {
        const Word sample = src[i];
        dst[i] = fx::add(sample, fx::mult(factor, memory));
        memory = sample;
    }
}

namespace {

__m256i emphasised(__m256i factor, __m256i samples, __m256i previous) noexcept
{
    __m256i product = avx2::mult(factor, previous);
    // nothing but -32768 squared gives -32768
    product = _mm256_xor_si256(product, _mm256_cmpeq_epi16(product, _mm256_set1_epi16(fx::kMin16)));
    return _mm256_adds_epi16(samples, product);
}

} // namespace

// From the end to the beginning, so that the samples before a block are still there if `dst` is
// `src`.
void preEmphasiseAvx2(Word factor, In16 src, Out16 dst, Word& memory) noexcept
{
    const Word last = src.empty() ? memory : src.back();
    const __m256i vFactor = _mm256_set1_epi16(factor);
    std::size_t i = src.size();
    for (; i > 16; i -= 16)
        avx2::store(&dst[i - 16],
                    emphasised(vFactor, avx2::load(&src[i - 16]), avx2::load(&src[i - 17])));
    if (i == 16) {
        const __m256i samples = avx2::load(src.data());
        const __m256i lower = _mm256_permute2x128_si256(samples, samples, 0x08); // [0 lower]
        const __m256i previous = _mm256_alignr_epi8(samples, lower, 14);
        avx2::store(dst.data(),
                    emphasised(vFactor, samples, _mm256_insert_epi16(previous, memory, 0)));
    } else {
        preEmphasiseScalar(factor, src.first(i), dst.first(i), memory);
    }
    memory = last;
}

namespace {

constexpr std::size_t kPoints = kFftLength / 2;

struct Twiddle {
    Word c;
    Word s;
};

/// cos and -sin of 2 pi k / 128, Q15, with +1 as 32767. 3GPP TS 26.073.
constexpr auto kTwiddles_Q15 = [] {
    std::array<Twiddle, kPoints> table{};
    for (std::size_t k = 0; k < kPoints; ++k) {
        const int angle = 2 * static_cast<int>(k); // in steps of pi / 128
        table[k] = {fx::sat16(common::cosine_Q15(angle)),
                    fx::sat16(-common::cosine_Q15(angle < 64 ? 64 - angle : angle - 64))};
    }
    return table;
}();

struct Complex {
    Word re;
    Word im;
};

Complex at(std::span<const Word, kFftLength> block, std::size_t k) noexcept
{
    return {block[2 * k], block[2 * k + 1]};
}

void put(FftBlock block, std::size_t k, Complex z) noexcept
{
    block[2 * k] = z.re;
    block[2 * k + 1] = z.im;
}

void reverseBits(FftBlock block) noexcept
{
    for (std::size_t i = 0; i < kPoints; ++i) {
        std::size_t reversed = 0;
        for (std::size_t bit = 1; bit < kPoints; bit *= 2)
            reversed = 2 * reversed + ((i & bit) != 0 ? 1 : 0);
        if (i >= reversed) continue;
        const Complex z = at(block, i);
        put(block, i, at(block, reversed));
        put(block, reversed, z);
    }
}

/// a, b = (a + w b) / 2, (a - w b) / 2
void butterfly(Complex& a, Complex& b, Twiddle w) noexcept
{
    const Word re = fx::round_fx(fx::l_msu(fx::l_mult(b.re, w.c), b.im, w.s));
    const Word im = fx::round_fx(fx::l_mac(fx::l_mult(b.im, w.c), b.re, w.s));
    b = {fx::shr(fx::sub(a.re, re), 1), fx::shr(fx::sub(a.im, im), 1)};
    a = {fx::shr(fx::add(a.re, re), 1), fx::shr(fx::add(a.im, im), 1)};
}

/// Bins i and 64 - i of the real signal from those of the complex one.
void separate(FftBlock block, std::size_t i) noexcept
{
    const std::size_t j = kPoints - i;
    const Complex zi = at(block, i);
    const Complex zj = at(block, j);
    const Long p = fx::l_deposit_h(fx::add(zi.re, zj.re));
    const Long q = fx::l_deposit_h(fx::sub(zi.im, zj.im));
    const Word u = fx::add(zi.im, zj.im);
    const Word v = fx::sub(zj.re, zi.re);
    const auto halved = [](Long x) { return fx::round_fx(fx::l_shr(x, 1)); };

    const Twiddle wi = kTwiddles_Q15[i];
    put(block, i,
        {halved(fx::l_msu(fx::l_mac(p, u, wi.c), v, wi.s)),
         halved(fx::l_mac(fx::l_mac(q, v, wi.c), u, wi.s))});
    const Twiddle wj = kTwiddles_Q15[j];
    put(block, j,
        {halved(fx::l_mac(fx::l_mac(p, u, wj.c), v, wj.s)),
         halved(fx::l_mac(fx::l_msu(fx::l_negate(q), v, wj.c), u, wj.s))});
}

void endBins(FftBlock block) noexcept
{
    const Complex z = at(block, 0);
    put(block, 0, {fx::add(z.re, z.im), fx::sub(z.re, z.im)});
}

} // namespace

void fftScalar(FftBlock block) noexcept
{
    reverseBits(block);
    for (std::size_t half = 1; half < kPoints; half *= 2) {
        for (std::size_t i = 0; i < kPoints; ++i) {
            if ((i & half) != 0) continue;
            Complex a = at(block, i);
            Complex b = at(block, i + half);
            butterfly(a, b, kTwiddles_Q15[i % half * (kPoints / half)]);
            put(block, i, a);
            put(block, i + half, b);
        }
    }
    endBins(block);
    for (std::size_t i = 1; i <= kPoints / 2; ++i)
        separate(block, i);
}

// The 64 complex values are eight vectors of eight pairs of words. Bit reversal turns element
// (vector, lane) into (lane reversed, vector reversed): the vectors are loaded in reversed order,
// the three first stages run between vectors, then comes the transposition, and the three last
// stages run between vectors again.

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

namespace zsp::entry {

ZspStatus zspsPreemphasize_GSMAMR_16s(std::int16_t factor, const std::int16_t* src,
                                      std::int16_t* dst, std::int32_t len, std::int16_t* memory)
{
    if (!src || !dst || !memory) return zspStsNullPtrErr;
    if (len < 1) return zspStsSizeErr;

    const auto n = static_cast<std::size_t>(len);
    gsmamr::preEmphasiseAvx2(factor, {src, n}, {dst, n}, *memory);
    return zspStsNoErr;
}

ZspStatus zspsFFTFwd_RToPerm_GSMAMR_16s_I(std::int16_t* srcDst)
{
    if (!srcDst) return zspStsNullPtrErr;

    gsmamr::fftAvx2(gsmamr::FftBlock{srcDst, gsmamr::kFftLength});
    return zspStsNoErr;
}

} // namespace zsp::entry
