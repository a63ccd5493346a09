// Far-end samples on their way from one thread to another: a ring with one writer and one reader
// that never wait. Each side owns one position and reads the other's; a position is published
// after the samples that it stands for.
#pragma once

#include "voice/api/memory.hpp"

#include <algorithm>
#include <atomic>
#include <cstdint>

namespace zsp::voice::echo {

class Ring {
  public:
    void layOut(Memory& memory, std::size_t capacity)
    {
        samples_ = memory.take<float>(capacity);
        for (auto* position : {&written_, &read_, &dropped_})
            *position = memory.take<std::uint64_t>(1); // a cache line each
    }

    /// Writer: takes in as many samples as there is room for, each through `convert`, and counts
    /// the rest. True if all went in.
    template <typename T, typename Convert>
    bool push(std::span<const T> in, Convert convert)
    {
        const std::uint64_t at = mine(written_);
        const std::size_t room = samples_.size() - static_cast<std::size_t>(at - theirs(read_));
        const std::size_t taken = std::min(in.size(), room);
        for (std::size_t i = 0; i < taken; ++i)
            samples_[(at + i) % samples_.size()] = convert(in[i]);
        publish(written_, at + taken);
        publish(dropped_, mine(dropped_) + in.size() - taken);
        return taken == in.size();
    }

    /// Reader: samples that have been written and not been read.
    [[nodiscard]] std::size_t held() const
    {
        return static_cast<std::size_t>(theirs(written_) - mine(read_));
    }

    /// Reader: gives out as many samples as there are; returns their count.
    std::size_t pull(std::span<float> out)
    {
        const std::uint64_t at = mine(read_);
        const std::size_t given = std::min(out.size(), held());
        for (std::size_t i = 0; i < given; ++i)
            out[i] = samples_[(at + i) % samples_.size()];
        publish(read_, at + given);
        return given;
    }

    /// Reader: passes over samples, at most held().
    void skip(std::size_t count) { publish(read_, mine(read_) + count); }

    /// Samples for which there was no room.
    [[nodiscard]] std::uint64_t dropped() const { return theirs(dropped_); }

  private:
    using Position = std::span<std::uint64_t>;

    static std::uint64_t mine(Position position)
    {
        return std::atomic_ref(position.front()).load(std::memory_order_relaxed);
    }
    static std::uint64_t theirs(Position position)
    {
        return std::atomic_ref(position.front()).load(std::memory_order_acquire);
    }
    static void publish(Position position, std::uint64_t value)
    {
        std::atomic_ref(position.front()).store(value, std::memory_order_release);
    }

    std::span<float> samples_;
    Position written_, read_, dropped_; // since the start
};

} // namespace zsp::voice::echo
