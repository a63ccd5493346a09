// Voice activity detector of GSM-AMR, option 1, 3GPP TS 26.094.
//
// A frame is active when its bands stand out from the noise estimate. The hangover behind bursts,
// and a longer one behind music and other strongly correlated ("complex") signals, make the flag.

#include "codecs/gsmamr/gsmamr_vad1.hpp"

#include "codecs/shared/vad/background.hpp"
#include "codecs/shared/vad/half_band_bank_avx2.hpp"
#include "common/correlation/energy.hpp"
#include "core/entries.hpp"
#include "core/state.hpp"

#include <algorithm>
#include <cstddef>
#include <numeric>

namespace zsp::gsmamr {

static_assert(sizeof(Vad1State) == 116 && std::is_trivially_copyable_v<Vad1State>);
static_assert(offsetof(Vad1State, a_data5) == 72 && offsetof(Vad1State, pitch) == 114);

namespace {

using Levels = std::array<fx::Word, kVad1Bands>;

constexpr fx::Word kNewest = 0x4000; // the newest of 15 flags in a word

// Frame powers, twice the sum of squares.
constexpr fx::Long kPowerPitch = 343040;  // POW_PITCH_THR
constexpr fx::Long kPowerComplex = 15000; // POW_COMPLEX_THR
constexpr fx::Long kPowerLow = 15000;     // VAD_POW_LOW

constexpr int kSnrQ = 9;                   // of a band's level to its noise estimate
constexpr fx::Word kBandWeight_Q15 = 3641; // 1 / 9
constexpr fx::Word kThresholdHigh = 1260;  // VAD_THR_HIGH
constexpr fx::Word kThresholdLow = 720;    // VAD_THR_LOW
constexpr fx::Word kThresholdSlope_Q15 = -2808;
constexpr fx::Word kNoiseMax = 16000; // NOISE_MAX

// High-pass correlations, Q15.
constexpr fx::Word kCorrMin_Q15 = 13106;     // CVAD_MIN_CORR, 0.4
constexpr fx::Word kCorrLow_Q15 = 16383;     // CVAD_THRESH_ADAPT_LOW, 0.5
constexpr fx::Word kCorrHigh_Q15 = 19660;    // CVAD_THRESH_ADAPT_HIGH, 0.6
constexpr fx::Word kCorrInNoise_Q15 = 21298; // CVAD_THRESH_IN_NOISE, 0.65
constexpr fx::Word kCorrHang_Q15 = 22937;    // CVAD_THRESH_HANG, 0.7
constexpr fx::Word kAdaptSlow_Q15 = 655;     // CVAD_ADAPT_SLOW, 0.02
constexpr fx::Word kAdaptFast_Q15 = 2621;    // CVAD_ADAPT_FAST, 0.08
constexpr fx::Word kAdaptReally_Q15 = 6553;  // CVAD_ADAPT_REALLY_FAST, 0.2
constexpr fx::Word kComplexTimer = 100;      // CVAD_HANG_LIMIT
constexpr fx::Word kComplexHangover = 250;   // CVAD_HANG_LENGTH

// Burst and hangover lengths depend on the noise level.
constexpr fx::Word kNoiseHigh = 100; // HANG_NOISE_THR
struct HangoverLengths {
    fx::Word burst;
    fx::Word hangover;
};
constexpr HangoverLengths kLowNoise = {5, 4};  // BURST_LEN_LOW_NOISE, HANG_LEN_LOW_NOISE
constexpr HangoverLengths kHighNoise = {4, 7}; // BURST_LEN_HIGH_NOISE, HANG_LEN_HIGH_NOISE

struct ScalarKernels {
    static constexpr auto energy = common::energyScalar;
    static constexpr auto filterBank = vad::filterBankScalar<kVad1Bank, Vad1State>;
};

struct Avx2Kernels {
    static constexpr auto energy = common::energyAvx2;
    static constexpr auto filterBank = vad::filterBankAvx2<kVad1Bank, Vad1State>;
};

/// Shifts a word of flags by one and enters the newest.
fx::Word shiftIn(fx::Word flags, bool newest) noexcept
{
    return static_cast<fx::Word>((flags >> 1) | (newest ? kNewest : 0));
}

/// An eighth of the sum of the noise estimates.
fx::Word noiseLevel(const Vad1State& state) noexcept
{
    const fx::Long sum = std::accumulate(std::begin(state.bckr_est), std::end(state.bckr_est), 0);
    return fx::extract_h(fx::l_shl(sum, 13));
}

bool isActive(const Levels& level, const Vad1State& state, fx::Word noiseLevel) noexcept
{
    const fx::Long sum = vad::snrSum(level, state.bckr_est, kSnrQ);
    const fx::Word snr = fx::mult(fx::extract_h(fx::l_shl(sum, 6)), kBandWeight_Q15);
    const fx::Word threshold = fx::add(fx::mult(kThresholdSlope_Q15, noiseLevel), kThresholdHigh);
    return snr > std::max(threshold, kThresholdLow);
}

/// complex_estimate_adapt and complex_vad.
void followCorrelation(Vad1State& state, fx::Word best_Q15, bool lowPower) noexcept
{
    const fx::Word c_Q15 = state.corr_hp_fast;
    fx::Word alpha_Q15 = kAdaptFast_Q15;
    if (c_Q15 >= kCorrHigh_Q15) alpha_Q15 = best_Q15 < c_Q15 ? kAdaptReally_Q15 : kAdaptSlow_Q15;
    const fx::Long decayed = fx::l_msu(fx::l_deposit_h(c_Q15), alpha_Q15, c_Q15);
    const fx::Word next_Q15 = fx::round_fx(fx::l_mac(decayed, alpha_Q15, best_Q15));
    state.corr_hp_fast = lowPower ? kCorrMin_Q15 : std::max(next_Q15, kCorrMin_Q15);

    state.complex_high = shiftIn(state.complex_high, state.corr_hp_fast > kCorrHigh_Q15);
    state.complex_low = shiftIn(state.complex_low, state.corr_hp_fast > kCorrLow_Q15);
    state.complex_hang_timer =
        state.corr_hp_fast >= kCorrHang_Q15 ? fx::add(state.complex_hang_timer, 1) : fx::Word{0};
    state.complex_warning =
        (state.complex_high & 0x7f80) == 0x7f80 || (state.complex_low & 0x7fff) == 0x7fff;
}

/// hangover_addition.
bool addHangover(Vad1State& state, fx::Word noiseLevel, bool lowPower) noexcept
{
    if (lowPower) {
        state.burst_count = 0;
        state.hang_count = 0;
        state.complex_hang_count = 0;
        state.complex_hang_timer = 0;
        return false;
    }
    if (state.complex_hang_timer > kComplexTimer)
        state.complex_hang_count = std::max(state.complex_hang_count, kComplexHangover);
    if (state.complex_hang_count != 0) {
        state.burst_count = kHighNoise.burst;
        state.complex_hang_count = fx::sub(state.complex_hang_count, 1);
        return true;
    }
    if ((state.vadreg & 0x3ff0) == 0 && state.corr_hp_fast > kCorrInNoise_Q15) return true;

    const HangoverLengths lengths = noiseLevel > kNoiseHigh ? kHighNoise : kLowNoise;
    if ((state.vadreg & kNewest) != 0) {
        state.burst_count = fx::add(state.burst_count, 1);
        if (state.burst_count >= lengths.burst) state.hang_count = lengths.hangover;
        return true;
    }
    state.burst_count = 0;
    if (state.hang_count <= 0) return false;
    state.hang_count = fx::sub(state.hang_count, 1);
    return true;
}

// The frame's power is taken 40 samples before the frame of the filter bank.
template <typename Kernels>
bool detect(Vad1Source source, Vad1State& state, fx::Word tone, fx::Word bestCorrHp_Q15) noexcept
{
    const fx::Long power = Kernels::energy(source.first<kVad1Bank.frame>());
    const bool lowPower = power < kPowerLow;
    if (power < kPowerPitch) state.pitch &= 0x3fff;
    if (power < kPowerComplex) state.complex_low &= 0x3fff;

    Levels level;
    Kernels::filterBank(source.subspan<kVad1LookAhead>(), state, level);

    const fx::Word noise = noiseLevel(state);
    state.vadreg = shiftIn(state.vadreg, isActive(level, state, noise));
    followCorrelation(state, bestCorrHp_Q15, lowPower);
    vad::updateNoise(level,
                     {.old_level = state.old_level,
                      .ave_level = state.ave_level,
                      .bckr_est = state.bckr_est,
                      .stat_count = state.stat_count},
                     {.vadreg = state.vadreg,
                      .tone = tone,
                      .pitch = state.pitch,
                      .complexHangCount = state.complex_hang_count,
                      .complexWarning = state.complex_warning != 0,
                      .noiseMax = kNoiseMax});
    return addHangover(state, noise, lowPower);
}

} // namespace

bool vad1Scalar(Vad1Source source, Vad1State& state, fx::Word tone,
                fx::Word bestCorrHp_Q15) noexcept
{
    return detect<ScalarKernels>(source, state, tone, bestCorrHp_Q15);
}

bool vad1Avx2(Vad1Source source, Vad1State& state, fx::Word tone, fx::Word bestCorrHp_Q15) noexcept
{
    return detect<Avx2Kernels>(source, state, tone, bestCorrHp_Q15);
}

} // namespace zsp::gsmamr

namespace zsp::entry {

ZspStatus zspsVAD1_GSMAMR_16s(const std::int16_t* src, Vad1State* state, std::int16_t* vadFlag,
                              std::int32_t tone, std::int16_t bestCorrHp)
{
    if (!src || !state || !vadFlag) return zspStsNullPtrErr;

    InPlace<Vad1State> record(state);
    *vadFlag = gsmamr::vad1Avx2(spanOf<gsmamr::kVad1Source>(src), *record,
                                static_cast<std::int16_t>(tone), bestCorrHp);
    return zspStsNoErr;
}

} // namespace zsp::entry
