// Automatic level control of speech in the sense of ITU-T G.169, in blocks of eight samples: the
// levels of a block, the rule of alc_g169_rule.cpp, and the gain applied.

#include "alc/alc_g169.hpp"

#include "alc/alc_g169_rule.hpp"
#include "core/avx2.hpp"
#include "core/entries.hpp"
#include "core/state.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <type_traits>

namespace zsp::alc {

static_assert(sizeof(State) == 124 && std::is_trivially_copyable_v<State>);

BlockLevels measureScalar(InBlock x) noexcept
{
    BlockLevels block{0.0F, 0.0F, 0.0F};
    for (const int sample : x) {
        const auto magnitude = static_cast<float>(std::abs(sample));
        block.meanAbs += 0.125F * magnitude;
        block.energy += 0.125F * magnitude * magnitude;
        block.peak = std::max(block.peak, magnitude);
    }
    return block;
}

// The magnitudes' sum is an integer below 2^24 and thus exact in any order. The sum of the squares
// is rounded on the way, so it keeps the order of the samples.
BlockLevels measureAvx2(InBlock x) noexcept
{
    const __m128i magnitudes = _mm_abs_epi16(avx2::load8(x.data())); // unsigned: 32768 is one
    const __m256i wide = _mm256_cvtepu16_epi32(magnitudes);
    const __m256 values = _mm256_cvtepi32_ps(wide);
    alignas(32) std::array<float, kBlock> eighths;
    avx2::store(eighths.data(),
                _mm256_mul_ps(_mm256_mul_ps(_mm256_set1_ps(0.125F), values), values));
    float energy = 0.0F;
    for (const float eighth : eighths)
        energy += eighth;
    // vphminposuw finds the smallest word: the complement of the largest magnitude.
    const __m128i complements = _mm_xor_si128(magnitudes, _mm_set1_epi16(-1));
    const int peak = _mm_extract_epi16(_mm_minpos_epu16(complements), 0) ^ 0xffff;
    return {0.125F * static_cast<float>(avx2::sum32(wide)), energy, static_cast<float>(peak)};
}

void amplifyScalar(InBlock x, float gain, OutBlock y) noexcept
{
    for (std::size_t i = 0; i < kBlock; ++i) {
        const float product = static_cast<float>(x[i]) * gain;
        // written so that what is not a number ends at a limit too
        const float limited =
            product > -32768.0F ? (product < 32767.0F ? product : 32767.0F) : -32768.0F;
        y[i] = static_cast<std::int16_t>(limited);
    }
}

void amplifyAvx2(InBlock x, float gain, OutBlock y) noexcept
{
    const __m256 samples = _mm256_cvtepi32_ps(_mm256_cvtepi16_epi32(avx2::load8(x.data())));
    const __m256 product = _mm256_mul_ps(samples, _mm256_set1_ps(gain));
    // Of a value that is not a number and a limit, vmaxps returns its second operand.
    const __m256 limited =
        _mm256_min_ps(_mm256_max_ps(product, _mm256_set1_ps(-32768.0F)), _mm256_set1_ps(32767.0F));
    const __m256i truncated = _mm256_cvttps_epi32(limited);
    avx2::store8(y.data(), _mm_packs_epi32(_mm256_castsi256_si128(truncated),
                                           _mm256_extracti128_si256(truncated, 1)));
}

void levelControl(In16 src, Out16 dst, State& s) noexcept
{
    for (std::size_t i = 0; i < src.size(); i += kBlock) {
        const InBlock x = src.subspan(i).first<kBlock>();
        update(s, measureAvx2(x));
        amplifyAvx2(x, s.gain, dst.subspan(i).first<kBlock>());
    }
}

} // namespace zsp::alc

namespace zsp::entry {

namespace {

double amplitude(float db) noexcept
{
    return std::pow(10.0, static_cast<double>(db) / 20.0);
}

} // namespace

ZspStatus zspsALCGetStateSize_G169_16s(std::int32_t* size)
{
    if (!size) return zspStsNullPtrErr;

    *size = sizeof(ZspAlcState_G169);
    return zspStsNoErr;
}

ZspStatus zspsALCInit_G169_16s(ZspAlcState_G169* state)
{
    if (!state) return zspStsNullPtrErr;

    placeRecord(state, alc::initialState());
    return zspStsNoErr;
}

ZspStatus zspsALCSetGain_G169_16s(float gainDb, ZspAlcState_G169* state)
{
    if (!state) return zspStsNullPtrErr;
    if (!(gainDb >= 0)) return zspStsRangeErr;

    InPlace<alc::State> s(state);
    s->maxGain = static_cast<float>(amplitude(gainDb));
    return zspStsNoErr;
}

ZspStatus zspsALCSetLevel_G169_16s(float targetDb, float peakDb, ZspAlcState_G169* state)
{
    if (!state) return zspStsNullPtrErr;
    if (!(targetDb >= 0) || !(peakDb >= 0)) return zspStsRangeErr;

    InPlace<alc::State> s(state);
    s->targetLevel = static_cast<float>(32768.0 / amplitude(targetDb));
    s->peakLimit = static_cast<float>(32768.0 / amplitude(peakDb));
    return zspStsNoErr;
}

ZspStatus zspsALC_G169_16s(const std::int16_t* src, std::int16_t* dst, std::int32_t len,
                           ZspAlcState_G169* state)
{
    if (!src || !dst || !state) return zspStsNullPtrErr;
    if (len < 8 || len % 8 != 0) return zspStsRangeErr;

    InPlace<alc::State> s(state);
    alc::levelControl({src, static_cast<std::size_t>(len)}, {dst, static_cast<std::size_t>(len)},
                      *s);
    return zspStsNoErr;
}

} // namespace zsp::entry
