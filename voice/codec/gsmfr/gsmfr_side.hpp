// What encoder and decoder of GSM full rate have in common: the parameters of a frame, the log area
// ratios that follow those of the frame before, and the reconstructed residual.
#pragma once

#include "voice/codec/shared/probe.hpp"
#include "zspsc/gsmfr/residual.h"
#include "zspsc/gsmfr/shortterm.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace zsp::voice::gsmfr {

inline constexpr std::size_t kFrame = 160, kSegment = 40, kPast = 120;
inline constexpr std::size_t kFrameBytes = 33;
inline constexpr std::size_t kRatios = 8, kSegments = 4, kPulses = 13;

/// Places in a sub-segment's parameters.
inline constexpr std::size_t kLag = 0, kGain = 1, kGrid = 2, kAmplitude = 3, kPulse = 4;
inline constexpr std::size_t kSegmentParameters = kPulse + kPulses;

/// The ratios' codes, then four sub-segments.
using Parameters = std::array<std::int16_t, kRatios + kSegments * kSegmentParameters>;

constexpr std::int16_t* segmentOf(Parameters& parameters, std::size_t j) noexcept
{
    return parameters.data() + kRatios + j * kSegmentParameters;
}
constexpr const std::int16_t* segmentOf(const Parameters& parameters, std::size_t j) noexcept
{
    return parameters.data() + kRatios + j * kSegmentParameters;
}

/// The residual as the decoder reconstructs it: 120 samples of the past, then a frame.
class Residual {
  public:
    explicit Residual(const std::array<std::int16_t, kPast>& past) noexcept
    {
        std::copy(past.begin(), past.end(), samples_.begin());
    }
    std::int16_t* frame() noexcept { return samples_.data() + kPast; }
    std::int16_t* segment(std::size_t j) noexcept { return frame() + j * kSegment; }
    void keep(std::array<std::int16_t, kPast>& past) const noexcept
    {
        std::copy_n(samples_.end() - kPast, kPast, past.begin());
    }

  private:
    std::array<std::int16_t, kPast + kFrame> samples_;
};

/// The last frame's log area ratios as the decoder has them, and what follows from them.
template <typename Probe>
struct Ratios {
    std::array<std::int16_t, kRatios> last;

    std::array<std::int16_t, 4 * kRatios> reflect(const std::int16_t* codes) noexcept
    {
        std::array<std::int16_t, kRatios> now;
        std::array<std::int16_t, 4 * kRatios> coefs;
        zspsLARDequant_GSMFR_16s(codes, now.data());
        zspsLARInterpolateToReflect_GSMFR_16s(last.data(), now.data(), coefs.data());
        const auto quarters = std::span(coefs);
        Probe::show("LARpp", now);
        Probe::show("rp_0_12", quarters.template first<kRatios>());
        Probe::show("rp_13_26", quarters.template subspan<kRatios, kRatios>());
        Probe::show("rp_27_39", quarters.template subspan<2 * kRatios, kRatios>());
        Probe::show("rp_40_159", quarters.template last<kRatios>());
        last = now;
        return coefs;
    }
};

} // namespace zsp::voice::gsmfr
