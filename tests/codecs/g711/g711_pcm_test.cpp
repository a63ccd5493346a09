// G.711 over all samples and all code words, and AVX2 against the definition.

#include "codecs/g711/g711_pcm.hpp"

#include "tests/support/contract.hpp"
#include "zspsc/g711.h"

#include <gtest/gtest.h>

#include <numeric>
#include <vector>

namespace {

using namespace zsp::test;
using zsp::g711::Law;

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsEncode_G711_16s8u),
             {in<std::int16_t>(40), out<std::uint8_t>(40), number(40), number(zspG711LawA)})
        .row({{2, number(0)}}, zspStsSizeErr)
        .row({{2, number(-2147483648.0)}}, zspStsSizeErr)
        .row({{3, number(-1)}}, zspStsRangeErr)
        .row({{3, number(2)}}, zspStsRangeErr),
    Contract(ZSP_NAMED(zspsDecode_G711_8u16s),
             {in<std::uint8_t>(40), out<std::int16_t>(40), number(40), number(zspG711LawMu)})
        .row({{2, number(0)}}, zspStsSizeErr)
        .row({{2, number(-1)}}, zspStsSizeErr)
        .row({{3, number(-1)}}, zspStsRangeErr)
        .row({{3, number(2)}}, zspStsRangeErr),
});

/// The smallest magnitude of 14 (mu-law) or 12 bits (A-law) in the n-th of 128 intervals: the
/// decision values x of tables 2a and 1a of the Recommendation.
int decision(Law law, int n)
{
    const int segment = n >> 4;
    const int step = n & 15;
    if (law == Law::mu) return n == 0 ? 0 : ((32 + 2 * step) << segment) - 33;
    return segment == 0 ? step : (16 + step) << (segment - 1);
}

/// The value y of an interval in 16 bits: the middle, which for the first one of mu-law is 0.
int middle(Law law, int n)
{
    if (law == Law::mu) {
        if (n == 0) return 0;
        const int next = n == 127 ? 8159 : decision(law, n + 1);
        return (decision(law, n) + next) * 2;
    }
    const int next = n == 127 ? 2048 : decision(law, n + 1);
    return (decision(law, n) + next) * 8;
}

/// The code word of the n-th interval as it travels.
int onTheLine(Law law, int n, bool negative)
{
    const int code = n | (negative ? 0 : 128);
    return law == Law::mu ? code ^ 127 : code ^ 0x55;
}

std::vector<std::int16_t> everySample()
{
    std::vector<std::int16_t> all(65536);
    std::iota(all.begin(), all.end(), std::int16_t{-32768});
    return all;
}

class G711 : public testing::TestWithParam<Law> {};

TEST_P(G711, EverySampleFallsIntoItsInterval)
{
    const auto samples = everySample();
    std::vector<std::uint8_t> codes(samples.size());
    ASSERT_EQ(zspsEncode_G711_16s8u(samples.data(), codes.data(), 65536,
                                    static_cast<std::int32_t>(GetParam())),
              zspStsNoErr);
    const int cut = GetParam() == Law::mu ? 2 : 4;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const int x = samples[i];
        const int magnitude = (x < 0 ? -1 - x : x) >> cut;
        int n = 127;
        while (decision(GetParam(), n) > magnitude)
            --n;
        ASSERT_EQ(codes[i], onTheLine(GetParam(), n, x < 0)) << x;
    }
}

TEST_P(G711, EveryCodeWordGivesTheMiddleOfItsInterval)
{
    for (int n = 0; n < 128; ++n)
        for (const bool negative : {false, true}) {
            const auto code = static_cast<std::uint8_t>(onTheLine(GetParam(), n, negative));
            std::int16_t sample = 0;
            ASSERT_EQ(
                zspsDecode_G711_8u16s(&code, &sample, 1, static_cast<std::int32_t>(GetParam())),
                zspStsNoErr);
            EXPECT_EQ(sample, (negative ? -1 : 1) * middle(GetParam(), n)) << n;
        }
}

TEST_P(G711, Avx2EqualsTheDefinitionAtEveryLengthAndInput)
{
    const auto samples = everySample();
    std::vector<std::uint8_t> codes(samples.size()), wantedCodes(samples.size());
    zsp::g711::encodeScalar(samples, wantedCodes, GetParam());
    zsp::g711::encodeAvx2(samples, codes, GetParam());
    ASSERT_EQ(codes, wantedCodes);

    std::vector<std::int16_t> decoded(samples.size()), wanted(samples.size());
    zsp::g711::decodeScalar(codes, wanted, GetParam());
    zsp::g711::decodeAvx2(codes, decoded, GetParam());
    ASSERT_EQ(decoded, wanted);

    for (std::size_t length = 1; length <= 80; ++length) {
        std::vector<std::uint8_t> some(length + 1, 0xA5);
        zsp::g711::encodeAvx2({&samples[1], length}, {some.data(), length}, GetParam());
        for (std::size_t i = 0; i < length; ++i)
            ASSERT_EQ(some[i], wantedCodes[1 + i]) << length;
        ASSERT_EQ(some[length], 0xA5) << length;

        std::vector<std::int16_t> someSamples(length + 1, 12345);
        zsp::g711::decodeAvx2({&codes[1], length}, {someSamples.data(), length}, GetParam());
        for (std::size_t i = 0; i < length; ++i)
            ASSERT_EQ(someSamples[i], wanted[1 + i]) << length;
        ASSERT_EQ(someSamples[length], 12345) << length;
    }
}

INSTANTIATE_TEST_SUITE_P(Laws, G711, testing::Values(Law::mu, Law::a),
                         [](const auto& tested) { return tested.param == Law::mu ? "mu" : "a"; });

} // namespace
