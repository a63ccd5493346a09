// Levels and ratios of signals in decibels.

#include "signals/measure.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

namespace zsp::signals {

namespace {

constexpr double kFullScalePower = 32768.0 * 32768.0;
constexpr double kSilentDbfs = -55.0;

double energy(std::span<const std::int16_t> samples)
{
    double sum = 0.0;
    for (const std::int16_t x : samples)
        sum += 1.0 * x * x;
    return sum;
}

double errorEnergy(std::span<const std::int16_t> reference, std::span<const std::int16_t> test)
{
    double sum = 0.0;
    const std::size_t length = std::min(reference.size(), test.size());
    for (std::size_t i = 0; i < length; ++i) {
        const double error = reference[i] - test[i];
        sum += error * error;
    }
    return sum;
}

} // namespace

double decibels(double power, double reference)
{
    constexpr double kLeast = 1e-15;
    return 10.0 * std::log10(std::max(power / reference, kLeast));
}

double levelDbfs(std::span<const std::int16_t> samples)
{
    return decibels(energy(samples), kFullScalePower * static_cast<double>(std::max<std::size_t>(
                                                           samples.size(), 1)));
}

double snrDb(std::span<const std::int16_t> reference, std::span<const std::int16_t> test)
{
    // An error below one unit per segment would be no error at all.
    return decibels(energy(reference), std::max(errorEnergy(reference, test), 1.0));
}

std::vector<double> snrOverTime(std::span<const std::int16_t> reference,
                                std::span<const std::int16_t> test, std::size_t length)
{
    std::vector<double> ratios;
    const std::size_t common = std::min(reference.size(), test.size());
    for (std::size_t i = 0; i + length <= common; i += length) {
        const auto part = reference.subspan(i, length);
        ratios.push_back(levelDbfs(part) < kSilentDbfs ? std::numeric_limits<double>::quiet_NaN()
                                                       : snrDb(part, test.subspan(i, length)));
    }
    return ratios;
}

double segmentalSnrDb(std::span<const std::int16_t> reference, std::span<const std::int16_t> test,
                      int rate)
{
    double sum = 0.0;
    int count = 0;
    for (const double ratio : snrOverTime(reference, test, static_cast<std::size_t>(rate / 50))) {
        if (std::isnan(ratio)) continue;
        sum += std::clamp(ratio, -10.0, 45.0);
        ++count;
    }
    return count > 0 ? sum / count : std::numeric_limits<double>::quiet_NaN();
}

std::vector<std::int16_t> difference(std::span<const std::int16_t> reference,
                                     std::span<const std::int16_t> test)
{
    std::vector<std::int16_t> result(std::min(reference.size(), test.size()));
    for (std::size_t i = 0; i < result.size(); ++i)
        result[i] = static_cast<std::int16_t>(std::clamp(reference[i] - test[i], -32768, 32767));
    return result;
}

} // namespace zsp::signals
