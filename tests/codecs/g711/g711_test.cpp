// Both laws of G.711 one code word at a time: values, order, neighbours, and the way back.

#include "codecs/g711/g711.hpp"

#include "tests/support/vectors.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

namespace {

using namespace zsp::test;

TEST(G711, Sequences)
{
    expectConforms("G.711", 6);
}

struct G711 {
    const char* name;
    int (*expand)(int) noexcept;
    int (*compress)(int) noexcept;
    int (*larger)(int) noexcept;
    int (*smaller)(int) noexcept;
    int lowest, highest; // code words
};

constexpr G711 kG711[] = {
    {"mu-law", zsp::g711::expandMulaw, zsp::g711::compressMulaw, zsp::g711::nextLargerMulaw,
     zsp::g711::nextSmallerMulaw, 0x00, 0x80},
    {"A-law", zsp::g711::expandAlaw, zsp::g711::compressAlaw, zsp::g711::nextLargerAlaw,
     zsp::g711::nextSmallerAlaw, 0x2a, 0xaa},
};

TEST(G711, NeighboursFollowTheValues)
{
    for (const G711& law : kG711) {
        SCOPED_TRACE(law.name);
        int previous = law.lowest;
        EXPECT_EQ(law.smaller(law.lowest), law.lowest);
        EXPECT_EQ(law.larger(law.highest), law.highest);
        for (int step = 1; step < 256; ++step) {
            const int code = law.larger(previous);
            const bool zeros = law.expand(code) == 0 && law.expand(previous) == 0;
            EXPECT_TRUE(zeros || law.expand(code) > law.expand(previous)) << "code word " << code;
            // Downwards the negative zero of mu-law is left out.
            EXPECT_EQ(law.smaller(code), zeros ? law.smaller(previous) : previous);
            previous = code;
        }
        EXPECT_EQ(previous, law.highest);
    }
}

TEST(G711, CompressInvertsExpandAndStaysClose)
{
    for (const G711& law : kG711) {
        SCOPED_TRACE(law.name);
        for (int code = 0; code < 256; ++code)
            EXPECT_EQ(law.compress(law.expand(code)), law.expand(code) || code & 128 ? code : 0xff);

        int previous = law.lowest;
        for (int x = -32768; x < 32768; ++x) {
            const int code = law.compress(x);
            ASSERT_LE(law.expand(previous), law.expand(code)) << "falls at " << x;
            previous = code;
            // Half of the wider of the two steps around a value, but for the ends.
            const int value = law.expand(code);
            const int step = std::max(law.expand(law.larger(code)) - value,
                                      value - law.expand(law.smaller(code)));
            ASSERT_TRUE(2 * std::abs(value - x) <= step || code == law.lowest ||
                        code == law.highest)
                << x;
        }
    }
}

} // namespace
