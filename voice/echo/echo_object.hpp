// What an echo canceller's handle stands for.
#pragma once

#include "voice/echo/canceller.hpp"
#include "voice/echo/feed.hpp"

namespace zsp::voice::echo {

/// The thread that renders touches nothing but the ring; all else belongs to the capturing one.
struct Object {
    explicit Object(const CancellerSettings& settings) : canceller(settings) {}

    Ring ring;
    Feed feed;
    Canceller canceller;
    std::byte* parts = nullptr; // of feed and canceller, behind the ring's
    std::int64_t blocks = 0;
    std::uint64_t droppedBefore = 0; // the last reset
};

} // namespace zsp::voice::echo
