// From 16 kHz to 12.8 kHz, the rate that AMR-WB works at: four samples of every five.
//
// A Kaiser-windowed low-pass filter of 192 taps at 64 kHz, in four phases of 48 taps. It passes up
// to 5.6 kHz and stops from 6.8 kHz on.
#pragma once

#include "voice/api/spans.hpp"

#include <array>

namespace zsp::voice::activity {

class Decimator {
  public:
    static constexpr std::size_t kIn = 5, kOut = 4, kTaps = 48; // taps of a phase
    /// Of a sample through the filter: 95.5 / 64000 s.
    static constexpr double kDelayMs = (kOut * kTaps - 1) / 2.0 / 64;

    Decimator();

    /// `in` holds a multiple of 5 samples, at most 320, and `out` four for every five.
    void run(In16 in, Out16 out);

  private:
    static constexpr std::size_t kPast = kTaps - 1, kLongestBlock = 320;

    std::array<std::array<float, kTaps>, kOut> phases_; // the tap of the oldest sample first
    std::array<float, kPast + kLongestBlock> samples_{};
};

} // namespace zsp::voice::activity
