// The weighting filter of G.728 and the target of its search.

#include "codecs/g728/g728_blocks.hpp"

#include "tests/codecs/g728/g728_arguments.hpp"
#include "tests/support/contract.hpp"
#include "tests/support/samples.hpp"
#include "tests/support/vectors.hpp"
#include "zspsc/g728/coder.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace {

using namespace zsp::test;
using Words = std::vector<std::int16_t>;

const bool registered = addContracts({
    Contract(
        ZSP_NAMED(zspsWeightingFilter_G728_16s),
        {in<std::int16_t>(10), in<std::int16_t>(10), in<std::int16_t>(15), out<std::int16_t>(10)}),
    Contract(ZSP_NAMED(zspsWeightingFilterUpdate_G728_16s),
             {in<std::int16_t>(10), in<std::int16_t>(10), in<std::int16_t>(5), number(-64),
              out<std::int16_t>(10)})
        .row({{3, number(65)}}, zspStsScaleRangeErr)
        .row({{3, number(-65)}}, zspStsScaleRangeErr),
    Contract(
        ZSP_NAMED(zspsTargetNormalize_G728_16s),
        {in<std::int16_t>(5), in<std::int16_t>(5), in(scalarWithQ(64, 1)), out<std::int16_t>(6)})
        .row({{2, in(scalarWithQ(65))}}, zspStsScaleRangeErr)
        .row({{2, in(scalarWithQ(-65))}}, zspStsScaleRangeErr)
        .row({{2, in(scalarWithQ(0, 0))}}, zspStsRangeErr),
});

TEST(G728Weighting, Avx2EqualsDefinition)
{
    using namespace zsp::g728;
    Samples samples(10);
    for (int round = 0; round < 20000; ++round) {
        const Words zero = wordsOf(samples, 10, round), pole = wordsOf(samples, 10, round);
        const Words src = wordsOf(samples, 15, round / 2);
        Words want = wordsOf(samples, 10, round / 3), got = want;
        const In<kShort> z(zero.data(), kShort), p(pole.data(), kShort);
        weightScalar(z, p, In<15>(src.data(), 15), Out<kShort>(want.data(), kShort));
        weightAvx2(z, p, In<15>(src.data(), 15), Out<kShort>(got.data(), kShort));
        expectEqual(got, want, "round " + std::to_string(round));
    }
}

} // namespace
