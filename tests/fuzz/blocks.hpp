// Memory for the arguments of calls: every block has exactly the bytes that a call may touch.
#pragma once

#include "tests/fuzz/choices.hpp"

#include <cstddef>
#include <vector>

namespace zsp::fuzz {

/// Slots between pages that cannot be touched. A block ends at such a page, begins at one, or lies
/// at some distance from both at any misalignment; what surrounds it then holds a pattern, and the
/// address sanitizer forbids it.
class Blocks {
  public:
    static constexpr std::size_t kLargest = std::size_t{1} << 17;

    Blocks();
    ~Blocks();
    Blocks(const Blocks&) = delete;
    Blocks& operator=(const Blocks&) = delete;

    /// The next block, at a multiple of `alignment`.
    std::byte* place(std::size_t bytes, std::size_t alignment, Choices& choices);

    /// How many blocks there are.
    std::size_t count() const { return blocks_.size(); }

    /// Whether all that surrounds the blocks is as it was.
    bool surroundingsKept() const;

    /// Gives back all but the first `count` blocks.
    void release(std::size_t count);

  private:
    struct Block {
        std::byte *begin, *end;    // the block
        std::byte *before, *after; // and where its surroundings begin and end
    };

    std::byte* memory_;
    std::vector<Block> blocks_;
};

} // namespace zsp::fuzz
