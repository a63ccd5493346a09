// A voice detector's way through a whole signal, and charts of it.
#pragma once

#include "tools/zsp/io/audio.hpp"
#include "tools/zsp/report/chart.hpp"
#include "tools/zsp/report/history.hpp"

#include "zspvoice.h"

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

namespace zsp::host {

inline constexpr std::array kDetectors = {zspvDetectorAmr1, zspvDetectorAmr2, zspvDetectorAmrWb};

/// "GSM-AMR option 1" and so on.
std::string_view nameOf(ZspvDetector detector);

/// Duration of a frame of all detectors, in seconds.
inline constexpr double kVadFrame = 0.02;

/// What a detector says of a frame.
struct VadFrame {
    bool speech;
    ZspvFrameKind sent;
    std::span<const float> levels, noise; ///< per band, dB
};

/// What it said of a whole signal; decisions frame by frame, the rest in little memory.
struct VadTrack {
    struct Segment {
        double start, end; // seconds
    };

    ZspvDetector kind{};
    std::vector<int> bandEdges;                           ///< Hz
    std::vector<bool> speech;                             ///< per frame
    std::vector<std::uint8_t> sent;                       ///< per frame, a ZspvFrameKind
    MapHistory levels{1, kVadFrame}, noise{1, kVadFrame}; ///< over the bands, dB
    Series levelPower{kVadFrame}, noisePower{kVadFrame};  ///< of all bands together
    float leastNoise = 1e9F, largestLevel = -1e9F;        ///< of any band, dB

    void add(const VadFrame& frame);
    /// Part of the frames that is speech.
    [[nodiscard]] double activity() const;
    [[nodiscard]] std::vector<Segment> segments() const;
};

/// Runs a detector over a signal, block by block, which is converted to its rate.
class VoiceTracker {
  public:
    /// `rate` is the signal's. Every frame is given to `take`, where there is one.
    VoiceTracker(ZspvDetector kind, int rate, std::function<void(const VadFrame&)> take = {});

    /// Any number of samples; `last` with the last of them. The last frame is filled up with zeros.
    void add(std::span<const std::int16_t> samples, bool last);
    [[nodiscard]] const VadTrack& track() const { return track_; }

  private:
    struct Deleter {
        void operator()(ZspvActivity* activity) const { zspvActivityDestroy(activity); }
    };

    void process(std::span<const std::int16_t> frame);

    std::unique_ptr<ZspvActivity, Deleter> activity_;
    RateConverter converter_;
    std::size_t frame_;                 // samples
    std::vector<std::int16_t> waiting_; // for the rest of their frame
    std::function<void(const VadFrame&)> take_;
    VadTrack track_;
};

/// The same over a signal in memory.
VadTrack trackVoice(ZspvDetector kind, const Audio& audio);

/// Decisions of several detectors below one another, one row each.
Chart decisionChart(const std::vector<VadTrack>& tracks, const Axis& time);
/// Level of all bands together, and the noise estimate.
Chart levelChart(const VadTrack& track, const Axis& time);
/// Values per band as a heat map: the levels or the noise estimates of a track.
Chart bandChart(const VadTrack& track, const MapHistory& values, const Axis& time,
                const std::string& caption);

} // namespace zsp::host
