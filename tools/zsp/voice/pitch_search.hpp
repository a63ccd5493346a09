// Open-loop pitch search: what the AMR encoders' search tells their voice activity detectors.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace zsp::host {

/// Searches each half of a frame for its pitch lag, in the manner of 3GPP TS 26.090 clause 5.3:
/// the best lag of three sections of the range, shorter lags preferred. The encoders search
/// perceptually weighted speech; here it is the signal that is given.
class PitchSearch {
  public:
    /// Lags from `lagMin` to below 8 times `lagMin`.
    PitchSearch(std::size_t frameLength, int lagMin);

    /// One frame of 16-bit samples.
    void search(std::span<const std::int16_t> frame);

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
        int lag = 0;
        double correlation = 0, energy = 0; // at that lag
    };
    Best searchHalf(const std::int16_t* half);
    [[nodiscard]] double correlation(const std::int16_t* half, int lag) const;
    [[nodiscard]] std::int16_t highPassCorrelation(const std::int16_t* half) const;

    std::size_t half_;
    int lagMin_, lagMax_;
    std::vector<std::int16_t> signal_; // lagMax_ samples of the past, then the frame
    std::vector<std::int16_t> scaled_;
    std::uint16_t tone_ = 0;
    bool stable_ = false, predictable_ = false;
    std::int16_t bestHighPass_ = 0;
    int lastLag_ = 0, lastMatches_ = 0;
};

} // namespace zsp::host
