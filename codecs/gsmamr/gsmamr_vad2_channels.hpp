// The arithmetic over samples, bins and channels of the GSM-AMR voice activity detector, option 2:
// the definition and its equal in AVX2, for a detector that is written once.
#pragma once

#include "codecs/gsmamr/gsmamr_preemphasis.hpp"
#include "codecs/gsmamr/gsmamr_vad2_fft.hpp"
#include "codecs/gsmamr/gsmamr_vad2_tables.hpp"
#include "common/math/log2_pow2.hpp"
#include "core/fixed_point.hpp"

#include <cstddef>
#include <span>

namespace zsp::gsmamr {

inline constexpr std::size_t kVad2Half = 80;

using InHalf = std::span<const fx::Word, kVad2Half>;
using OutHalf = std::span<fx::Word, kVad2Half>;
using Spectrum = std::span<const fx::Word, kFftLength>;
using InEnergies = std::span<const fx::Long, kChannels>;
using Energies = std::span<fx::Long, kChannels>;
using InLevels = std::span<const fx::Word, kChannels>;
using Levels = std::span<fx::Word, kChannels>;

inline constexpr fx::Word kDb_Q13 = 24660; // 10 log10(2), dB an octave

/// Weights of a new and of the old value. They are not negative and add up to at most 1, so that a
/// mix never saturates.
struct Mix {
    fx::Word fresh_Q15;
    fx::Word old_Q15;
};

inline constexpr int kHeadroom = 2;
inline constexpr std::size_t kPeakFrom = 2;     // the channels below are left out of the search
inline constexpr fx::Word kSnrStep_Q15 = 21845; // 2/3: steps of 3/8 dB from Q8, shifted by 6
inline constexpr fx::Word kOctavesPerDb_Q15 = 10885; // log2(10) / 10
inline constexpr Mix kNoiseMix = {3277, 29491};
inline constexpr int kLastMetric = static_cast<int>(kVoiceMetric.size()) - 1;

/// The shift that leaves kHeadroom bits above a peak.
constexpr int shiftFor(fx::Word peak) noexcept
{
    return peak == 0 ? 16 - kHeadroom : fx::norm_s(peak) - kHeadroom;
}

struct TotalAndPeak {
    fx::Long total;
    fx::Long peak;
};

/// 10 log10(energy), Q8, of an energy with so many fraction bits.
constexpr fx::Word levelOf(fx::Long energy, int fractionBits) noexcept
{
    const auto [exponent, fraction_Q15] = common::log2(energy);
    const auto power = static_cast<fx::Word>(exponent - fractionBits);
    const fx::Long level =
        fx::l_mac(fx::l_mult(power, kDb_Q13), fx::mult(fraction_Q15, kDb_Q13), 1);
    return fx::extract_l(fx::l_shr_r(level, 6));
}
static_assert(levelOf(512, 9) == 0 && levelOf(1024, 9) == 771 && levelOf(0, 4) == -3082);

/// A mix of two words, rounded.
constexpr fx::Word mixed(fx::Word fresh, fx::Word old, Mix mix) noexcept
{
    return fx::round_fx(fx::l_add(fx::l_mult(mix.old_Q15, old), fx::l_mult(mix.fresh_Q15, fresh)));
}

/// All that the detector does to many samples, bins or channels: the definition. Levels and SNRs
/// are dB in Q8.
struct Vad2Scalar {
    /// Shifts the samples so that two bits of headroom are left; returns the shift, which is
    /// negative to the right, and 14 for silence.
    static int normalise(InHalf samples, OutHalf normalised) noexcept;

    static constexpr auto* preEmphasise = preEmphasiseScalar;
    static constexpr auto* fft = fftScalar;

    /// Mixes the energy of the spectrum in each channel, shifted right by `shift`, into `energies`
    /// and keeps them at `least` or more.
    static void smoothEnergies(Spectrum bins, int shift, Mix mix, fx::Long least,
                               Energies energies) noexcept;

    /// The sum of positive energies and the largest from channel 2 on.
    static TotalAndPeak totalAndPeak(InEnergies energies) noexcept;

    /// levelOf each channel's energy.
    static void levels(InEnergies energies, int fractionBits, Levels levels) noexcept;

    /// The channels' SNRs; returns the sum of their voice metrics.
    static fx::Word snrs(InLevels levels, InLevels noise, Levels snrs) noexcept;

    /// Eight times the sum of the SNRs as ratios; Q7 of their mean.
    static fx::Long ratioSum(InLevels snrs) noexcept;

    /// The sum of the distances between two spectra.
    static fx::Word deviation(InLevels levels, InLevels longTerm) noexcept;

    /// Mixes the levels into the long-term spectrum.
    static void follow(InLevels levels, Mix mix, Levels longTerm) noexcept;

    /// Mixes the energies, shifted left by `shift`, into the noise estimates.
    static void updateNoise(InEnergies energies, int shift, Energies noise) noexcept;
};

/// Equal to Vad2Scalar in every result.
struct Vad2Avx2 {
    static int normalise(InHalf samples, OutHalf normalised) noexcept;
    static constexpr auto* preEmphasise = preEmphasiseAvx2;
    static constexpr auto* fft = fftAvx2;
    static void smoothEnergies(Spectrum bins, int shift, Mix mix, fx::Long least,
                               Energies energies) noexcept;
    static TotalAndPeak totalAndPeak(InEnergies energies) noexcept;
    static void levels(InEnergies energies, int fractionBits, Levels levels) noexcept;
    static fx::Word snrs(InLevels levels, InLevels noise, Levels snrs) noexcept;
    static fx::Long ratioSum(InLevels snrs) noexcept;
    static fx::Word deviation(InLevels levels, InLevels longTerm) noexcept;
    static void follow(InLevels levels, Mix mix, Levels longTerm) noexcept;
    static void updateNoise(InEnergies energies, int shift, Energies noise) noexcept;
};

} // namespace zsp::gsmamr
