// Real FFT of N = 2^order points in single precision. The caller gives the storage of a plan, which
// holds all factors, and a work area for each call.
//
//   forward   bins[k] = sum of time[n] e^(-2 pi i k n / N),   k = 0 .. N/2
//   inverse   time[n] = 1/N sum of bins[k] e^(2 pi i k n / N) over k = 0 .. N-1, where
//             bins[N-k] is the conjugate of bins[k]
//
// The imaginary parts of bins 0 and N/2 are exactly zero forwards and are not read backwards.
#pragma once

#include "core/spans.hpp"
#include "zspsc/types.h"

#include <cstdint>
#include <span>

namespace zsp::common {

using InBins = std::span<const Zsp32fc>;
using OutBins = std::span<Zsp32fc>;

/// Plans and work areas start at such a boundary inside the storage that they are given.
inline constexpr std::size_t kFftAlignment = 64;

/// Larger transforms have sizes beyond 32 bits.
inline constexpr int kMaxFftOrder = 26;

/// The tables of an order. Vectors of complex numbers are stored as eight real parts and eight
/// imaginary parts.
struct RealFftPlan {
    std::int32_t order;
    // Orders 1 to 4: the matrices of the two transforms. From 5 on: the twiddle factors that split
    // the half-length complex transform into the spectra of even and odd samples, and merge them.
    const float* forwardTable;
    const float* inverseTable;
    const float* rowTwiddles;    // between the transforms of columns and of rows, from order 5 on
    const float* columnTwiddles; // inside the transforms of columns, from order 7 on
};

/// Bytes of a plan's storage, with room for two alignments to kFftAlignment: its own and one of
/// what stands before it. `order` is 1 to kMaxFftOrder.
std::int64_t realFftPlanSize(int order) noexcept;

/// Bytes of a call's work area, with room for two alignments as well.
std::int64_t realFftWorkSize(int order) noexcept;

/// Builds the plan at the first boundary of kFftAlignment in the storage.
const RealFftPlan* initRealFft(void* storage, int order) noexcept;

/// The definition, in double precision and for any even length: O(N^2).
void realFftForwardScalar(InF time, OutBins bins) noexcept;
void realFftInverseScalar(InBins bins, OutF time) noexcept;

/// The same in single precision. `time` and `bins` do not overlap; both have the plan's length, N
/// and N/2 + 1.
void realFftForward(const RealFftPlan& plan, InF time, OutBins bins, float* work) noexcept;

void realFftInverse(const RealFftPlan& plan, InBins bins, OutF time, float* work) noexcept;

} // namespace zsp::common
