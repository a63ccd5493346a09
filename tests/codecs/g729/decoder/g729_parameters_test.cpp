// Fields, lags and gains of G.729: what bits say, and that saying it again gives the same bits.

#include "codecs/g729/decoder/g729_decoder.hpp"

#include "tests/codecs/g729/g729_trace.hpp"

#include <set>

namespace {

using namespace zsp::test;
using namespace zsp::test::g729;

const Argument kFrame = in<std::uint8_t>(10);

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsPackFrame_G729_16s8u),
             {in<std::int16_t>(11), out<std::uint8_t>(10), number(10)})
        .row({{2, number(8)}}, zspStsSizeErr)
        .row({{2, number(0)}}, zspStsSizeErr)
        .row({{0, buffer(Argument::Kind::input, Words{0, 0, 0, 2, 0, 0, 0, 0, 0, 0, 0})}},
             zspStsCodecRangeErr)
        .row({{0, buffer(Argument::Kind::input, Words{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, -1})}},
             zspStsCodecRangeErr),
    Contract(ZSP_NAMED(zspsUnpackFrame_G729_8u16s), {kFrame, number(10), out<std::int16_t>(11)})
        .row({{1, number(9)}}, zspStsSizeErr)
        .row({{1, number(15)}}, zspStsSizeErr),
    Contract(ZSP_NAMED(zspsDecodePitchLag_G729_16s),
             {number(31), number(1), number(18), out<std::int16_t>(1), out<std::int16_t>(1)})
        .row({{1, number(2)}}, zspStsRangeErr)
        .row({{0, number(-1)}}, zspStsCodecRangeErr)
        .row({{0, number(32)}}, zspStsCodecRangeErr)
        .row({{0, number(256)}, {1, number(0)}}, zspStsCodecRangeErr)
        .row({{2, number(17)}}, zspStsCodecRangeErr)
        .row({{2, number(145)}}, zspStsCodecRangeErr),
    Contract(ZSP_NAMED(zspsGainDecode_G729_16s),
             {number(127), in<std::int16_t>(40), out<std::int16_t>(4), out<std::int16_t>(1),
              out<std::int16_t>(1)})
        .row({{0, number(-1)}}, zspStsCodecRangeErr)
        .row({{0, number(128)}}, zspStsCodecRangeErr),
    Contract(ZSP_NAMED(zspsGainDecodeErased_G729_16s_I),
             {out<std::int16_t>(4), out<std::int16_t>(1), out<std::int16_t>(1)}),
});

TEST(G729Parameters, FieldsMakeTheBitsThatTheyCameFrom)
{
    Samples samples(731);
    for (int round = 0; round < 200; ++round)
        for (const std::int32_t length : {10, 2}) {
            std::vector<std::uint8_t> bytes, again(static_cast<std::size_t>(length));
            for (std::int32_t i = 0; i < length; ++i)
                bytes.push_back(static_cast<std::uint8_t>(samples.uniform(0, 255)));
            if (length == 2) bytes[1] &= 0xfe;
            Words fields(11, -1);
            ASSERT_EQ(zspsUnpackFrame_G729_8u16s(bytes.data(), length, fields.data()), 0);
            ASSERT_EQ(zspsPackFrame_G729_16s8u(fields.data(), again.data(), length), 0);
            ASSERT_EQ(again, bytes);
        }
}

/// Table 8 of the Recommendation: a bit of each field, the most significant one in front.
TEST(G729Parameters, FieldsLieInTheOrderOfTheRecommendation)
{
    constexpr std::uint8_t kBytes[] = {0x80, 0x20, 0x10, 0x04, 0x00, 0x60, 0x80, 0x40, 0x00, 0x09};
    Words fields(11);
    ASSERT_EQ(zspsUnpackFrame_G729_8u16s(kBytes, 10, fields.data()), 0);
    EXPECT_EQ(fields, (Words{128, 128, 64, 0, 1024, 6, 4, 0, 2048, 0, 9}));
}

TEST(G729Parameters, EachIndexHasALagOfItsOwn)
{
    std::set<int> thirds;
    for (std::int32_t index = 0; index < 256; ++index) {
        std::int16_t lag = 0, fraction = 9;
        ASSERT_EQ(zspsDecodePitchLag_G729_16s(index, 0, 0, &lag, &fraction), 0);
        ASSERT_LE(std::abs(fraction), 1);
        thirds.insert(3 * lag + fraction);
    }
    EXPECT_EQ(thirds.size(), 256u);
    EXPECT_EQ(*thirds.begin(), 3 * 19 + 1);
    EXPECT_EQ(*thirds.rbegin(), 3 * 143);
    EXPECT_TRUE(thirds.contains(3 * 85 - 1) && !thirds.contains(3 * 86 + 1));
}

TEST(G729Parameters, TheSecondLagIsNearTheFirst)
{
    for (std::int16_t first = 18; first <= 144; ++first)
        for (std::int32_t index = 0; index < 32; ++index) {
            std::int16_t lag = 0, fraction = 9;
            ASSERT_EQ(zspsDecodePitchLag_G729_16s(index, 1, first, &lag, &fraction), 0);
            const int least = std::clamp(first - 5, 20, 134);
            EXPECT_EQ(3 * lag + fraction, 3 * least + index - 2) << first << ", " << index;
        }
}

TEST(G729Parameters, LostGainsFade)
{
    Words past = {-14336, 0, 4000, -300};
    std::int16_t pitch = 20000, code = 1000;
    ASSERT_EQ(zspsGainDecodeErased_G729_16s_I(past.data(), &pitch, &code), 0);
    EXPECT_EQ(pitch, 18000 - 1);
    EXPECT_EQ(code, 979);
    EXPECT_EQ(past, (Words{-2659 - 4096, -14336, 0, 4000}));
    pitch = 32767;
    past = Words(4, -14336);
    ASSERT_EQ(zspsGainDecodeErased_G729_16s_I(past.data(), &pitch, &code), 0);
    EXPECT_EQ(pitch, 29490);
    EXPECT_EQ(past, Words(4, -14336));
}

} // namespace
