// Windowed fold and overlap-add of the sub-band filter bank.
//
//   fold[i mod N] += delay[i] window[i]            i = 0 .. L-1, fold from 0
//   delay[i] += time[i mod N] window[L-1-i]        i = 0 .. L-1
//
// N is a power of two and divides L, so that i mod N is a mask. Transforms shorter than a vector
// take the definitions.

#include "ec/subband_fold.hpp"

#include "core/avx2.hpp"
#include "core/fixed_point.hpp"

#include <cmath>
#include <cstddef>

namespace zsp::ec {

void foldScalar(InF delay, InF window, OutF fold) noexcept
{
    const std::size_t n = fold.size(), mask = n - 1;
    for (std::size_t i = 0; i < n; ++i)
        fold[i] = delay[i] * window[i];
    for (std::size_t i = n; i < window.size(); ++i)
        fold[i & mask] = std::fma(delay[i], window[i], fold[i & mask]);
}

void foldAvx2(InF delay, InF window, OutF fold) noexcept
{
    const std::size_t n = fold.size();
    if (n < 8) return foldScalar(delay, window, fold);
    for (std::size_t j = 0; j < n; j += 8) {
        __m256 sum = _mm256_mul_ps(avx2::load(&delay[j]), avx2::load(&window[j]));
        for (std::size_t i = j + n; i < window.size(); i += n)
            sum = _mm256_fmadd_ps(avx2::load(&delay[i]), avx2::load(&window[i]), sum);
        avx2::store(&fold[j], sum);
    }
}

void overlapAddScalar(InF time, InF window, OutF delay) noexcept
{
    const std::size_t mask = time.size() - 1, last = window.size() - 1;
    for (std::size_t i = 0; i < delay.size(); ++i)
        delay[i] = std::fma(time[i & mask], window[last - i], delay[i]);
}

void overlapAddAvx2(InF time, InF window, OutF delay) noexcept
{
    const std::size_t n = time.size(), len = window.size();
    if (n < 8) return overlapAddScalar(time, window, delay);
    const __m256i reverse = _mm256_setr_epi32(7, 6, 5, 4, 3, 2, 1, 0);
    for (std::size_t i = 0; i < len; i += 8) {
        const __m256 taps = _mm256_permutevar8x32_ps(avx2::load(&window[len - 8 - i]), reverse);
        avx2::store(&delay[i],
                    _mm256_fmadd_ps(avx2::load(&time[i & (n - 1)]), taps, avx2::load(&delay[i])));
    }
}

namespace {

/// |product| <= 2^17: not yet a word.
std::int32_t product_Q13(std::int32_t sample, std::int16_t tap_Q13) noexcept
{
    return (sample * tap_Q13 + 4096) >> 13;
}

/// Sixteen 32-bit values in the lanes that unpacking sixteen words gives: elements 0-3 and 8-11,
/// 4-7 and 12-15.
struct Wide {
    __m256i low, high;
};

/// Sixteen samples, each with 4096 beside it.
Wide withHalf(__m256i samples) noexcept
{
    const __m256i half = _mm256_set1_epi16(4096);
    return {_mm256_unpacklo_epi16(samples, half), _mm256_unpackhi_epi16(samples, half)};
}

/// The same of samples that stand in 32 bits: 4096 takes the place of the upper halves.
Wide withHalf(const std::int32_t* samples) noexcept
{
    const auto lanes = [samples](int first) {
        const auto* p = reinterpret_cast<const __m128i*>(samples + first);
        const __m256i eight = _mm256_inserti128_si256(_mm256_castsi128_si256(_mm_loadu_si128(p)),
                                                      _mm_loadu_si128(p + 2), 1);
        return _mm256_blend_epi16(eight, _mm256_set1_epi16(4096), 0xaa);
    };
    return {lanes(0), lanes(4)};
}

// [d 4096 d 4096 ...] x [w 1 w 1 ...] is d w + 4096 in 32 bits.
Wide products_Q13(Wide samplesAndHalf, __m256i taps_Q13) noexcept
{
    const __m256i one = _mm256_set1_epi16(1);
    const __m256i low = _mm256_madd_epi16(samplesAndHalf.low, _mm256_unpacklo_epi16(taps_Q13, one));
    const __m256i high =
        _mm256_madd_epi16(samplesAndHalf.high, _mm256_unpackhi_epi16(taps_Q13, one));
    return {_mm256_srai_epi32(low, 13), _mm256_srai_epi32(high, 13)};
}

__m256i saturated(__m256i wide) noexcept
{
    return _mm256_max_epi32(_mm256_min_epi32(wide, _mm256_set1_epi32(fx::kMax16)),
                            _mm256_set1_epi32(fx::kMin16));
}

__m256i reversedWords(__m256i words) noexcept
{
    const __m256i inLane = _mm256_setr_epi8(14, 15, 12, 13, 10, 11, 8, 9, 6, 7, 4, 5, 2, 3, 0, 1,
                                            14, 15, 12, 13, 10, 11, 8, 9, 6, 7, 4, 5, 2, 3, 0, 1);
    return _mm256_permute4x64_epi64(_mm256_shuffle_epi8(words, inLane), 0x4e);
}

} // namespace

void foldScalar(In16 delay, In16 window_Q13, Out32 fold) noexcept
{
    const std::size_t n = fold.size(), mask = n - 1;
    for (std::size_t i = 0; i < n; ++i)
        fold[i] = fx::sat16(product_Q13(delay[i], window_Q13[i]));
    for (std::size_t i = n; i < window_Q13.size(); ++i)
        fold[i & mask] = fx::sat16(fold[i & mask] + product_Q13(delay[i], window_Q13[i]));
}

void foldAvx2(In16 delay, In16 window_Q13, Out32 fold) noexcept
{
    const std::size_t n = fold.size();
    if (n < 16) return foldScalar(delay, window_Q13, fold);
    for (std::size_t j = 0; j < n; j += 16) {
        Wide sum = products_Q13(withHalf(avx2::load(&delay[j])), avx2::load(&window_Q13[j]));
        for (std::size_t i = j + n; i < window_Q13.size(); i += n) {
            const Wide next =
                products_Q13(withHalf(avx2::load(&delay[i])), avx2::load(&window_Q13[i]));
            sum.low = _mm256_add_epi32(saturated(sum.low), next.low);
            sum.high = _mm256_add_epi32(saturated(sum.high), next.high);
        }
        const __m256i low = saturated(sum.low), high = saturated(sum.high);
        avx2::store(&fold[j], _mm256_permute2x128_si256(low, high, 0x20));
        avx2::store(&fold[j + 8], _mm256_permute2x128_si256(low, high, 0x31));
    }
}

void overlapAddScalar(In32 time, In16 window_Q13, Out16 delay) noexcept
{
    const std::size_t mask = time.size() - 1, last = window_Q13.size() - 1;
    for (std::size_t i = 0; i < delay.size(); ++i)
        delay[i] = fx::sat16(delay[i] + product_Q13(time[i & mask], window_Q13[last - i]));
}

void overlapAddAvx2(In32 time, In16 window_Q13, Out16 delay) noexcept
{
    const std::size_t n = time.size(), len = window_Q13.size();
    if (n < 16) return overlapAddScalar(time, window_Q13, delay);
    for (std::size_t i = 0; i < len; i += 16) {
        const Wide add = products_Q13(withHalf(&time[i & (n - 1)]),
                                      reversedWords(avx2::load(&window_Q13[len - 16 - i])));
        const __m256i old = avx2::load(&delay[i]), zero = _mm256_setzero_si256();
        const __m256i low = _mm256_srai_epi32(_mm256_unpacklo_epi16(zero, old), 16);
        const __m256i high = _mm256_srai_epi32(_mm256_unpackhi_epi16(zero, old), 16);
        avx2::store(&delay[i], _mm256_packs_epi32(_mm256_add_epi32(low, add.low),
                                                  _mm256_add_epi32(high, add.high)));
    }
}

} // namespace zsp::ec
