// Takes the better of both filters' errors, bin by bin.
#pragma once

#include "voice/echo/subband/filters.hpp"

namespace zsp::voice::echo {

class Mixer {
  public:
    void layOut(Memory& memory, const Shape& shape);
    void start(const Shape& shape);

    void mix(const Filters& filters, Spectrum mic, std::span<Zsp32fc> output);

    /// Powers over 15 ms.
    [[nodiscard]] std::span<const float> fixedPower() const { return fixedPower_; }
    [[nodiscard]] std::span<const float> micPower() const { return micPower_; }

  private:
    float alpha_;
    std::span<float> adaptivePower_, fixedPower_, micPower_;
    std::span<float> share_; // of the adaptive filter in the output
};

} // namespace zsp::voice::echo
