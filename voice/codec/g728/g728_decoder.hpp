// The decoder of G.728: five octets to a frame of four vectors, with post-filter, and the
// concealment of Annex I for lost frames. That takes pitch and voicing from the post-filter's
// analysis, which therefore goes on where the filter itself is left out.
#pragma once

#include "voice/codec/g728/g728_side.hpp"
#include "zspsc/g728/postfilter.h"

namespace zsp::voice {

/// A plain record.
template <typename Probe = NoProbe>
class G728Decoder {
  public:
    void start() noexcept
    {
        *this = G728Decoder{};
        side_.start();
        pitch_ = 50;
        longTerm_[0] = 16384;
        postMemory_[20] = 16384;
        zspsErasedExcitationInit_G728_16s(random_.data());
    }

    /// `bytes` is empty for a lost frame.
    void decode(std::span<const std::uint8_t> bytes, bool hasPostFilter,
                std::span<std::int16_t, kG728Frame> samples) noexcept
    {
        beginFrame(bytes.empty());
        std::uint64_t word = 0;
        for (const std::uint8_t octet : bytes)
            word = word << 8 | octet;
        for (int count = 0; count < 4; ++count) {
            Probe::show("count", static_cast<std::int16_t>(count));
            const auto index = static_cast<std::int32_t>(word >> (30 - 10 * count) & 1023);
            const G728Vector s = decodeVector(index);
            const G728Samples out = finishVector(count, s, hasPostFilter);
            Probe::show("output", out);
            for (std::size_t i = 0; i < kG728Vector; ++i)
                samples[static_cast<std::size_t>(count) * kG728Vector + i] =
                    out[kG728Vector - 1 - i];
            adapt(count);
        }
    }

  private:
    void beginFrame(bool isLost) noexcept
    {
        if (growthLimited_ > 0 && !isLost_) --growthLimited_;
        isLost_ = isLost;
        if (isLost) {
            ++run_;
            // A loss without end keeps its place among four.
            if (run_ >= 1024) run_ -= 4;
            if ((run_ & 3) == 1)
                zspsErasureSetup_G728_16s(run_ >> 2, longTerm_[2], pitch_, excitation_.data(),
                                          &delay_, mean_.data(), scale_.data());
        } else if (run_ > 0) {
            growthLimited_ = std::min(16, growthLimited_ + run_);
            run_ = 0;
        }
        Probe::show("erased", static_cast<std::int16_t>(isLost_));
        Probe::show("erased_frames", static_cast<std::int16_t>(run_));
        Probe::show("limit_frames", static_cast<std::int16_t>(growthLimited_));
        if (isLost && (run_ & 3) == 1) {
            Probe::show("voiced", static_cast<std::int16_t>(delay_ >= 0));
            Probe::show("erasure_scale", scale_);
        }
    }

    /// Quantised speech of a vector.
    G728Vector decodeVector(std::int32_t index) noexcept
    {
        G728Vector excitation;
        G728Vector s;
        std::int16_t logGain;
        if (isLost_) {
            s = side_.zeroInput();
            zspsErasedExcitation_G728_16s(delay_, scale_.data(), excitation_.data(), random_.data(),
                                          excitation.data(), &side_.logGain);
            Probe::show("log_gain", side_.logGain);
            logGain = side_.logGain;
        } else {
            const int most = growthLimited_ > 0 ? std::min(side_.logGain + 1024, 14336) : 14336;
            const G728Scalar gain = side_.predictGain(static_cast<std::int16_t>(most));
            s = side_.zeroInput();
            Probe::show("shape_index", static_cast<std::int16_t>(index >> 3));
            Probe::show("gain_index", static_cast<std::int16_t>(index & 7));
            zspsCodevectorScale_G728_16s(index, gain.data(), excitation.data());
            zspsLogGainUpdate_G728_16s(side_.logGain, index, &logGain);
        }
        G728Samples past;
        for (std::size_t i = 0; i < kG728Vector; ++i)
            past[i] = inQ2(excitation[i], excitation[kG728Vector]);
        pushSamples(excitation_, past);
        Probe::show("excitation_past", past);

        const G728Samples response = side_.zeroState(excitation);
        zspsSynthesisFilterUpdate_G728_16s(response.data(), excitation[kG728Vector], s.data());
        if (isLost_) s[kG728Vector] = std::min<std::int16_t>(s[kG728Vector], 16);
        side_.pushSpeech(s);
        side_.pushLogGain(logGain);
        return s;
    }

    /// 16-bit samples of a vector, the newest first.
    G728Samples finishVector(int count, const G728Vector& s, bool hasPostFilter) noexcept
    {
        G728Samples st, residual, out;
        for (std::size_t i = 0; i < kG728Vector; ++i)
            st[i] = roundedTo(2, s[i], s[kG728Vector]);
        Probe::show("decoded", st);
        zspsInverseFilter_G728_16s(inverse_.data(), st.data(), inverseMemory_.data(),
                                   residual.data());
        Probe::show("residual", residual);
        pushSamples(residual_, residual);
        if (count == 2) {
            zspsPitchSearch_G728_16s(residual_.data(), decimated_.data(), lowpass_.data(), &pitch_);
            Probe::show("decimated", std::span(decimated_).template first<5>());
            Probe::show("pitch", pitch_);
            zspsLongTermPostFilterCoefs_G728_16s(past_.data(), pitch_, longTerm_.data());
            Probe::show("tap", longTerm_[2]);
            Probe::show("long_gain", longTerm_[0]);
            Probe::show("long_tap", longTerm_[1]);
        }
        zspsPostFilter_G728_16s(st.data(), past_.data(), pitch_, longTerm_.data(),
                                shortTerm_.data(), postMemory_.data(), out.data());
        Probe::show("level", postMemory_[20]);
        if (!hasPostFilter)
            for (std::size_t i = 0; i < kG728Vector; ++i)
                out[i] = roundedTo(3, s[i], s[kG728Vector]);
        return out;
    }

    void adapt(int count) noexcept
    {
        if (count == 3) {
            side_.beginSynthesis();
            if (side_.isUsable) renewPostFilter();
        }
        if (count == 0) {
            side_.finishSynthesis(run_ <= 1);
            side_.adaptLogGain(isLost_);
        }
        if (count == 1) {
            if (!isLost_)
                side_.takeNext();
            else if ((run_ & 3) == 1)
                fadeSynthesis();
            Probe::show("synthesis_a", side_.lpc);
        }
    }

    void renewPostFilter() noexcept
    {
        std::int32_t isGood = 0;
        zspsShortTermPostFilterCoefs_G728_16s(side_.predictor.data(), side_.predictorState[0],
                                              side_.predictorState[2], inverse_.data(),
                                              shortTerm_.data(), &isGood);
        Probe::show("inverse_filter", inverse_);
        Probe::show("short_pole", std::span(shortTerm_).template first<10>());
        Probe::show("short_zero", std::span(shortTerm_).template subspan<10, 10>());
        Probe::show("tilt", shortTerm_[20]);
    }

    /// Every 10 ms of a loss the synthesis filter becomes flatter.
    void fadeSynthesis() noexcept
    {
        std::int32_t isGood = 0;
        if (run_ == 1) side_.takeNext();
        zspsBandwidthExpand_G728_16s(zspG728ExpandErasure, side_.lpc.data(), 14, side_.lpc.data(),
                                     &isGood);
    }

    G728Side<Probe> side_;
    std::array<std::int16_t, 10> inverse_, inverseMemory_;
    std::array<std::int16_t, 240> residual_, past_; // past_: quantised speech as the filter sees it
    std::array<std::int16_t, 60> decimated_;
    std::array<std::int16_t, 3> lowpass_, longTerm_;
    std::array<std::int16_t, 21> shortTerm_, postMemory_;
    std::int16_t pitch_;

    // Losses.
    std::array<std::int16_t, 140> excitation_; // Q2
    std::array<std::uint8_t, 76> random_;
    std::int32_t run_;           // lost frames in a row
    std::int32_t growthLimited_; // frames after a loss in which the gain grows slowly
    bool isLost_;
    std::int16_t delay_;
    G728Scalar mean_, scale_;
};

} // namespace zsp::voice
