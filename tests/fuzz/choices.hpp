// Where the caller's choices come from: a seed, or the bytes that a fuzzer mutates.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <span>

namespace zsp::fuzz {

class Choices {
  public:
    explicit Choices(std::uint64_t seed) : seed_(seed) {}
    explicit Choices(std::span<const std::uint8_t> bytes) : bytes_(bytes), fromBytes_(true) {}

    /// No bytes are left; every further choice is the first one.
    bool exhausted() const { return fromBytes_ && bytes_.empty(); }

    /// How many bytes are left.
    std::size_t left() const { return bytes_.size(); }

    template <std::unsigned_integral T>
    T bits()
    {
        if (!fromBytes_) return static_cast<T>(next() >> (64 - std::numeric_limits<T>::digits));
        T value = 0;
        const std::size_t count = std::min(sizeof(T), bytes_.size());
        if (count > 0) std::memcpy(&value, bytes_.data(), count); // an empty span has no address
        bytes_ = bytes_.subspan(count);
        return value;
    }

    /// 0 to limit - 1.
    int below(int limit)
    {
        const auto n = static_cast<std::uint32_t>(limit);
        return static_cast<int>(n <= 256 ? bits<std::uint16_t>() % n : bits<std::uint32_t>() % n);
    }

    bool oneIn(int n) { return below(n) == n - 1; }

    std::int64_t between(std::int64_t low, std::int64_t high)
    {
        const std::uint64_t span =
            static_cast<std::uint64_t>(high) - static_cast<std::uint64_t>(low);
        if (span < 0x7fff'ffff) return low + below(static_cast<int>(span) + 1);
        return low + static_cast<std::int64_t>(bits<std::uint64_t>() % (span + 1));
    }

    template <typename T, std::size_t n>
    T oneOf(const std::array<T, n>& values)
    {
        return values[static_cast<std::size_t>(below(static_cast<int>(n)))];
    }

    /// Samples in one of several manners: silence, a constant, full scale, small, a wave, corners
    /// among others, all values alike.
    template <std::integral T>
    void fill(std::span<T> samples)
    {
        using U = std::make_unsigned_t<T>;
        constexpr T kMost = std::numeric_limits<T>::max(), kLeast = std::numeric_limits<T>::min();
        if (isExpanded()) return Choices(bits<std::uint16_t>()).fill(samples);
        const int manner = below(8), shift = below(std::numeric_limits<U>::digits);
        const auto value = bits<U>();
        const int period = 1 + below(64);
        for (std::size_t i = 0; i < samples.size(); ++i) {
            const auto any = static_cast<T>(bits<U>());
            const auto small = static_cast<T>(any >> shift);
            const bool upper = (i / static_cast<std::size_t>(period)) % 2 == 0;
            const std::array<T, 4> corners = {0, kMost, kLeast, small};
            switch (manner) {
            case 0:
                samples[i] = any;
                break;
            case 1:
                samples[i] = 0;
                break;
            case 2:
                samples[i] = static_cast<T>(value);
                break;
            case 3:
                samples[i] = any & 1 ? kMost : kLeast;
                break;
            case 4:
                samples[i] = static_cast<T>(upper ? value : U(~value));
                break;
            case 5:
                samples[i] = corners[static_cast<U>(any) % 4];
                break;
            default:
                samples[i] = small;
                break;
            }
        }
    }

    /// The same on the scale of 16-bit samples; also fractions, the smallest numbers and great
    /// ones.
    void fill(std::span<float> samples)
    {
        if (isExpanded()) return Choices(bits<std::uint16_t>()).fill(samples);
        const int manner = below(8);
        const float scale = std::bit_cast<float>(bits<std::uint8_t>() % 190 << 23);
        std::array<std::int16_t, 64> words;
        for (std::size_t i = 0; i < samples.size(); i += words.size()) {
            const std::size_t count = std::min(words.size(), samples.size() - i);
            fill(std::span(words.data(), count));
            for (std::size_t k = 0; k < count; ++k) {
                const auto word = static_cast<float>(words[k]);
                samples[i + k] = manner == 0 ? word * scale : manner == 1 ? word / 32768 : word;
            }
        }
    }

  private:
    /// Whether samples come from a short seed among the bytes: most do, or few calls would use the
    /// bytes up.
    bool isExpanded() { return fromBytes_ && below(4) != 0; }

    std::uint64_t next() // splitmix64
    {
        seed_ += 0x9e37'79b9'7f4a'7c15;
        std::uint64_t z = seed_;
        z = (z ^ (z >> 30)) * 0xbf58'476d'1ce4'e5b9;
        z = (z ^ (z >> 27)) * 0x94d0'49bb'1331'11eb;
        return z ^ (z >> 31);
    }

    std::uint64_t seed_ = 0;
    std::span<const std::uint8_t> bytes_;
    bool fromBytes_ = false;
};

} // namespace zsp::fuzz
