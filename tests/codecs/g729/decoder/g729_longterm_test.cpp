// The long-term post-filter of G.729's main body.

#include "codecs/g729/decoder/g729_decoder.hpp"

#include "tests/codecs/g729/g729_trace.hpp"

#include <cmath>

namespace {

using namespace zsp::test;
using namespace zsp::test::g729;
using zsp::spanOf;

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsLongTermPostFilter_G729_16s),
             {number(144), in<std::int16_t>(192), out<std::int16_t>(40), out<std::int16_t>(1)})
        .row({{0, number(17)}}, zspStsCodecRangeErr)
        .row({{0, number(145)}}, zspStsCodecRangeErr),
});

/// Pulses with a period in eighths of a sample, smooth enough to be interpolated.
Words voiced(int period)
{
    Words x(192);
    for (std::size_t i = 0; i < x.size(); ++i) {
        const double phase = 6.283185307 * 8 * static_cast<double>(i) / period;
        x[i] = static_cast<std::int16_t>(
            std::lround(4000 * std::cos(phase) + 2000 * std::cos(2 * phase)));
    }
    return x;
}

TEST(G729LongTerm, FindsAFractionalPeriodAndKeepsIt)
{
    for (const int eighths : {8 * 25, 8 * 37 + 3, 8 * 60 + 4, 8 * 80 + 6}) {
        const Words x = voiced(eighths);
        Words dst(40);
        std::int16_t delay = -1;
        ASSERT_EQ(zspsLongTermPostFilter_G729_16s(eighths / 8, x.data(), dst.data(), &delay), 0);
        EXPECT_NEAR(delay, eighths / 8.0, 1.0);
        for (std::size_t i = 0; i < 40; ++i)
            EXPECT_NEAR(dst[i], x[152 + i], 250) << eighths << ", " << i;
    }
}

/// Any words, and pulse trains with noise, for which the search goes all the way.
TEST(G729LongTerm, FastFormEqualsItsDefinition)
{
    Samples samples(7291);
    int filtered = 0;
    for (int round = 0; round < 6000; ++round) {
        Words x = anyWords(samples, 192, round);
        const auto lag = static_cast<std::int16_t>(samples.uniform(18, 144));
        if (round % 3 != 0) {
            const auto height = static_cast<std::int16_t>(samples.uniform(1, 32767));
            for (auto& v : x)
                v = static_cast<std::int16_t>(v >> (round % 7));
            for (int i = static_cast<int>(samples.uniform(0, 20)); i < 192;
                 i += lag + static_cast<int>(samples.uniform(-1, 1)))
                x[static_cast<std::size_t>(i)] = round % 2 ? height : -height;
        }
        Words want(40), got(40);
        const auto delay = zsp::g729::longTermPostFilterScalar(lag, spanOf<192>(x.data()),
                                                               spanOf<40>(want.data()));
        ASSERT_EQ(
            zsp::g729::longTermPostFilterAvx2(lag, spanOf<192>(x.data()), spanOf<40>(got.data())),
            delay)
            << "round " << round;
        ASSERT_EQ(got, want) << "round " << round;
        filtered += delay != 0;
    }
    EXPECT_GT(filtered, 1000);
}

TEST(G729LongTerm, LeavesSilenceAndNoiseAlone)
{
    Samples samples(733);
    Words dst(40);
    std::int16_t delay = -1;
    ASSERT_EQ(zspsLongTermPostFilter_G729_16s(50, Words(192).data(), dst.data(), &delay), 0);
    EXPECT_EQ(delay, 0);
    EXPECT_EQ(dst, Words(40));
    int off = 0;
    for (int round = 0; round < 100; ++round) {
        Words x(192);
        for (auto& v : x)
            v = static_cast<std::int16_t>(samples.uniform(-9000, 9000));
        zspsLongTermPostFilter_G729_16s(50, x.data(), dst.data(), &delay);
        if (delay != 0) continue;
        ++off;
        EXPECT_EQ(dst, Words(x.begin() + 152, x.end()));
    }
    EXPECT_GT(off, 90);
}

} // namespace
