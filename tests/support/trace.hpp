// Intermediate results of a reference coder, from text files with lines "NAME COUNT: VALUES" in the
// order of processing.
#pragma once

#include "tests/support/vectors.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <map>
#include <string>
#include <vector>

namespace zsp::test {

using Words = std::vector<std::int16_t>;

/// The results of one frame; a name stands once, or once for each sub-frame.
class TracedFrame {
  public:
    void put(const std::string& name, std::vector<std::int64_t> values)
    {
        results_[name].push_back(std::move(values));
    }
    bool has(const std::string& name) const { return results_.contains(name); }

    Words words(const std::string& name, std::size_t which = 0) const
    {
        const auto& values = find(name, which);
        return {values.begin(), values.end()};
    }
    std::int32_t value(const std::string& name, std::size_t which = 0) const
    {
        return static_cast<std::int32_t>(find(name, which).at(0));
    }
    std::int16_t word(const std::string& name, std::size_t which = 0) const
    {
        return static_cast<std::int16_t>(value(name, which));
    }
    std::vector<std::int32_t> longs(const std::string& name, std::size_t which = 0) const
    {
        const auto& values = find(name, which);
        return {values.begin(), values.end()};
    }

  private:
    const std::vector<std::int64_t>& find(const std::string& name, std::size_t which) const
    {
        static const std::vector<std::int64_t> nothing(640);
        const auto found = results_.find(name);
        const bool there = found != results_.end() && which < found->second.size();
        EXPECT_TRUE(there) << name << " " << which << " is not in the trace";
        return there ? found->second[which] : nothing;
    }

    std::map<std::string, std::vector<std::vector<std::int64_t>>> results_;
};

/// The frames of a file that begin with the line `wanted`; isStart(name) tells where any begins.
template <typename IsStart>
std::vector<TracedFrame> readTrace(const std::string& path, const std::string& wanted,
                                   IsStart isStart)
{
    std::vector<TracedFrame> frames;
    bool isWanted = false;
    for (const auto& line : readRuns(path)) {
        if (isStart(line[0])) {
            isWanted = line[0] == wanted;
            if (isWanted) frames.emplace_back();
        }
        if (!isWanted) continue;
        std::vector<std::int64_t> values;
        for (std::size_t i = 2; i < line.size(); ++i)
            values.push_back(std::strtoll(line[i].c_str(), nullptr, 10));
        frames.back().put(line[0], std::move(values));
    }
    EXPECT_GE(frames.size(), 4u) << path;
    return frames;
}

} // namespace zsp::test
