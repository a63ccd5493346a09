// The filter banks of far end, microphone and output.
#pragma once

#include "voice/api/memory.hpp"
#include "voice/api/steps.hpp"
#include "voice/echo/echo_shape.hpp"

namespace zsp::voice::echo {

class Banks {
  public:
    ZspStatus layOut(Memory& memory, const Shape& shape);
    ZspStatus start(const Shape& shape);

    /// `far` times kFarScale, to a row.
    void analyseFar(std::span<const float> far, Zsp32fc* row, Steps& steps);
    void analyseMic(std::span<const float> mic, Zsp32fc* row, Steps& steps);
    void synthesise(const Zsp32fc* row, std::span<float> out, Steps& steps);

    /// Samples from the input to the output.
    static std::size_t delay(const Shape& shape);

  private:
    std::span<std::uint8_t> far_, mic_, out_, work_, start_;
    std::span<float> scaled_;
};

} // namespace zsp::voice::echo
