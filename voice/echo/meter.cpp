// Smoothed powers and what follows from them.

#include "voice/echo/meter.hpp"

#include <algorithm>
#include <cmath>

namespace zsp::voice::echo {

namespace {

float ratioDb(float above, float below)
{
    return 10 * std::log10((above + 1) / (below + 1));
}

} // namespace

void Meter::start(const Shape& shape)
{
    taps_ = shape.taps;
    soonAlpha_ = shape.smoothing(0.3);
    lossAlpha_ = shape.smoothing(0.5);
    tailAlpha_ = shape.smoothing(1.0);
    nearHoldFrames_ = static_cast<int>(shape.rate / 5 / shape.hop); // 200 ms
    warmUp_ = static_cast<int>(shape.rate / 10 / shape.hop);        // 100 ms
    window_ = static_cast<int>(shape.rate / shape.hop);             // 1 s
}

// Noise is what the output never falls below for one to two windows.
float Meter::noiseOf(float power)
{
    if (age_ < warmUp_) {
        ++age_; // smoothed powers are still on their way up
        return power;
    }
    least_ = std::min(least_, power);
    if (++windowAge_ == window_) {
        leastBefore_ = least_;
        least_ = power;
        windowAge_ = 0;
    }
    return std::min(least_, leastBefore_);
}

// The near end talks when the output is louder than echo and noise in it can be.
void Meter::update(const Filters& filters, const Suppressor& suppressor, Spectrum mic,
                   Spectrum output)
{
    constexpr float kEchoMargin = 4, kNoiseMargin = 4;
    constexpr float kCertain = 4, kUncertain = 2;
    float linear = 0, left = 0, removed = 0, far = 0, in = 0, out = 0;
    std::size_t excited = 0;
    for (std::size_t b = 0; b < suppressor.echoLeft().size(); ++b) {
        linear += suppressor.outputPower()[b];
        left += suppressor.echoLeft()[b];
        if (!filters.excited(b)) continue;
        ++excited;
        removed += suppressor.estimatePower()[b];
        far += filters.farPower()[b];
        in += power(mic[b]);
        out += power(output[b]);
    }
    farTalks_ = 4 * excited >= suppressor.echoLeft().size();
    if (nearHold_ > 0) --nearHold_;
    if (linear > kEchoMargin * left + kNoiseMargin * noiseOf(linear)) nearHold_ = nearHoldFrames_;
    if (!farTalks_) return;

    removed_ = smooth(removed_, soonAlpha_, removed);
    left_ = smooth(left_, soonAlpha_, left);
    converged_ = removed_ > (converged_ ? kUncertain : kCertain) * left_;
    farPower_ = smooth(farPower_, tailAlpha_, far * kUnitTapEnergy / static_cast<float>(taps_));
    echoPower_ = smooth(echoPower_, tailAlpha_, removed);
    if (nearHold_ > 0) return;
    micPower_ = smooth(micPower_, lossAlpha_, in);
    outPower_ = smooth(outPower_, lossAlpha_, out);
}

float Meter::echoLossDb() const
{
    return ratioDb(micPower_, outPower_);
}

float Meter::tailLossDb() const
{
    return echoPower_ > 1 ? ratioDb(farPower_, echoPower_) : 0.0F;
}

} // namespace zsp::voice::echo
