// Loss of packets, and measures of what is left.

#include "signals/loss.hpp"

#include "signals/measure.hpp"
#include "signals/room.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace zsp::signals {

namespace {

/// Powers of the bins 1 .. N/2-1 of a Hann window's spectrum, straight from the sums.
std::vector<double> powers(std::span<const std::int16_t> samples)
{
    const std::size_t n = samples.size();
    std::vector<double> cosine(n);
    for (std::size_t i = 0; i < n; ++i)
        cosine[i] =
            std::cos(2 * std::numbers::pi * static_cast<double>(i) / static_cast<double>(n));
    std::vector<double> all;
    for (std::size_t k = 1; k < n / 2; ++k) {
        double re = 0, im = 0;
        for (std::size_t i = 0; i < n; ++i) {
            const double x = samples[i] * (0.5 - 0.5 * cosine[i]);
            re += x * cosine[i * k % n];
            im += x * cosine[(i * k + n / 4) % n]; // a quarter turn on
        }
        all.push_back(re * re + im * im);
    }
    return all;
}

} // namespace

std::vector<bool> lostPackets(std::size_t count, double share, std::uint32_t seed)
{
    Noise noise(seed);
    std::vector<bool> lost(count);
    for (std::size_t i = 1; i < count; ++i)
        lost[i] = noise.uniform() < share;
    return lost;
}

double spectralDistanceDb(std::span<const std::int16_t> reference,
                          std::span<const std::int16_t> test)
{
    const auto wanted = powers(reference);
    const auto got = powers(test);
    const double floor = std::max(*std::max_element(wanted.begin(), wanted.end()) * 1e-5, 1.0);
    double sum = 0;
    for (std::size_t k = 0; k < wanted.size(); ++k) {
        const double difference = decibels(std::max(got[k], floor), std::max(wanted[k], floor));
        sum += difference * difference;
    }
    return std::sqrt(sum / static_cast<double>(wanted.size()));
}

Damage damage(std::span<const std::int16_t> reference, std::span<const std::int16_t> test,
              const std::vector<bool>& lost, std::size_t length)
{
    double ratio = 0, distance = 0;
    std::size_t count = 0;
    for (std::size_t first = 0; first < lost.size(); ++first) {
        if (!lost[first]) continue;
        std::size_t end = first;
        while (end < lost.size() && lost[end])
            ++end;
        end = std::min(end + 1, reference.size() / length); // and the first good one
        const std::size_t begin = first * length;
        const auto wanted = reference.subspan(begin, end * length - begin);
        const auto got = test.subspan(begin, wanted.size());
        first = end - 1;
        if (levelDbfs(wanted) < -45) continue;
        ratio += std::clamp(snrDb(wanted, got), -10.0, 45.0);
        // Windows of a packet's length every half packet, also across both ends of the gap.
        double distances = 0;
        int windows = 0;
        for (std::size_t i = begin - length / 2; i + length <= end * length; i += length / 2) {
            distances += spectralDistanceDb(reference.subspan(i, length), test.subspan(i, length));
            ++windows;
        }
        distance += distances / windows;
        ++count;
    }
    const double n = static_cast<double>(std::max<std::size_t>(count, 1));
    return {ratio / n, distance / n};
}

} // namespace zsp::signals
