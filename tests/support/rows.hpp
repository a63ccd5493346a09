// Vectors by pointer, as far-end histories and taps are given.
#pragma once

#include "tests/support/samples.hpp"

#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <vector>

namespace zsp::test {

template <typename T>
struct Rows {
    /// `count` rows of `length` values that begin `offset` values behind an aligned address.
    Rows(std::size_t count, std::size_t length, std::size_t offset = 0)
        : values(count, std::vector<T>(offset + length)), in(count), out(count)
    {
        for (std::size_t i = 0; i < count; ++i)
            in[i] = out[i] = values[i].data() + offset;
    }
    Rows(const Rows& other) : values(other.values), in(other.in), out(other.out)
    {
        for (std::size_t i = 0; i < values.size(); ++i)
            in[i] = out[i] = values[i].data() + (other.in[i] - other.values[i].data());
    }
    Rows& operator=(const Rows&) = delete;

    void fill(Samples& samples, float limit)
    {
        for (auto& row : values)
            for (T& v : row)
                v = value(samples, limit);
    }

    static T value(Samples& samples, float limit)
    {
        if constexpr (std::is_same_v<T, float>) {
            return samples.floats(1, limit)[0];
        } else {
            const auto parts = samples.floats(2, limit);
            return {parts[0], parts[1]};
        }
    }

    /// Whether all values are the same to the last bit; what is no number may differ in its bits.
    bool equals(const Rows& other) const
    {
        constexpr std::size_t kParts = sizeof(T) / sizeof(float);
        for (std::size_t i = 0; i < values.size(); ++i)
            for (std::size_t k = 0; k < values[i].size(); ++k) {
                const auto got = std::bit_cast<std::array<float, kParts>>(values[i][k]);
                const auto want = std::bit_cast<std::array<float, kParts>>(other.values[i][k]);
                for (std::size_t part = 0; part < kParts; ++part)
                    if (std::bit_cast<std::uint32_t>(got[part]) !=
                            std::bit_cast<std::uint32_t>(want[part]) &&
                        !(std::isnan(got[part]) && std::isnan(want[part])))
                        return false;
            }
        return true;
    }

    std::vector<std::vector<T>> values;
    std::vector<const T*> in;
    std::vector<T*> out;
};

} // namespace zsp::test
