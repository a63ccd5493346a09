// Log area ratios of GSM full rate: AVX2 against the definitions for every word.

#include "codecs/gsmfr/gsmfr_lar.hpp"

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

Argument codes(int last)
{
    return in<std::int16_t>({63, 63, 31, 31, 15, 15, 7, static_cast<std::int16_t>(last)});
}

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsReflectToLAR_GSMFR_16s), {in<std::int16_t>(8), out<std::int16_t>(8)}),
    Contract(ZSP_NAMED(zspsLARQuant_GSMFR_16s), {in<std::int16_t>(8), out<std::int16_t>(8)}),
    Contract(ZSP_NAMED(zspsLARDequant_GSMFR_16s), {codes(7), out<std::int16_t>(8)})
        .row({{0, codes(8)}}, zspStsCodecRangeErr)
        .row({{0, codes(-1)}}, zspStsCodecRangeErr)
        .row({{0, in<std::int16_t>({64, 0, 0, 0, 0, 0, 0, 0})}}, zspStsCodecRangeErr)
        .row({{0, in<std::int16_t>({0, 0, 32, 0, 0, 0, 0, 0})}}, zspStsCodecRangeErr)
        .row({{0, in<std::int16_t>({0, 0, 0, 0, 0, 16, 0, 0})}}, zspStsCodecRangeErr),
    Contract(ZSP_NAMED(zspsLARInterpolateToReflect_GSMFR_16s),
             {in<std::int16_t>(8), in<std::int16_t>(8), out<std::int16_t>(32)}),
});

TEST(GsmfrLar, Avx2EqualsDefinitionForEveryWord)
{
    Samples samples(526);
    for (int x = -32768; x <= 32767; ++x) {
        Words input(8, static_cast<std::int16_t>(x)), want(32), got(32);
        const Words other = samples.words(8);
        const auto in = spanOf<8>(std::as_const(input).data());
        const auto wanted8 = spanOf<8>(want.data()), got8 = spanOf<8>(got.data());

        reflectToLarScalar(in, wanted8);
        reflectToLarAvx2(in, got8);
        ASSERT_EQ(got, want) << "ratio of " << x;
        larQuantScalar(in, wanted8);
        larQuantAvx2(in, got8);
        ASSERT_EQ(got, want) << "code of " << x;
        larInterpolateScalar(spanOf<8>(other.data()), in, spanOf<32>(want.data()));
        larInterpolateAvx2(spanOf<8>(other.data()), in, spanOf<32>(got.data()));
        ASSERT_EQ(got, want) << "coefficients of " << x;
        for (std::size_t i = 0; i < 8; ++i)
            input[i] = static_cast<std::int16_t>(x & (kLarMac[i] - kLarMic[i]));
        larDequantScalar(in, wanted8);
        larDequantAvx2(in, got8);
        ASSERT_EQ(got, want) << "ratios of code " << x;
    }
}

} // namespace
