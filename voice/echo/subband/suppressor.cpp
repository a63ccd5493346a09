// Attenuates bins in which echo is expected to be left, down to the background noise.

#include "voice/echo/subband/suppressor.hpp"

#include <algorithm>
#include <cmath>

namespace zsp::voice::echo {

namespace {

constexpr float kCaution = 0.1F; // of the estimated echo, left after a start
constexpr float kLowestGain = 0.03F;

} // namespace

void Suppressor::layOut(Memory& memory, const Shape& shape)
{
    for (auto* row : {&estimatePower_, &caution_, &outputPower_, &noiseFloor_, &echoLeft_, &gain_})
        *row = memory.take<float>(shape.bins);
}

void Suppressor::start(const Shape& shape)
{
    noiseGrowth_ = 1.0F + static_cast<float>(shape.hop) / static_cast<float>(shape.rate);
    cautionDecay_ = shape.smoothing(1.5);
    std::fill(gain_.begin(), gain_.end(), 1.0F);
    beCautious();
}

void Suppressor::beCautious()
{
    std::fill(caution_.begin(), caution_.end(), kCaution);
}

void Suppressor::follow(const Filters& filters, Spectrum mic, Spectrum output)
{
    for (std::size_t b = 0; b < gain_.size(); ++b) {
        const float now = power(output[b]);
        outputPower_[b] = smooth(outputPower_[b], 0.8F, now);
        noiseFloor_[b] = outputPower_[b] < noiseFloor_[b]
                             ? 0.9F * noiseFloor_[b] + 0.1F * outputPower_[b]
                             : noiseFloor_[b] * noiseGrowth_;
        noiseFloor_[b] = std::max(noiseFloor_[b], 1.0F);
        const float input = std::max(0.3F * now + 0.7F * outputPower_[b], 1e-6F);
        const float audible = std::min(1.0F, std::sqrt(noiseFloor_[b] / input));
        // Voiced speech excites a bin with one frequency at a time, which teaches less than the
        // filters' variance counts: in the first seconds a share of the estimated echo is left in
        // any case.
        estimatePower_[b] = smooth(estimatePower_[b], 0.8F, power(difference(mic[b], output[b])));
        if (filters.excited(b)) caution_[b] = smooth(caution_[b], cautionDecay_, 0.0F);
        echoLeft_[b] = std::max(filters.residual()[b], caution_[b] * estimatePower_[b]);
        const float doubt = echoLeft_[b] / input;
        const float gain = std::max({1.0F - 4.0F * doubt * doubt, kLowestGain, audible});
        gain_[b] = gain < gain_[b] ? 0.4F * gain_[b] + 0.6F * gain : 0.5F * (gain_[b] + gain);
    }
}

void Suppressor::apply(std::span<Zsp32fc> output) const
{
    for (std::size_t b = 0; b < gain_.size(); ++b) {
        output[b].re *= gain_[b];
        output[b].im *= gain_[b];
    }
}

} // namespace zsp::voice::echo
