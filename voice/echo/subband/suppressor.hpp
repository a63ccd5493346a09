// Attenuates a bin as far as echo is expected in it, but not below the background noise.
#pragma once

#include "voice/echo/subband/filters.hpp"

namespace zsp::voice::echo {

class Suppressor {
  public:
    void layOut(Memory& memory, const Shape& shape);
    void start(const Shape& shape);

    /// Expects a share of the estimated echo to be left, as after a start.
    void beCautious();
    /// The gains for a frame of the mixer's output.
    void follow(const Filters& filters, Spectrum mic, Spectrum output);
    void apply(std::span<Zsp32fc> output) const;

    /// Per bin: power of the output over 10 ms, of the noise in it, and of the echo left in it.
    [[nodiscard]] std::span<const float> outputPower() const { return outputPower_; }
    [[nodiscard]] std::span<const float> noiseFloor() const { return noiseFloor_; }
    [[nodiscard]] std::span<const float> echoLeft() const { return echoLeft_; }
    /// Power of the echo that was taken away, over 10 ms.
    [[nodiscard]] std::span<const float> estimatePower() const { return estimatePower_; }

  private:
    float noiseGrowth_, cautionDecay_;
    std::span<float> estimatePower_, caution_; // the latter is the share surely left
    std::span<float> outputPower_, noiseFloor_, echoLeft_, gain_;
};

} // namespace zsp::voice::echo
