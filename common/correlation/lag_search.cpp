// Search for the lag of the largest correlation.
//
//   c(offset) = sum over i of a[i] * b[offset + i]
//
// Against what follows, the lag is the offset. Against the signal's own past, `b` begins at the
// largest lag, so the lags ascend where the offsets descend.

#include "common/correlation/lag_search.hpp"

#include "common/correlation/lag_sums.hpp"
#include "core/avx2.hpp"
#include "core/entries.hpp"

#include <algorithm>
#include <array>
#include <bit>
#include <cassert>

namespace zsp::common {

namespace {

std::int32_t correlation(In16 a, const std::int16_t* b) noexcept
{
    std::uint32_t sum = 0;
    for (std::size_t i = 0; i < a.size(); ++i)
        sum += static_cast<std::uint32_t>(a[i] * b[i]);
    return static_cast<std::int32_t>(sum);
}

float correlation(InF a, const float* b) noexcept
{
    float sum = 0;
    for (std::size_t i = 0; i < a.size(); ++i)
        sum += a[i] * b[i];
    return sum;
}

// The definition for both element types.
template <typename Corr, typename T>
Maximum<Corr> lagMax(std::span<const T> a, std::span<const T> b, Scan scan) noexcept
{
    assert(b.size() >= a.size());
    const std::size_t last = b.size() - a.size();
    Maximum<Corr> best{0, scan == Scan::up ? 0 : last};
    for (std::size_t visited = 0; visited <= last; ++visited) {
        const std::size_t offset = scan == Scan::up ? visited : last - visited;
        const Corr c = correlation(a, &b[offset]);
        if (c > best.corr) best = {c, offset};
    }
    return best;
}

// Eight maxima, one per lane, each over every eighth offset; and the correlations at sixteen
// neighbouring offsets, in order.
struct IntMaxima {
    struct Sixteen {
        __m256i low, high;
    };

    __m256i corr = _mm256_setzero_si256();
    __m256i offset;

    static Sixteen correlate(In16 a, const std::int16_t* b) noexcept
    {
        WrappingSums sums;
        addLags(a.data(), b, a.size(), sums);
        return {sums.low(), sums.high()};
    }

    void visit(__m256i c, __m256i at) noexcept
    {
        const __m256i greater = _mm256_cmpgt_epi32(c, corr);
        corr = _mm256_blendv_epi8(corr, c, greater);
        offset = _mm256_blendv_epi8(offset, at, greater);
    }
};

struct FloatMaxima {
    struct Sixteen {
        __m256 low = _mm256_setzero_ps(), high = _mm256_setzero_ps();
    };

    __m256 corr = _mm256_setzero_ps();
    __m256i offset;

    static Sixteen correlate(InF a, const float* b) noexcept
    {
        Sixteen sums;
        for (std::size_t i = 0; i < a.size(); ++i) {
            const __m256 both = _mm256_set1_ps(a[i]);
            sums.low = _mm256_add_ps(sums.low, _mm256_mul_ps(both, avx2::load(b + i)));
            sums.high = _mm256_add_ps(sums.high, _mm256_mul_ps(both, avx2::load(b + i + 8)));
        }
        return sums;
    }

    void visit(__m256 c, __m256i at) noexcept
    {
        const __m256 greater = _mm256_cmp_ps(c, corr, _CMP_GT_OQ);
        corr = _mm256_blendv_ps(corr, c, greater);
        offset = _mm256_blendv_epi8(offset, at, _mm256_castps_si256(greater));
    }
};

// Groups of sixteen offsets in the order of the scan; the last overlaps the one before it, which
// changes nothing since it sees the same values at the same offsets again. The offsets that a lane
// visits follow the scan too, so the first of equal values stays in each lane, and the last step
// compares the lanes.
template <typename Corr, typename Lanes, typename T>
Maximum<Corr> lagMaxByGroups(std::span<const T> a, std::span<const T> b, Scan scan) noexcept
{
    const std::size_t last = b.size() - a.size();
    if (last + 1 < kLags) return lagMax<Corr>(a, b, scan);

    const std::size_t lastGroup = last + 1 - kLags;
    const auto start = static_cast<std::int32_t>(scan == Scan::up ? 0 : last);
    const __m256i step = _mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7);
    Lanes lanes{.offset = _mm256_set1_epi32(start)};
    for (std::size_t visited = 0; visited < lastGroup + kLags; visited += kLags) {
        const std::size_t inRange = std::min(visited, lastGroup);
        const std::size_t offset = scan == Scan::up ? inRange : lastGroup - inRange;
        const auto c = Lanes::correlate(a, &b[offset]);
        const __m256i low = _mm256_add_epi32(_mm256_set1_epi32(static_cast<int>(offset)), step);
        const __m256i high = _mm256_add_epi32(low, _mm256_set1_epi32(8));
        if (scan == Scan::up) {
            lanes.visit(c.low, low);
            lanes.visit(c.high, high);
        } else {
            lanes.visit(c.high, high);
            lanes.visit(c.low, low);
        }
    }

    const auto corr = std::bit_cast<std::array<Corr, 8>>(lanes.corr);
    const auto offset = std::bit_cast<std::array<std::uint32_t, 8>>(lanes.offset);
    Maximum<Corr> best{corr[0], offset[0]};
    for (std::size_t i = 1; i < corr.size(); ++i) {
        const bool earlier = scan == Scan::up ? offset[i] < best.offset : offset[i] > best.offset;
        if (corr[i] > best.corr || (corr[i] == best.corr && earlier)) best = {corr[i], offset[i]};
    }
    return best;
}

} // namespace

Maximum<std::int32_t> lagMaxScalar(In16 a, In16 b, Scan scan) noexcept
{
    return lagMax<std::int32_t>(a, b, scan);
}

Maximum<std::int32_t> lagMaxAvx2(In16 a, In16 b, Scan scan) noexcept
{
    return lagMaxByGroups<std::int32_t, IntMaxima>(a, b, scan);
}

Maximum<float> lagMaxScalar(InF a, InF b, Scan scan) noexcept
{
    return lagMax<float>(a, b, scan);
}

Maximum<float> lagMaxAvx2(InF a, InF b, Scan scan) noexcept
{
    return lagMaxByGroups<float, FloatMaxima>(a, b, scan);
}

} // namespace zsp::common

namespace zsp::entry {

namespace {

// The signal's own past: offset 0 is lagMax, the last offset is lagMin.
template <typename T, typename Corr>
ZspStatus searchPast(const T* src, std::int32_t len, std::int32_t lagMin, std::int32_t lagMax,
                     Corr* maxCorr, std::int32_t* bestLag, common::Scan scan) noexcept
{
    if (!src || !maxCorr || !bestLag) return zspStsNullPtrErr;
    if (len < 1) return zspStsSizeErr;
    if (lagMin < 0 || lagMax < lagMin) return zspStsRangeErr;

    const auto n = static_cast<std::size_t>(len);
    const auto lags = static_cast<std::size_t>(lagMax - lagMin);
    const std::span<const T> now(src, n), past(src - lagMax, lags + n);
    const auto best = common::lagMaxAvx2(now, past, scan);
    *maxCorr = best.corr;
    *bestLag = lagMax - static_cast<std::int32_t>(best.offset);
    return zspStsNoErr;
}

} // namespace

ZspStatus zspsCrossCorrLagMax_16s(const std::int16_t* src1, const std::int16_t* src2,
                                  std::int32_t len, std::int32_t lagMax, std::int32_t* maxCorr,
                                  std::int32_t* bestLag)
{
    if (!src1 || !src2 || !maxCorr || !bestLag) return zspStsNullPtrErr;
    if (len < 1) return zspStsSizeErr;
    if (lagMax < 0) return zspStsRangeErr;

    const auto n = static_cast<std::size_t>(len);
    const auto lags = static_cast<std::size_t>(lagMax);
    const auto best = common::lagMaxAvx2(In16{src1, n}, {src2, lags + n}, common::Scan::down);
    *maxCorr = best.corr;
    *bestLag = static_cast<std::int32_t>(best.offset);
    return zspStsNoErr;
}

ZspStatus zspsAutoCorrLagMax_Fwd_16s(const std::int16_t* src, std::int32_t len, std::int32_t lagMin,
                                     std::int32_t lagMax, std::int32_t* maxCorr,
                                     std::int32_t* bestLag)
{
    return searchPast(src, len, lagMin, lagMax, maxCorr, bestLag, common::Scan::down);
}

ZspStatus zspsAutoCorrLagMax_Inv_16s(const std::int16_t* src, std::int32_t len, std::int32_t lagMin,
                                     std::int32_t lagMax, std::int32_t* maxCorr,
                                     std::int32_t* bestLag)
{
    return searchPast(src, len, lagMin, lagMax, maxCorr, bestLag, common::Scan::up);
}

ZspStatus zspsAutoCorrLagMax_32f(const float* src, std::int32_t len, std::int32_t lagMin,
                                 std::int32_t lagMax, float* maxCorr, std::int32_t* bestLag)
{
    return searchPast(src, len, lagMin, lagMax, maxCorr, bestLag, common::Scan::down);
}

} // namespace zsp::entry
