// Voice activity detector of AMR-WB, 3GPP TS 26.194.
//
// A frame is active when its bands stand out from the noise estimate by more than a threshold that
// falls with the noise level and rises with the distance of the speech level from it. A hangover
// behind bursts makes the flag.

#include "codecs/amrwb/amrwb_vad.hpp"

#include "codecs/shared/vad/background.hpp"
#include "codecs/shared/vad/half_band_bank_avx2.hpp"
#include "common/correlation/energy.hpp"
#include "core/entries.hpp"
#include "core/state.hpp"

#include <algorithm>
#include <cstddef>
#include <numeric>

namespace zsp::amrwb {

static_assert(sizeof(VadWbState) == 172 && std::is_trivially_copyable_v<VadWbState>);
static_assert(offsetof(VadWbState, burst_count) == 128);
static_assert(offsetof(VadWbState, prev_pow_sum) == 144);

namespace {

constexpr fx::Word kNewest = 0x4000; // the newest of 15 flags in a word

// Powers of two frames, twice the sum of squares.
constexpr fx::Long kPowerTone = 686080; // POW_TONE_THR
constexpr fx::Long kPowerLow = 30000;   // VAD_POW_LOW

constexpr int kSnrQ = 8;                    // of a band's level to its noise estimate
constexpr fx::Word kSnrPerThreshold = 6144; // half of 12 * 1024
constexpr fx::Word kNoiseMax = 20000;       // NOISE_MAX
constexpr fx::Word kNoiseInit = 150;        // NOISE_INIT
constexpr fx::Word kSpeechLevelInit = 2050; // SPEECH_LEVEL_INIT

// The threshold, in 1/128. Logarithms are the Q10 of ilog2().
constexpr fx::Word kMinSpeechSnr_Q12 = 4096; // MIN_SPEECH_SNR
constexpr fx::Word kNoiseSlope_Q15 = 1509;   // NO_SLOPE
constexpr fx::Word kNoiseOrigin = 31744;     // ilog2(1), the lowest noise level
constexpr fx::Word kThresholdBase = 768;     // THR_HIGH, the threshold there
constexpr fx::Word kSpeechSlope_Q15 = -1339; // SP_SLOPE
constexpr fx::Word kSpeechOrigin = 22527; // ilog2 of a quarter of the nominal speech level, 512.5
constexpr fx::Word kSpeechTermMin = -96;  // SP_CH_MIN
constexpr fx::Word kSpeechTermMax = 96;   // SP_CH_MAX
constexpr fx::Word kThresholdMin = 204;   // THR_MIN

// Burst and hangover lengths as functions of the threshold.
constexpr fx::Word kBurstSlope_Q15 = 297;
constexpr fx::Word kBurstOrigin = 768; // BURST_P1
constexpr fx::Word kBurstHigh = 8;     // BURST_HIGH
constexpr fx::Word kHangSlope_Q15 = -1110;
constexpr fx::Word kHangOrigin = 217; // HANG_P1
constexpr fx::Word kHangHigh = 12;    // HANG_HIGH
constexpr fx::Word kHangLow = 2;      // HANG_LOW

// The estimate of the speech level.
constexpr fx::Word kEstimateFrames = 80; // SP_EST_COUNT
constexpr fx::Word kActiveFrames = 25;   // SP_ACTIVITY_COUNT
constexpr fx::Word kMinActive = 129;     // MIN_SPEECH_LEVEL1
constexpr fx::Word kMinEstimate = 410;   // MIN_SPEECH_LEVEL2
constexpr fx::Word kAlphaSpeech_Q15 = 4915;

struct ScalarKernels {
    static constexpr auto energy = common::energyScalar;
    static constexpr auto filterBank = vad::filterBankScalar<kVadBank, VadWbState>;
};

struct Avx2Kernels {
    static constexpr auto energy = common::energyAvx2;
    static constexpr auto filterBank = vad::filterBankAvx2<kVadBank, VadWbState>;
};

/// -log2(x / 2^31) in Q10, 31744 for 1 and less. The normalised mantissa to its 16th power moves
/// four bits of its logarithm into the exponent; what is left is taken as linear.
fx::Word ilog2(fx::Word x) noexcept
{
    x = std::max(x, fx::Word{1});
    const int exponent = fx::norm_s(x);
    x = fx::shl(x, exponent);
    for (int i = 0; i < 3; ++i)
        x = fx::mult(x, x);
    const fx::Long power = fx::l_mult(x, x);
    const int shift = fx::norm_l(power);
    const fx::Word rest = fx::extract_h(fx::l_shl(power, shift));
    return static_cast<fx::Word>((exponent + 16) * 1024 + shift * 64 + 127 - (rest >> 8));
}

/// A sixteenth of the sum over all bands but the lowest.
fx::Word levelAboveFirst(const fx::Word (&bands)[kVadBands]) noexcept
{
    return fx::extract_h(fx::l_shl(std::accumulate(bands + 1, std::end(bands), 0), 12));
}

/// Raises the speech level to the noise level, if it is below.
fx::Word decisionThreshold(VadWbState& state) noexcept
{
    const fx::Word noise = levelAboveFirst(state.bckr_est);
    const fx::Word base = fx::shl(fx::mult(noise, kMinSpeechSnr_Q12), 3);
    state.speech_level = std::max(state.speech_level, base);

    const fx::Word noiseLog = fx::sub(ilog2(noise), kNoiseOrigin);
    const fx::Word noiseTerm = fx::add(fx::mult(kNoiseSlope_Q15, noiseLog), kThresholdBase);
    const fx::Word speechLog = fx::sub(ilog2(fx::sub(state.speech_level, base)), kSpeechOrigin);
    const fx::Word speechTerm = fx::add(kSpeechTermMin, fx::mult(kSpeechSlope_Q15, speechLog));
    return std::max(fx::add(noiseTerm, std::clamp(speechTerm, kSpeechTermMin, kSpeechTermMax)),
                    kThresholdMin);
}

bool addHangover(VadWbState& state, fx::Word threshold, bool lowPower) noexcept
{
    if (lowPower) {
        state.burst_count = 0;
        state.hang_count = 0;
        return false;
    }
    if ((state.vadreg & kNewest) != 0) {
        const fx::Word burst =
            fx::add(fx::mult(kBurstSlope_Q15, fx::sub(threshold, kBurstOrigin)), kBurstHigh);
        const fx::Word hangover =
            fx::add(fx::mult(kHangSlope_Q15, fx::sub(threshold, kHangOrigin)), kHangHigh);
        state.burst_count = fx::add(state.burst_count, 1);
        if (state.burst_count >= burst) state.hang_count = std::max(hangover, kHangLow);
        return true;
    }
    state.burst_count = 0;
    if (state.hang_count <= 0) return false;
    state.hang_count = fx::sub(state.hang_count, 1);
    return true;
}

/// The level is estimated from the loudest of 25 active frames. An estimate that takes too many
/// frames starts again.
void estimateSpeech(VadWbState& state) noexcept
{
    const auto restart = [&state] { state.sp_est_cnt = state.sp_max = state.sp_max_cnt = 0; };

    if (fx::sub(state.sp_est_cnt, state.sp_max_cnt) > kEstimateFrames - kActiveFrames) restart();
    state.sp_est_cnt = fx::add(state.sp_est_cnt, 1);

    const fx::Word level = levelAboveFirst(state.energy_level);
    const bool active = (state.vadreg & kNewest) != 0 || level > state.speech_level;
    if (!active || level <= kMinActive) return;

    state.sp_max = std::max(state.sp_max, level);
    state.sp_max_cnt = fx::add(state.sp_max_cnt, 1);
    if (state.sp_max_cnt < kActiveFrames) return;

    const auto half = static_cast<fx::Word>(state.sp_max >> 1);
    if (half > kMinEstimate)
        state.speech_level = fx::add(
            state.speech_level, fx::mult_r(kAlphaSpeech_Q15, fx::sub(half, state.speech_level)));
    restart();
}

template <typename Kernels>
bool detect(VadFrame frame, VadWbState& state, fx::Word& tone) noexcept
{
    const fx::Long framePower = Kernels::energy(frame);
    const fx::Long power = fx::l_add(framePower, state.prev_pow_sum);
    state.prev_pow_sum = framePower;
    if (power < kPowerTone) tone &= 0x1fff;

    Kernels::filterBank(frame, state, std::span(state.energy_level));

    const fx::Word threshold = decisionThreshold(state);
    const fx::Long snr = vad::snrSum(state.energy_level, state.bckr_est, kSnrQ);
    const bool active = snr > fx::l_mult(threshold, kSnrPerThreshold);
    state.vadreg = static_cast<fx::Word>((state.vadreg >> 1) | (active ? kNewest : 0));

    vad::updateNoise(state.energy_level,
                     {.old_level = state.old_level,
                      .ave_level = state.ave_level,
                      .bckr_est = state.bckr_est,
                      .stat_count = state.stat_count},
                     {.vadreg = state.vadreg, .tone = tone, .noiseMax = kNoiseMax});
    const bool flag = addHangover(state, threshold, power < kPowerLow);
    estimateSpeech(state);
    return flag;
}

} // namespace

void vadInit(VadWbState& state) noexcept
{
    const fx::Word statCount = state.stat_count;
    state = VadWbState{};
    state.stat_count = statCount;
    std::ranges::fill(state.bckr_est, kNoiseInit);
    std::ranges::fill(state.ave_level, kNoiseInit);
    std::ranges::fill(state.old_level, kNoiseInit);
    state.speech_level = kSpeechLevelInit;
}

bool vadScalar(VadFrame frame, VadWbState& state, fx::Word& tone) noexcept
{
    return detect<ScalarKernels>(frame, state, tone);
}

bool vadAvx2(VadFrame frame, VadWbState& state, fx::Word& tone) noexcept
{
    return detect<Avx2Kernels>(frame, state, tone);
}

} // namespace zsp::amrwb

namespace zsp::entry {

ZspStatus zspsVADGetSize_AMRWB_16s(std::int32_t* size)
{
    if (!size) return zspStsNullPtrErr;

    *size = sizeof(VadWbState);
    return zspStsNoErr;
}

ZspStatus zspsVADInit_AMRWB_16s(VadWbState* state)
{
    if (!state) return zspStsNullPtrErr;

    InPlace<VadWbState> record(state);
    amrwb::vadInit(*record);
    return zspStsNoErr;
}

ZspStatus zspsVAD_AMRWB_16s(const std::int16_t* frame, VadWbState* state, std::int16_t* tone,
                            std::int16_t* vadFlag)
{
    if (!frame || !state || !tone || !vadFlag) return zspStsNullPtrErr;

    InPlace<VadWbState> record(state);
    *vadFlag = amrwb::vadAvx2(spanOf<amrwb::kVadFrame>(frame), *record, *tone);
    return zspStsNoErr;
}

ZspStatus zspsVADGetEnergyLevel_AMRWB_16s(const VadWbState* state, std::int16_t* levels)
{
    if (!state || !levels) return zspStsNullPtrErr;

    const auto record = readRecord<VadWbState>(state);
    std::ranges::copy(record.energy_level, levels);
    return zspStsNoErr;
}

} // namespace zsp::entry
