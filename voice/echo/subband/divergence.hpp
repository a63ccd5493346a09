// Finds out that the fixed filters belong to a path that is no more.
#pragma once

#include "voice/echo/subband/filters.hpp"
#include "voice/echo/subband/mixer.hpp"

namespace zsp::voice::echo {

class Divergence {
  public:
    enum class Verdict {
        none,
        lost, // the echo that is estimated is not found in the microphone
        wrong // the filters add echo instead of removing it
    };

    void layOut(Memory& memory, const Shape& shape);
    void start(const Shape& shape);

    /// Once a frame, between the filters and their update.
    Verdict judge(const Filters& filters, const Mixer& mixer, Spectrum mic);

  private:
    bool echoAddedInMostBins(const Filters& filters, const Mixer& mixer) const;
    bool estimateLost(const Filters& filters, Spectrum mic);

    std::size_t bins_;
    float alpha_, foundAlpha_, loudestDecay_;
    float fixedSum_ = 0, micSum_ = 0, residualSum_ = 0; // powers over all bins
    float loudest_ = 0; // micSum_ at its loudest, forgotten within a second or two
    std::span<float> crossPower_, echoPower_, micPower_;
    int holdFrames_, hold_ = 0; // frames in which a verdict has to show its effect
};

} // namespace zsp::voice::echo
