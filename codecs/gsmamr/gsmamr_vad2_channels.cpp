// The arithmetic over samples, bins and channels of the GSM-AMR voice activity detector, option 2,
// each step as the standard writes it. 3GPP TS 26.094 and 26.073.

#include "codecs/gsmamr/gsmamr_vad2_channels.hpp"

#include <algorithm>

namespace zsp::gsmamr {

using fx::Long;
using fx::Word;

int Vad2Scalar::normalise(InHalf samples, OutHalf normalised) noexcept
{
    Word peak = 0;
    for (const Word sample : samples)
        peak = std::max(peak, fx::abs_s(sample));
    const int shift = shiftFor(peak);
    for (std::size_t i = 0; i < samples.size(); ++i)
        normalised[i] = fx::shl(samples[i], shift);
    return shift;
}

void Vad2Scalar::smoothEnergies(Spectrum bins, int shift, Mix mix, Long least,
                                Energies energies) noexcept
{
    for (std::size_t c = 0; c < kChannels; ++c) {
        const auto [first, last] = kChannelBins[c];
        Long energy = 0;
        for (std::size_t i = 2 * first; i < 2 * last + 2; ++i)
            energy = fx::l_mac(energy, bins[i], bins[i]);
        energy = fx::l_shr_r(energy, shift);
        const Word fresh_Q15 = fx::mult(mix.fresh_Q15, kChannelGain_Q15[c]);
        energies[c] = std::max(least, fx::l_add(fx::mpy_32_16(energy, fresh_Q15),
                                                fx::mpy_32_16(energies[c], mix.old_Q15)));
    }
}

TotalAndPeak Vad2Scalar::totalAndPeak(InEnergies energies) noexcept
{
    Long total = 0;
    for (const Long energy : energies)
        total = fx::l_add(total, energy);
    return {total, std::ranges::max(energies.subspan<kPeakFrom>())};
}

void Vad2Scalar::levels(InEnergies energies, int fractionBits, Levels levels) noexcept
{
    for (std::size_t c = 0; c < kChannels; ++c)
        levels[c] = levelOf(energies[c], fractionBits);
}

Word Vad2Scalar::snrs(InLevels levels, InLevels noise, Levels snrs) noexcept
{
    Word metric = 0;
    for (std::size_t c = 0; c < kChannels; ++c) {
        snrs[c] = fx::sub(levels[c], noise[c]);
        const int step = fx::shr_r(fx::mult(kSnrStep_Q15, snrs[c]), 6);
        const auto index = static_cast<std::size_t>(std::clamp(step, 0, kLastMetric));
        metric = fx::add(metric, kVoiceMetric[index]);
    }
    return metric;
}

Long Vad2Scalar::ratioSum(InLevels snrs) noexcept
{
    Long sum = 0;
    for (const Word snr : snrs) {
        const fx::SplitLong octaves_Q16 =
            fx::l_extract(fx::l_shr(fx::l_mult(snr, kOctavesPerDb_Q15), 8));
        sum = fx::l_add(sum, common::pow2(fx::add(octaves_Q16.hi, 3), octaves_Q16.lo));
    }
    return sum;
}

Word Vad2Scalar::deviation(InLevels levels, InLevels longTerm) noexcept
{
    Word sum = 0;
    for (std::size_t c = 0; c < kChannels; ++c)
        sum = fx::add(sum, fx::abs_s(fx::sub(longTerm[c], levels[c])));
    return sum;
}

void Vad2Scalar::follow(InLevels levels, Mix mix, Levels longTerm) noexcept
{
    for (std::size_t c = 0; c < kChannels; ++c)
        longTerm[c] = mixed(levels[c], longTerm[c], mix);
}

void Vad2Scalar::updateNoise(InEnergies energies, int shift, Energies noise) noexcept
{
    for (std::size_t c = 0; c < kChannels; ++c) {
        const Long fresh = fx::mpy_32_16(fx::l_shl(energies[c], shift), kNoiseMix.fresh_Q15);
        const Long old = fx::mpy_32_16(noise[c], kNoiseMix.old_Q15);
        noise[c] = std::max(kMinNoise_Q9, fx::l_add(fresh, old));
    }
}

} // namespace zsp::gsmamr
