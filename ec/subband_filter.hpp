// Echo-path filters of a sub-band canceller: what an adaptive and a fixed filter leave of the
// microphone, and the update of the adaptive one with the variance of its taps.
#pragma once

#include "core/spans.hpp"
#include "zspsc/types.h"

#include <cstddef>
#include <span>

namespace zsp::ec {

inline constexpr std::int32_t kMaxFilterTaps = 4097;

/// What both filters of every bin work with: numTaps rows each, the row of delay 0 first.
struct FilterRows {
    std::span<const Zsp32fc* const> history; // far-end vectors
    const Zsp32fc* const* adaptCoefs;
    const Zsp32fc* const* fixedCoefs;
    const float* const* coefVariance;
};

/// What they give, as many values as there are bins.
struct FilterResults {
    Zsp32fc* adaptErr;
    Zsp32fc* fixedErr;
    float* inputPower;
    float* residualPower;
};

/// The definition, for the bins from `first` on.
void filterScalar(const FilterRows& rows, std::span<const Zsp32fc> src, const FilterResults& out,
                  std::size_t first) noexcept;

/// Equal to filterScalar over all bins in every result.
void filterAvx2(const FilterRows& rows, std::span<const Zsp32fc> src,
                const FilterResults& out) noexcept;

/// How far the taps of each bin go.
struct AdaptRule {
    std::span<const Zsp32fc> adaptErr;
    const float* gain;
    const float* forget;
    float learnt;
    float coefFloor;
};

/// The taps that change, and the far-end vectors that they belong to.
struct AdaptRows {
    std::span<const Zsp32fc* const> history;
    Zsp32fc* const* adaptCoefs;
    float* const* coefVariance;
};

/// The definition, for the bins from `first` on.
void adaptScalar(const AdaptRule& rule, const AdaptRows& rows, std::size_t first) noexcept;

/// Equal to adaptScalar over all bins in every result.
void adaptAvx2(const AdaptRule& rule, const AdaptRows& rows) noexcept;

} // namespace zsp::ec
