// The rule of the level control, once per block of eight samples, which is 1 ms at 8 kHz.
//
// The control follows the noise floor and the level of the speech above it, heads for the gain that
// brings the speech to its target level, and limits the gain where a sample would pass the peak
// limit. The gain rises slowly and falls at once. ITU-T G.169 says what a level control must do;
// the rule and its constants are this library's. All arithmetic is single precision, rounded after
// each operation.

#include "alc/alc_g169_rule.hpp"

#include <algorithm>
#include <cmath>

namespace zsp::alc {

namespace {

constexpr std::int16_t kMaxCount = 16383; // where the counters stop

/// Weights of the old and of the new value in an average.
struct Mix {
    float old, fresh;
};

// Averages of the level of a block
constexpr Mix kSmooth = {0.2F, 0.8F};
constexpr float kPeakDecay = 0.99F; // what a block leaves of the peak
constexpr Mix kSlowRise = {0.99F, 0.01F};
constexpr Mix kSlowFall = {0.7F, 0.3F};
constexpr Mix kSpeechFall = {0.999F, 0.001F}; // the speech level rises at once

// Noise floor
constexpr Mix kFloorFalls = {0.9F, 0.1F};    // to a level below it
constexpr Mix kFloorCreeps = {0.99F, 0.01F}; // to a level of less than kNearFloor times the floor
constexpr Mix kFloorStays = {1.0F, 0.0F};    // below what must be speech
constexpr float kNearFloor = 2.0F;
constexpr float kThreshold = 4.0F; // a level of more than so many times the floor is activity
// The least floor where the speech level is known, in rms levels. It is so large that the floor is
// at its upper clamp from an rms level of 0.045 on.
constexpr float kSpeechFloor = 1456.7665F;
constexpr double kSureAlpha = 0.0025; // the level of a first spurt counts as known below this alpha

// Talk spurts, in active blocks
constexpr int kRejectBelow = 50;    // a shorter spurt was no speech
constexpr int kConfirmedFrom = 500; // from here on the first spurt is speech for certain
constexpr int kKnownFrom = 501;     // from here on its level may lift the floor
constexpr int kFirstWait = 10;      // before these the gain does not rise in the first spurt
constexpr float kFirstQuiet = 3.0F; // nor before kConfirmedFrom below so many times the floor

// Average of the power, by the factor alpha
constexpr float kAlphaNoSpeech = 0.1F;     // without speech so far
constexpr float kAlphaLouder = 0.05F;      // the least one in a first spurt that gets louder:
constexpr float kLouder = 0.1F;            // this share of a block's energy exceeds the power
constexpr int kOnsetBlocks = 19;           // up to here only blocks above the threshold count
constexpr float kFactorStart = 0.7F;       // rms factor at the start of a spurt
constexpr float kFactorEnd = 0.89F;        // its largest value,
constexpr float kFactorGrowth = 1.000461F; // which it reaches in 521 blocks

// Gain
constexpr float kSmoothingStart = 0.001F; // smoothing of the gain after the peak limit held it
constexpr float kSmoothingGrowth = 1.1F;  // to 1 in 73 blocks

float mixed(float old, float fresh, Mix mix) noexcept
{
    return mix.old * old + mix.fresh * fresh;
}

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
    const Mix mix = s.smoothLevel < n                ? kFloorFalls
                    : s.smoothLevel < kNearFloor * n ? kFloorCreeps
                                                     : kFloorStays;
    const bool unsure = isFirstSpurt(s) &&
                        (s.activeCount < kKnownFrom || static_cast<double>(s.alpha) >= kSureAlpha);
    const float speechFloor = s.speechState < 1 || unsure ? 0.0F : kSpeechFloor * s.rmsLevel;
    float c = mixed(n, s.smoothLevel, mix);
    c = std::max(c, s.noiseFloorMin);
    c = std::max(c, speechFloor);
    c = std::min(c, s.noiseFloorMax);
    s.noiseLevel = c;
    s.activityThreshold = kThreshold * c;
}

void trackSlowLevel(State& s) noexcept
{
    const bool rising = s.slowLevel <= s.smoothLevel;
    s.slowLevel =
        std::max(s.noiseLevel, mixed(s.slowLevel, s.smoothLevel, rising ? kSlowRise : kSlowFall));
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
    s.rmsFactor = kFactorStart;
}

// The gain does not rise on the first spurt before it looks like speech.
float riseRate(const State& s) noexcept
{
    if (!isFirstSpurt(s)) return s.gainRate;
    const bool quiet = s.smoothLevel < kFirstQuiet * s.noiseLevel;
    const bool wait = s.activeCount < kFirstWait || (s.activeCount < kConfirmedFrom && quiet);
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
        s.speechLevel = mixed(s.speechLevel, p, kSpeechFall);
}

void averagePower(State& s) noexcept
{
    const bool young = s.activeCount < kConfirmedFrom;
    const bool loud = s.smoothLevel >= s.activityThreshold;
    float alpha = s.alpha;
    if (!s.spurtOpen) {
        alpha = s.speechState == 0 ? kAlphaNoSpeech : std::max(s.alphaActiveMin, alpha);
    } else {
        if (isFirstSpurt(s) && young && !(kLouder * s.blockEnergy <= s.power))
            alpha = std::max(kAlphaLouder, alpha);
        if (!loud && young) s.rmsFactor = kFactorStart;
        if (loud && (s.activityThreshold <= s.blockMeanAbs || s.activeCount > kOnsetBlocks)) {
            const float beta = alpha - alpha * alpha;
            s.power = (1.0F - beta) * s.power + beta * s.blockEnergy;
        }
    }
    s.rmsLevel = std::sqrt(s.power) * s.rmsFactor;
    s.alpha = std::max(s.alphaMin, alpha);
    if (young) s.rmsFactor = std::min(kFactorEnd, kFactorGrowth * s.rmsFactor);
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
        s.gainSmoothing = std::min(1.0F, kSmoothingGrowth * k);
        s.gain = gain;
    } else {
        s.gainSmoothing = kSmoothingStart;
        s.gain = s.peakLimit / s.blockPeak;
    }
}

} // namespace

State initialState() noexcept
{
    return {
        .targetLevel = 1623.491F, // 26.1 dB below full scale
        .peakLimit = 32767.0F,
        .noiseFloorMin = 4.125246F, // 78 dB below full scale
        .noiseFloorMax = 65.38F,    // 54 dB below full scale
        .maxGain = 3.8018899F,      // 11.6 dB
        .alphaActiveMin = 0.02F,
        .alphaMin = 0.0033333F,   // 1/300
        .hangoverBlocks = 200.0F, // 200 ms at 8 kHz
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
        .alpha = kAlphaNoSpeech,
        .rmsLevel = 0.0F,
        .rmsFactor = kFactorStart,
        .targetGain = 0.03125F, // 1/32: quiet until speech has raised the gain
        .rate = 0.0F,
        .gain = 0.0F,
        .gainSmoothing = 1.0F,
        .blockPeak = 0.0F,
        .savedPower = 0.0F,
        .savedTargetGain = 0.03125F,
        .savedAlpha = kAlphaNoSpeech,
    };
}

void update(State& s, const BlockLevels& block) noexcept
{
    s.blockMeanAbs = block.meanAbs;
    s.smoothLevel = mixed(s.smoothLevel, block.meanAbs, kSmooth);
    s.peakLevel = std::max(s.smoothLevel, kPeakDecay * s.peakLevel);
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

} // namespace zsp::alc
