// The weighting filter of G.728 and the target of its search.

#include "tests/support/contract.hpp"
#include "zspsc/g728/coder.h"

#include <cstdint>
#include <vector>

namespace {

using namespace zsp::test;
using Words = std::vector<std::int16_t>;

/// A scalar with a Q that is taken, or one that is not.
Argument scalar(std::int16_t q, std::int16_t mantissa = 16384)
{
    return in(Words{mantissa, q});
}

const bool registered = addContracts({
    Contract(
        ZSP_NAMED(zspsWeightingFilter_G728_16s),
        {in<std::int16_t>(10), in<std::int16_t>(10), in<std::int16_t>(15), out<std::int16_t>(10)}),
    Contract(ZSP_NAMED(zspsWeightingFilterUpdate_G728_16s),
             {in<std::int16_t>(10), in<std::int16_t>(10), in<std::int16_t>(5), number(-64),
              out<std::int16_t>(10)})
        .row({{3, number(65)}}, zspStsScaleRangeErr)
        .row({{3, number(-65)}}, zspStsScaleRangeErr),
    Contract(ZSP_NAMED(zspsTargetNormalize_G728_16s),
             {in<std::int16_t>(5), in<std::int16_t>(5), scalar(64, 1), out<std::int16_t>(6)})
        .row({{2, scalar(65)}}, zspStsScaleRangeErr)
        .row({{2, scalar(-65)}}, zspStsScaleRangeErr)
        .row({{2, scalar(0, 0)}}, zspStsRangeErr),
});

} // namespace
