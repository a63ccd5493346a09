// The encoder of GSM full rate: 160 samples to a frame of 33 octets.
#pragma once

#include "voice/codec/gsmfr/gsmfr_side.hpp"
#include "zspsc/gsmfr/frame.h"

namespace zsp::voice::gsmfr {

/// A plain record.
template <typename Probe = NoProbe>
class Encoder {
  public:
    void start() noexcept { *this = Encoder{}; }

    void encode(std::span<const std::int16_t, kFrame> samples,
                std::span<std::uint8_t, kFrameBytes> bytes) noexcept
    {
        std::array<std::int16_t, kFrame> signal;
        std::copy(samples.begin(), samples.end(), signal.begin());
        Probe::show("in", samples);
        Parameters parameters;
        shortTerm(signal, parameters.data());
        Residual residual(past_);
        for (std::size_t j = 0; j < kSegments; ++j)
            longTerm(&signal[j * kSegment], residual.segment(j), segmentOf(parameters, j));
        residual.keep(past_);
        zspsPackFrame_GSMFR_16s8u(parameters.data(), bytes.data());
        Probe::show("frame", bytes);
    }

  private:
    /// The eight codes of the ratios; leaves the short-term residual in place of the samples.
    void shortTerm(std::array<std::int16_t, kFrame>& s, std::int16_t* codes) noexcept
    {
        const std::span<const std::int16_t, kRatios> shown(codes, kRatios);
        std::array<std::int32_t, kRatios + 1> lags;
        std::int32_t scale = 0;
        zspsPreprocess_GSMFR_16s(s.data(), s.data(), kFrame, &before_);
        Probe::show("s", s);
        zspsAutoCorr_GSMFR_16s32s_I(s.data(), lags.data(), &scale);
        Probe::show("scalauto", scale);
        Probe::show("L_ACF", lags);
        Probe::show("s_rescaled", s);
        zspsSchur_GSMFR_32s16s(lags.data(), codes);
        Probe::show("r", shown);
        zspsReflectToLAR_GSMFR_16s(codes, codes);
        Probe::show("LAR", shown);
        zspsLARQuant_GSMFR_16s(codes, codes);
        Probe::show("LARc", shown);
        zspsShortTermAnalysisFilter_GSMFR_16s(s.data(), ratios_.reflect(codes).data(), s.data(),
                                              memory_.data());
        Probe::show("d", s);
    }

    /// The parameters of a sub-segment; reconstructs its residual at `now`.
    static void longTerm(const std::int16_t* samples, std::int16_t* now,
                         std::int16_t* parameters) noexcept
    {
        std::array<std::int16_t, kSegment> residual;
        std::array<std::int16_t, kPulses> pulses;
        std::int32_t lag = 0, gain = 0, grid = 0, amplitude = 0;
        zspsLTPSearch_GSMFR_16s(samples, now, &lag, &gain);
        Probe::show("Nc", lag);
        Probe::show("bc", gain);
        zspsLongTermPredict_GSMFR_16s(samples, now, lag, gain, residual.data());
        Probe::show("e", residual);
        zspsWeightingFilter_GSMFR_16s(residual.data(), residual.data());
        Probe::show("x", residual);
        zspsRPEGridSelect_GSMFR_16s(residual.data(), pulses.data(), &grid);
        Probe::show("Mc", grid);
        Probe::show("xM", pulses);
        zspsAPCMQuant_GSMFR_16s(pulses.data(), parameters + kPulse, &amplitude);
        Probe::show("xmaxc", amplitude);
        Probe::show("xMc", std::span<const std::int16_t, kPulses>(parameters + kPulse, kPulses));
        zspsAPCMDequant_GSMFR_16s(parameters + kPulse, amplitude, pulses.data());
        Probe::show("xMp", pulses);
        zspsLongTermSynthesis_GSMFR_16s(pulses.data(), grid, lag, gain, now);
        Probe::show("dp", std::span<const std::int16_t, kSegment>(now, kSegment));
        parameters[kLag] = static_cast<std::int16_t>(lag);
        parameters[kGain] = static_cast<std::int16_t>(gain);
        parameters[kGrid] = static_cast<std::int16_t>(grid);
        parameters[kAmplitude] = static_cast<std::int16_t>(amplitude);
    }

    ZspPreprocessState_GSMFR before_;
    Ratios<Probe> ratios_;
    std::array<std::int16_t, kRatios> memory_;
    std::array<std::int16_t, kPast> past_;
};

} // namespace zsp::voice::gsmfr
