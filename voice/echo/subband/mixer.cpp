// Weighs the two errors by their smoothed powers.

#include "voice/echo/subband/mixer.hpp"

#include <algorithm>

namespace zsp::voice::echo {

namespace {

/// From one value to another.
Zsp32fc blend(Zsp32fc from, Zsp32fc to, float share)
{
    return {from.re + share * (to.re - from.re), from.im + share * (to.im - from.im)};
}

} // namespace

void Mixer::layOut(Memory& memory, const Shape& shape)
{
    for (auto* row : {&adaptivePower_, &fixedPower_, &micPower_, &share_})
        *row = memory.take<float>(shape.bins);
}

void Mixer::start(const Shape& shape)
{
    alpha_ = shape.smoothing(0.015);
}

void Mixer::mix(const Filters& filters, Spectrum mic, std::span<Zsp32fc> output)
{
    for (std::size_t b = 0; b < share_.size(); ++b) {
        const Zsp32fc adaptive = filters.adaptiveError()[b], fixed = filters.fixedError()[b];
        adaptivePower_[b] = smooth(adaptivePower_[b], alpha_, power(adaptive));
        fixedPower_[b] = smooth(fixedPower_[b], alpha_, power(fixed));
        micPower_[b] = smooth(micPower_[b], alpha_, power(mic[b]));
        const float ratio = adaptivePower_[b] / std::max(fixedPower_[b], 1e-6F);
        share_[b] = smooth(share_[b], 0.7F, std::clamp((0.9F - ratio) / 0.4F, 0.0F, 1.0F));
        // Neither filter may make a bin louder than it came in: then the microphone is better.
        const float errorPower = fixedPower_[b] + share_[b] * (adaptivePower_[b] - fixedPower_[b]);
        const float excess = errorPower / std::max(micPower_[b], 1e-6F);
        const float untouched = std::clamp(excess - 1.0F, 0.0F, 1.0F);
        output[b] = blend(blend(fixed, adaptive, share_[b]), mic[b], untouched);
    }
}

} // namespace zsp::voice::echo
