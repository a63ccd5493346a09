// What the tests of G.722 share: words come in pairs.
#pragma once

#include "tests/support/contract.hpp"
#include "tests/support/samples.hpp"
#include "tests/support/vectors.hpp"

#include <cstdint>
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

} // namespace zsp::test
