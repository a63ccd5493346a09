// A voice detector's way through a whole signal, and charts of it.
#pragma once

#include "tools/zsp/io/audio.hpp"
#include "tools/zsp/report/chart.hpp"

#include "zspvoice.h"

#include <array>
#include <string_view>
#include <vector>

namespace zsp::host {

inline constexpr std::array kDetectors = {zspvDetectorAmr1, zspvDetectorAmr2, zspvDetectorAmrWb};

/// "GSM-AMR option 1" and so on.
std::string_view nameOf(ZspvDetector detector);

/// Duration of a frame of all detectors, in seconds.
inline constexpr double kVadFrame = 0.02;

struct VadTrack {
    struct Segment {
        double start, end; // seconds
    };

    ZspvDetector kind{};
    std::vector<int> bandEdges;             ///< Hz
    std::vector<bool> speech;               ///< per frame
    std::vector<ZspvFrameKind> sent;        ///< per frame
    std::vector<std::vector<float>> levels; ///< per frame and band, dB
    std::vector<std::vector<float>> noise;  ///< the same

    /// Part of the frames that is speech.
    [[nodiscard]] double activity() const;
    [[nodiscard]] std::vector<Segment> segments() const;
};

/// Runs the detector over the signal, which is converted to its rate. The last frame is filled up
/// with zeros.
VadTrack trackVoice(ZspvDetector kind, const Audio& audio);

/// Decisions of several detectors below one another, one row each.
Chart decisionChart(const std::vector<VadTrack>& tracks, const Axis& time);
/// Level of all bands together, and the noise estimate.
Chart levelChart(const VadTrack& track, const Axis& time);
/// Values per band and frame as a heat map: the levels or the noise estimates of a track.
Chart bandChart(const VadTrack& track, const std::vector<std::vector<float>>& values,
                const Axis& time, const std::string& caption);

} // namespace zsp::host
