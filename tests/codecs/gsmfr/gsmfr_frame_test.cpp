// Stored frames of GSM full rate, each field's place; and whole frames through all blocks: signals,
// and a trace of every block's results.

#include "codecs/gsmfr/gsmfr_frame.hpp"

#include "tests/support/contract.hpp"
#include "tests/support/samples.hpp"
#include "tests/support/vectors.hpp"
#include "zspsc/gsmfr/frame.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using namespace zsp::test;
using namespace zsp::gsmfr;
using Words = std::vector<std::int16_t>;

Argument parameters(std::size_t index, std::int16_t value)
{
    Words all(76, 0);
    all[index] = value;
    return in<std::int16_t>(all);
}

Argument bytes(std::uint8_t first)
{
    std::vector<std::uint8_t> frame(33, 0);
    frame[0] = first;
    return in<std::uint8_t>(frame);
}

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsPackFrame_GSMFR_16s8u), {parameters(75, 7), out<std::uint8_t>(33)})
        .row({{0, parameters(0, 64)}}, zspStsCodecRangeErr)
        .row({{0, parameters(7, 8)}}, zspStsCodecRangeErr)
        .row({{0, parameters(8, 128)}}, zspStsCodecRangeErr)
        .row({{0, parameters(59, 128)}}, zspStsCodecRangeErr)
        .row({{0, parameters(75, 8)}}, zspStsCodecRangeErr)
        .row({{0, parameters(75, -1)}}, zspStsCodecRangeErr),
    Contract(ZSP_NAMED(zspsUnpackFrame_GSMFR_8u16s), {bytes(0xd0), out<std::int16_t>(76)})
        .row({{0, bytes(0)}}, zspStsCodecRangeErr)
        .row({{0, bytes(0xc0)}}, zspStsCodecRangeErr)
        .row({{0, bytes(0xf0)}}, zspStsCodecRangeErr),
});

TEST(GsmfrFrame, Vectors)
{
    expectConforms("GSM full rate", 10, "encoder, ");
    expectConforms("GSM full rate", 11, "decoder, ");
    expectConforms("GSM full rate", 1, "every block of six frames");
}

using Stored = std::vector<std::uint8_t>;

// Bit by bit: the widths of table 1.1, one parameter after the other.
TEST(GsmfrFrame, EveryBitInItsPlace)
{
    std::vector<int> widths = {6, 6, 5, 5, 4, 4, 3, 3};
    for (int j = 0; j < 4; ++j) {
        widths.insert(widths.end(), {7, 2, 2, 6});
        widths.insert(widths.end(), 13, 3);
    }
    std::size_t bit = 4;
    for (std::size_t i = 0; i < widths.size(); ++i)
        for (int b = widths[i] - 1; b >= 0; --b, ++bit) {
            Words one(76, 0);
            one[i] = static_cast<std::int16_t>(1 << b);
            Stored want(33, 0), got(33, 0xff);
            want[0] = 0xd0;
            want[bit / 8] = static_cast<std::uint8_t>(want[bit / 8] | 0x80 >> bit % 8);
            ASSERT_EQ(zspsPackFrame_GSMFR_16s8u(one.data(), got.data()), zspStsNoErr);
            expectEqual(got, want, "parameter " + std::to_string(i));
            Words back(76, -1);
            ASSERT_EQ(zspsUnpackFrame_GSMFR_8u16s(got.data(), back.data()), zspStsNoErr);
            expectEqual(back, one, "parameter " + std::to_string(i));
        }
    EXPECT_EQ(bit, 264u);
}

} // namespace
