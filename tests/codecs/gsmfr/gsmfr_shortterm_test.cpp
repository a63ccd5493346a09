// The short-term filters of GSM full rate: AVX2 against the definitions where sums and products
// saturate.

#include "codecs/gsmfr/gsmfr_shortterm.hpp"

#include "tests/support/contract.hpp"
#include "tests/support/samples.hpp"
#include "tests/support/vectors.hpp"
#include "zspsc/gsmfr/shortterm.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using namespace zsp::test;
using namespace zsp::gsmfr;
using Words = std::vector<std::int16_t>;
using zsp::spanOf;

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsShortTermAnalysisFilter_GSMFR_16s),
             {in<std::int16_t>(160), in<std::int16_t>(32), out<std::int16_t>(160),
              out<std::int16_t>(8)}),
    Contract(ZSP_NAMED(zspsShortTermSynthesisFilter_GSMFR_16s),
             {in<std::int16_t>(160), in<std::int16_t>(32), out<std::int16_t>(160),
              out<std::int16_t>(8)}),
});

// From the memory that the frames before have left; coefficients from -32768 on.
TEST(GsmfrShortTerm, Avx2EqualsDefinition)
{
    using Filter = void (*)(InFrame, InReflect, Frame, Coefs);
    for (const auto& [definition, fast] : {std::pair<Filter, Filter>{analyseScalar, analyseAvx2},
                                           {synthesiseScalar, synthesiseAvx2}}) {
        Samples samples(5210);
        Words wantedMemory(8, 0), memory(8, 0);
        for (int round = 0; round < 2000; ++round) {
            SCOPED_TRACE(round);
            Words input = samples.words(160), reflect = samples.words(32), want(160);
            for (auto& x : input)
                x = static_cast<std::int16_t>(x >> (round % 5 * 3));
            for (auto& x : reflect) // as from log area ratios, four times out of five
                if (round % 5) x = std::max<std::int16_t>(x, -32767);
            Words got = input;
            definition(spanOf<160>(std::as_const(input).data()),
                       spanOf<32>(std::as_const(reflect).data()), spanOf<160>(want.data()),
                       spanOf<8>(wantedMemory.data()));
            fast(spanOf<160>(std::as_const(got).data()), spanOf<32>(std::as_const(reflect).data()),
                 spanOf<160>(got.data()), spanOf<8>(memory.data()));
            expectEqual(got, want, "frame");
            expectEqual(memory, wantedMemory, "memory");
        }
    }
}

} // namespace
