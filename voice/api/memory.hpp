// The parts of an object inside of the caller's memory. A part is laid out before it is
// started: laying out without memory tells how much is needed.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <type_traits>

namespace zsp::voice {

class Memory {
  public:
    /// Every array starts at a cache line, or a little behind one in memory that is only counted.
    static constexpr std::size_t kLine = 64;

    /// Counts only.
    Memory() = default;
    explicit Memory(std::byte* begin) : begin_(begin)
    {
        const auto address = reinterpret_cast<std::uintptr_t>(begin);
        used_ = -address & (kLine - 1);
    }

    /// `count` elements, zeros once there is memory.
    template <typename T>
    std::span<T> take(std::size_t count)
    {
        static_assert(std::is_trivially_copyable_v<T> && alignof(T) <= kLine);
        const std::size_t at = used_;
        used_ += (count * sizeof(T) + kLine - 1) / kLine * kLine;
        if (!begin_) return {static_cast<T*>(nullptr), 0};
        T* elements = reinterpret_cast<T*>(begin_ + at);
        std::fill_n(elements, count, T{});
        return {elements, count};
    }

    /// Where the next array goes.
    [[nodiscard]] std::byte* end() const { return begin_ ? begin_ + used_ : nullptr; }
    /// Bytes needed wherever the memory begins.
    [[nodiscard]] std::size_t needed() const { return used_ + kLine; }

  private:
    std::byte* begin_ = nullptr;
    std::size_t used_ = 0;
};

} // namespace zsp::voice
