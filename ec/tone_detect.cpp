// Detector of the 2100 Hz tone with phase reversals that disables echo cancellers (the practice of
// ITU-T G.165 and G.168).
//
//   y = c0 x + c1 x2 - c2 y1 - c3 y2
//
// is a resonator at 2100 Hz. While its smoothed power stays near that of the input there is a tone;
// a reversal of the phase shows as a short dip of the ratio. Two reversals, each 413 to 466 ms
// after the one before, are the signal.
//
// The fast version runs the recursions of a chunk without a look at numbers below the normal ones,
// which would lengthen the chain from y to y, and afterwards looks whether there were any: then the
// definition does the chunk. Decisions are taken eight samples at a time.

#include "ec/tone_detect.hpp"

#include "core/avx2.hpp"
#include "core/entries.hpp"
#include "core/state.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>

namespace zsp::ec {

namespace {

struct Rate {
    std::int32_t sampleFreq;
    std::array<float, 4> coefs; // the poles' radius is 0.96145 at 8 kHz and 0.98055 at 16 kHz
    float smoothing;
    std::int32_t minCount, maxCount; // 413 and 466 ms
    std::int32_t dipLimit;           // 20 ms
};

constexpr Rate kRates[] = {
    {8000, {0.037804753F, -0.037804753F, 0.15110244F, 0.92439049F}, 0.96F, 3304, 3728, 160},
    {16000, {0.019259274F, -0.019259274F, -1.3317118F, 0.96148145F}, 0.92F, 6608, 7456, 320},
};

const Rate* findRate(std::int32_t sampleFreq) noexcept
{
    const auto* rate = std::ranges::find(kRates, sampleFreq, &Rate::sampleFreq);
    return rate == std::end(kRates) ? nullptr : rate;
}

/// Replaces denormal numbers by zero. Among them rounding would stop the powers from falling any
/// further, and digital silence after a tone would look like the tone.
float normal(float value) noexcept
{
    return std::fabs(value) < std::numeric_limits<float>::min() ? 0.0F : value;
}

constexpr std::int32_t kMaxCount = std::numeric_limits<std::int32_t>::max();

void countUp(std::int32_t& counter) noexcept
{
    if (counter < kMaxCount) ++counter;
}

/// Counts one sample: tone, or tone that is weakened, so much as by a reversal, or neither. Whether
/// it is the second or a later reversal.
bool count(ToneDetectState& s, bool tone, bool weak, bool dip) noexcept
{
    bool detected = false;
    if (tone) {
        countUp(s.toneCount);
        s.dipCount = 0;
    } else if (weak) {
        if (dip && s.minCount < s.toneCount && s.toneCount < s.maxCount) {
            countUp(s.reversals);
            detected = s.reversals >= 2;
            s.toneCount = 0;
        }
        if (++s.dipCount > s.dipLimit) s.toneCount = s.dipCount = s.reversals = 0;
    } else {
        s.toneCount = s.dipCount = 0;
    }
    return detected;
}

} // namespace

bool toneDetectScalar(ToneDetectState& state, InF src) noexcept
{
    ToneDetectState s = state;
    const std::array<float, 4> c = {s.coefs[0], s.coefs[1], s.coefs[2], s.coefs[3]};
    const float a = s.smoothing, rest = 1 - a;
    bool detected = false;
    for (const float x : src) {
        const float y = normal(c[0] * x + c[1] * s.x2 - c[2] * s.y1 - c[3] * s.y2);
        s.x2 = s.x1;
        s.x1 = x;
        s.y2 = s.y1;
        s.y1 = y;
        s.inputPower = normal(a * s.inputPower + rest * (x * x));
        s.tonePower = normal(a * s.tonePower + rest * (y * y));
        detected |=
            count(s, s.tonePower > 0.8F * s.inputPower && 10000 * s.inputPower > s.tonePower,
                  s.tonePower > 0.0008F * s.inputPower && s.inputPower > s.tonePower,
                  s.tonePower < 0.48F * s.inputPower);
    }
    state = s;
    return detected;
}

namespace {

constexpr std::size_t kChunk = 64;

/// Signals of a chunk of at most 64 samples.
struct Chunk {
    alignas(32) float y[kChunk];
    alignas(32) float tonePower[kChunk];
    alignas(32) float inputPower[kChunk];
};

/// The recursions alone, without a look at small numbers: the chain from y to y is a product and
/// two differences.
void recurse(ToneDetectState& s, InF src, Chunk& chunk) noexcept
{
    const std::array<float, 4> c = {s.coefs[0], s.coefs[1], s.coefs[2], s.coefs[3]};
    const float a = s.smoothing, rest = 1 - a;
    float x1 = s.x1, x2 = s.x2, y1 = s.y1, y2 = s.y2;
    float inputPower = s.inputPower, tonePower = s.tonePower;
    for (std::size_t i = 0; i < src.size(); ++i) {
        const float x = src[i];
        const float y = c[0] * x + c[1] * x2 - c[2] * y1 - c[3] * y2;
        x2 = x1;
        x1 = x;
        y2 = y1;
        y1 = y;
        inputPower = a * inputPower + rest * (x * x);
        tonePower = a * tonePower + rest * (y * y);
        chunk.y[i] = y;
        chunk.inputPower[i] = inputPower;
        chunk.tonePower[i] = tonePower;
    }
    s.x1 = x1;
    s.x2 = x2;
    s.y1 = y1;
    s.y2 = y2;
    s.inputPower = inputPower;
    s.tonePower = tonePower;
}

/// Lanes that normal() would change: below the normal numbers, and not +0 already.
__m256i smallLanes(const float* values) noexcept
{
    const __m256 v = avx2::load(values);
    const __m256 magnitude = _mm256_andnot_ps(_mm256_set1_ps(-0.0F), v);
    const __m256 below =
        _mm256_cmp_ps(magnitude, _mm256_set1_ps(std::numeric_limits<float>::min()), _CMP_LT_OQ);
    const __m256i zero = _mm256_cmpeq_epi32(_mm256_castps_si256(v), _mm256_setzero_si256());
    return _mm256_andnot_si256(zero, _mm256_castps_si256(below));
}

/// Whether a chunk needs the definition; `size` is a multiple of eight.
bool hasSmall(const Chunk& chunk, std::size_t size) noexcept
{
    __m256i any = _mm256_setzero_si256();
    for (std::size_t i = 0; i < size; i += 8)
        for (const float* values : {chunk.y, chunk.inputPower, chunk.tonePower})
            any = _mm256_or_si256(any, smallLanes(values + i));
    return !_mm256_testz_si256(any, any);
}

/// A bit per sample of eight: tone power above `factor` times the input power.
__m256 above(__m256 tonePower, float factor, __m256 inputPower) noexcept
{
    return _mm256_cmp_ps(tonePower, _mm256_mul_ps(_mm256_set1_ps(factor), inputPower), _CMP_GT_OQ);
}

/// Counts eight samples; mostly all are of one kind.
bool countEight(ToneDetectState& s, __m256 tonePower, __m256 inputPower) noexcept
{
    const __m256 limited =
        _mm256_cmp_ps(_mm256_mul_ps(_mm256_set1_ps(10000), inputPower), tonePower, _CMP_GT_OQ);
    const __m256 input = _mm256_cmp_ps(inputPower, tonePower, _CMP_GT_OQ);
    const __m256 isTone = _mm256_and_ps(above(tonePower, 0.8F, inputPower), limited);
    const __m256 isWeak = _mm256_and_ps(above(tonePower, 0.0008F, inputPower), input);
    const int tone = _mm256_movemask_ps(isTone), weak = _mm256_movemask_ps(isWeak) & ~tone;
    if (tone == 0xff && s.toneCount <= kMaxCount - 8) {
        s.toneCount += 8;
        s.dipCount = 0;
        return false;
    }
    if ((tone | weak) == 0) {
        s.toneCount = s.dipCount = 0;
        return false;
    }
    if (weak == 0xff && s.toneCount <= s.minCount && s.dipCount <= s.dipLimit - 8) {
        s.dipCount += 8;
        return false;
    }
    const __m256 isDip =
        _mm256_cmp_ps(tonePower, _mm256_mul_ps(_mm256_set1_ps(0.48F), inputPower), _CMP_LT_OQ);
    const int dip = _mm256_movemask_ps(isDip);
    bool detected = false;
    for (int i = 0; i < 8; ++i)
        detected |= count(s, tone >> i & 1, weak >> i & 1, dip >> i & 1);
    return detected;
}

} // namespace

bool toneDetectAvx2(ToneDetectState& state, InF src) noexcept
{
    Chunk chunk;
    bool detected = false;
    while (src.size() >= 8) {
        const std::size_t size = std::min(kChunk, src.size() & ~std::size_t{7});
        ToneDetectState next = state;
        recurse(next, src.first(size), chunk);
        if (hasSmall(chunk, size)) {
            detected |= toneDetectScalar(state, src.first(size));
        } else {
            for (std::size_t i = 0; i < size; i += 8)
                detected |= countEight(next, avx2::load(&chunk.tonePower[i]),
                                       avx2::load(&chunk.inputPower[i]));
            state = next;
        }
        src = src.subspan(size);
    }
    return toneDetectScalar(state, src) || detected;
}

} // namespace zsp::ec

namespace zsp::entry {

ZspStatus zspsToneDetectGetStateSize_EC_32f(std::int32_t sampleFreq, std::int32_t* size)
{
    if (!size) return zspStsNullPtrErr;
    if (!ec::findRate(sampleFreq)) return zspStsRangeErr;

    *size = static_cast<std::int32_t>(sizeof(ec::ToneDetectState)) + kStateSlack;
    return zspStsNoErr;
}

ZspStatus zspsToneDetectInit_EC_32f(void* state, std::int32_t sampleFreq)
{
    if (!state) return zspStsNullPtrErr;
    const ec::Rate* rate = ec::findRate(sampleFreq);
    if (!rate) return zspStsRangeErr;

    *alignedState<ec::ToneDetectState>(state) = {.coefs = rate->coefs.data(),
                                                 .smoothing = rate->smoothing,
                                                 .minCount = rate->minCount,
                                                 .maxCount = rate->maxCount,
                                                 .dipLimit = rate->dipLimit};
    return zspStsNoErr;
}

ZspStatus zspsToneDetect_EC_32f(const float* src, std::int32_t len, std::int32_t* result,
                                void* state)
{
    if (!src || !result || !state) return zspStsNullPtrErr;
    if (len < 1) return zspStsBadArgErr;

    auto& s = *alignedState<ec::ToneDetectState>(state);
    *result = ec::toneDetectAvx2(s, {src, static_cast<std::size_t>(len)}) ? 1 : 0;
    return zspStsNoErr;
}

} // namespace zsp::entry
