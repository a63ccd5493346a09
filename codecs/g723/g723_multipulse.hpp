// The steps of the multi-pulse search of ITU-T G.723.1.
#pragma once

#include "codecs/g723/g723.hpp"

#include <array>

namespace zsp::g723 {

/// What pulses are placed for.
struct PulseProblem {
    std::array<Word, kSubframe> target, response;
    std::array<Word, kSubframe> corr;  // of the response with itself
    std::array<Long, kSubframe> cross; // of the target with the response, scaled like `corr`
    std::size_t count;                 // of the pulses
};

/// Pulses repeat with a period; 60 is none.
PulseProblem pulseProblem(In<kSubframe> target, In<kSubframe> response, std::size_t count,
                          std::size_t period) noexcept;

/// The place of the first pulse on a grid, and the gain nearest to its size.
struct PulseStart {
    std::size_t place, gain;
};
PulseStart pulseStart(const PulseProblem& p, std::size_t grid) noexcept;

struct Pulses {
    std::array<Word, 6> places, amplitudes;
};
Pulses placePulsesScalar(const PulseProblem& p, std::size_t first, Word amplitude) noexcept;

/// Twice the correlation with the target less the energy.
Long pulseMeasureScalar(const PulseProblem& p, const Pulses& pulses) noexcept;

} // namespace zsp::g723
