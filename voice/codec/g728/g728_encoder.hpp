// The encoder of G.728: a frame of four vectors to five octets.
#pragma once

#include "voice/codec/g728/g728_side.hpp"

namespace zsp::voice {

/// A plain record.
template <typename Probe = NoProbe>
class G728Encoder {
  public:
    void start() noexcept
    {
        *this = G728Encoder{};
        side_.start();
        weightingRecursionQ_ = 31;
        renewImpulse();
    }

    void encode(std::span<const std::int16_t, kG728Frame> samples,
                std::span<std::uint8_t, kG728FrameBytes> bytes) noexcept
    {
        std::uint64_t word = 0;
        for (int count = 0; count < 4; ++count) {
            const auto first = static_cast<std::size_t>(count) * kG728Vector;
            Probe::show("count", static_cast<std::int16_t>(count));
            G728Samples x; // 15 bits, newest first
            for (std::size_t i = 0; i < kG728Vector; ++i)
                x[kG728Vector - 1 - i] = static_cast<std::int16_t>(samples[first + i] >> 1);
            word = word << 10 | static_cast<std::uint64_t>(encodeVector(x));
            adapt(count);
        }
        for (std::size_t i = 0; i < kG728FrameBytes; ++i)
            bytes[i] = static_cast<std::uint8_t>(word >> (8 * (kG728FrameBytes - 1 - i)));
    }

  private:
    std::int32_t encodeVector(const G728Samples& x) noexcept
    {
        Probe::show("speech", x);
        pushSamples(input_, x);
        const G728Scalar gain = side_.predictGain(14336);
        G728Vector s = side_.zeroInput();

        // What the past gives and what is wanted, as a listener weighs them.
        std::array<std::int16_t, 15> past;
        for (std::size_t i = 0; i < past.size(); ++i)
            past[i] = i < kG728Vector ? inQ2(s[i], s[kG728Vector])
                                      : inQ2(side_.history[i - kG728Vector],
                                             side_.historyQ[i / kG728Vector - 1]);
        zspsWeightingFilter_G728_16s(zero_.data(), pole_.data(), past.data(), weightedPast_.data());
        Probe::show("zero_input_weighted", std::span(weightedPast_).template first<5>());
        zspsWeightingFilter_G728_16s(zero_.data(), pole_.data(), input_.data(), weighted_.data());
        Probe::show("speech_weighted", std::span(weighted_).template first<5>());
        G728Vector target;
        zspsTargetNormalize_G728_16s(weighted_.data(), weightedPast_.data(), gain.data(),
                                     target.data());
        Probe::show("target_normalised", target);
        std::int32_t index = 0;
        zspsCodebookSearch_G728_16s(target.data(), impulse_.data(), energy_.data(), &index);
        Probe::show("shape_index", static_cast<std::int16_t>(index >> 3));
        Probe::show("gain_index", static_cast<std::int16_t>(index & 7));

        // From here on as the decoder does.
        G728Vector excitation;
        zspsCodevectorScale_G728_16s(index, gain.data(), excitation.data());
        const G728Samples response = side_.zeroState(excitation);
        const int q = excitation[kG728Vector];
        zspsWeightingFilterUpdate_G728_16s(zero_.data(), pole_.data(), response.data(), q,
                                           weightedPast_.data());
        zspsSynthesisFilterUpdate_G728_16s(response.data(), q, s.data());
        side_.pushSpeech(s);
        Probe::show("weighting_memory", std::span(weightedPast_).template first<5>());
        std::int16_t logGain;
        zspsLogGainUpdate_G728_16s(side_.logGain, index, &logGain);
        side_.pushLogGain(logGain);
        return index;
    }

    void adapt(int count) noexcept
    {
        if (count == 3) side_.beginSynthesis();
        if (count == 0) {
            side_.finishSynthesis(true);
            side_.adaptLogGain(false);
        }
        if (count == 1) {
            side_.takeNext();
            adaptWeighting();
            Probe::show("synthesis_a", side_.lpc);
            renewImpulse();
            Probe::show("impulse_response", impulse_);
            Probe::show("shape_energy", energy_);
        }
    }

    void adaptWeighting() noexcept
    {
        std::array<std::int16_t, 11> r;
        std::array<std::int16_t, 10> a, zero, pole;
        std::array<std::int16_t, 3> state;
        std::int32_t isGood = 0;
        zspsHybridWindow_G728_16s(zspG728WindowWeighting, input_.data(), side_.historyQ.data(),
                                  weightingRecursion_.data(), &weightingRecursionQ_, r.data(),
                                  &isGood);
        if (isGood) zspsLevinsonDurbin_G728_16s(r.data(), 0, 10, a.data(), state.data(), &isGood);
        if (isGood)
            zspsBandwidthExpand_G728_16s(zspG728ExpandWeightingPole, a.data(), state[0],
                                         pole.data(), &isGood);
        if (isGood)
            zspsBandwidthExpand_G728_16s(zspG728ExpandWeightingZero, a.data(), state[0],
                                         zero.data(), &isGood);
        if (isGood) {
            zero_ = zero;
            pole_ = pole;
        }
        Probe::show("weighting_exponent", weightingRecursionQ_);
        Probe::show("weighting_recursive", weightingRecursion_);
        Probe::show("weighting_autocorrelation", r);
        Probe::show("weighting_zero", zero_);
        Probe::show("weighting_pole", pole_);
    }

    void renewImpulse() noexcept
    {
        zspsImpulseResponseAndEnergy_G728_16s32s(side_.lpc.data(), zero_.data(), pole_.data(),
                                                 impulse_.data(), energy_.data());
    }

    G728Side<Probe> side_;
    std::array<std::int16_t, 60> input_;
    std::array<std::int16_t, 10> zero_, pole_;             // weighting filter
    std::array<std::int16_t, 10> weighted_, weightedPast_; // its results: input, zero-input side
    std::array<std::int16_t, 11> weightingRecursion_;
    std::int16_t weightingRecursionQ_;
    G728Samples impulse_;
    std::array<std::int32_t, 128> energy_;
};

} // namespace zsp::voice
