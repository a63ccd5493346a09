// What the level control did: gathered while it works, then told in figures and charts.
#pragma once

#include "tools/zsp/report/chart.hpp"
#include "tools/zsp/voice/level_control.hpp"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace zsp::host {

/// The settings in force, in dB; target and peak are below full scale.
struct LevelSettings {
    double maxGainDb = 11.6, targetDb = 26.1, peakDb = 0; // the library's own to begin with
};

class LevelHistory {
  public:
    LevelHistory(int rate, const LevelSettings& settings);

    /// Samples per call of add(), a multiple of the control's block: 20 ms.
    [[nodiscard]] static std::size_t frame(int rate);
    /// A frame (at the end a shorter one) before and after, and the control as it is now.
    void add(std::span<const std::int16_t> before, std::span<const std::int16_t> after,
             const LevelControl& control);

    /// "speech at -32.0 dBFS is now at -26.4 dBFS ...".
    [[nodiscard]] std::string summary() const;
    /// Level of the frames above -45 dBFS, before and after.
    [[nodiscard]] double speechBefore() const;
    [[nodiscard]] double speechAfter() const;
    [[nodiscard]] double seconds() const;
    /// Waveform before and after, estimated levels with the target, gain with its limit.
    [[nodiscard]] std::vector<Chart> charts() const;

    /// What must be said about every report of it.
    static const char* note();

  private:
    int rate_;
    LevelSettings settings_;
    std::uint64_t samples_ = 0;
    Envelope before_, after_;
    Series inputDb_, speechDb_, noiseDb_, gainDb_;
    double powerBefore_ = 0, powerAfter_ = 0, leastGainDb_ = 1e9;
    std::uint64_t speechFrames_ = 0;
};

} // namespace zsp::host
