// Test input: one third corners, one third spread evenly over the magnitudes, one third uniform.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <random>
#include <vector>

namespace zsp::test {

class Samples {
  public:
    explicit Samples(std::uint32_t seed) : engine_(seed) {}

    /// One integer of type T from the mix.
    template <typename T>
    T integer()
    {
        constexpr int kBits = std::numeric_limits<T>::digits;
        constexpr std::int64_t kMax = std::numeric_limits<T>::max();
        constexpr std::int64_t kMin = std::numeric_limits<T>::min();
        switch (below(3)) {
        case 0: {
            const std::int64_t power = std::int64_t{1} << below(kBits);
            const std::int64_t corners[] = {0,        1,        -1,    kMax,   kMin,
                                            kMax - 1, kMin + 1, power, -power, power - 1};
            return static_cast<T>(corners[below(10)]);
        }
        case 1: {
            const std::int64_t magnitude = uniform(0, (std::int64_t{1} << (1 + below(kBits))) - 1);
            return static_cast<T>(below(2) ? magnitude : -magnitude);
        }
        default:
            return static_cast<T>(uniform(kMin, kMax));
        }
    }

    template <typename T>
    std::vector<T> integers(std::size_t count)
    {
        std::vector<T> values(count);
        for (T& v : values)
            v = integer<T>();
        return values;
    }

    /// The two ends of the range, at random.
    std::vector<std::int16_t> extremeWords(std::size_t count)
    {
        std::vector<std::int16_t> values(count);
        for (auto& v : values)
            v = static_cast<std::int16_t>(below(2) ? 32767 : -32768);
        return values;
    }

    std::vector<std::int16_t> words(std::size_t count) { return integers<std::int16_t>(count); }
    std::vector<std::int32_t> longs(std::size_t count) { return integers<std::int32_t>(count); }

    /// Floats in -limit..limit, evenly spread over the magnitudes of 60 dB and some zeros.
    std::vector<float> floats(std::size_t count, float limit)
    {
        std::vector<float> values(count);
        for (float& v : values) {
            const double db = std::uniform_real_distribution<double>(-60, 0)(engine_);
            const double magnitude = below(8) ? limit * std::pow(10.0, db / 20) : 0.0;
            v = static_cast<float>(below(2) ? magnitude : -magnitude);
        }
        return values;
    }

    std::int64_t uniform(std::int64_t low, std::int64_t high)
    {
        return std::uniform_int_distribution<std::int64_t>(low, high)(engine_);
    }

    int below(int limit) { return static_cast<int>(uniform(0, limit - 1)); }

  private:
    std::mt19937 engine_;
};

} // namespace zsp::test
