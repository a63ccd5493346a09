// Charts of what the level control did.
#pragma once

#include "tools/zsp/io/audio.hpp"
#include "tools/zsp/report/chart.hpp"
#include "tools/zsp/voice/level_control.hpp"

#include <vector>

namespace zsp::host {

/// The library's target level when none is set, dB below full scale.
inline constexpr double kDefaultTargetDb = 26.1;

/// Waveform before and after, estimated levels, gain.
std::vector<Chart> levelCharts(const Audio& before, const Audio& after, const LevelTrack& track);

} // namespace zsp::host
