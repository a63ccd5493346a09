// The synthesis filter of G.728.

#include "tests/support/contract.hpp"
#include "tests/support/vectors.hpp"
#include "zspsc/g728/coder.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace {

using namespace zsp::test;
using Words = std::vector<std::int16_t>;

/// A vector with its Q.
Words vector(std::int16_t q)
{
    return {1, -2, 3, -4, 5, q};
}

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsSyntesisFilterZeroInput_G728_16s),
             {in<std::int16_t>(50), in<std::int16_t>(50), in(Words(10, 64)), out<std::int16_t>(6)})
        .row({{2, in(Words{0, 0, 0, 0, 0, 0, 0, 0, 0, 65})}}, zspStsScaleRangeErr)
        .row({{2, in(Words{-65, 0, 0, 0, 0, 0, 0, 0, 0, 0})}}, zspStsScaleRangeErr),
    Contract(ZSP_NAMED(zspsSynthesisFilterZeroState_G728_16s),
             {in<std::int16_t>(4), out(vector(-64)), out<std::int16_t>(5)})
        .row({{1, out(vector(-65))}}, zspStsScaleRangeErr)
        .row({{1, out(vector(65))}}, zspStsScaleRangeErr),
    Contract(ZSP_NAMED(zspsSynthesisFilterUpdate_G728_16s),
             {in<std::int16_t>(5), number(64), out(vector(-64))})
        .row({{1, number(65)}}, zspStsScaleRangeErr)
        .row({{1, number(-65)}}, zspStsScaleRangeErr)
        .row({{2, out(vector(65))}}, zspStsScaleRangeErr),
});

TEST(G728Synthesis, WholeCodersConform)
{
    expectConforms("G.728", 14, "encoder, ");
    expectConforms("G.728", 28, "decoder, ");
    expectConforms("G.728", 5, "every block");
}

} // namespace
