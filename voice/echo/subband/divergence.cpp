// Tells a changed echo path from double talk.

#include "voice/echo/subband/divergence.hpp"

#include <algorithm>
#include <numeric>

namespace zsp::voice::echo {

namespace {

constexpr float kFaint = 3e-3F; // -25 dB

} // namespace

void Divergence::layOut(Memory& memory, const Shape& shape)
{
    for (auto* row : {&crossPower_, &echoPower_, &micPower_})
        *row = memory.take<float>(shape.bins);
}

void Divergence::start(const Shape& shape)
{
    bins_ = shape.bins;
    alpha_ = shape.smoothing(0.060);
    foundAlpha_ = shape.smoothing(0.3);
    loudestDecay_ = shape.smoothing(1.0);
    holdFrames_ = static_cast<int>(shape.rate / 5 / shape.hop);
}

// Near-end speech in opposite phase to the echo makes the sums look like a new path, but only in
// the few bins of its strongest harmonics.
bool Divergence::echoAddedInMostBins(const Filters& filters, const Mixer& mixer) const
{
    std::size_t excited = 0, added = 0;
    for (std::size_t b = 0; b < bins_; ++b) {
        if (!filters.excited(b)) continue;
        ++excited;
        added += mixer.fixedPower()[b] > mixer.micPower()[b] ? 1U : 0U;
    }
    return 2 * added > excited;
}

// Whether the fixed filter's echo estimate is no more found in the microphone. The regression of
// the microphone Y on the estimate Y - Ef is 1 for the right path, whatever the near end says, and
// 0 for an estimate that has nothing to do with the echo. Each bin counts relative to its power, so
// that a few strong harmonics of a near-end talker, which may have any phase, do not decide. An
// estimate 17 dB below the microphone, as beside a loud near end, tells nothing.
bool Divergence::estimateLost(const Filters& filters, Spectrum mic)
{
    float found = 0, estimated = 0, excited = 0;
    for (std::size_t b = 0; b < bins_; ++b) {
        const Zsp32fc y = mic[b], echo = difference(y, filters.fixedError()[b]);
        crossPower_[b] = smooth(crossPower_[b], foundAlpha_, y.re * echo.re + y.im * echo.im);
        echoPower_[b] = smooth(echoPower_[b], foundAlpha_, power(echo));
        micPower_[b] = smooth(micPower_[b], foundAlpha_, power(y));
        if (!filters.excited(b)) continue;
        const float weight = 1.0F / (micPower_[b] + echoPower_[b] + 1.0F);
        found += weight * crossPower_[b];
        estimated += weight * echoPower_[b];
        excited += 1.0F;
    }
    return estimated > 0.03F * excited && found < 0.3F * estimated;
}

// Faint moments say nothing: what the taps are wrong by may then be louder than the end of an echo.
Divergence::Verdict Divergence::judge(const Filters& filters, const Mixer& mixer, Spectrum mic)
{
    const auto residual = filters.residual();
    fixedSum_ = smooth(fixedSum_, alpha_, energy(filters.fixedError()));
    micSum_ = smooth(micSum_, alpha_, energy(mic));
    residualSum_ =
        smooth(residualSum_, alpha_, std::accumulate(residual.begin(), residual.end(), 0.0F));
    loudest_ = std::max(micSum_, loudest_ * loudestDecay_);
    const bool lost = estimateLost(filters, mic) && fixedSum_ > 2.0F * residualSum_;
    if (hold_ > 0) {
        --hold_;
        return Verdict::none;
    }
    const bool wrong = fixedSum_ > 1.5F * micSum_ && echoAddedInMostBins(filters, mixer);
    if (fixedSum_ <= kFaint * loudest_ || !(wrong || lost)) return Verdict::none;

    hold_ = holdFrames_;
    return wrong ? Verdict::wrong : Verdict::lost;
}

} // namespace zsp::voice::echo
