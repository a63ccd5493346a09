// Weighted overlap-add filter bank: the parts that both families share, and the kernels.
#pragma once

#include "real_fft.hpp"
#include "spans.hpp"

#include <cstdint>
#include <limits>

namespace zsp::ec {

/// What a size query reports.
struct BankSizes {
    std::int64_t state;
    std::int64_t initBuffer;
    std::int64_t workBuffer;

    bool fit() const noexcept
    {
        constexpr std::int64_t kMax = std::numeric_limits<std::int32_t>::max();
        return state <= kMax && workBuffer <= kMax;
    }
};

/// Whether a window consists of whole transform lengths. Any `order` above 0 may be asked.
constexpr bool isWholeBlocks(std::int32_t windowLen, std::int32_t order) noexcept
{
    return order < 31 && windowLen % (std::int32_t{1} << order) == 0;
}

/// The state of the float family.
struct SubbandState32f {
    std::int32_t windowLen;
    std::int32_t fftLen;
    std::int32_t frameSize;
    float* delayLine; // the newest windowLen samples, or the overlap-add accumulator
    float* window;
    const common::RealFftPlan* fft;
};
static_assert(sizeof(SubbandState32f) == 40);

/// The definition of the windowed fold onto fold.size() points:
///   fold[i] = sum of delay[i + m N] window[i + m N] over m, fused, in increasing m.
void foldScalar(InF delay, InF window, OutF fold) noexcept;

/// Equal to foldScalar in every result.
void foldAvx2(InF delay, InF window, OutF fold) noexcept;

/// The definition of the overlap-add with the reversed window:
///   delay[i] += time[i mod N] window[L-1-i], fused.
void overlapAddScalar(InF time, InF window, OutF delay) noexcept;

/// Equal to overlapAddScalar in every result.
void overlapAddAvx2(InF time, InF window, OutF delay) noexcept;

} // namespace zsp::ec
