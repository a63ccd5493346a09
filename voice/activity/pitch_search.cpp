// Correlations over three ranges of lags, shorter lags preferred.

#include "voice/activity/pitch_search.hpp"
#include "zspsc/correlation.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace zsp::voice::activity {

PitchSearch::PitchSearch(std::size_t frameLength, std::int32_t lagMin)
    : half_(frameLength / 2), lagMin_(lagMin), lagMax_(8 * lagMin - 1), lastLag_(lagMin)
{
}

// The whole signal's energy is at most 2^30, and no part of this sum exceeds it.
std::int32_t PitchSearch::correlation(const std::int16_t* half, std::int32_t lag) const
{
    std::int32_t sum = 0;
    for (std::size_t i = 0; i < half_; ++i)
        sum += half[i] * (half - lag)[i];
    return sum;
}

PitchSearch::Best PitchSearch::searchHalf(const std::int16_t* half, Steps& steps)
{
    Best best;
    double bestRatio = 0;
    bool tone = false;
    for (std::int32_t section = 4; section >= 1; section /= 2) { // long lags first
        const std::int32_t first = section * lagMin_, last = 2 * first - 1;
        std::int32_t maximum = 0, lag = first;
        steps.add(zspsAutoCorrLagMax_Inv_16s(half, static_cast<std::int32_t>(half_), first, last,
                                             &maximum, &lag));
        const std::int32_t energy = correlation(half - lag, 0);
        const double ratio = maximum / std::sqrt(energy + 1.0);
        tone = tone || (energy > 0 && maximum > 0.65 * energy);
        if (section == 4 || ratio > 0.85 * bestRatio) {
            best = {lag, maximum, energy};
            bestRatio = ratio;
        }
    }
    tone_ = static_cast<std::uint16_t>(tone_ >> 1 | (tone ? 0x4000 : 0));
    return best;
}

/// Correlations of the signal's second difference at all lags, over that of its first at lag 0.
std::int16_t PitchSearch::highPassCorrelation(const std::int16_t* half) const
{
    std::int64_t largest = 0;
    std::int64_t before = correlation(half, lagMin_), here = correlation(half, lagMin_ + 1);
    for (std::int32_t lag = lagMin_ + 1; lag < lagMax_; ++lag) {
        const std::int64_t next = correlation(half, lag + 1);
        largest = std::max(largest, std::abs(2 * here - before - next));
        before = here;
        here = next;
    }
    const std::int64_t energy =
        std::abs(2 * std::int64_t{correlation(half, 0)} - 2 * std::int64_t{correlation(half, 1)});
    const double ratio =
        energy > 0 ? static_cast<double>(largest) / static_cast<double>(energy) : 0;
    return static_cast<std::int16_t>(std::min(ratio * 32768, 32767.0));
}

void PitchSearch::search(In16 frame, Steps& steps)
{
    const auto past = static_cast<std::size_t>(lagMax_), length = past + frame.size();
    std::copy_n(&signal_[frame.size()], past, signal_.begin());
    std::copy(frame.begin(), frame.end(), &signal_[past]);

    // Down to where no sum can leave 32 bits.
    std::int64_t energy = 0;
    for (std::size_t i = 0; i < length; ++i)
        energy += signal_[i] * signal_[i];
    int shift = 0;
    while (energy > std::int64_t{1} << (30 + 2 * shift))
        ++shift;
    std::array<std::int16_t, kLongestSignal> scaled{};
    const In16 all(signal_.data(), length);
    std::transform(all.begin(), all.end(), scaled.begin(),
                   [shift](std::int16_t x) { return static_cast<std::int16_t>(x >> shift); });

    double correlations = 0, energies = 0;
    std::int32_t matches = 0;
    for (std::size_t i = 0; i < 2; ++i) {
        const std::int16_t* half = &scaled[past + i * half_];
        const Best best = searchHalf(half, steps);
        correlations += best.correlation;
        energies += best.energy;
        matches += std::abs(best.lag - lastLag_) < 4 ? 1 : 0;
        lastLag_ = best.lag;
        if (i == 1) bestHighPass_ = highPassCorrelation(half);
    }
    stable_ = matches + lastMatches_ >= 4;
    lastMatches_ = matches;
    predictable_ = correlations > 0.65 * energies;
}

} // namespace zsp::voice::activity
