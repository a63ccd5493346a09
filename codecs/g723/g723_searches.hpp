// The steps of the codebook searches of ITU-T G.723.1, and what they share with the vectors that
// they choose.
#pragma once

#include "codecs/g723/g723.hpp"

#include <array>

namespace zsp::g723 {

/// The lag of a sub-frame: its pair's, moved by its own offset.
inline int lagOf(const ZspG723Frame& f, std::size_t subframe) noexcept
{
    return f.lag[subframe / 2] + f.lagOffset[subframe] - 1;
}

inline constexpr std::size_t kGainWords = 20;

/// A vector of the adaptive codebook's gains.
const Word* gainVector(bool smallBook, std::size_t index) noexcept;

/// The last period of the excitation, again and again, and two words before it.
void pastPeriod(In<kPast> past, int lag, Out<kSubframe + 4> residual) noexcept;

/// Five taps over a residual.
void filterPeriodScalar(In<kSubframe + 4> residual, const Word* taps_Q14,
                        Out<kSubframe> dst) noexcept;
void filterPeriodFast(In<kSubframe + 4> residual, const Word* taps_Q14,
                      Out<kSubframe> dst) noexcept;

/// Adds a vector to itself, later by one period, by two and so on.
void repeatPulses(Out<kSubframe> x, std::size_t period) noexcept;

/// The recursion over the pitch at 5.3 kbit/s; out of use with a lag of 58 or more.
struct Sharpening {
    int lag;
    Word gain_Q15;
};
Sharpening sharpeningOf(const ZspG723Frame& f, std::size_t subframe) noexcept;
void sharpen(Out<kSubframe> x, const Sharpening& s) noexcept;

// The adaptive codebook

inline constexpr std::size_t kLagCandidates = 4;

/// For each candidate: correlations of the target with the five taps' filtered vectors, the
/// energies of these, and correlations among them.
using AdaptiveCorrelations = std::array<Word, kLagCandidates * kGainWords>;

/// The correlations of `count` lags from `firstLag` on; returns how many words these are.
std::size_t adaptiveCorrelationsScalar(In<kSubframe> target, In<kSubframe> response, In<kPast> past,
                                       int firstLag, std::size_t count,
                                       AdaptiveCorrelations& words) noexcept;

std::size_t adaptiveCorrelationsAvx2(In<kSubframe> target, In<kSubframe> response, In<kPast> past,
                                     int firstLag, std::size_t count,
                                     AdaptiveCorrelations& words) noexcept;

/// The best so far. Without any: the middle one of three lags, no gain.
struct GainChoice {
    Long measure = 0;
    std::size_t index = 0, candidate = 1;
};

/// Goes through the first `bound` vectors of a book for one lag.
void searchGainsScalar(const Word* corr, bool smallBook, std::size_t bound, std::size_t candidate,
                       GainChoice& best) noexcept;

void searchGainsAvx2(const Word* corr, bool smallBook, std::size_t bound, std::size_t candidate,
                     GainChoice& best) noexcept;

/// How far above its smallest size the gain book may be searched.
Word tamingRoom(std::span<const Long, 5> errors, bool sine, int firstLag, int lastLag) noexcept;

// Pulses at 6.3 kbit/s

/// What pulses are placed for.
struct PulseProblem {
    std::array<Word, kSubframe> target, response;
    std::array<Word, kSubframe> corr;  // of the response with itself
    std::array<Long, kSubframe> cross; // of the target with the response, scaled like `corr`
    std::size_t count;                 // of the pulses
};

/// Pulses repeat with a period; 60 is none.
PulseProblem pulseProblemScalar(In<kSubframe> target, In<kSubframe> response, std::size_t count,
                                std::size_t period) noexcept;
PulseProblem pulseProblemAvx2(In<kSubframe> target, In<kSubframe> response, std::size_t count,
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

/// What the fast forms look at, laid out once for all trials of a problem.
struct PulseTrials {
    explicit PulseTrials(const PulseProblem& problem) noexcept;

    Pulses place(std::size_t first, Word amplitude) const noexcept;
    Long measure(const Pulses& pulses) const noexcept;

  private:
    const PulseProblem& p_;
    std::int64_t targetEnergy_;
    int largestResponse_;
    alignas(32) std::array<Word, 128> delayed_{};             // the response behind 64 zeros
    alignas(32) std::array<std::array<Long, 32>, 2> cross_{}; // by grid
    alignas(32) std::array<Long, 64> distance_{};             // corr at grid distances -32 to 31
};

} // namespace zsp::g723
