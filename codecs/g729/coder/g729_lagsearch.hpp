// The order in which lags of the adaptive codebook of ITU-T G.729 are tried, which the definition
// and the fast form share.
#pragma once

#include "codecs/g729/coder/g729_searches.hpp"

#include <algorithm>
#include <array>

namespace zsp::g729 {

inline constexpr int kLagMargin = 4; // lags that interpolation needs on both sides
inline constexpr int kFinestLag = 84;
inline constexpr std::size_t kLagCorrelations = kMostLags + 2 * kLagMargin;

/// Of the lag whose correlation is at `corr` and its neighbours two thirds away the first with the
/// largest correlation.
Lag refineLag(const Word* corr, int lag) noexcept;

/// `normalise` gives correlations of a number of lags.
template <typename Normalise>
Lag searchLag(Normalise normalise, In<kSubframe> target, In<kSubframe> response, int first,
              int last, bool isFirst, Excitation excitation) noexcept
{
    std::array<Word, kLagCorrelations> corr;
    const int lags = last - first + 1 + 2 * kLagMargin;
    normalise(target, response, first - kLagMargin, static_cast<std::size_t>(lags),
              &excitation[kPast], corr);
    const Word* at = corr.data() + kLagMargin;
    int best = first;
    for (int t = first; t <= last; ++t)
        if (at[t - first] >= at[best - first]) best = t;
    Lag lag = {static_cast<Word>(best), 0};
    if (!isFirst || best <= kFinestLag) lag = refineLag(at + (best - first), best);
    adaptiveVector(lag.whole, lag.thirds, excitation);
    return lag;
}

/// `dot` gives the doubled sum of products of two subframes.
template <typename Dot>
Lag searchLagA(Dot dot, In<kSubframe> correlation, int first, int last, bool isFirst,
               Excitation excitation) noexcept
{
    const Word* e = &excitation[kPast];
    Long most = fx::kMin32;
    Lag best = {static_cast<Word>(first), 0};
    for (int t = first; t <= last; ++t)
        if (const Long sum = dot(correlation, e - t); sum > most) {
            most = sum;
            best.whole = static_cast<Word>(t);
        }
    adaptiveVector(best.whole, 0, excitation);
    if (isFirst && best.whole > kFinestLag) return best;
    most = dot(correlation, e);
    std::array<Word, kSubframe> vector;
    std::copy_n(e, kSubframe, vector.begin());
    for (const Word f : {Word{-1}, Word{1}}) {
        adaptiveVector(best.whole, f, excitation);
        if (const Long sum = dot(correlation, e); sum > most) {
            most = sum;
            best.thirds = f;
            std::copy_n(e, kSubframe, vector.begin());
        }
    }
    std::ranges::copy(vector, excitation.begin() + kPast);
    return best;
}

} // namespace zsp::g729
