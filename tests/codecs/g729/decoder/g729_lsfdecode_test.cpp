// Decoding of G.729's line spectral frequencies: whatever is sent gives a stable filter.

#include "codecs/g729/decoder/g729_decoder.hpp"

#include "tests/codecs/g729/g729_trace.hpp"

namespace {

using namespace zsp::test;
using namespace zsp::test::g729;

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsLSFDecode_G729_16s), {number(1), number(127), number(31), number(31),
                                                 out<std::int16_t>(40), out<std::int16_t>(10)})
        .row({{0, number(-1)}}, zspStsCodecRangeErr)
        .row({{0, number(2)}}, zspStsCodecRangeErr)
        .row({{1, number(-1)}}, zspStsCodecRangeErr)
        .row({{1, number(128)}}, zspStsCodecRangeErr)
        .row({{2, number(-1)}}, zspStsCodecRangeErr)
        .row({{2, number(32)}}, zspStsCodecRangeErr)
        .row({{3, number(-1)}}, zspStsCodecRangeErr)
        .row({{3, number(32)}}, zspStsCodecRangeErr),
    Contract(ZSP_NAMED(zspsLSFDecodeErased_G729_16s),
             {number(1), in<std::int16_t>(10), out<std::int16_t>(40)})
        .row({{0, number(-1)}}, zspStsCodecRangeErr)
        .row({{0, number(2)}}, zspStsCodecRangeErr),
});

Words freshMemory()
{
    Words memory;
    for (int k = 0; k < 4; ++k)
        for (const int f : {2339, 4679, 7018, 9358, 11698, 14037, 16377, 18717, 21056, 23396})
            memory.push_back(static_cast<std::int16_t>(f));
    return memory;
}

TEST(G729LsfDecode, FrequenciesStayInOrderAndApart)
{
    Samples samples(730);
    Words memory = freshMemory(), lsf(10);
    const auto any = [&samples](int most) {
        return static_cast<std::int32_t>(samples.uniform(0, most));
    };
    for (int round = 0; round < 5000; ++round) {
        ASSERT_EQ(
            zspsLSFDecode_G729_16s(any(1), any(127), any(31), any(31), memory.data(), lsf.data()),
            0);
        ASSERT_GE(lsf[0], 40);
        ASSERT_LE(lsf[9], 25681);
        for (std::size_t j = 0; j < 9; ++j)
            ASSERT_GE(lsf[j + 1] - lsf[j], j < 8 ? 321 : 1) << "round " << round << ", " << j;
    }
}

/// The vector that a lost frame leaves is the one with which the predictor gives the frequencies
/// again: repeated, they come out as they went in but for rounding.
TEST(G729LsfDecode, ALostFrameKeepsThePredictorOnItsWay)
{
    for (std::int32_t predictor = 0; predictor < 2; ++predictor) {
        Words memory = freshMemory(), lsf(10), after(10);
        ASSERT_EQ(zspsLSFDecode_G729_16s(predictor, 20, 3, 4, memory.data(), lsf.data()), 0);
        const Words sent(memory.begin(), memory.begin() + 10);
        Words before = freshMemory();
        ASSERT_EQ(zspsLSFDecodeErased_G729_16s(predictor, lsf.data(), before.data()), 0);
        for (std::size_t j = 0; j < 10; ++j)
            EXPECT_NEAR(before[j], sent[j], 12) << predictor << ", " << j;
        const Words older(before.begin() + 10, before.end());
        const Words fresh = freshMemory();
        EXPECT_EQ(older, Words(fresh.begin(), fresh.begin() + 30));
    }
}

} // namespace
