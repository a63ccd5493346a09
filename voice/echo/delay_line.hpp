// A signal some samples later.
#pragma once

#include "voice/api/memory.hpp"

#include <algorithm>

namespace zsp::voice::echo {

class DelayLine {
  public:
    /// For blocks of at most `block` samples.
    void layOut(Memory& memory, std::size_t longest, std::size_t block)
    {
        line_ = memory.take<float>(longest + block);
    }
    void setDelay(std::size_t samples) { delay_ = samples; }

    void run(std::span<const float> in, std::span<float> out)
    {
        write(in);
        const std::size_t from = (end_ + 2 * line_.size() - delay_ - in.size()) % line_.size();
        const std::size_t first = std::min(out.size(), line_.size() - from);
        std::copy_n(line_.begin() + static_cast<std::ptrdiff_t>(from), first, out.begin());
        std::copy_n(line_.begin(), out.size() - first,
                    out.begin() + static_cast<std::ptrdiff_t>(first));
    }

  private:
    void write(std::span<const float> in)
    {
        const std::size_t first = std::min(in.size(), line_.size() - end_);
        std::copy_n(in.begin(), first, line_.begin() + static_cast<std::ptrdiff_t>(end_));
        std::copy(in.begin() + static_cast<std::ptrdiff_t>(first), in.end(), line_.begin());
        end_ = (end_ + in.size()) % line_.size();
    }

    std::span<float> line_;
    std::size_t end_ = 0, delay_ = 0;
};

} // namespace zsp::voice::echo
