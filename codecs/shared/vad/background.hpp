// The background of the 3GPP voice activity detectors, TS 26.094 option 1 and TS 26.194: how far a
// frame stands out from the noise estimate of its bands, and how that estimate follows the input.
#pragma once

#include "core/fixed_point.hpp"
#include "core/spans.hpp"

namespace zsp::vad {

/// Twice the sum over the bands of (level / bckr_est)^2, each ratio a word in Q(ratioQ). Everything
/// saturates. Levels are not negative, estimates positive.
fx::Long snrSum(In16 level, In16 bckr_est, int ratioQ) noexcept;

/// The band levels that the noise update keeps, all of one length, and its counter.
struct NoiseRecord {
    Out16 old_level;
    Out16 ave_level;
    Out16 bckr_est;
    fx::Word& stat_count;
};

/// What the detector knows about the frame. Flag words hold the newest flag in bit 14.
struct NoiseControl {
    fx::Word vadreg;
    fx::Word tone;
    fx::Word pitch = 0;
    fx::Word complexHangCount = 0;
    bool complexWarning = false;
    fx::Word noiseMax;
};

/// The update control and the noise estimate update of the standards, one frame.
void updateNoise(In16 level, NoiseRecord record, const NoiseControl& control) noexcept;

} // namespace zsp::vad
