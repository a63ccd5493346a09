// Signals and code words that drive a waveform coder everywhere.
#pragma once

#include "tests/support/samples.hpp"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace zsp::test {

/// Loud and quiet stretches, tones, silence, corners and uniform words.
class CoderSignal {
  public:
    explicit CoderSignal(std::uint32_t seed) : samples_(seed) {}

    std::vector<std::int16_t> pcm(std::size_t count)
    {
        std::vector<std::int16_t> signal;
        while (signal.size() < count) {
            const int kind = samples_.below(5);
            const auto level = static_cast<double>(1 << samples_.below(14));
            const double frequency = static_cast<double>(samples_.below(1000)) * 0.00314;
            for (int i = samples_.below(500); i >= 0; --i)
                signal.push_back(static_cast<std::int16_t>(
                    kind == 0   ? 0
                    : kind == 1 ? samples_.integer<std::int16_t>()
                    : kind == 2 ? samples_.integer<std::int16_t>() >> 2
                    : kind == 3 ? level * std::sin(frequency * i)
                                : level * static_cast<double>(samples_.below(200) - 100) / 100));
        }
        signal.resize(count);
        return signal;
    }

    /// Uniform code words, between stretches of a single one.
    std::vector<std::uint8_t> codes(std::size_t count, int bits)
    {
        std::vector<std::uint8_t> codes;
        while (codes.size() < count) {
            const int fixed = samples_.below(2) ? samples_.below(1 << bits) : -1;
            for (int i = samples_.below(fixed < 0 ? 500 : 50); i >= 0; --i)
                codes.push_back(
                    static_cast<std::uint8_t>(fixed < 0 ? samples_.below(1 << bits) : fixed));
        }
        codes.resize(count);
        return codes;
    }

  private:
    Samples samples_;
};

} // namespace zsp::test
