// The decoder of GSM full rate: the parameters of a frame to 160 samples.
#pragma once

#include "voice/codec/gsmfr/gsmfr_side.hpp"

namespace zsp::voice::gsmfr {

/// A plain record.
template <typename Probe = NoProbe>
class Decoder {
  public:
    void start() noexcept
    {
        *this = Decoder{};
        lastLag_ = 40;
    }

    void decode(const Parameters& parameters, std::span<std::int16_t, kFrame> samples) noexcept
    {
        Residual residual(past_);
        for (std::size_t j = 0; j < kSegments; ++j) {
            const std::int16_t* segment = segmentOf(parameters, j);
            std::array<std::int16_t, kPulses> pulses;
            if (segment[kLag] >= 40 && segment[kLag] <= 120) lastLag_ = segment[kLag];
            zspsAPCMDequant_GSMFR_16s(segment + kPulse, segment[kAmplitude], pulses.data());
            Probe::show("xMp", pulses);
            std::int16_t* now = residual.segment(j);
            zspsLongTermSynthesis_GSMFR_16s(pulses.data(), segment[kGrid], lastLag_, segment[kGain],
                                            now);
            Probe::show("drp", std::span<const std::int16_t, kSegment>(now, kSegment));
        }
        residual.keep(past_);
        zspsShortTermSynthesisFilter_GSMFR_16s(residual.frame(),
                                               ratios_.reflect(parameters.data()).data(),
                                               samples.data(), memory_.data());
        Probe::show("sr", samples);
        zspsDeemphasis_GSMFR_16s(samples.data(), samples.data(), kFrame, &msr_);
        Probe::show("out", samples);
    }

  private:
    Ratios<Probe> ratios_;
    std::array<std::int16_t, kRatios> memory_;
    std::array<std::int16_t, kPast> past_;
    std::int16_t msr_;
    std::int16_t lastLag_; ///< stands in for lags that no encoder sends
};

} // namespace zsp::voice::gsmfr
