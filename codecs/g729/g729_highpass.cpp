// Second-order high-pass filter in the ITU-T G.729 arithmetic.
//
//   acc = a1 y1 + a2 y2 + b0 x + b1 x1 + b2 x2        32 bits, wrapping
//   y   = acc << (16 - scaleFactor), saturated
//   out = the upper word of y, rounded; at scaleFactor 13 of twice acc << 3
//
// The fast version keeps the recursion's chain short. As long as y does not saturate it is a
// shifted sum, and mpy(y, a) is (acc a) >> scaleFactor: a product, a shift and an addition from sum
// to sum. What depends on the input alone goes before it, rounding behind it, eight or sixteen at a
// time.

#include "codecs/g729/g729_highpass.hpp"

#include "core/avx2.hpp"
#include "core/entries.hpp"
#include "core/fixed_point.hpp"
#include "core/state.hpp"

#include <algorithm>
#include <cassert>
#include <cstddef>

namespace zsp::g729 {

namespace {

/// Mpy_32_16 without its doubling, as 32 bits to be summed: the product of the upper words plus
/// that of the 15 bits below them >> 15, which is one product of all 31 bits.
std::uint32_t mpy(std::int32_t y, std::int16_t coefficient) noexcept
{
    return static_cast<std::uint32_t>((std::int64_t{y >> 1} * coefficient) >> 15);
}

std::uint32_t product(std::int16_t x, std::int16_t coefficient) noexcept
{
    return static_cast<std::uint32_t>(x * coefficient);
}

/// The greatest sum that could still be shifted counts as too great already.
std::int32_t topSum(int scaleFactor) noexcept
{
    return (1 << (15 + scaleFactor)) - 1;
}

/// One step of the recursion from what the input gives to it; the sum.
std::int32_t recurse(std::uint32_t input, int scaleFactor, HighPassState& s) noexcept
{
    const std::int32_t top = topSum(scaleFactor);
    const auto acc =
        static_cast<std::int32_t>(mpy(s.y1, s.coeffs[1]) + mpy(s.y2, s.coeffs[2]) + input);
    s.y2 = s.y1;
    s.y1 = acc >= top ? fx::kMax32 : acc < -top ? fx::kMin32 : acc * (1 << (16 - scaleFactor));
    return acc;
}

} // namespace

void highPassScalar(Out16 samples, int scaleFactor, HighPassState& state) noexcept
{
    assert(scaleFactor == 12 || scaleFactor == 13);
    HighPassState s = state;
    for (std::int16_t& sample : samples) {
        const std::int16_t x = sample;
        const std::int32_t acc = recurse(product(x, s.coeffs[3]) + product(s.x1, s.coeffs[4]) +
                                             product(s.x2, s.coeffs[5]),
                                         scaleFactor, s);
        s.x2 = s.x1;
        s.x1 = x;
        sample =
            scaleFactor == 12 ? fx::round_fx(s.y1) : fx::sat16((std::int64_t{acc} + 2048) >> 12);
    }
    state = s;
}

namespace {

constexpr std::size_t kChunk = 64;

/// What the input gives to each sum, wrapping: b0 x + b1 x1 + b2 x2. `x` has two samples before it;
/// up to fifteen values behind the last are written too.
void feedForward(const std::int16_t* x, std::size_t count, const HighPassState& s,
                 std::int32_t* sums) noexcept
{
    const __m256i b0 = _mm256_set1_epi16(s.coeffs[3]), b1 = _mm256_set1_epi16(s.coeffs[4]);
    const __m256i b2 = _mm256_set1_epi16(s.coeffs[5]), zero = _mm256_setzero_si256();
    const __m256i b01 = _mm256_unpacklo_epi16(b0, b1); // [b0 b1 ...] for [x x1 ...]
    for (std::size_t i = 0; i < count; i += 16) {
        const __m256i x0 = avx2::load(x + i), x1 = avx2::load(x + i - 1);
        const __m256i x2 = avx2::load(x + i - 2);
        const __m256i low =
            _mm256_add_epi32(_mm256_madd_epi16(_mm256_unpacklo_epi16(x0, x1), b01),
                             _mm256_madd_epi16(_mm256_unpacklo_epi16(x2, zero), b2));
        const __m256i high =
            _mm256_add_epi32(_mm256_madd_epi16(_mm256_unpackhi_epi16(x0, x1), b01),
                             _mm256_madd_epi16(_mm256_unpackhi_epi16(x2, zero), b2));
        avx2::store(sums + i, _mm256_permute2x128_si256(low, high, 0x20));
        avx2::store(sums + i + 8, _mm256_permute2x128_si256(low, high, 0x31));
    }
}

/// Runs the recursion on sums for as long as none leaves the range that can be shifted; how many.
/// Both y of the state are shifted sums.
std::size_t recurseFast(Out32 sums, int scaleFactor, HighPassState& s) noexcept
{
    const int shift = 16 - scaleFactor;
    const std::int64_t a1 = s.coeffs[1], a2 = s.coeffs[2], top = topSum(scaleFactor);
    std::int64_t acc1 = s.y1 >> shift, acc2 = s.y2 >> shift;
    std::int64_t older = (acc2 * a2) >> scaleFactor;
    std::size_t i = 0;
    for (; i < sums.size(); ++i) {
        // In range, the 64-bit sum is the wrapped one; else the definition decides.
        const std::int64_t acc = ((acc1 * a1) >> scaleFactor) + (older + sums[i]);
        if (acc >= top || acc < -top) break;
        sums[i] = static_cast<std::int32_t>(acc);
        older = (acc1 * a2) >> scaleFactor;
        acc2 = acc1;
        acc1 = acc;
    }
    s.y1 = static_cast<std::int32_t>(acc1) * (1 << shift);
    s.y2 = static_cast<std::int32_t>(acc2) * (1 << shift);
    return i;
}

/// sat16((acc + 2048) >> 12) without a carry out of 32 bits. Both scale factors come to this.
void roundSums(const std::int32_t* sums, Out16 out) noexcept
{
    const auto rounded = [sums](std::size_t i) {
        const __m256i halves = _mm256_srai_epi32(avx2::load(sums + i), 11);
        return _mm256_srai_epi32(_mm256_add_epi32(halves, _mm256_set1_epi32(1)), 1);
    };
    std::size_t i = 0;
    for (; i + 16 <= out.size(); i += 16)
        avx2::store(&out[i], avx2::packInOrder(rounded(i), rounded(i + 8)));
    for (; i < out.size(); ++i)
        out[i] = fx::sat16((std::int64_t{sums[i]} + 2048) >> 12);
}

} // namespace

void highPassAvx2(Out16 samples, int scaleFactor, HighPassState& state) noexcept
{
    HighPassState s = state;
    const std::int32_t shifted = (1 << (16 - scaleFactor)) - 1;
    alignas(32) std::int16_t x[16 + kChunk] = {};
    alignas(32) std::int32_t sums[kChunk] = {}; // feedForward() fills it
    for (std::size_t i = 0; i < samples.size(); i += kChunk) {
        const Out16 chunk = samples.subspan(i, std::min(kChunk, samples.size() - i));
        const std::size_t n = chunk.size();
        x[14] = s.x2;
        x[15] = s.x1;
        std::copy(chunk.begin(), chunk.end(), x + 16);
        feedForward(x + 16, n, s, sums);
        for (std::size_t k = 0; k < n;) {
            if (((s.y1 | s.y2) & shifted) == 0) k += recurseFast({sums + k, n - k}, scaleFactor, s);
            if (k < n) {
                sums[k] = recurse(static_cast<std::uint32_t>(sums[k]), scaleFactor, s);
                ++k;
            }
        }
        roundSums(sums, chunk);
        s.x1 = x[15 + n];
        s.x2 = x[14 + n];
    }
    state = s;
}

} // namespace zsp::g729

namespace zsp::entry {

ZspStatus zspsHighPassFilterSize_G729(std::int32_t* size)
{
    if (!size) return zspStsNullPtrErr;

    *size = sizeof(g729::HighPassState);
    return zspStsNoErr;
}

ZspStatus zspsHighPassFilterInit_G729(const std::int16_t* coeffs, void* state)
{
    if (!coeffs || !state) return zspStsNullPtrErr;

    g729::HighPassState fresh;
    std::copy_n(coeffs, fresh.coeffs.size(), fresh.coeffs.begin());
    placeRecord(state, fresh);
    return zspStsNoErr;
}

ZspStatus zspsHighPassFilter_G729_16s_ISfs(std::int16_t* srcDst, std::int32_t len,
                                           std::int32_t scaleFactor, void* state)
{
    if (!srcDst || !state) return zspStsNullPtrErr;
    if (len < 1) return zspStsSizeErr;
    if (scaleFactor != 12 && scaleFactor != 13) return zspStsScaleRangeErr;

    InPlace<g729::HighPassState> record(state);
    g729::highPassAvx2({srcDst, static_cast<std::size_t>(len)}, scaleFactor, *record);
    return zspStsNoErr;
}

} // namespace zsp::entry
