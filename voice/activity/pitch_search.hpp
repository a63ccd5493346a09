// Open-loop pitch search: what the AMR encoders' search tells their voice activity detectors.
#pragma once

#include "voice/api/spans.hpp"
#include "voice/api/steps.hpp"

#include <array>

namespace zsp::voice::activity {

/// Searches each half of a frame for its pitch lag, in the manner of 3GPP TS 26.090 clause 5.3:
/// the best lag of three sections of the range, shorter lags preferred. The encoders search
/// perceptually weighted speech; here it is the signal that is given.
class PitchSearch {
  public:
    /// Lags from `lagMin` to below 8 times `lagMin`.
    PitchSearch(std::size_t frameLength, std::int32_t lagMin);

    /// One frame of 16-bit samples.
    void search(In16 frame, Steps& steps);

    /// Flags of the last 15 searches, two per frame, newest in 0x4000: some section's correlation
    /// exceeded 0.65 of the delayed signal's energy.
    [[nodiscard]] std::uint16_t tone() const { return tone_; }
    /// The lags of this frame and the last one agree.
    [[nodiscard]] bool stable() const { return stable_; }
    /// Best normalised correlation of the high-passed signal in the second half, Q15.
    [[nodiscard]] std::int16_t bestHighPass() const { return bestHighPass_; }
    /// Correlation of the chosen lags above 0.65 of the energy: the prediction gain is high.
    [[nodiscard]] bool predictable() const { return predictable_; }

  private:
    struct Best {
        std::int32_t lag = 0, correlation = 0, energy = 0; // at that lag
    };
    static constexpr std::size_t kLongestSignal = 8 * 29 - 1 + 256;

    [[nodiscard]] Best searchHalf(const std::int16_t* half, Steps& steps);
    [[nodiscard]] std::int32_t correlation(const std::int16_t* half, std::int32_t lag) const;
    [[nodiscard]] std::int16_t highPassCorrelation(const std::int16_t* half) const;

    std::size_t half_;
    std::int32_t lagMin_, lagMax_;
    std::array<std::int16_t, kLongestSignal> signal_{}; // lagMax_ samples of the past, the frame
    std::uint16_t tone_ = 0;
    bool stable_ = false, predictable_ = false;
    std::int16_t bestHighPass_ = 0;
    std::int32_t lastLag_, lastMatches_ = 0;
};

} // namespace zsp::voice::activity
