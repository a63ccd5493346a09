// What stands before and behind the coder of GSM full rate: blocks of any length, and the fast
// versions against the definitions.

#include "codecs/gsmfr/gsmfr_emphasis.hpp"

#include "tests/support/contract.hpp"
#include "tests/support/samples.hpp"
#include "tests/support/vectors.hpp"

#include <gtest/gtest.h>

#include <vector>

namespace {

using namespace zsp::test;
using namespace zsp::gsmfr;
using Words = std::vector<std::int16_t>;

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsPreprocess_GSMFR_16s),
             {in<std::int16_t>(6), out<std::int16_t>(6), number(6), state(8)})
        .row({{2, number(0)}}, zspStsSizeErr)
        .row({{2, number(-1)}}, zspStsSizeErr),
    Contract(ZSP_NAMED(zspsDeemphasis_GSMFR_16s),
             {in<std::int16_t>(6), out<std::int16_t>(6), number(6), out<std::int16_t>(1)})
        .row({{2, number(0)}}, zspStsSizeErr)
        .row({{2, number(-1)}}, zspStsSizeErr),
});

bool same(const PreprocessState& a, const PreprocessState& b)
{
    return a.lz2 == b.lz2 && a.z1 == b.z1 && a.mp == b.mp;
}

// In place and not, with states that no signal leads to; one call of the definition for several.
TEST(GsmfrEmphasis, FastEqualsDefinition)
{
    Samples samples(610);
    PreprocessState want{}, got{};
    std::int16_t wantedMsr = 0, msr = 0;
    for (int round = 0; round < 3000; ++round) {
        SCOPED_TRACE(round);
        const auto length = static_cast<std::size_t>(1 + samples.below(400));
        Words input = samples.words(length);
        if (round % 3 == 1) // steps drive the offset compensation to its ends
            for (std::size_t i = 0; i < length; ++i)
                input[i] = i / 150 % 2 ? 32767 : -32768;
        if (round % 5 == 4)
            want = got = {.lz2 = samples.integer<std::int32_t>(),
                          .z1 = samples.integer<std::int16_t>(),
                          .mp = samples.integer<std::int16_t>()};
        Words wanted(length), output = input;
        preprocessScalar(input, wanted, want);
        const std::size_t cut = length / 3;
        const Words& from = round % 2 ? output : input;
        preprocessFast({from.data(), cut}, {output.data(), cut}, got);
        preprocessFast({from.data() + cut, length - cut}, {output.data() + cut, length - cut}, got);
        expectEqual(output, wanted, "preprocess");
        ASSERT_TRUE(same(got, want));

        if (round % 5 == 4) wantedMsr = msr = samples.integer<std::int16_t>();
        output = input;
        deemphasisScalar(input, wanted, wantedMsr);
        deemphasisFast({from.data(), cut}, {output.data(), cut}, msr);
        deemphasisFast({from.data() + cut, length - cut}, {output.data() + cut, length - cut}, msr);
        expectEqual(output, wanted, "deemphasis");
        ASSERT_EQ(msr, wantedMsr);
    }
}

} // namespace
