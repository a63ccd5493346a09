// Input for benchmarks: a pool of noise that the measured call walks through, so that no call sees
// the same samples again soon and nothing is learnt by heart.
#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <span>
#include <vector>

namespace zsp::bench {

/// Loud speech: the energy of 240 samples is below 2^30.
inline constexpr int kLoudSpeech = 3000;

class WordPool {
  public:
    /// Uniform words of at most `limit` in magnitude.
    explicit WordPool(std::uint32_t seed, int limit = 32767) : samples_(kSize)
    {
        std::mt19937 engine(seed);
        std::uniform_int_distribution<int> uniform(-limit, limit);
        for (auto& s : samples_)
            s = static_cast<std::int16_t>(uniform(engine));
    }

    /// The next `count` words, at most 4096.
    std::span<const std::int16_t> next(std::size_t count)
    {
        position_ = (position_ + 331) % (kSize - 4096);
        return {samples_.data() + position_, count};
    }

  private:
    static constexpr std::size_t kSize = 65536;
    std::vector<std::int16_t> samples_;
    std::size_t position_ = 0;
};

} // namespace zsp::bench
