// Controller of a sub-band echo canceller with an adaptive and a fixed filter in every bin.
//
//   step[k] = mu / P[k], P the far-end power over the filter's span
//
// and, per bin, taps go from the adaptive to the fixed filter when they have settled and leave
// clearly less error, and back when they leave clearly more. Everything is in single precision, in
// the order written; smoothing with a factor a is v = a v + (1 - a) new.

#include "ec/subband_controller.hpp"

#include "core/bulk.hpp"
#include "core/entries.hpp"
#include "core/state.hpp"

#include <cmath>
#include <limits>

namespace zsp::ec {

namespace {

float power(Zsp32fc v) noexcept
{
    return v.re * v.re + v.im * v.im;
}

float smooth(float alpha, float value, float next) noexcept
{
    return alpha * value + (1 - alpha) * next;
}

} // namespace

void stepSizesScalar(const StepRule& rule, SubbandVector newest, SubbandVector oldest,
                     OutF inputPower, std::span<double> stepSize) noexcept
{
    for (std::size_t k = 0; k < inputPower.size(); ++k) {
        const float full = inputPower[k] + power(newest[k]);
        const float step = full > rule.powerThreshold ? rule.mu / full : rule.minStep;
        stepSize[k] = static_cast<double>(step);
        const float left = full - power(oldest[k]);
        inputPower[k] = left > 0 ? left : 0;
    }
}

ErrorSums compareFiltersScalar(ControllerState& s, const FilterPair& filters, std::size_t first,
                               ErrorSums sums) noexcept
{
    for (std::size_t k = first; k < static_cast<std::size_t>(s.numBands); ++k) {
        float coefs = 0;
        for (std::int32_t t = 0; t < s.numTaps; ++t)
            coefs += power(filters.adaptCoefs[t][k]);

        const float change = std::fabs(s.coefPower[k] - coefs);
        s.coefPower[k] = smooth(s.alpha9, s.coefPower[k], coefs);
        float& fixedErr = s.fixedErrPower[k];
        float& adaptErr = s.adaptErrPower[k];
        fixedErr = smooth(s.alpha15, fixedErr, power(filters.fixedErr[k]));
        adaptErr = smooth(s.alpha15, adaptErr, power(filters.adaptErr[k]));

        if (change < 0.1F * s.coefPower[k] && adaptErr < 0.35F * fixedErr) {
            for (std::int32_t t = 0; t < s.numTaps; ++t)
                filters.fixedCoefs[t][k] = filters.adaptCoefs[t][k];
            fixedErr = adaptErr;
            sums.saved += fixedErr;
        } else if (adaptErr > 1.5F * fixedErr) {
            for (std::int32_t t = 0; t < s.numTaps; ++t)
                filters.adaptCoefs[t][k] = filters.fixedCoefs[t][k];
            adaptErr = fixedErr;
            sums.restored += fixedErr;
        }
        sums.all += fixedErr;
    }
    return sums;
}

namespace {

/// -5 and -7 of the set-up arguments. The state's size has to fit 32 bits.
ZspStatus checkSetUp(std::int32_t numBands, std::int32_t frameSize, std::int32_t numTaps,
                     std::int32_t sampleFreq) noexcept
{
    constexpr std::int32_t kMaxBands = (std::numeric_limits<std::int32_t>::max() -
                                        std::int32_t{sizeof(ControllerState)} - kStateSlack) /
                                       16;
    if (numBands < 1 || numBands > kMaxBands) return zspStsBadArgErr;
    if (frameSize < 1 || numTaps < 1) return zspStsBadArgErr;
    if (sampleFreq != 8000 && sampleFreq != 16000) return zspStsRangeErr;
    return zspStsNoErr;
}

/// The factor per frame of a smoother with the time constant `seconds`: e^x to the second order.
float smoothingFactor(std::int32_t frameSize, std::int32_t sampleFreq, double seconds) noexcept
{
    const double x = -frameSize / (sampleFreq * seconds);
    return static_cast<float>(1 + x + x * x / 2);
}

void initController(void* state, std::int32_t numBands, std::int32_t frameSize,
                    std::int32_t numTaps, std::int32_t sampleFreq) noexcept
{
    auto* s = alignedState<ControllerState>(state);
    const auto n = static_cast<std::size_t>(numBands);
    auto* arrays = static_cast<float*>(static_cast<void*>(s + 1));
    const auto threshold = static_cast<float>(100000.0 * numBands * numTaps);
    *s = {.numBands = numBands,
          .frameSize = frameSize,
          .numTaps = numTaps,
          .sampleFreq = sampleFreq,
          .adaptErrPower = arrays,
          .fixedErrPower = arrays + n,
          .inputPower = arrays + 2 * n,
          .coefPower = arrays + 3 * n,
          .alpha15 = smoothingFactor(frameSize, sampleFreq, 0.015),
          .alpha9 = smoothingFactor(frameSize, sampleFreq, 0.009),
          .alpha20 = smoothingFactor(frameSize, sampleFreq, 0.020),
          .alpha10 = smoothingFactor(frameSize, sampleFreq, 0.010),
          .powerThreshold = threshold,
          .minStep = static_cast<float>(0.05 / static_cast<double>(threshold))};
    zeroFill(std::as_writable_bytes(OutF{arrays, 4 * n}));
}

void resetController(ControllerState& s) noexcept
{
    const auto n = static_cast<std::size_t>(s.numBands);
    zeroFill(std::as_writable_bytes(OutF{s.adaptErrPower, 2 * n})); // fixedErrPower follows
    zeroFill(std::as_writable_bytes(OutF{s.coefPower, n}));
}

void updateSteps(ControllerState& s, const Zsp32fc* const* inputHistory, const Zsp32fc* refVector,
                 double* stepSize, float mu) noexcept
{
    const auto n = static_cast<std::size_t>(s.numBands);
    stepSizesAvx2({mu, s.powerThreshold, s.minStep}, {inputHistory[0], n},
                  {inputHistory[s.numTaps - 1], n}, {s.inputPower, n}, {stepSize, n});

    float energy = 0;
    if (refVector) {
        s.refValid = 1;
        for (const Zsp32fc& v : SubbandVector{refVector, n})
            energy += power(v);
    }
    s.refPower = smooth(s.alpha15, s.refPower, energy);
}

float control(ControllerState& s, const FilterPair& filters) noexcept
{
    const ErrorSums sums = compareFiltersAvx2(s, filters);
    const bool helps =
        sums.saved > 0.1F * sums.all && (!s.refValid || 0.2F * s.refPower > sums.all);
    if (helps)
        s.convergence = s.alpha20 * s.convergence;
    else if (sums.restored > 0.1F * sums.all)
        s.convergence = smooth(s.alpha20, s.convergence, 1);
    s.adaptFactor = smooth(s.alpha10, s.adaptFactor, s.convergence > 0.5F ? 1.0F : 0.0F);
    return s.adaptFactor;
}

} // namespace

} // namespace zsp::ec

namespace zsp::entry {

ZspStatus zspsSubbandControllerGetSize_EC_32f(std::int32_t numBands, std::int32_t frameSize,
                                              std::int32_t numTaps, std::int32_t sampleFreq,
                                              std::int32_t* size)
{
    const ZspStatus status = ec::checkSetUp(numBands, frameSize, numTaps, sampleFreq);
    if (status != zspStsNoErr) return status;
    if (!size) return zspStsNullPtrErr;

    *size = 16 * numBands + std::int32_t{sizeof(ec::ControllerState)} + kStateSlack;
    return zspStsNoErr;
}

ZspStatus zspsSubbandControllerInit_EC_32f(void* state, std::int32_t numBands,
                                           std::int32_t frameSize, std::int32_t numTaps,
                                           std::int32_t sampleFreq)
{
    const ZspStatus status = ec::checkSetUp(numBands, frameSize, numTaps, sampleFreq);
    if (status != zspStsNoErr) return status;
    if (!state) return zspStsNullPtrErr;

    ec::initController(state, numBands, frameSize, numTaps, sampleFreq);
    return zspStsNoErr;
}

ZspStatus zspsSubbandControllerReset_EC_32f(void* state)
{
    if (!state) return zspStsNullPtrErr;

    ec::resetController(*alignedState<ec::ControllerState>(state));
    return zspStsNoErr;
}

ZspStatus zspsSubbandAPControllerUpdate_EC_32f(const Zsp32fc* const* inputHistory,
                                               const Zsp32fc* refVector, double* stepSize, float mu,
                                               void* state)
{
    if (!inputHistory || !stepSize || !state) return zspStsNullPtrErr;
    if (!(mu >= 0 && mu <= 1)) return zspStsRangeErr; // not a number fails both

    ec::updateSteps(*alignedState<ec::ControllerState>(state), inputHistory, refVector, stepSize,
                    mu);
    return zspStsNoErr;
}

ZspStatus zspsSubbandControllerUpdate_EC_32f(const Zsp32fc* adaptErr, const Zsp32fc* fixedErr,
                                             const Zsp32fc* const* inputHistory,
                                             const Zsp32fc* refVector, double* stepSize,
                                             void* state)
{
    if (!adaptErr || !fixedErr) return zspStsNullPtrErr;

    return entry::zspsSubbandAPControllerUpdate_EC_32f(inputHistory, refVector, stepSize, 0.5F,
                                                       state);
}

ZspStatus zspsSubbandController_EC_32f(const Zsp32fc* adaptErr, const Zsp32fc* fixedErr,
                                       Zsp32fc** adaptCoefs, Zsp32fc** fixedCoefs,
                                       float* adaptFactor, void* state)
{
    if (!adaptErr || !fixedErr || !adaptCoefs || !fixedCoefs || !adaptFactor || !state)
        return zspStsNullPtrErr;

    *adaptFactor = ec::control(*alignedState<ec::ControllerState>(state),
                               {adaptErr, fixedErr, adaptCoefs, fixedCoefs});
    return zspStsNoErr;
}

} // namespace zsp::entry
