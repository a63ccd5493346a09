// Arc cosines by a grid of 64 cosines and linear interpolation in between. The cosines fall with
// the index, so one walk up the grid finds the intervals of all ten.
//
// When the ten are ordered, the walk finds for each the last grid point that is not below it, and
// the fast version searches for all of them at once: in every eighth point by comparison, then
// three times in the middle of what is left.

#include "codecs/g729/g729_lsf.hpp"

#include "codecs/g729/g729_tables.hpp"
#include "core/avx2.hpp"
#include "core/entries.hpp"

#include <array>

namespace zsp::g729 {

namespace {

/// Calls frequency(k, p) for each cosine, the last one first: k is the grid point and p = 0.. the
/// way towards the next one, 2^20 for the whole interval.
template <typename Frequency>
void convert(LspIn lsp_Q15, LsfOut lsf, Frequency frequency) noexcept
{
    std::size_t k = kCosine.size() - 1;
    for (std::size_t i = kOrder; i-- > 0;) {
        const std::int16_t x = lsp_Q15[i];
        while (kCosine[k] < x) // kCosine[0] is the greatest word
            --k;
        // Unordered cosines can be far below the point, but the product stays in 32 bits:
        // 65535 * 26887 < 2^31.
        const std::int32_t p = (x - kCosine[k]) * kArcCosineSlope[k];
        lsf[i] = static_cast<std::int16_t>(frequency(static_cast<std::int32_t>(k), p));
    }
}

} // namespace

void lspToLsfScalar(LspIn lsp_Q15, LsfOut lsf_Q13) noexcept
{
    convert(lsp_Q15, lsf_Q13, [](std::int32_t k, std::int32_t p) {
        const auto freq = static_cast<std::int16_t>(k * 512 + (p >> 11)); // of pi, Q15; truncated
        return (freq * 3217) >> 12;                                       // pi in Q10
    });
}

void lspToLsfNormScalar(LspIn lsp_Q15, LsfOut lsf_Q15) noexcept
{
    convert(lsp_Q15, lsf_Q15,
            [](std::int32_t k, std::int32_t p) { return k * 256 + ((p + 2048) >> 12); });
}

namespace {

/// The points first, first + step, ... of the grid.
template <std::size_t first, std::size_t step>
constexpr std::array<std::int16_t, 64 / step> every() noexcept
{
    std::array<std::int16_t, 64 / step> points{};
    for (std::size_t i = 0; i < points.size(); ++i)
        points[i] = kCosine[first + i * step];
    return points;
}

alignas(16) constexpr auto kMiddleOf8 = every<4, 8>();
alignas(16) constexpr auto kMiddleOf4 = every<2, 4>();
alignas(16) constexpr auto kMiddleOf2 = every<1, 2>();

/// Each point with its slope.
constexpr auto kPointAndSlope = [] {
    std::array<std::int16_t, 128> pairs{};
    for (std::size_t k = 0; k < kCosine.size(); ++k) {
        pairs[2 * k] = kCosine[k];
        pairs[2 * k + 1] = kArcCosineSlope[k];
    }
    return pairs;
}();

/// Of each word of `index` the lowest three bits choose one of eight words.
__m256i lookUp(const std::int16_t* eightWords, __m256i index) noexcept
{
    // vpshufb takes bytes 2 i and 2 i + 1, of whose numbers it reads four bits.
    const __m256i bytes = _mm256_add_epi16(_mm256_mullo_epi16(index, _mm256_set1_epi16(0x0202)),
                                           _mm256_set1_epi16(0x0100));
    return _mm256_shuffle_epi8(_mm256_broadcastsi128_si256(avx2::load8(eightWords)), bytes);
}

/// One of sixteen words.
__m256i lookUp16(const std::int16_t* words, __m256i index) noexcept
{
    const __m256i bit3 = _mm256_srai_epi16(_mm256_slli_epi16(index, 12), 15);
    return _mm256_blendv_epi8(lookUp(words, index), lookUp(words + 8, index), bit3);
}

/// Halves the intervals: index 2 i or 2 i + 1, the latter when x is at or below the middle.
__m256i halve(__m256i index, __m256i x, __m256i middle) noexcept
{
    const __m256i below = _mm256_sub_epi16(_mm256_cmpgt_epi16(x, middle), _mm256_set1_epi16(-1));
    return _mm256_add_epi16(_mm256_add_epi16(index, index), below);
}

/// The last point of the grid that is not below x, for sixteen x.
__m256i search(__m256i x) noexcept
{
    __m256i i = _mm256_set1_epi16(7);
    for (std::size_t k = 8; k < 64; k += 8)
        i = _mm256_add_epi16(i, _mm256_cmpgt_epi16(x, _mm256_set1_epi16(kCosine[k])));
    i = halve(i, x, lookUp(kMiddleOf8.data(), i));
    i = halve(i, x, lookUp16(kMiddleOf4.data(), i));
    const __m256i bit4 = _mm256_cmpgt_epi16(i, _mm256_set1_epi16(15));
    return halve(i, x,
                 _mm256_blendv_epi8(lookUp16(kMiddleOf2.data(), i),
                                    lookUp16(kMiddleOf2.data() + 16, i), bit4));
}

/// The way towards the next point, for eight cosines and their points in 32-bit lanes.
__m256i wayOn(__m128i x, __m256i points) noexcept
{
    const __m256i pair = avx2::gatherPairs<4>(kPointAndSlope.data(), points);
    const __m256i below = _mm256_sub_epi16(_mm256_cvtepu16_epi32(x), pair); // the lower halves
    return _mm256_madd_epi16(below, _mm256_srli_epi32(pair, 16));
}

/// convert() with frequency(k, p) of eight. Lanes 0 to 7 have elements 0 to 7, and 8 to 15 elements
/// 2 to 9: what is done twice is the same.
template <typename Frequency>
bool convertOrdered(LspIn lsp_Q15, LsfOut lsf, Frequency frequency) noexcept
{
    const __m128i first = avx2::load8(lsp_Q15.data()), last = avx2::load8(&lsp_Q15[2]);
    const __m128i middle = avx2::load8(&lsp_Q15[1]);
    const __m128i rises =
        _mm_or_si128(_mm_cmpgt_epi16(middle, first), _mm_cmpgt_epi16(last, middle));
    if (!_mm_testz_si128(rises, rises)) return false;

    const __m256i points = search(_mm256_set_m128i(last, first));
    const auto eight = [&](__m128i x, __m128i at) {
        const __m256i k = _mm256_cvtepi16_epi32(at);
        return frequency(k, wayOn(x, k));
    };
    const __m256i low = eight(first, _mm256_castsi256_si128(points));
    const __m256i high = eight(last, _mm256_extracti128_si256(points, 1));
    const __m256i words = avx2::packInOrder(low, high);
    avx2::store8(lsf.data(), _mm256_castsi256_si128(words));
    avx2::store8(&lsf[2], _mm256_extracti128_si256(words, 1));
    return true;
}

} // namespace

void lspToLsfAvx2(LspIn lsp_Q15, LsfOut lsf_Q13) noexcept
{
    const bool ordered = convertOrdered(lsp_Q15, lsf_Q13, [](__m256i k, __m256i p) {
        const __m256i freq = _mm256_add_epi32(_mm256_slli_epi32(k, 9), _mm256_srli_epi32(p, 11));
        return _mm256_srai_epi32(_mm256_madd_epi16(freq, _mm256_set1_epi32(3217)), 12);
    });
    if (!ordered) lspToLsfScalar(lsp_Q15, lsf_Q13);
}

void lspToLsfNormAvx2(LspIn lsp_Q15, LsfOut lsf_Q15) noexcept
{
    const bool ordered = convertOrdered(lsp_Q15, lsf_Q15, [](__m256i k, __m256i p) {
        const __m256i rounded = _mm256_add_epi32(p, _mm256_set1_epi32(2048));
        return _mm256_add_epi32(_mm256_slli_epi32(k, 8), _mm256_srli_epi32(rounded, 12));
    });
    if (!ordered) lspToLsfNormScalar(lsp_Q15, lsf_Q15);
}

} // namespace zsp::g729

namespace zsp::entry {

ZspStatus zspsLSPToLSF_G729_16s(const std::int16_t* src, std::int16_t* dst)
{
    if (!src || !dst) return zspStsNullPtrErr;

    g729::lspToLsfAvx2(g729::LspIn{src, g729::kOrder}, g729::LsfOut{dst, g729::kOrder});
    return zspStsNoErr;
}

ZspStatus zspsLSPToLSF_Norm_G729_16s(const std::int16_t* src, std::int16_t* dst)
{
    if (!src || !dst) return zspStsNullPtrErr;

    g729::lspToLsfNormAvx2(g729::LspIn{src, g729::kOrder}, g729::LsfOut{dst, g729::kOrder});
    return zspStsNoErr;
}

} // namespace zsp::entry
