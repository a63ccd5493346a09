// Intermediate results of the G.729 reference, from tests/vectors/g729codec/SIDE.ANNEX.trace.txt.
#pragma once

#include "tests/support/contract.hpp"
#include "tests/support/samples.hpp"
#include "tests/support/trace.hpp"
#include "zspsc.h"

#include <algorithm>
#include <string>

namespace zsp::test::g729 {

/// The frames of "encode.main" and the like.
inline std::vector<TracedFrame> traced(const std::string& name)
{
    return readTrace("g729codec/" + name + ".trace.txt", "frame");
}

/// Calls test(frame, isMain, what) for every frame of both encoders.
template <typename Test>
void forEachEncoded(Test test)
{
    for (const std::string annex : {"main", "annexa"})
        for (const TracedFrame& t : traced("encode." + annex))
            test(t, annex == "main", annex + ", frame " + std::to_string(t.value("frame")));
}

/// The last words of a signal of which the frames of a trace show pieces.
class Past {
  public:
    explicit Past(std::size_t count) : words_(count) {}

    /// To be called once for each frame: frames after a gap begin without a past.
    void frame(const TracedFrame& t)
    {
        const int number = t.value("frame");
        if (number == 0) {
            std::ranges::fill(words_, std::int16_t{0});
            known_ = words_.size();
        } else if (number != last_ + 1) {
            known_ = 0;
        }
        last_ = number;
    }
    void push(const Words& words)
    {
        words_.insert(words_.end(), words.begin(), words.end());
        words_.erase(words_.begin(), words_.begin() + static_cast<std::ptrdiff_t>(words.size()));
        known_ += words.size();
    }
    bool isWhole() const { return known_ >= words_.size(); }

    /// The past, and behind it what follows.
    Words with(const Words& now) const
    {
        Words all = words_;
        all.insert(all.end(), now.begin(), now.end());
        return all;
    }

  private:
    Words words_;
    std::size_t known_ = 0;
    int last_ = -1;
};

/// Words for comparing a fast form with its definition: of any size, at both ends of the range, and
/// smaller and smaller, which is where the fast forms decide for themselves.
inline Words anyWords(Samples& samples, std::size_t count, int round)
{
    if (round % 16 == 0) return samples.words(count);
    if (round % 16 == 1) return samples.extremeWords(count);
    Words words(count);
    for (auto& x : words)
        x = static_cast<std::int16_t>(samples.uniform(-32768, 32767) >> (round % 16));
    return words;
}

/// The longs whose upper words and 15 bits below are two lines of a trace.
inline std::vector<std::int32_t> joined(const Words& high, const Words& low)
{
    std::vector<std::int32_t> longs;
    for (std::size_t i = 0; i < high.size(); ++i)
        longs.push_back(high[i] * 65536 + low[i] * 2);
    return longs;
}

/// Part of a line that holds the same of both subframes.
inline Words half(const Words& both, std::size_t which)
{
    const auto n = static_cast<std::ptrdiff_t>(both.size() / 2);
    const auto first = both.begin() + n * static_cast<std::ptrdiff_t>(which);
    return {first, first + n};
}

} // namespace zsp::test::g729
