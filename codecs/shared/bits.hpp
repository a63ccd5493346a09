// Frames as fields of bits, one behind the other.
#pragma once

#include "core/spans.hpp"

#include <array>
#include <cassert>
#include <cstddef>
#include <cstdint>

namespace zsp::codecs {

/// Several fields in the lower bits of a number, the last one lowest; at most 56 in all. Where the
/// widths are constants this is quicker than to put each by itself.
template <std::size_t n>
constexpr std::int64_t joined(const std::array<int, n>& widths, const std::int16_t* fields) noexcept
{
    std::uint64_t bits = 0;
    for (std::size_t i = 0; i < n; ++i)
        bits = bits << widths[i] | static_cast<std::uint16_t>(fields[i]);
    return static_cast<std::int64_t>(bits);
}

template <std::size_t n>
constexpr void split(const std::array<int, n>& widths, std::int64_t bits,
                     std::int16_t* fields) noexcept
{
    for (std::size_t i = n; i-- > 0; bits >>= widths[i])
        fields[i] = static_cast<std::int16_t>(bits & ((1 << widths[i]) - 1));
}

/// Whether octets fill, and fields go into them, from the highest bit down or from the lowest up.
enum class BitOrder { highestFirst, lowestFirst };

template <BitOrder order>
class BitWriter {
  public:
    explicit BitWriter(Out8 bytes) noexcept : to_(bytes.data()), end_(to_ + bytes.size()) {}

    /// The low `count` bits of a value; at most 56.
    void put(std::int64_t value, int count) noexcept
    {
        assert(0 <= count && count <= 56);
        const std::uint64_t mask = (std::uint64_t{1} << count) - 1;
        const std::uint64_t field = static_cast<std::uint64_t>(value) & mask;
        if constexpr (order == BitOrder::highestFirst)
            held_ = held_ << count | field;
        else
            held_ |= field << count_;
        for (count_ += count; count_ >= 8; count_ -= 8)
            store();
    }
    /// Fills what is left of the octets with zeros.
    void finish() noexcept
    {
        if (count_ > 0) put(0, 8 - count_);
        while (to_ < end_)
            *to_++ = 0;
    }

  private:
    void store() noexcept
    {
        assert(to_ < end_);
        if constexpr (order == BitOrder::highestFirst) {
            *to_++ = static_cast<std::uint8_t>(held_ >> (count_ - 8));
        } else {
            *to_++ = static_cast<std::uint8_t>(held_);
            held_ >>= 8;
        }
    }

    std::uint8_t* to_;
    std::uint8_t* end_;
    std::uint64_t held_ = 0; // fewer than eight bits between two calls, above them what is out
    int count_ = 0;
};

template <BitOrder order>
class BitReader {
  public:
    explicit BitReader(In8 bytes) noexcept : from_(bytes.data()), end_(from_ + bytes.size()) {}

    /// The next `count` bits, at most 56.
    std::int64_t takeWide(int count) noexcept
    {
        assert(0 <= count && count <= 56);
        for (; count_ < count; count_ += 8)
            load();
        count_ -= count;
        const std::uint64_t mask = (std::uint64_t{1} << count) - 1;
        if constexpr (order == BitOrder::highestFirst)
            return static_cast<std::int64_t>(held_ >> count_ & mask);
        const auto value = static_cast<std::int64_t>(held_ & mask);
        held_ >>= count;
        return value;
    }
    /// The same of at most 31, or 15.
    std::int32_t take(int count) noexcept { return static_cast<std::int32_t>(takeWide(count)); }
    std::int16_t takeWord(int count) noexcept { return static_cast<std::int16_t>(take(count)); }

  private:
    void load() noexcept
    {
        assert(from_ < end_);
        if constexpr (order == BitOrder::highestFirst)
            held_ = held_ << 8 | *from_++;
        else
            held_ |= std::uint64_t{*from_++} << count_;
    }

    const std::uint8_t* from_;
    const std::uint8_t* end_;
    std::uint64_t held_ = 0; // fewer than eight bits between two calls
    int count_ = 0;
};

} // namespace zsp::codecs
