// Pre-emphasis of GSM-AMR: AVX2 against the definition, apart and in place.

#include "codecs/gsmamr/gsmamr_preemphasis.hpp"

#include "tests/support/contract.hpp"
#include "tests/support/samples.hpp"
#include "tests/support/vectors.hpp"
#include "zspsc/gsmamr_vad.h"

#include <gtest/gtest.h>

namespace {

using namespace zsp::test;
using namespace zsp::gsmamr;
using Words = std::vector<std::int16_t>;

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsPreemphasize_GSMAMR_16s),
             {number(-26214), in<std::int16_t>(80), out<std::int16_t>(80), number(80),
              out<std::int16_t>(1)})
        .row({{3, number(0)}}, zspStsSizeErr)
        .row({{3, number(-2147483648.0)}}, zspStsSizeErr),
});

TEST(GsmamrPreemphasis, Avx2EqualsDefinition)
{
    Samples samples(2);
    for (int run = 0; run < 4000; ++run) {
        const std::int16_t factor = samples.integer<std::int16_t>();
        const auto len = static_cast<std::size_t>(1 + run % 100);
        const Words src = samples.words(len);
        const std::int16_t before = samples.integer<std::int16_t>();
        Words want(len), got(len), inPlace = src;
        std::int16_t wantMemory = before, gotMemory = before, inPlaceMemory = before;
        preEmphasiseScalar(factor, src, want, wantMemory);
        ASSERT_EQ(zspsPreemphasize_GSMAMR_16s(factor, src.data(), got.data(),
                                              static_cast<std::int32_t>(len), &gotMemory),
                  zspStsNoErr);
        preEmphasiseAvx2(factor, inPlace, inPlace, inPlaceMemory);
        const std::string what = "length " + std::to_string(len);
        expectEqual(got, want, what);
        expectEqual(inPlace, want, what + ", in place");
        ASSERT_EQ(wantMemory, src.back());
        ASSERT_EQ(gotMemory, src.back()) << what;
        ASSERT_EQ(inPlaceMemory, src.back()) << what;
    }
}

} // namespace
