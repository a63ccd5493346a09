// Steering of the adaptive and the fixed filters of a sub-band echo canceller: state and kernels.
#pragma once

#include "core/spans.hpp"
#include "zspsc/types.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <type_traits>

namespace zsp::ec {

/// The arrays of numBands floats stand behind the record, in the order of their pointers.
struct ControllerState {
    std::int32_t numBands = 0;
    std::int32_t frameSize = 0;
    std::int32_t numTaps = 0;
    std::int32_t sampleFreq = 0;
    float* adaptErrPower = nullptr; // smoothed power of the adaptive filter's error
    float* fixedErrPower = nullptr; // the same of the fixed filter's
    float* inputPower = nullptr;    // far-end power over the last numTaps frames
    float* coefPower = nullptr;     // smoothed energy of the adaptive taps
    float refPower = 0;             // smoothed power of the optional reference vector
    float alpha15 = 0;              // smoothing factors of 15, 9, 20 and 10 ms
    float alpha9 = 0;
    float alpha20 = 0;
    float alpha10 = 0;
    float adaptFactor = 1;
    float auxFactor = 1;
    float convergence = 1; // towards 1 while adaptation does harm, towards 0 while it does good
    float powerThreshold = 0;
    float minStep = 0;
    std::int32_t refValid = 0; // 1 once a reference vector was given
};
static_assert(sizeof(ControllerState) == 96 && std::is_trivially_copyable_v<ControllerState>);

using SubbandVector = std::span<const Zsp32fc>;

/// What the step sizes of some bins depend on besides the bins' own power.
struct StepRule {
    float mu;
    float powerThreshold;
    float minStep;
};

/// The definition of the step sizes. The newest vector is added to `inputPower` before the step is
/// taken from it, and the oldest one is subtracted afterwards.
void stepSizesScalar(const StepRule& rule, SubbandVector newest, SubbandVector oldest,
                     OutF inputPower, std::span<double> stepSize) noexcept;

/// Equal to stepSizesScalar in every result.
void stepSizesAvx2(const StepRule& rule, SubbandVector newest, SubbandVector oldest,
                   OutF inputPower, std::span<double> stepSize) noexcept;

/// One frame's errors and the taps: numTaps pointers to numBands taps each.
struct FilterPair {
    const Zsp32fc* adaptErr;
    const Zsp32fc* fixedErr;
    Zsp32fc* const* adaptCoefs;
    Zsp32fc* const* fixedCoefs;
};

/// Powers of the fixed filter's error, summed over bins.
struct ErrorSums {
    float saved = 0;    // bins whose adaptive taps went into the fixed filter
    float restored = 0; // bins whose fixed taps went into the adaptive filter
    float all = 0;
};

/// The definition of the comparison, for the bins from `first` on: updates the powers, saves or
/// restores taps and continues the sums.
ErrorSums compareFiltersScalar(ControllerState& s, const FilterPair& filters, std::size_t first,
                               ErrorSums sums) noexcept;

/// Equal to compareFiltersScalar over all bins in every result.
ErrorSums compareFiltersAvx2(ControllerState& s, const FilterPair& filters) noexcept;

} // namespace zsp::ec
