// The post-filter of G.728.

#include "tests/support/contract.hpp"
#include "zspsc/g728/postfilter.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace {

using namespace zsp::test;
using Words = std::vector<std::int16_t>;

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsInverseFilter_G728_16s), {in<std::int16_t>(10), in<std::int16_t>(5),
                                                     out<std::int16_t>(10), out<std::int16_t>(5)}),
    Contract(ZSP_NAMED(zspsShortTermPostFilterCoefs_G728_16s),
             {in<std::int16_t>(10), number(13), number(0), out<std::int16_t>(10),
              out<std::int16_t>(21), out<std::int32_t>(1)})
        .row({{1, number(12)}}, zspStsScaleRangeErr)
        .row({{1, number(16)}}, zspStsScaleRangeErr),
    Contract(ZSP_NAMED(zspsPostFilter_G728_16s),
             {in<std::int16_t>(5), out<std::int16_t>(240), number(140), in<std::int16_t>(3),
              in<std::int16_t>(21), out<std::int16_t>(21), out<std::int16_t>(5)})
        .row({{2, number(141)}}, zspStsCodecRangeErr)
        .row({{2, number(19)}}, zspStsCodecRangeErr),
});

// Without pitch and spectrum the filter is flat, and its level settles where the input's is.
TEST(G728PostFilter, LetsFlatSpeechThrough)
{
    Words past(240), memory(21), heard(5);
    memory[20] = 16384;
    const Words flat{16384, 0, 0}, none(21, 0), input{1000, -900, 800, -700, 600};
    for (int n = 0; n < 100; ++n)
        ASSERT_EQ(zspsPostFilter_G728_16s(input.data(), past.data(), 50, flat.data(), none.data(),
                                          memory.data(), heard.data()),
                  zspStsNoErr);
    for (std::size_t i = 0; i < heard.size(); ++i)
        EXPECT_NEAR(heard[i], 2 * input[i], 4) << i;
}

} // namespace
