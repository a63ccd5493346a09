// Frames that stand in for lost ones, after the example of GSM 06.11 (EN 300 963, TS 46.011),
// clause 6: the last good frame again; then that with the block amplitudes lowered by 4 from frame
// to frame and the grids at random; after 320 ms the frame of silence.
#pragma once

#include "voice/codec/gsmfr/gsmfr_side.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace zsp::voice::gsmfr {

/// GSM 06.11, table 1.
inline constexpr Parameters kSilence = [] {
    constexpr std::array<std::int16_t, kRatios> kCodes = {42, 39, 21, 10, 9, 4, 3, 2};
    constexpr std::array<std::int16_t, kSegmentParameters> kQuiet = {40, 0, 1, 0, 3, 4, 3, 4, 4,
                                                                     3,  3, 3, 3, 4, 4, 3, 3};
    Parameters all{};
    std::copy(kCodes.begin(), kCodes.end(), all.begin());
    for (std::size_t j = 0; j < kSegments; ++j)
        std::copy(kQuiet.begin(), kQuiet.end(), segmentOf(all, j));
    return all;
}();

class Substitution {
  public:
    void start() noexcept
    {
        current_ = kSilence;
        lost_ = 0;
        random_ = 1;
    }

    void received(const Parameters& good) noexcept
    {
        current_ = good;
        lost_ = 0;
    }

    /// The frame to decode instead of a lost one.
    const Parameters& lost() noexcept
    {
        lost_ = std::min(lost_ + 1, kMuted);
        if (lost_ == kMuted) return current_ = kSilence;
        if (lost_ > 1)
            for (std::size_t j = 0; j < kSegments; ++j) {
                std::int16_t* segment = segmentOf(current_, j);
                segment[kAmplitude] =
                    std::max<std::int16_t>(0, static_cast<std::int16_t>(segment[kAmplitude] - 4));
                segment[kGrid] = static_cast<std::int16_t>(draw());
            }
        return current_;
    }

  private:
    /// The 17th lost frame comes 320 ms behind the first one; no amplitude is above 0 by then.
    static constexpr std::int32_t kMuted = 17;

    /// 0 to 3.
    std::uint32_t draw() noexcept
    {
        random_ = random_ * 1664525 + 1013904223;
        return random_ >> 30;
    }

    Parameters current_; ///< the last good frame, as far as it has been muted
    std::int32_t lost_;  ///< frames since then
    std::uint32_t random_;
};

} // namespace zsp::voice::gsmfr
