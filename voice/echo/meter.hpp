// What the canceller achieves, told from its own powers: nobody tells it which end talks.
#pragma once

#include "voice/echo/subband/filters.hpp"
#include "voice/echo/subband/suppressor.hpp"

namespace zsp::voice::echo {

class Meter {
    static constexpr float kLoudest = 1e30F;

  public:
    void start(const Shape& shape);

    /// Once a frame, with the microphone's spectrum and the output's.
    void update(const Filters& filters, const Suppressor& suppressor, Spectrum mic,
                Spectrum output);

    /// Both ends talk.
    [[nodiscard]] bool doubleTalk() const { return farTalks_ && nearHold_ > 0; }
    /// The filters are certain to remove several times what they leave.
    [[nodiscard]] bool converged() const { return converged_; }
    /// Microphone over output while only the far end talks; 0 before it ever did.
    [[nodiscard]] float echoLossDb() const;
    /// Far end over its estimated echo; 0 before anything was estimated.
    [[nodiscard]] float tailLossDb() const;

  private:
    float noiseOf(float power);

    std::size_t taps_;
    float soonAlpha_, lossAlpha_, tailAlpha_;
    int nearHoldFrames_, nearHold_ = 0; // frames in which the near end still counts as talking
    bool farTalks_ = false, converged_ = false;
    int warmUp_, age_ = 0, window_, windowAge_ = 0; // frames
    float least_ = kLoudest, leastBefore_ = kLoudest;
    float removed_ = 0, left_ = 0;      // echo power, while the far end talks
    float micPower_ = 0, outPower_ = 0; // while only the far end talks
    float farPower_ = 0, echoPower_ = 0;
};

} // namespace zsp::voice::echo
