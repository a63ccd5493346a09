// Automatic level control of speech in the sense of ITU-T G.169, in blocks of eight samples.
//
// The control follows the noise floor and the level of the speech above it, heads for the gain that
// brings the speech to its target level, and limits the gain where a sample would pass the peak
// limit. The gain rises slowly and falls at once. All arithmetic is single precision, rounded after
// each operation.

#include "alc/alc_g169.hpp"

#include "core/avx2.hpp"
#include "core/entries.hpp"
#include "core/state.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>

namespace zsp::alc {

namespace {

static_assert(sizeof(State) == 124 && std::is_trivially_copyable_v<State>);

constexpr std::int16_t kMaxCount = 16383;

constexpr int kRejectBelow = 50;    // active blocks of a spurt that counts as speech
constexpr int kConfirmedFrom = 500; // active blocks after which the first spurt is trusted

void countUp(std::int16_t& counter) noexcept
{
    counter = static_cast<std::int16_t>(std::min(counter + 1, int{kMaxCount}));
}

bool isFirstSpurt(const State& s) noexcept
{
    return s.speechState == 1;
}

// The noise floor follows a level below it fast, one near it slowly, and speech not at all. Speech
// of a known level lifts it.
void trackNoise(State& s) noexcept
{
    const float n = s.noiseLevel;
    float keep = 1.0F, take = 0.0F;
    if (s.smoothLevel < n) {
        keep = 0.9F;
        take = 0.1F;
    } else if (s.smoothLevel < 2.0F * n) {
        keep = 0.99F;
        take = 0.01F;
    }
    const bool unsure =
        isFirstSpurt(s) && (s.activeCount < 501 || static_cast<double>(s.alpha) >= 0.0025);
    const float speechFloor = s.speechState < 1 || unsure ? 0.0F : 1456.7665F * s.rmsLevel;
    float c = keep * n + take * s.smoothLevel;
    c = std::max(c, s.noiseFloorMin);
    c = std::max(c, speechFloor);
    c = std::min(c, s.noiseFloorMax);
    s.noiseLevel = c;
    s.activityThreshold = 4.0F * c;
}

void trackSlowLevel(State& s) noexcept
{
    const bool rising = s.slowLevel <= s.smoothLevel;
    const float mixed = rising ? 0.99F * s.slowLevel + 0.01F * s.smoothLevel
                               : 0.7F * s.slowLevel + 0.3F * s.smoothLevel;
    s.slowLevel = std::max(s.noiseLevel, mixed);
}

void pause(State& s) noexcept
{
    if (s.spurtOpen) {
        countUp(s.hangCount);
        if (static_cast<float>(s.hangCount) == s.hangoverBlocks) {
            s.spurtOpen = 0;
            if (s.activeCount < kRejectBelow) { // too short for speech: as if it had not been
                s.speechState = static_cast<std::int16_t>(s.speechState - 1);
                s.power = s.savedPower;
                s.targetGain = s.savedTargetGain;
                s.alpha = s.savedAlpha;
            }
        }
    }
    if (!s.spurtOpen) s.activeCount = 0;
}

void activity(State& s) noexcept
{
    s.hangCount = 0;
    if (s.spurtOpen) return;
    countUp(s.speechState);
    s.savedPower = s.power;
    s.savedTargetGain = s.targetGain;
    s.savedAlpha = s.alpha;
    s.spurtOpen = 1;
    s.rmsFactor = 0.7F;
}

// The gain does not rise on the first spurt before it looks like speech.
float riseRate(const State& s) noexcept
{
    if (!isFirstSpurt(s)) return s.gainRate;
    const bool quiet = s.smoothLevel < 3.0F * s.noiseLevel;
    const bool wait = s.activeCount < 10 || (s.activeCount < kConfirmedFrom && quiet);
    return wait ? 0.0F : s.gainRate;
}

void trackSpeechLevel(State& s) noexcept
{
    const float p = s.peakLevel;
    if (!s.spurtOpen)
        s.speechLevel = s.speechState != 0 ? s.rmsLevel : p;
    else if (p > s.speechLevel)
        s.speechLevel = p;
    else if (s.activityThreshold < p)
        s.speechLevel = 0.999F * s.speechLevel + 0.001F * p;
}

void averagePower(State& s) noexcept
{
    const bool young = s.activeCount < kConfirmedFrom;
    const bool loud = s.smoothLevel >= s.activityThreshold;
    float alpha = s.alpha;
    if (!s.spurtOpen) {
        alpha = s.speechState == 0 ? 0.1F : std::max(s.alphaActiveMin, alpha);
    } else {
        if (isFirstSpurt(s) && young && !(0.1F * s.blockEnergy <= s.power))
            alpha = std::max(0.05F, alpha);
        if (!loud && young) s.rmsFactor = 0.7F;
        if (loud && (s.activityThreshold <= s.blockMeanAbs || s.activeCount > 19)) {
            const float beta = alpha - alpha * alpha;
            s.power = (1.0F - beta) * s.power + beta * s.blockEnergy;
        }
    }
    s.rmsLevel = std::sqrt(s.power) * s.rmsFactor;
    s.alpha = std::max(s.alphaMin, alpha);
    if (young) s.rmsFactor = std::min(0.89F, 1.000461F * s.rmsFactor);
}

// The cap is the gain that brings the rms level to the target, at most the largest gain. Without a
// usable rms level the gain heads for the target by the speech level.
void aimGain(State& s) noexcept
{
    float cap = s.maxGain;
    float step = s.maxGain;
    if (s.targetLevel <= s.rmsLevel * s.maxGain)
        cap = step = s.targetLevel / s.rmsLevel;
    else if (s.targetLevel <= s.maxGain * s.speechLevel)
        step = s.targetLevel / s.speechLevel;
    s.targetGain = std::min(cap, s.targetGain + s.rate * step);
}

void applyGain(State& s) noexcept
{
    const float k = s.gainSmoothing;
    const float gain = std::min(s.targetGain, s.gain + k * (s.targetGain - s.gain));
    if (gain * s.blockPeak <= s.peakLimit) {
        s.gainSmoothing = std::min(1.0F, 1.1F * k);
        s.gain = gain;
    } else {
        s.gainSmoothing = 0.001F;
        s.gain = s.peakLimit / s.blockPeak;
    }
}

} // namespace

State initialState() noexcept
{
    return {
        .targetLevel = 1623.491F,
        .peakLimit = 32767.0F,
        .noiseFloorMin = 4.125246F,
        .noiseFloorMax = 65.38F,
        .maxGain = 3.8018899F,
        .alphaActiveMin = 0.02F,
        .alphaMin = 0.0033333F,
        .hangoverBlocks = 200.0F,
        .gainRate = 0.01F,
        .hangCount = 200,
        .speechState = 0,
        .activeCount = 0,
        .spurtOpen = 0,
        .blockMeanAbs = 0.0F,
        .smoothLevel = 0.0F,
        .peakLevel = 0.0F,
        .speechLevel = 0.0F,
        .noiseLevel = 65.38F,
        .activityThreshold = 65.38F,
        .slowLevel = 32767.0F,
        .blockEnergy = 0.0F,
        .power = 0.0F,
        .alpha = 0.1F,
        .rmsLevel = 0.0F,
        .rmsFactor = 0.7F,
        .targetGain = 0.03125F,
        .rate = 0.0F,
        .gain = 0.0F,
        .gainSmoothing = 1.0F,
        .blockPeak = 0.0F,
        .savedPower = 0.0F,
        .savedTargetGain = 0.03125F,
        .savedAlpha = 0.1F,
    };
}

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

void update(State& s, const BlockLevels& block) noexcept
{
    s.blockMeanAbs = block.meanAbs;
    s.smoothLevel = 0.2F * s.smoothLevel + 0.8F * block.meanAbs;
    s.peakLevel = std::max(s.smoothLevel, 0.99F * s.peakLevel);
    trackNoise(s);
    trackSlowLevel(s);
    if (s.activityThreshold < block.meanAbs) countUp(s.activeCount);
    if (s.peakLevel > s.activityThreshold)
        activity(s);
    else
        pause(s);
    s.rate = riseRate(s);
    trackSpeechLevel(s);
    s.blockEnergy = block.energy;
    averagePower(s);
    if (s.spurtOpen) aimGain(s);
    s.blockPeak = block.peak;
    applyGain(s);
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
