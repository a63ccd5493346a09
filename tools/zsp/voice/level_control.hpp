// The library's G.169 level control behind a C++ object.
#pragma once

#include "zspsc/alc_g169.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace zsp::host {

class LevelControl {
  public:
    /// Samples of a block; process() takes whole ones.
    static constexpr std::size_t kBlock = 8;

    LevelControl();
    /// Largest gain in dB.
    void setMaxGain(double db);
    /// Speech level to reach and largest output, both in dB below full scale.
    void setLevels(double targetDb, double peakDb);

    void process(std::span<const std::int16_t> in, std::span<std::int16_t> out);
    [[nodiscard]] const ZspAlcState_G169& state() const { return state_; }

  private:
    ZspAlcState_G169 state_{};
};

/// What the control did over time.
struct LevelTrack {
    double interval = 0;                                    ///< seconds between values
    std::vector<double> gainDb, speechDb, noiseDb, inputDb; ///< levels in dB below full scale
};

/// Levels a whole signal in place.
LevelTrack levelAll(LevelControl& control, std::span<std::int16_t> samples, int rate);

} // namespace zsp::host
