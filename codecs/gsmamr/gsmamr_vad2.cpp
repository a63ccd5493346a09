// Voice activity detector of GSM-AMR, option 2. 3GPP TS 26.094 and 26.073.
//
// A frame is two half-frames of 80 samples; it is speech when one of them is. Each half-frame is
// normalised, pre-emphasised and transformed, its energy in sixteen channels is smoothed, and the
// channels' SNRs add up to a voice metric, on which a threshold decides that follows the long-term
// peak SNR. The noise estimates follow the energies in pauses and where the spectrum has been
// steady for long.

#include "codecs/gsmamr/gsmamr_vad2.hpp"

#include "core/entries.hpp"
#include "core/state.hpp"

#include <algorithm>
#include <array>
#include <cstddef>

static_assert(sizeof(Vad2State) == 188 && offsetof(Vad2State, ch_enrg_long_db) == 128 &&
              offsetof(Vad2State, pre_emp_mem) == 160 && offsetof(Vad2State, tsnr) == 174 &&
              offsetof(Vad2State, frame_cnt) == 184);

namespace zsp::gsmamr {

namespace {

using fx::Long;
using fx::Word;

constexpr std::size_t kDelay = (kFftLength - kVad2Half) / 2;
constexpr Word kPreEmphasis_Q15 = -26214; // -0.8
constexpr Mix kFirstEnergies = {32767, 0};
constexpr Mix kEnergies = {18022, 14746}; // 0.55, 0.45
constexpr Word kPeakShare_Q15 = 20480;    // 10/16 of the total energy in one channel: a peak
constexpr Long kStartHalves = 4;          // half-frames in which the noise is initialised

constexpr Word kNominalPeak_Q8 = 14320; // 96 - 22 - 10 log10(64) dB
constexpr int kRatioBits = 7;           // of the mean of the channels' SNRs
constexpr Mix kPeakRises = {3277, 29491};
constexpr Mix kPeakFalls = {66, 32702};
constexpr Word kNearPeak_Q15 = 20480; // SNRs above this share of the peak SNR may lower it
constexpr Word kThird_Q15 = 10923;

constexpr Mix kNegativeSnr = {328, 32440};
constexpr Word kMaxNegativeVar_Q8 = 1024;
constexpr Word kNegativeOffset_Q8 = 166;   // 0.65
constexpr Word kNegativeSlope_Q11 = 24576; // 12

constexpr Word kSlowest_Q15 = 29491; // weight of the long-term spectrum at the peak SNR
constexpr Word kFastest_Q15 = 22938; // and below 0 dB
constexpr Word kBackgroundMetric = 35;
constexpr Word kMaxDeviation_Q8 = 7168; // 28 dB
constexpr Word kForceAfter = 50;        // half-frames that count
constexpr Word kHysteresis = 6;         // half-frames

/// Loud signals go to the scaling with four fraction bits, quiet ones back to the one with nine.
const Scaling& chooseScaling(int shift, Vad2State& s) noexcept
{
    const bool wide = s.shift_state != 0;
    if (!wide && shift <= 0) {
        s.shift_state = 1;
        for (Long& energy : s.ch_enrg)
            energy = fx::l_shr(energy, kScalingStep);
    } else if (wide && shift >= 3) {
        s.shift_state = 0;
        for (Long& energy : s.ch_enrg)
            energy = fx::l_shl(energy, kScalingStep);
    }
    return kScalings[s.shift_state != 0 ? 1 : 0];
}

/// The first half-frames count as noise, limited from below, and not at all where they are tonal.
void startNoise(bool peaky, int shift, Vad2State& s) noexcept
{
    for (std::size_t c = 0; c < kChannels; ++c)
        s.ch_noise[c] =
            peaky ? kInitialNoise_Q9 : std::max(kInitialNoise_Q9, fx::l_shl(s.ch_enrg[c], shift));
}

/// The half-frame's SNR in dB, Q8; the long-term peak SNR follows it, upwards at once, downwards
/// slowly. At the start and after a forced noise update both are what the noise leaves.
template <typename Kernels>
Word peakSnr(InLevels snrs, Vad2State& s) noexcept
{
    if (s.frame_cnt <= kStartHalves || s.fupdate_flag != 0) {
        s.negSNRvar = 0;
        s.negSNRbias = 0;
        Long noise = 0;
        for (const Long channel : s.ch_noise)
            noise = fx::l_add(noise, channel);
        s.tsnr = fx::sub(kNominalPeak_Q8, levelOf(noise, kNoiseFractionBits));
        return s.tsnr;
    }
    const Word snr = levelOf(Kernels::ratioSum(snrs), kRatioBits);
    if (snr > s.tsnr)
        s.tsnr = mixed(snr, s.tsnr, kPeakRises);
    else if (snr > fx::mult(kNearPeak_Q15, s.tsnr))
        s.tsnr = mixed(snr, s.tsnr, kPeakFalls);
    return snr;
}

/// Half-frames below the noise say how much the noise varies, which raises the threshold.
void followNegativeSnr(Word snr, Vad2State& s) noexcept
{
    if (snr >= 0) return;
    const Word square_Q8 = fx::round_fx(fx::l_shl(fx::l_mult(snr, snr), 7));
    s.negSNRvar = std::min(kMaxNegativeVar_Q8, mixed(square_Q8, s.negSNRvar, kNegativeSnr));
    const Word excess_Q12 = fx::shl(fx::sub(s.negSNRvar, kNegativeOffset_Q8), 4);
    s.negSNRbias = std::max<Word>(0, fx::shr(fx::mult_r(excess_Q12, kNegativeSlope_Q11), 8));
}

/// Speech or not, from the voice metric, with a hangover after bursts that were long enough.
bool isSpeech(Word metric, Vad2State& s) noexcept
{
    const int step = fx::shr(fx::mult(s.tsnr, kThird_Q15), 8); // 3 dB
    const Thresholds& limits = kThresholds[static_cast<std::size_t>(
        std::clamp(step, 0, static_cast<int>(kThresholds.size()) - 1))];
    if (metric > fx::add(limits.voiceMetric, s.negSNRbias)) {
        s.burstcount = fx::add(s.burstcount, 1);
        if (s.burstcount > limits.burst) s.hangover = limits.hangover;
        return true;
    }
    s.burstcount = 0;
    s.hangover = std::max<Word>(0, fx::sub(s.hangover, 1));
    return s.hangover > 0;
}

/// The long-term spectrum follows the faster, the further below its peak the SNR is.
Mix longTermMix(Word snr, const Vad2State& s) noexcept
{
    const Word below = fx::sub(s.tsnr, snr);
    if (below <= 0 || s.tsnr <= 0) return {3277, kSlowest_Q15};
    if (below > s.tsnr) return {9830, kFastest_Q15};
    const Word old_Q15 =
        fx::sub(kSlowest_Q15, fx::mult(kSlowest_Q15 - kFastest_Q15, fx::div_s(below, s.tsnr)));
    return {fx::sub(32767, old_Q15), old_Q15};
}

/// Background updates the noise at once; a spectrum that stays steady while its level is above the
/// noise does so by force after half a second.
bool wantsNoiseUpdate(Word metric, bool steady, Vad2State& s) noexcept
{
    bool update = false;
    s.fupdate_flag = 0;
    if (metric <= kBackgroundMetric) {
        if (s.burstcount == 0) {
            update = true;
            s.update_cnt = 0;
        }
    } else if (steady) {
        s.update_cnt = fx::add(s.update_cnt, 1);
        if (s.update_cnt >= kForceAfter) {
            update = true;
            s.fupdate_flag = 1;
        }
    }
    s.hyster_cnt = s.update_cnt == s.last_update_cnt ? fx::add(s.hyster_cnt, 1) : Word{0};
    s.last_update_cnt = s.update_cnt;
    if (s.hyster_cnt > kHysteresis) s.update_cnt = 0;
    return update;
}

template <typename Kernels>
bool speechInHalf(InHalf samples, Vad2State& s, bool ltpFlag) noexcept
{
    s.frame_cnt = fx::l_add(s.frame_cnt, 1);

    std::array<Word, kVad2Half> normalised;
    const int shift = Kernels::normalise(samples, normalised);
    s.pre_emp_mem = fx::shr_r(s.pre_emp_mem, s.last_normb_shift - shift);
    s.last_normb_shift = static_cast<Word>(shift);
    std::array<Word, kFftLength> block{};
    Kernels::preEmphasise(kPreEmphasis_Q15, normalised, Out16{block}.subspan(kDelay, kVad2Half),
                          s.pre_emp_mem);
    Kernels::fft(block);

    const Scaling& scaling = chooseScaling(shift, s);
    const int toNoise = kNoiseFractionBits - scaling.fractionBits;
    Kernels::smoothEnergies(block, 2 * shift - scaling.normShift,
                            s.frame_cnt == 1 ? kFirstEnergies : kEnergies, scaling.minEnergy,
                            s.ch_enrg);
    const auto [total, peak] = Kernels::totalAndPeak(s.ch_enrg);
    const bool peaky = peak > fx::mpy_32_16(total, kPeakShare_Q15);
    if (s.frame_cnt <= kStartHalves) startNoise(peaky, toNoise, s);

    std::array<Word, kChannels> levels, noise, snrs;
    Kernels::levels(s.ch_enrg, scaling.fractionBits, levels);
    Kernels::levels(s.ch_noise, kNoiseFractionBits, noise);
    const Word metric = Kernels::snrs(levels, noise, snrs);
    const Word snr = peakSnr<Kernels>(snrs, s);
    followNegativeSnr(snr, s);
    const bool speech = isSpeech(metric, s);

    if (s.frame_cnt == 1) std::ranges::copy(levels, s.ch_enrg_long_db);
    const Word deviation = Kernels::deviation(levels, s.ch_enrg_long_db);
    Kernels::follow(levels, longTermMix(snr, s), s.ch_enrg_long_db);

    const bool steady =
        total > scaling.noiseFloor && deviation < kMaxDeviation_Q8 && !peaky && !ltpFlag;
    if (wantsNoiseUpdate(metric, steady, s)) Kernels::updateNoise(s.ch_enrg, toNoise, s.ch_noise);
    return speech;
}

template <typename Kernels>
bool speechInFrame(Vad2Frame frame, Vad2State& state, bool ltpFlag) noexcept
{
    const bool first = speechInHalf<Kernels>(frame.first<kVad2Half>(), state, ltpFlag);
    const bool second = speechInHalf<Kernels>(frame.last<kVad2Half>(), state, ltpFlag);
    return first || second;
}

} // namespace

bool vad2Scalar(Vad2Frame frame, Vad2State& state, bool ltpFlag) noexcept
{
    return speechInFrame<Vad2Scalar>(frame, state, ltpFlag);
}

bool vad2Avx2(Vad2Frame frame, Vad2State& state, bool ltpFlag) noexcept
{
    return speechInFrame<Vad2Avx2>(frame, state, ltpFlag);
}

} // namespace zsp::gsmamr

namespace zsp::entry {

ZspStatus zspsVAD2_GSMAMR_16s(const std::int16_t* src, Vad2State* state, std::int16_t* vadFlag,
                              std::int32_t ltpFlag)
{
    if (!src || !state || !vadFlag) return zspStsNullPtrErr;

    InPlace<Vad2State> record(state);
    const gsmamr::Vad2Frame frame{src, 2 * gsmamr::kVad2Half};
    *vadFlag = gsmamr::vad2Avx2(frame, *record, ltpFlag != 0) ? 1 : 0;
    return zspStsNoErr;
}

} // namespace zsp::entry
