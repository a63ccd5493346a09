// Excitation and synthesis of G.729: the fast forms against the definitions, and the rules for what
// overflows.

#include "codecs/g729/decoder/g729_decoder.hpp"

#include "tests/codecs/g729/g729_trace.hpp"

namespace {

using namespace zsp::test;
using namespace zsp::test::g729;
using zsp::spanOf;

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsDecodeAdaptiveVector_G729_16s_I),
             {number(18), number(-1), out<std::int16_t>(194)})
        .row({{0, number(17)}}, zspStsCodecRangeErr)
        .row({{0, number(145)}}, zspStsCodecRangeErr)
        .row({{1, number(-2)}}, zspStsCodecRangeErr)
        .row({{1, number(2)}}, zspStsCodecRangeErr),
    Contract(ZSP_NAMED(zspsFixedCodebookDecode_G729_16s),
             {number(8191), number(15), out<std::int16_t>(40)})
        .row({{0, number(-1)}}, zspStsCodecRangeErr)
        .row({{0, number(8192)}}, zspStsCodecRangeErr)
        .row({{1, number(-1)}}, zspStsCodecRangeErr)
        .row({{1, number(16)}}, zspStsCodecRangeErr),
    Contract(ZSP_NAMED(zspsHarmonicSharpening_G729_16s_I),
             {number(18), number(13017), out<std::int16_t>(40)})
        .row({{0, number(17)}}, zspStsCodecRangeErr)
        .row({{0, number(145)}}, zspStsCodecRangeErr),
    Contract(ZSP_NAMED(zspsExcitation_G729_16s_I),
             {number(0), number(32767), in<std::int16_t>(40), out<std::int16_t>(40)})
        .row({{0, number(-1)}}, zspStsRangeErr)
        .row({{1, number(-1)}}, zspStsRangeErr),
    Contract(ZSP_NAMED(zspsSynthesis_G729_16s),
             {in<std::int16_t>(11), number(1), out<std::int16_t>(234), out<std::int16_t>(40),
              out<std::int16_t>(10)})
        .row({{1, number(-1)}}, zspStsRangeErr)
        .row({{1, number(2)}}, zspStsRangeErr),
});

TEST(G729Excitation, AdaptiveVectorEqualsItsDefinition)
{
    Samples samples(734);
    for (int round = 0; round < 32; ++round)
        for (std::int16_t lag = 18; lag <= 144; ++lag)
            for (std::int16_t fraction = -1; fraction <= 1; ++fraction) {
                Words want = anyWords(samples, 194, round), got = want;
                // about where sums begin to saturate
                if (round == 5)
                    for (auto& x : got)
                        x = static_cast<std::int16_t>(std::clamp<int>(x, -18090, 18090));
                want = got;
                zsp::g729::adaptiveVectorScalar(lag, fraction, spanOf<194>(want.data()));
                zsp::g729::adaptiveVector(lag, fraction, spanOf<194>(got.data()));
                ASSERT_EQ(got, want) << "lag " << lag << ", " << fraction << ", round " << round;
            }
}

TEST(G729Excitation, AWholeLagRepeatsAPeriod)
{
    for (const int lag : {20, 39, 40, 64, 100, 143}) {
        Words x(194);
        for (std::size_t i = 0; i < x.size(); ++i) // slow enough for the filter to pass all of it
            x[i] = static_cast<std::int16_t>(
                std::lround(9000 * std::sin(6.283185307 * static_cast<double>(i) / lag)));
        Words y = x;
        zspsDecodeAdaptiveVector_G729_16s_I(lag, 0, y.data());
        for (std::size_t i = 154; i < 194; ++i)
            ASSERT_NEAR(y[i], x[i], 180) << lag << ", " << i;
    }
}

TEST(G729Excitation, SumEqualsItsDefinition)
{
    Samples samples(735);
    for (int round = 0; round < 2000; ++round) {
        const Words code = anyWords(samples, 40, round);
        Words want = anyWords(samples, 40, round / 3), got = want;
        const auto gain = [&samples] {
            return static_cast<std::int16_t>(samples.words(1)[0] & 0x7fff);
        };
        const std::int16_t pitch = gain(), fixed = gain();
        zsp::g729::excitationScalar(pitch, fixed, spanOf<40>(code.data()), spanOf<40>(want.data()));
        zsp::g729::excitationAvx2(pitch, fixed, spanOf<40>(code.data()), spanOf<40>(got.data()));
        ASSERT_EQ(got, want) << "round " << round;
    }
}

TEST(G729Excitation, FourPulsesOnTheirTracks)
{
    Words code(40);
    ASSERT_EQ(zspsFixedCodebookDecode_G729_16s(7 + 8 * 6 + 64 * 5 + 512 * (2 * 4 + 1), 0b1010,
                                               code.data()),
              0);
    Words want(40);
    want[35] = want[27] = -8192;
    want[31] = want[24] = 8191;
    EXPECT_EQ(code, want);
    ASSERT_EQ(zspsHarmonicSharpening_G729_16s_I(40, 13017, code.data()), 0);
    EXPECT_EQ(code, want);
    ASSERT_EQ(zspsHarmonicSharpening_G729_16s_I(24, 8192, code.data()), 0);
    EXPECT_EQ(code, want); // nothing stands before 16
    code.assign(40, 0);
    code[0] = 8191;
    ASSERT_EQ(zspsHarmonicSharpening_G729_16s_I(18, 8192, code.data()), 0);
    EXPECT_EQ(code[18], 4095);
    EXPECT_EQ(code[36], 2047); // what is added is added again
}

TEST(G729Excitation, AnOverflowDividesAllExcitationByFour)
{
    const Words lpc = {4096, -8000, 4000, 0, 0, 0, 0, 0, 0, 0, 0}; // a sharp resonance
    Words loud(234, 3000), dst(40), memory(10), quiet = loud, wanted(40), wantedMemory(10);
    for (std::size_t i = 0; i < loud.size(); ++i)
        loud[i] = quiet[i] = static_cast<std::int16_t>(i % 2 ? 3001 : -17);
    ASSERT_EQ(zspsSynthesis_G729_16s(lpc.data(), 0, loud.data(), dst.data(), memory.data()), 0);
    for (auto& x : quiet)
        x = static_cast<std::int16_t>(x >> 2);
    EXPECT_EQ(loud, quiet);
    ASSERT_EQ(
        zspsSynthesis_G729_16s(lpc.data(), 0, quiet.data(), wanted.data(), wantedMemory.data()), 0);
    EXPECT_EQ(dst, wanted);
    EXPECT_EQ(memory, wantedMemory);
    EXPECT_EQ(quiet[200], loud[200]); // which was quiet enough
}

} // namespace
