// The steps of the adaptive codebook search of ITU-T G.723.1.
#pragma once

#include "codecs/g723/g723_vectors.hpp"

#include <array>

namespace zsp::g723 {

inline constexpr std::size_t kLagCandidates = 4;

/// For each candidate: the target with the five taps' filtered vectors, their energies, and they
/// with each other.
using AdaptiveCorrelations = std::array<Word, kLagCandidates * kGainWords>;

/// Of `count` lags from the first on; how many words.
std::size_t adaptiveCorrelationsScalar(In<kSubframe> target, In<kSubframe> response, In<kPast> past,
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

/// How far above its smallest size the gain book may be searched.
Word tamingRoom(std::span<const Long, 5> errors, bool sine, int firstLag, int lastLag) noexcept;

} // namespace zsp::g723
