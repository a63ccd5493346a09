// The library's three voice activity detectors behind one class, each with what its speech encoder
// does to the signal before.
#pragma once

#include "tools/zsp/voice/pitch_search.hpp"

#include "zspsc.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace zsp::host {

enum class DetectorKind { amr1, amr2, amrWb };

inline constexpr std::array kDetectorKinds = {DetectorKind::amr1, DetectorKind::amr2,
                                              DetectorKind::amrWb};

/// "GSM-AMR option 1" and so on.
std::string_view nameOf(DetectorKind kind);

class VoiceDetector {
  public:
    explicit VoiceDetector(DetectorKind kind);

    /// The rate of the input in Hz: 8000, or 12800 for AMR-WB.
    [[nodiscard]] int rate() const { return kind_ == DetectorKind::amrWb ? 12800 : 8000; }
    /// Samples of a frame of 20 ms.
    [[nodiscard]] std::size_t frameLength() const
    {
        return kind_ == DetectorKind::amrWb ? 256 : 160;
    }

    /// Whether there is speech in this frame of 16-bit samples.
    bool detect(std::span<const std::int16_t> frame);

    /// Lower edges of the bands in Hz, and the upper edge of the last one.
    [[nodiscard]] std::span<const int> bandEdges() const;
    /// Levels of the last frame, and the noise estimates, per band. The unit is the detector's own,
    /// in dB; both have the same.
    [[nodiscard]] std::span<const float> levels() const { return levels_; }
    [[nodiscard]] std::span<const float> noise() const { return noise_; }

  private:
    /// High-pass of second order, as the encoders have it in front.
    class HighPass {
      public:
        HighPass(double cutoff, double rate, double gain);
        double operator()(double x);

      private:
        double gain_, b1_, a1_, a2_;
        double x1_ = 0, x2_ = 0, y1_ = 0, y2_ = 0;
    };

    void prepare(std::span<const std::int16_t> frame);

    DetectorKind kind_;
    HighPass highPass_;
    PitchSearch pitch_;
    float emphasisMemory_ = 0;
    std::vector<std::int16_t> input_; // 40 samples of the last frame, then the prepared frame
    Vad1State vad1_{};
    Vad2State vad2_{};
    VadWbState vadWb_{};
    std::vector<float> levels_, noise_;
};

/// What is sent for a frame when transmission is discontinuous, 3GPP TS 26.093 clause 5.1.
enum class TxType { speech, sidFirst, sidUpdate, noData };

class DtxSchedule {
  public:
    /// The next frame, with its detector's decision.
    TxType next(bool speech);

  private:
    std::int16_t hangover_ = 7, elapsed_ = 32767;
    TxType last_ = TxType::speech;
    int untilUpdate_ = 0;
};

} // namespace zsp::host
