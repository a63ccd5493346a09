// Tracks of the fixed codebook of ITU-T G.729, and the correlations of its response with the signs
// of the pulses taken in.
#pragma once

#include "codecs/g729/coder/g729_searches.hpp"

#include <algorithm>
#include <array>
#include <utility>

namespace zsp::g729 {

inline constexpr std::size_t kTracks = 5, kPlaces = 8;

/// The i-th place of a track.
constexpr std::size_t place(std::size_t track, std::size_t i) noexcept
{
    return kTracks * i + track;
}

struct TrackPair {
    std::size_t first, second;
};
/// The pairs that pulses meet in, in the order of the matrix, where they begin after the energies.
inline constexpr std::array<TrackPair, 9> kTrackPairs = {
    {{0, 1}, {0, 2}, {0, 3}, {0, 4}, {1, 2}, {1, 3}, {1, 4}, {2, 3}, {2, 4}}};

/// The number of a pair of tracks, the lower one first.
inline constexpr std::array<std::array<std::size_t, kTracks>, kTracks> kPairOf = [] {
    std::array<std::array<std::size_t, kTracks>, kTracks> pairs{};
    for (std::size_t k = 0; k < kTrackPairs.size(); ++k)
        pairs[kTrackPairs[k].first][kTrackPairs[k].second] =
            pairs[kTrackPairs[k].second][kTrackPairs[k].first] = k;
    return pairs;
}();

/// A response without a risk that sums of its products saturate, unless it is louder than any.
inline void scaleResponse(In<kSubframe> response, std::array<Word, kSubframe>& h) noexcept
{
    const Long energy = celp::energy(response);
    const int shift = fx::extract_h(energy) > 32000 ? -1 : fx::norm_l(energy) >> 1;
    for (std::size_t n = 0; n < kSubframe; ++n)
        h[n] = fx::shl(response[n], shift);
}

/// How products of two signs are rounded.
enum class Signs { main, annexA };

/// The correlation's magnitudes, and the matrix with its signs.
struct SignedMatrix {
    std::array<Word, kSubframe> d, sign;
    std::array<Word, kMatrix> words;

    SignedMatrix(In<kSubframe> correlation, In<kMatrix> matrix, Signs rounding) noexcept
    {
        for (std::size_t n = 0; n < kSubframe; ++n) {
            sign[n] = correlation[n] >= 0 ? fx::kMax16 : fx::kMin16;
            d[n] = correlation[n] >= 0 ? correlation[n] : fx::negate(correlation[n]);
        }
        std::copy_n(matrix.begin(), kTracks * kPlaces, words.begin());
        std::size_t at = kTracks * kPlaces;
        for (const auto& [a, b] : kTrackPairs) {
            for (std::size_t i = 0; i < kPlaces; ++i)
                for (std::size_t j = 0; j < kPlaces; ++j, ++at) {
                    const Word s = sign[place(a, i)], t = sign[place(b, j)];
                    const Word both = rounding == Signs::main ? fx::mult(s, t)
                                      : s == t                ? fx::kMax16
                                                              : fx::kMin16;
                    words[at] = fx::mult(matrix[at], both);
                }
        }
    }

    Word energy(std::size_t at) const noexcept
    {
        return words[kPlaces * (at % kTracks) + at / kTracks];
    }
    /// Of pulses on two tracks that are not 3 and 4.
    Word cross(std::size_t i, std::size_t j) const noexcept
    {
        if (i % kTracks > j % kTracks) std::swap(i, j);
        const std::size_t pair = kPairOf[i % kTracks][j % kTracks];
        return words[kTracks * kPlaces + 64 * pair + kPlaces * (i / kTracks) + j / kTracks];
    }
    /// Pulses on tracks 0, 1, 2 and 3 or 4.
    FixedCode codeOf(const std::array<std::size_t, 4>& p) const noexcept
    {
        int signs = 0;
        for (std::size_t k = 0; k < p.size(); ++k)
            signs |= sign[p[k]] > 0 ? 1 << k : 0;
        const std::size_t last = 2 * (p[3] / 5) + p[3] % 5 - 3;
        return {static_cast<Word>(p[0] / 5 + 8 * (p[1] / 5) + 64 * (p[2] / 5) + 512 * last),
                static_cast<Word>(signs)};
    }
};

/// Where the search of the main body looks further, from the largest correlations of three tracks
/// and twice the sum of all on them.
Word fixedThreshold(Word most, Long total) noexcept;

} // namespace zsp::g729
