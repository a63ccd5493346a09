// Noise estimate of the 3GPP voice activity detectors: SNR sum, update control, noise update.
//
// The comments behind the constants are their names in TS 26.094 and 26.194.

#include "codecs/shared/vad/background.hpp"

#include <algorithm>

namespace zsp::vad {

namespace {

constexpr fx::Word kStatCount = 20;       // STAT_COUNT
constexpr fx::Word kComplexStatCount = 5; // CAD_MIN_STAT_COUNT
constexpr fx::Word kStatLevel = 184;      // STAT_THR_LEVEL
constexpr fx::Word kStatRatio = 1000;     // STAT_THR
constexpr fx::Word kNoiseMin = 40;        // NOISE_MIN
constexpr fx::Word kAveReset_Q15 = 32767;
constexpr fx::Word kAveNoise_Q15 = 16383; // ALPHA5
constexpr fx::Word kAveSpeech_Q15 = 3276; // ALPHA4

/// How fast the estimate follows.
struct Speed {
    fx::Word up_Q15;
    fx::Word down_Q15;
    fx::Word step;
};

constexpr Speed kNoise = {1638, 2097, 2};     // ALPHA_UP1, ALPHA_DOWN1
constexpr Speed kStationary = {491, 1867, 2}; // ALPHA_UP2, ALPHA_DOWN2
constexpr Speed kSpeech = {0, 1638, 0};       // ALPHA_DOWN3

/// Q15 ratio of half of `a` to `b` shifted left by its normalisation count `shift`. That divisor is
/// at least 16384 for a positive `b`. A record that was never reset may hold others: no trap then.
fx::Word normalisedRatio_Q15(fx::Word a, fx::Word b, int shift) noexcept
{
    const std::int32_t divisor = b * (1 << shift);
    return divisor > 0 ? fx::sat16((a >> 1) * 32768 / divisor) : fx::kMax16;
}

/// Sum over the bands of the ratios of the larger of level and average level to the smaller.
fx::Word stationarity(In16 level, In16 ave_level) noexcept
{
    fx::Word sum = 0;
    for (std::size_t i = 0; i < level.size(); ++i) {
        const auto [low, high] = std::minmax(level[i], ave_level[i]);
        const fx::Word divisor = std::max(low, kStatLevel);
        const int shift = fx::norm_s(divisor);
        const fx::Word ratio = normalisedRatio_Q15(std::max(high, kStatLevel), divisor, shift);
        sum = fx::add(sum, fx::shr(ratio, 8 - shift));
    }
    return sum;
}

/// Back to the start on signals that are noise or tones, down to 0 while speech is stationary.
void controlUpdate(In16 level, const NoiseRecord& record, const NoiseControl& control) noexcept
{
    fx::Word& count = record.stat_count;
    if (control.complexWarning) count = std::max(count, kComplexStatCount);

    if ((control.pitch & 0x6000) == 0x6000 || (control.tone & 0x7c00) == 0x7c00)
        count = kStatCount;
    else if ((control.vadreg & 0x7f80) == 0)
        count = kStatCount;
    else if (stationarity(level, record.ave_level) > kStatRatio)
        count = kStatCount;
    else if ((control.vadreg & 0x4000) != 0 && count != 0)
        count = fx::sub(count, 1);

    const fx::Word alpha_Q15 = count == kStatCount              ? kAveReset_Q15
                               : (control.vadreg & 0x4000) == 0 ? kAveNoise_Q15
                                                                : kAveSpeech_Q15;
    for (std::size_t i = 0; i < level.size(); ++i) {
        fx::Word& ave = record.ave_level[i];
        ave = fx::add(ave, fx::mult_r(alpha_Q15, fx::sub(level[i], ave)));
    }
}

Speed updateSpeed(fx::Word stat_count, const NoiseControl& control) noexcept
{
    if ((control.vadreg & 0x7800) == 0 && (control.pitch & 0x7800) == 0 &&
        control.complexHangCount == 0)
        return kNoise;
    if (stat_count == 0 && control.complexHangCount == 0) return kStationary;
    return kSpeech;
}

} // namespace

fx::Long snrSum(In16 level, In16 bckr_est, int ratioQ) noexcept
{
    fx::Long sum = 0;
    for (std::size_t i = 0; i < level.size(); ++i) {
        const int norm = fx::norm_s(bckr_est[i]);
        const fx::Word ratio =
            fx::shl(normalisedRatio_Q15(level[i], bckr_est[i], norm), ratioQ - 14 + norm);
        sum = fx::l_mac(sum, ratio, ratio);
    }
    return sum;
}

void updateNoise(In16 level, NoiseRecord record, const NoiseControl& control) noexcept
{
    controlUpdate(level, record, control);

    const Speed speed = updateSpeed(record.stat_count, control);
    for (std::size_t i = 0; i < level.size(); ++i) {
        fx::Word& noise = record.bckr_est[i];
        const fx::Word d = fx::sub(record.old_level[i], noise);
        if (d < 0)
            noise = std::max(fx::add(-2, fx::add(noise, fx::mult_r(speed.down_Q15, d))), kNoiseMin);
        else
            noise = std::min(fx::add(speed.step, fx::add(noise, fx::mult_r(speed.up_Q15, d))),
                             control.noiseMax);
        record.old_level[i] = level[i];
    }
}

} // namespace zsp::vad
