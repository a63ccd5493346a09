// Inverse square root of longs, as ITU-T G.729 has it in Inv_sqrt: a table of 48 steps between 1
// and 4 and linear interpolation.

#include "common/math/inv_sqrt.hpp"

#include "core/avx2.hpp"
#include "core/entries.hpp"
#include "core/fixed_point.hpp"

#include <array>
#include <cstddef>

namespace zsp::common {

namespace {

constexpr std::size_t kRoots = 49;

// T[i] = round(32768 / sqrt(1 + i / 16)) in Q15, at most 32767. ITU-T G.729, table tabsqr of
// Inv_sqrt. A root is the largest r with (r - 1/2)^2 <= 2^34 / (16 + i).
constexpr auto kInvSqrt_Q15 = [] {
    std::array<std::int64_t, kRoots> roots{};
    std::int64_t r = 32767;
    for (std::int64_t i = 0; i < std::int64_t{kRoots}; ++i) {
        while ((2 * r - 1) * (2 * r - 1) * (16 + i) > std::int64_t{1} << 36)
            --r;
        roots[static_cast<std::size_t>(i)] = r;
    }
    return roots;
}();
static_assert(kInvSqrt_Q15[0] == 32767 && kInvSqrt_Q15[1] == 31790 && kInvSqrt_Q15[48] == 16384);

// Base T[i] in the upper word, slope 2 (T[i] - T[i+1]) in the lower. Both are positive words.
constexpr auto kBaseAndSlope = [] {
    std::array<std::int32_t, kRoots - 1> entries{};
    for (std::size_t i = 0; i < entries.size(); ++i)
        entries[i] = static_cast<std::int32_t>(kInvSqrt_Q15[i] * 65536 +
                                               2 * (kInvSqrt_Q15[i] - kInvSqrt_Q15[i + 1]));
    return entries;
}();

constexpr fx::Long kLargest = 0x3fff'ffff; // the root of what is not positive

} // namespace

fx::Long invSqrt(fx::Long x) noexcept
{
    if (x <= 0) return kLargest;
    const int e = fx::norm_l(x);
    x <<= e;
    const int k = 32 - e;
    if (k % 2 == 0) x >>= 1;
    const auto entry = kBaseAndSlope[static_cast<std::size_t>((x >> 25) - 16)];
    const fx::Long fraction_Q15 = (x >> 10) & 0x7fff;
    const fx::Long base = entry & ~0xffff;
    const fx::Long slope = entry & 0xffff;
    return (base - fraction_Q15 * slope) >> (k / 2);
}

namespace {

// kBaseAndSlope[index] for indices 0 to 47: each of the six vectors of the table is looked up by
// the lower three bits, and bits 3 to 5 choose among the six.
__m256i lookUp(__m256i index) noexcept
{
    const auto from = [&](std::size_t vector) {
        return _mm256_castsi256_ps(
            _mm256_permutevar8x32_epi32(avx2::load(&kBaseAndSlope[8 * vector]), index));
    };
    const __m256 bit3 = _mm256_castsi256_ps(_mm256_slli_epi32(index, 28));
    const __m256 bit4 = _mm256_castsi256_ps(_mm256_slli_epi32(index, 27));
    const __m256 bit5 = _mm256_castsi256_ps(_mm256_slli_epi32(index, 26));
    const __m256 first = _mm256_blendv_ps(from(0), from(1), bit3);
    const __m256 second = _mm256_blendv_ps(from(2), from(3), bit3);
    const __m256 third = _mm256_blendv_ps(from(4), from(5), bit3);
    return _mm256_castps_si256(
        _mm256_blendv_ps(_mm256_blendv_ps(first, second, bit4), third, bit5));
}

__m256i invSqrt(__m256i x) noexcept
{
    const __m256i one = _mm256_set1_epi32(1);
    const __m256i p = avx2::leadingBit(x); // hence e = 30 - p and k = p + 2
    const __m256i e = _mm256_sub_epi32(_mm256_set1_epi32(30), p);
    const __m256i kEven = _mm256_andnot_si256(p, one);
    const __m256i normalised = _mm256_srlv_epi32(_mm256_sllv_epi32(x, e), kEven);

    const __m256i entry =
        lookUp(_mm256_sub_epi32(_mm256_srli_epi32(normalised, 25), _mm256_set1_epi32(16)));
    const __m256i lowWords = _mm256_set1_epi32(0xffff);
    const __m256i fraction_Q15 =
        _mm256_and_si256(_mm256_srli_epi32(normalised, 10), _mm256_set1_epi32(0x7fff));
    const __m256i base = _mm256_andnot_si256(lowWords, entry);
    // The upper words of fraction_Q15 are 0, so the pair sum is the product with the slope alone.
    const __m256i drop = _mm256_madd_epi16(fraction_Q15, entry);
    const __m256i halfK = _mm256_srli_epi32(_mm256_add_epi32(p, _mm256_set1_epi32(2)), 1);
    const __m256i root = _mm256_srlv_epi32(_mm256_sub_epi32(base, drop), halfK);
    const __m256i positive = _mm256_cmpgt_epi32(x, _mm256_setzero_si256());
    return _mm256_blendv_epi8(_mm256_set1_epi32(kLargest), root, positive);
}

} // namespace

void invSqrtScalar(Out32 x) noexcept
{
    for (auto& value : x)
        value = invSqrt(value);
}

void invSqrtAvx2(Out32 x) noexcept
{
    std::size_t i = 0;
    for (; i + 8 <= x.size(); i += 8)
        avx2::store(&x[i], invSqrt(avx2::load(&x[i])));
    invSqrtScalar(x.subspan(i));
}

} // namespace zsp::common

namespace zsp::entry {

ZspStatus zspsInvSqrt_32s_I(std::int32_t* srcDst, std::int32_t len)
{
    if (!srcDst) return zspStsNullPtrErr;
    if (len < 1) return zspStsSizeErr;

    common::invSqrtAvx2({srcDst, static_cast<std::size_t>(len)});
    return zspStsNoErr;
}

} // namespace zsp::entry
