// Intermediate results of a reference coder, from text files with lines "NAME COUNT: VALUES" in the
// order of processing.
#pragma once

#include "conformance/trace.hpp"
#include "tests/support/vectors.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace zsp::test {

using Words = std::vector<std::int16_t>;

/// The results of one frame; a name stands once, or once for each sub-frame.
class TracedFrame {
  public:
    explicit TracedFrame(conformance::Results results) : results_(std::move(results)) {}

    bool has(const std::string& name) const { return results_.contains(name); }

    Words words(const std::string& name, std::size_t which = 0) const
    {
        const auto& values = find(name, which);
        return {values.begin(), values.end()};
    }
    std::int32_t value(const std::string& name, std::size_t which = 0) const
    {
        return find(name, which).at(0);
    }
    std::int16_t word(const std::string& name, std::size_t which = 0) const
    {
        return static_cast<std::int16_t>(value(name, which));
    }
    std::vector<std::int32_t> longs(const std::string& name, std::size_t which = 0) const
    {
        return find(name, which);
    }

  private:
    const std::vector<std::int32_t>& find(const std::string& name, std::size_t which) const
    {
        static const std::vector<std::int32_t> nothing(640);
        const auto found = results_.find(name);
        const bool there = found != results_.end() && which < found->second.size();
        EXPECT_TRUE(there) << name << " " << which << " is not in the trace";
        return there ? found->second[which] : nothing;
    }

    conformance::Results results_;
};

/// The frames of a file as conformance::Trace reads them, each with its opening line.
inline std::vector<TracedFrame> readTrace(const std::string& path, const std::string& opening,
                                          const std::string& closing = {})
{
    std::vector<TracedFrame> frames;
    try {
        const conformance::Trace trace(conformance::Vectors(vectorPath("")), path, opening,
                                       closing);
        for (auto [number, results] : trace.frames()) {
            results[opening] = {{number}};
            frames.emplace_back(std::move(results));
        }
    } catch (const conformance::Fault& fault) {
        ADD_FAILURE() << fault.what();
    }
    EXPECT_GE(frames.size(), 4u) << path;
    return frames;
}

} // namespace zsp::test
