// Steps aside for modems: from a disabling tone at either end on, until both ends are quiet.
// ITU-T G.168, clause 7.
#pragma once

#include "voice/api/memory.hpp"
#include "voice/api/steps.hpp"
#include "voice/echo/echo_shape.hpp"

namespace zsp::voice::echo {

class ToneBypass {
  public:
    ZspStatus layOut(Memory& memory, const Shape& shape);
    ZspStatus start(const Shape& shape, bool enabled);

    /// Whether the canceller steps aside in this frame.
    bool update(std::span<const float> far, std::span<const float> mic, Steps& steps);
    [[nodiscard]] bool active() const { return active_; }

  private:
    std::span<std::uint8_t> farDetector_, micDetector_;
    std::size_t framesToReturn_, quietFrames_ = 0;
    bool enabled_, active_ = false;
};

} // namespace zsp::voice::echo
