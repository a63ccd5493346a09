// What the blocks of the G.729 decoder are measured with: noise of moderate level, filters, lags
// that change from call to call.
#pragma once

#include "bench/codecs/g729/coder/g729_coder_input.hpp"
#include "codecs/g729/decoder/g729_decoder.hpp"

namespace zsp::bench {

using Subframe = std::array<std::int16_t, g729::kSubframe>;

/// The filter of voiced speech as zeros and poles of the post-filter.
struct PostFilter {
    std::array<std::int16_t, 11> zeros{}, poles{};

    PostFilter()
    {
        celp::weight(kLpc, 18022, zeros);
        celp::weight(kLpc, 22938, poles);
    }
};

/// The next lag of a call with changing pitch.
class Lags {
  public:
    std::int16_t next() { return lag_ = static_cast<std::int16_t>(20 + (lag_ * 7 + 11) % 120); }

  private:
    std::int16_t lag_ = 50;
};

} // namespace zsp::bench
