// Both filters: errors, update, steps and variances.

#include "voice/echo/subband/filters.hpp"
#include "zspsc/ec/controller.h"
#include "zspsc/ec/filters.h"

#include <algorithm>

namespace zsp::voice::echo {

namespace {

constexpr float kStepSize = 0.8F;
constexpr double kPathDecay = 0.05;  // s, expected time constant of the echo path's amplitude
constexpr double kForgetTime = 10.0; // s, in which converged taps are expected to change
constexpr float kLearnt = 0.4F;      // of what an update would teach if frames were independent
constexpr float kTapEnergyFloor = 4e-10F;
constexpr float kPowerPerBinAndTap = 1e5F; // below it the far end teaches nothing

} // namespace

template <typename T>
void Filters::Rows<T>::layOut(Memory& memory, std::size_t count, std::size_t length)
{
    values = memory.take<T>(count * length);
    table = memory.take<T*>(count);
}

template <typename T>
void Filters::Rows<T>::start(std::size_t length)
{
    for (std::size_t t = 0; t < table.size(); ++t)
        table[t] = values.data() + t * length % values.size();
}

ZspStatus Filters::layOut(Memory& memory, const Shape& shape)
{
    far_.layOut(memory, shape.taps, shape.rowBins);
    far_.table = memory.take<Zsp32fc*>(2 * shape.taps);
    adaptive_.layOut(memory, shape.taps, shape.rowBins);
    fixed_.layOut(memory, shape.taps, shape.rowBins);
    variance_.layOut(memory, shape.taps, shape.rowBins);
    initialVariance_ = memory.take<float>(shape.taps);
    for (auto* row : {&adaptiveError_, &fixedError_})
        *row = memory.take<Zsp32fc>(shape.rowBins);
    for (auto* row : {&farPower_, &residual_, &errorPower_, &gain_, &forget_})
        *row = memory.take<float>(shape.rowBins);
    step_ = memory.take<double>(shape.bins);
    std::int32_t size = 0;
    const ZspStatus status = zspsSubbandControllerGetSize_EC_32f(
        static_cast<std::int32_t>(shape.bins), static_cast<std::int32_t>(shape.hop),
        static_cast<std::int32_t>(shape.taps), static_cast<std::int32_t>(shape.rate), &size);
    controller_ = memory.take<std::uint8_t>(static_cast<std::size_t>(size));
    return status;
}

ZspStatus Filters::start(const Shape& shape, std::int32_t tailMs)
{
    bins_ = shape.bins;
    taps_ = shape.taps;
    rowBins_ = shape.rowBins;
    threshold_ = kPowerPerBinAndTap * static_cast<float>(bins_ * taps_);
    forgetPerFrame_ = static_cast<float>(shape.seconds(1) / kForgetTime);
    for (auto* rows : {&far_, &adaptive_, &fixed_})
        rows->start(rowBins_);
    variance_.start(rowBins_);

    // An exponentially decaying path, as rooms have; who asks for a long tail has a live room.
    const double seconds = std::max(kPathDecay, 0.3e-3 * tailMs);
    const auto decay = [&](std::size_t t) {
        return std::exp(-2.0 * shape.seconds(static_cast<double>(t)) / seconds);
    };
    double sum = 0;
    for (std::size_t t = 0; t < taps_; ++t)
        sum += decay(t);
    for (std::size_t t = 0; t < taps_; ++t)
        initialVariance_[t] = static_cast<float>(decay(t) / sum) * kUnitTapEnergy;
    doubt(1.0F);
    return restartController(shape);
}

ZspStatus Filters::restartController(const Shape& shape)
{
    // The controller keeps a running sum of the history's power: both start empty.
    std::fill(far_.values.begin(), far_.values.end(), Zsp32fc{});
    return zspsSubbandControllerInit_EC_32f(
        controller_.data(), static_cast<std::int32_t>(bins_), static_cast<std::int32_t>(shape.hop),
        static_cast<std::int32_t>(taps_), static_cast<std::int32_t>(shape.rate));
}

Zsp32fc* Filters::nextFar()
{
    newest_ = (newest_ == 0 ? taps_ : newest_) - 1;
    return *history();
}

void Filters::filter(Spectrum mic, Steps& steps)
{
    steps.add(zspsSubbandFilter_EC_32fc(
        mic.data(), history(), adaptive_.table.data(), fixed_.table.data(), variance_.table.data(),
        adaptiveError_.data(), fixedError_.data(), farPower_.data(), residual_.data(), count(mic),
        static_cast<std::int32_t>(taps_)));
}

void Filters::prepareSteps(Spectrum mic, Steps& steps)
{
    steps.add(zspsSubbandAPControllerUpdate_EC_32f(history(), mic.data(), step_.data(), kStepSize,
                                                   controller_.data()));
}

// The step of a tap is k p with k = step power / (S + psi + 1): the controller's step for the whole
// far-end power, the expected residual S, and psi, the error's smoothed power.
void Filters::adapt(Steps& steps)
{
    for (std::size_t b = 0; b < bins_; ++b) {
        const float e = power(adaptiveError_[b]);
        errorPower_[b] = smooth(errorPower_[b], e > errorPower_[b] ? 0.85F : 0.95F, e);
        gain_[b] =
            static_cast<float>(step_[b]) * farPower_[b] / (residual_[b] + errorPower_[b] + 1.0F);
        forget_[b] = excited(b) ? forgetPerFrame_ : 0.0F;
    }
    steps.add(zspsSubbandAdapt_EC_32fc(adaptiveError_.data(), gain_.data(), forget_.data(),
                                       history(), adaptive_.table.data(), variance_.table.data(),
                                       static_cast<std::int32_t>(rowBins_),
                                       static_cast<std::int32_t>(taps_), kLearnt, kTapEnergyFloor));
}

void Filters::control(Steps& steps)
{
    steps.add(zspsSubbandController_EC_32f(adaptiveError_.data(), fixedError_.data(),
                                           adaptive_.table.data(), fixed_.table.data(),
                                           &adaptFactor_, controller_.data()));
}

void Filters::doubt(float share)
{
    for (std::size_t t = 0; t < taps_; ++t)
        for (std::size_t b = 0; b < rowBins_; ++b) {
            float& p = variance_.table[t][b];
            p = std::max(p, share * initialVariance_[t]);
        }
}

void Filters::clear(Steps& steps)
{
    for (auto* rows : {&adaptive_, &fixed_})
        std::fill(rows->values.begin(), rows->values.end(), Zsp32fc{});
    steps.add(zspsSubbandControllerReset_EC_32f(controller_.data()));
}

void Filters::uncertainty(std::span<float> perBin) const
{
    for (std::size_t b = 0; b < bins_; ++b) {
        float sum = 0;
        for (const float* p : variance_.table)
            sum += p[b];
        perBin[b] = sum / kUnitTapEnergy;
    }
}

double Filters::centre() const
{
    double sum = 0, moment = 0;
    for (std::size_t t = 0; t < taps_; ++t) {
        const auto here = static_cast<double>(energy(Spectrum(fixed_.table[t], rowBins_)));
        sum += here;
        moment += static_cast<double>(t) * here;
    }
    return sum > 0 ? moment / sum : -1;
}

} // namespace zsp::voice::echo
