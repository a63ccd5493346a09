// Correlation and convolution of 16-bit sequences of one length n. All of them are
//
//   c[k] = sum over i = 0..n-1-k of src1[i+k] * src2[i]
//
// in different ranges and scalings: the autocorrelation has src1 = src2, and the convolution is the
// correlation of the reversed src1, read from its last lag down.

#include "common/correlation/correlation.hpp"

#include "common/correlation/energy.hpp"
#include "common/correlation/lag_sums.hpp"
#include "core/avx2.hpp"
#include "core/entries.hpp"
#include "core/fixed_point.hpp"

#include <algorithm>
#include <array>

namespace zsp::common {

namespace {

constexpr std::int64_t kMaxEnergy = 0x3fff'ffff; // the largest whose double fits 31 bits

// The longest sequence for which the fast versions keep work arrays on the stack.
constexpr std::size_t kMaxBlock = 512;

// Adds half when something is shifted out. |sum| < 2^61, so every shift from 62 on gives 0.
std::int64_t roundedShift(std::int64_t sum, int shift) noexcept
{
    shift = std::min(shift, 62);
    return (sum + (shift > 0 ? std::int64_t{1} << (shift - 1) : 0)) >> shift;
}

std::int64_t correlation(In16 src1, In16 src2, std::size_t lag) noexcept
{
    std::int64_t sum = 0;
    for (std::size_t i = 0; i + lag < src1.size(); ++i)
        sum += src1[i + lag] * src2[i];
    return sum;
}

fx::Long saturatingCorrelation(In16 src1, In16 src2, std::size_t lag) noexcept
{
    fx::Long sum = 0;
    for (std::size_t i = 0; i + lag < src1.size(); ++i)
        sum = fx::l_mac(sum, src1[i + lag], src2[i]);
    return sum;
}

int normMShift(fx::Long largest) noexcept
{
    return 18 - std::min(16, fx::norm_l(largest));
}

// The energy, which it returns, and lags 1 to kFew, 8 or 10, of at least 32 samples in one pass:
// every lag has an accumulator of its own, which for so few of them is less work than sixteen lags
// at once. Lags are modulo 2^32; the energy exceeds 2^30 - 1 if the true one does.
template <int kFew>
[[gnu::noinline]] std::int64_t fewLags(In16 src, std::array<fx::Long, kLags>& lags) noexcept
{
    // The last 16 to 31 samples make two blocks of a copy that continues with zeros.
    constexpr std::size_t kTail = 31;
    alignas(32) std::array<std::int16_t, kTail + 32> tail = {};
    std::ranges::copy(src.last<kTail>(), tail.begin());
    const std::size_t direct = (src.size() - 16) / 16 * 16;
    const In16 parts[] = {src.first(direct), In16(tail).subspan(kTail - (src.size() - direct), 32)};

    __m256i c1{}, c2{}, c3{}, c4{}, c5{}, c6{}, c7{}, c8{}, c9{}, c10{}; // each in its register
    __m256i squares{}, seen{};
    for (const In16 part : parts) {
        const std::int16_t* const end = part.data() + part.size();
        for (const std::int16_t* x = part.data(); x != end; x += 16) {
            const __m256i words = avx2::load(x);
            const auto add = [&](__m256i& c, int lag) {
                c = _mm256_add_epi32(c, _mm256_madd_epi16(words, avx2::load(x + lag)));
            };
            add(squares, 0);
            seen = _mm256_or_si256(seen, squares);
            add(c1, 1);
            add(c2, 2);
            add(c3, 3);
            add(c4, 4);
            add(c5, 5);
            add(c6, 6);
            add(c7, 7);
            add(c8, 8);
            if constexpr (kFew == 10) {
                add(c9, 9);
                add(c10, 10);
            }
        }
    }
    const __m256i c[] = {c1, c2, c3, c4, c5, c6, c7, c8, c9, c10};
    for (std::size_t i = 0; i < kFew; ++i)
        lags[i] = avx2::sum32(c[i]);
    // A step adds at most 2^31. A lane that never showed bit 30 or 31 has not wrapped.
    const __m256i large = _mm256_srli_epi32(seen, 30);
    if (!_mm256_testz_si256(large, large)) return std::int64_t{1} << 30;
    const __m256i lowHalves = _mm256_set1_epi64x(0xffff'ffff);
    return avx2::sum64(
        _mm256_add_epi64(_mm256_and_si256(squares, lowHalves), _mm256_srli_epi64(squares, 32)));
}

} // namespace

// |c[k]| <= energy by the Cauchy-Schwarz inequality, so with the shift of lag 0 no lag overflows.
bool autoCorrNormEScalar(In16 src, Out32 dst, std::int32_t& norm) noexcept
{
    const fx::Long energy_Q1 = energyScalar(src);
    if (energy_Q1 == fx::kMax32) return false; // saturated: the energy is 2^30 or more

    const fx::Long r0 = energy_Q1 + 1;
    norm = fx::norm_l(r0);
    dst[0] = r0 << norm;
    for (std::size_t k = 1; k < dst.size(); ++k)
        dst[k] = static_cast<fx::Long>(2 * correlation(src, src, k)) * (1 << norm);
    return true;
}

bool autoCorrNormEAvx2(In16 src, Out32 dst, std::int32_t& norm) noexcept
{
    const std::size_t inside = std::min(dst.size(), src.size());
    const bool few = inside <= 11 && src.size() >= 32; // the usual orders of linear prediction
    alignas(32) std::array<fx::Long, kLags> lags;
    const std::int64_t energy =
        few ? (inside <= 9 ? fewLags<8> : fewLags<10>)(src, lags) : squareSumAvx2(src);
    if (energy > kMaxEnergy) return false;

    const auto r0 = static_cast<fx::Long>(2 * energy + 1);
    norm = fx::norm_l(r0);
    dst[0] = r0 << norm;
    if (few) {
        for (std::size_t k = 1; k < inside; ++k)
            dst[k] = 2 * lags[k - 1] * (1 << norm);
    } else {
        const LagGroups groups(src, src);
        for (std::size_t k = 1; k < inside; k += kLags) {
            groups.from<WrappingSums>(k).storeTo(lags);
            for (std::size_t i = 0; i < std::min(kLags, inside - k); ++i)
                dst[k + i] = 2 * lags[i] * (1 << norm);
        }
    }
    std::ranges::fill(dst.subspan(inside), 0);
    return true;
}

void crossCorrScalar(In16 src1, In16 src2, Out32 dst, int shift) noexcept
{
    for (std::size_t k = 0; k < dst.size(); ++k)
        dst[k] = fx::sat32(roundedShift(correlation(src1, src2, k), shift));
}

void crossCorrAvx2(In16 src1, In16 src2, Out32 dst, int shift) noexcept
{
    const std::size_t inside = std::min(dst.size(), src1.size());
    const LagGroups groups(src1, src2);
    std::array<std::int64_t, kLags> sums;
    for (std::size_t k = 0; k < inside; k += kLags) {
        groups.from<ExactSums>(k).storeTo(sums);
        for (std::size_t i = 0; i < std::min(kLags, inside - k); ++i)
            dst[k + i] = fx::sat32(roundedShift(sums[i], shift));
    }
    std::ranges::fill(dst.subspan(inside), 0);
}

void convPartialScalar(In16 src1, In16 src2, Out16 dst, int shift) noexcept
{
    for (std::size_t k = 0; k < dst.size(); ++k) {
        std::int64_t sum = 0;
        for (std::size_t i = 0; i <= k; ++i)
            sum += src1[i] * src2[k - i];
        dst[k] = fx::sat16(roundedShift(sum, shift));
    }
}

void convPartialAvx2(In16 src1, In16 src2, Out16 dst, int shift) noexcept
{
    const std::size_t n = dst.size();
    if (n > kMaxBlock) return convPartialScalar(src1, src2, dst, shift);

    alignas(32) std::array<std::int16_t, kMaxBlock> reversed;
    std::reverse_copy(src1.begin(), src1.end(), reversed.begin());
    const LagGroups groups(In16(reversed.data(), n), src2);
    std::array<std::int64_t, kLags> sums;
    for (std::size_t k = 0; k < n; k += kLags) {
        groups.from<ExactSums>(k).storeTo(sums);
        for (std::size_t i = 0; i < std::min(kLags, n - k); ++i)
            dst[n - 1 - k - i] = fx::sat16(roundedShift(sums[i], shift));
    }
}

void crossCorrNormMScalar(In16 src1, In16 src2, Out16 dst) noexcept
{
    fx::Long largest = 0;
    for (std::size_t k = 0; k < dst.size(); ++k)
        largest = std::max(largest, fx::l_abs(saturatingCorrelation(src1, src2, k)));
    const int shift = normMShift(largest);
    for (std::size_t k = 0; k < dst.size(); ++k)
        dst[k] = fx::extract_l(saturatingCorrelation(src1, src2, k) >> shift);
}

// When the product of the energies is below 2^60, every doubled partial sum stays below 2^31 by the
// Cauchy-Schwarz inequality: nothing saturates, and the order of the additions is free.
void crossCorrNormMAvx2(In16 src1, In16 src2, Out16 dst) noexcept
{
    const std::size_t n = dst.size();
    const double energies =
        static_cast<double>(squareSumAvx2(src1)) * static_cast<double>(squareSumAvx2(src2));
    if (n > kMaxBlock || energies >= 0x1p60) return crossCorrNormMScalar(src1, src2, dst);

    alignas(32) std::array<fx::Long, kMaxBlock> doubled;
    const LagGroups groups(src1, src2);
    __m256i largest = _mm256_setzero_si256();
    for (std::size_t k = 0; k < n; k += kLags) {
        // Lags from n on are 0, which leaves the maximum alone.
        const auto sums = groups.from<WrappingSums>(k);
        const __m256i low = _mm256_slli_epi32(sums.low(), 1);
        const __m256i high = _mm256_slli_epi32(sums.high(), 1);
        largest = _mm256_max_epi32(largest, _mm256_abs_epi32(low));
        largest = _mm256_max_epi32(largest, _mm256_abs_epi32(high));
        avx2::store(&doubled[k], low);
        avx2::store(&doubled[k + 8], high);
    }
    const int shift = normMShift(avx2::max32(largest));
    for (std::size_t k = 0; k < n; ++k)
        dst[k] = fx::extract_l(doubled[k] >> shift);
}

} // namespace zsp::common

namespace zsp::entry {

ZspStatus zspsAutoCorr_NormE_16s32s(const std::int16_t* src, std::int32_t len, std::int32_t* dst,
                                    std::int32_t lagCount, std::int32_t* norm)
{
    if (!src || !dst || !norm) return zspStsNullPtrErr;
    if (len < 1 || lagCount < 1) return zspStsSizeErr;

    const In16 samples(src, static_cast<std::size_t>(len));
    const Out32 lags(dst, static_cast<std::size_t>(lagCount));
    return common::autoCorrNormEAvx2(samples, lags, *norm) ? zspStsNoErr : zspStsOverflow;
}

ZspStatus zspsCrossCorr_16s32s_Sfs(const std::int16_t* src1, const std::int16_t* src2,
                                   std::int32_t len, std::int32_t* dst, std::int32_t lagCount,
                                   std::int32_t scaleFactor)
{
    if (!src1 || !src2 || !dst) return zspStsNullPtrErr;
    if (len < 1 || lagCount < 1) return zspStsSizeErr;
    if (scaleFactor < 0) return zspStsScaleRangeErr;

    const auto n = static_cast<std::size_t>(len);
    const auto lags = static_cast<std::size_t>(lagCount);
    common::crossCorrAvx2({src1, n}, {src2, n}, {dst, lags}, scaleFactor);
    return zspStsNoErr;
}

ZspStatus zspsCrossCorr_NormM_16s(const std::int16_t* src1, const std::int16_t* src2,
                                  std::int32_t len, std::int16_t* dst)
{
    if (!src1 || !src2 || !dst) return zspStsNullPtrErr;
    if (len < 1) return zspStsSizeErr;

    const auto n = static_cast<std::size_t>(len);
    common::crossCorrNormMAvx2({src1, n}, {src2, n}, {dst, n});
    return zspStsNoErr;
}

ZspStatus zspsConvPartial_16s_Sfs(const std::int16_t* src1, const std::int16_t* src2,
                                  std::int16_t* dst, std::int32_t len, std::int32_t scaleFactor)
{
    if (!src1 || !src2 || !dst) return zspStsNullPtrErr;
    if (scaleFactor < 0) return zspStsBadArgErr;
    if (len < 1) return zspStsSizeErr;

    const auto n = static_cast<std::size_t>(len);
    common::convPartialAvx2({src1, n}, {src2, n}, {dst, n}, scaleFactor);
    return zspStsNoErr;
}

} // namespace zsp::entry
