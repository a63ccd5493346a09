#include "tools/zsp/voice/pitch_search.hpp"

#include "tools/zsp/io/failure.hpp"

#include "zspsc.h"

#include <algorithm>
#include <cmath>

namespace zsp::host {

PitchSearch::PitchSearch(std::size_t frameLength, int lagMin)
    : half_(frameLength / 2), lagMin_(lagMin), lagMax_(8 * lagMin - 1),
      signal_(static_cast<std::size_t>(lagMax_) + frameLength), scaled_(signal_.size()),
      lastLag_(lagMin)
{
}

double PitchSearch::correlation(const std::int16_t* half, int lag) const
{
    double sum = 0;
    for (std::size_t i = 0; i < half_; ++i)
        sum += half[i] * (half - lag)[i];
    return sum;
}

PitchSearch::Best PitchSearch::searchHalf(const std::int16_t* half)
{
    Best best;
    double bestRatio = 0;
    bool tone = false;
    for (int section = 4; section >= 1; section /= 2) { // long lags first
        const int first = section * lagMin_, last = 2 * first - 1;
        std::int32_t maximum = 0, lag = 0;
        require(zspsAutoCorrLagMax_Inv_16s(half, static_cast<std::int32_t>(half_), first, last,
                                           &maximum, &lag),
                "zspsAutoCorrLagMax_Inv_16s");
        const double energy = correlation(half - lag, 0);
        const double ratio = maximum / std::sqrt(energy + 1.0);
        tone = tone || (energy > 0 && maximum > 0.65 * energy);
        if (section == 4 || ratio > 0.85 * bestRatio) {
            best = {lag, static_cast<double>(maximum), energy};
            bestRatio = ratio;
        }
    }
    tone_ = static_cast<std::uint16_t>(tone_ >> 1 | (tone ? 0x4000 : 0));
    return best;
}

/// Correlations of the signal's second difference at all lags, over that of its first at lag 0.
std::int16_t PitchSearch::highPassCorrelation(const std::int16_t* half) const
{
    double largest = 0;
    double before = correlation(half, lagMin_), here = correlation(half, lagMin_ + 1);
    for (int lag = lagMin_ + 1; lag < lagMax_; ++lag) {
        const double next = correlation(half, lag + 1);
        largest = std::max(largest, std::abs(2 * here - before - next));
        before = here;
        here = next;
    }
    const double energy = std::abs(2 * correlation(half, 0) - 2 * correlation(half, 1));
    const double ratio = energy > 0 ? largest / energy : 0;
    return static_cast<std::int16_t>(std::min(ratio * 32768, 32767.0));
}

void PitchSearch::search(std::span<const std::int16_t> frame)
{
    const auto past = static_cast<std::ptrdiff_t>(lagMax_);
    std::copy(signal_.end() - past, signal_.end(), signal_.begin());
    std::copy(frame.begin(), frame.end(), signal_.begin() + past);

    // Down to where no sum can leave 32 bits.
    double energy = 0;
    for (const std::int16_t x : signal_)
        energy += x * x;
    int shift = 0;
    while (std::ldexp(energy, -2 * shift) > 1 << 30)
        ++shift;
    std::transform(signal_.begin(), signal_.end(), scaled_.begin(),
                   [shift](std::int16_t x) { return static_cast<std::int16_t>(x >> shift); });

    double correlations = 0, energies = 0;
    int matches = 0;
    for (int i = 0; i < 2; ++i) {
        const std::int16_t* half = scaled_.data() + past + i * static_cast<std::ptrdiff_t>(half_);
        const Best best = searchHalf(half);
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

} // namespace zsp::host
