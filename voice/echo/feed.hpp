// The far end as the capturing thread takes it out of the ring: a sample per microphone sample,
// silence where there is none, and no more waiting in the ring than the threads' rhythm needs.
#pragma once

#include "voice/echo/ring.hpp"

#include <limits>
#include <utility>

namespace zsp::voice::echo {

class Feed {
  public:
    void start(std::size_t window) { window_ = left_ = window; }

    /// Before a block of `count` samples is taken: what was rendered before the first block belongs
    /// to a time before it.
    void begin(Ring& ring, std::size_t count)
    {
        if (std::exchange(started_, true)) return;
        const std::size_t held = ring.held();
        skip(ring, held - std::min(held, count));
    }

    void take(Ring& ring, std::span<float> far)
    {
        const std::size_t given = ring.pull(far);
        std::fill(far.begin() + static_cast<std::ptrdiff_t>(given), far.end(), 0.0F);
        missing_ += static_cast<std::int64_t>(far.size() - given);
    }

    /// After the block. Samples that stayed in the ring for a whole window were needed for nothing
    /// and made the reference late, as after a gap or with a faster clock: they are passed over. If
    /// samples are missing after that, they were needed after all: from then on a block more stays.
    void end(Ring& ring, std::size_t count)
    {
        if (missing_ > missingBefore_ && passedOver_) {
            margin_ += count;
            passedOver_ = false;
        }
        missingBefore_ = missing_;
        least_ = std::min(least_, ring.held());
        left_ -= std::min(left_, count);
        if (left_ > 0) return;
        if (least_ > margin_) {
            skip(ring, least_ - margin_);
            passedOver_ = true;
        }
        left_ = window_;
        least_ = std::numeric_limits<std::size_t>::max();
    }

    [[nodiscard]] std::int64_t missing() const { return missing_; }
    [[nodiscard]] std::int64_t skipped() const { return skipped_; }

  private:
    void skip(Ring& ring, std::size_t count)
    {
        ring.skip(count);
        skipped_ += static_cast<std::int64_t>(count);
    }

    std::size_t window_ = 0, left_ = 0; // samples
    std::size_t least_ = std::numeric_limits<std::size_t>::max();
    std::size_t margin_ = 0; // samples that the threads' rhythm needs
    std::int64_t missing_ = 0, missingBefore_ = 0, skipped_ = 0;
    bool started_ = false, passedOver_ = false;
};

} // namespace zsp::voice::echo
