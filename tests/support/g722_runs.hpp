// Runs of the vectors of G.722: a signal through a block function, cut in several ways.
#pragma once

#include "tests/support/contract.hpp"
#include "tests/support/samples.hpp"
#include "tests/support/vectors.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace zsp::test {

using Words = std::vector<std::int16_t>;

/// A block function's contract with the lengths that are not whole pairs.
inline Contract pairsContract(Contract contract)
{
    for (const int len : {0, -1, -2, 1, 3, 2147483647, -2147483647 - 1})
        contract.row({{2, number(len)}}, zspStsSizeErr);
    return contract;
}

enum class Split { none, random, pairs };

/// A signal in blocks. `process` has call(src, dst, len), which some blocks are given in place.
template <typename Process>
Words runSplit(Process& process, const Words& input, Split split, Samples& samples)
{
    Words output = input;
    for (std::size_t i = 0; i < input.size();) {
        std::size_t len = split == Split::none ? input.size() : 2;
        if (split == Split::random) len = 2 * static_cast<std::size_t>(1 + samples.below(300));
        len = std::min(len, input.size() - i);
        const bool inPlace = split != Split::none && samples.below(2) == 0;
        EXPECT_EQ(process.call(inPlace ? &output[i] : &input[i], &output[i],
                               static_cast<std::int32_t>(len)),
                  zspStsNoErr);
        i += len;
    }
    return output;
}

/// All runs of an operation, each from Process(argument of the run, split). Returns their number.
template <typename Process>
std::size_t checkRuns(const std::string& operation)
{
    Samples samples(722);
    std::size_t count = 0;
    for (const auto& run : readRuns("g722/runs.txt")) {
        if (run[0] != operation) continue;
        ++count;
        const auto input = readVector<std::int16_t>("g722/" + run[2]);
        const auto want = readVector<std::int16_t>("g722/" + run[3]);
        for (const Split split : {Split::none, Split::random, Split::pairs}) {
            Process process(run[1], split);
            expectEqual(runSplit(process, input, split, samples), want,
                        run[0] + " " + run[3] + ", split " + std::to_string(int(split)));
        }
    }
    return count;
}

} // namespace zsp::test
