// The library's three voice activity detectors, each with what its speech encoder does to the
// signal before. The detectors themselves are bit-exact. What goes into them is not: the encoders'
// pitch search looks at perceptually weighted speech, and their filters are fixed-point ones.
#pragma once

#include "voice/activity/high_pass.hpp"
#include "voice/activity/pitch_search.hpp"
#include "zspsc/amrwb/vad.h"
#include "zspsc/gsmamr_vad.h"
#include "zspvoice.h"

#include <array>
#include <span>

namespace zsp::voice::activity {

class Detector {
  public:
    static constexpr std::size_t kMaxBands = 16, kMaxFrame = 256;

    explicit Detector(ZspvDetector kind);
    /// Makes the detectors' records ready, once and first.
    ZspStatus start();

    /// Samples of a frame of 20 ms: at 8 kHz, or at 12.8 kHz for AMR-WB.
    [[nodiscard]] std::size_t frameLength() const { return kind_ == zspvDetectorAmrWb ? 256 : 160; }

    /// Whether there is speech in this frame of 16-bit samples.
    ZspStatus detect(In16 frame, bool& speech);

    /// Lower edges of the bands in Hz, and the upper edge of the last one.
    [[nodiscard]] std::span<const std::int16_t> bandEdges() const;
    /// Levels of the last frame, and the noise estimates, per band. The unit is the detector's own,
    /// in dB; both have the same.
    [[nodiscard]] std::span<const float> levels() const { return {levels_.data(), bands()}; }
    [[nodiscard]] std::span<const float> noise() const { return {noise_.data(), bands()}; }

  private:
    static constexpr std::size_t kLookBack = 40; // samples before the frame

    [[nodiscard]] std::size_t bands() const { return bandEdges().size() - 1; }
    void prepare(In16 frame, Steps& steps);
    std::int16_t detectAmr1(Steps& steps);
    std::int16_t detectAmr2(Steps& steps);
    std::int16_t detectAmrWb(Steps& steps);

    ZspvDetector kind_;
    HighPass highPass_;
    PitchSearch pitch_;
    float emphasisMemory_ = 0;
    std::array<std::int16_t, kLookBack + kMaxFrame> input_{}; // as the encoder would have it
    ZspVad1State amr1_{};
    ZspVad2State amr2_{};
    ZspVadWbState amrWb_{};
    std::array<float, kMaxBands> levels_{}, noise_{};
};

} // namespace zsp::voice::activity
