// The filters made from the prediction filter of G.729: the reference's traces and corners.

#include "tests/codecs/g729/g729_trace.hpp"

namespace {

using namespace zsp::test;
using namespace zsp::test::g729;

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsWeightLPC_G729_16s),
             {in<std::int16_t>(11), number(24576), out<std::int16_t>(11)}),
    Contract(ZSP_NAMED(zspsWeightLPC_G729A_16s),
             {in<std::int16_t>(11), out<std::int16_t>(11), out<std::int16_t>(11)}),
    Contract(ZSP_NAMED(zspsResidualFilter_G729_16s),
             {in<std::int16_t>(11), in<std::int16_t>(40), out<std::int16_t>(40), number(30)})
        .row({{3, number(0)}}, zspStsSizeErr),
});

TEST(G729Weighting, Traces)
{
    Words speech(240 + 80), weighted(20);
    int last = -2;
    forEachEncoded([&](const TracedFrame& t, bool isMain, const std::string& what) {
        const Words x = t.words("pre_processed");
        if (t.value("frame") == 0) std::ranges::fill(speech, std::int16_t{0});
        speech.erase(speech.begin(), speech.begin() + 80);
        speech.insert(speech.end(), x.begin(), x.end());
        const bool follows = t.value("frame") < 60 || t.value("frame") > last + 1;
        last = t.value("frame");
        for (std::size_t k = 0; k < 2; ++k) {
            Words p(11), q(11);
            if (isMain) {
                const Words a = half(t.words("lpc_interpolated"), k);
                zspsWeightLPC_G729_16s(a.data(), t.words("gamma1")[k], p.data());
                expectEqual(p, t.words("lpc_weighted_numerator", k), what);
                zspsWeightLPC_G729_16s(a.data(), t.words("gamma2")[k], p.data());
                expectEqual(p, t.words("lpc_weighted_denominator", k), what);
                continue;
            }
            const Words a = half(t.words("lpc_quantised"), k);
            zspsWeightLPC_G729A_16s(a.data(), p.data(), q.data());
            expectEqual(p, half(t.words("lpc_weighted"), k), what);
            if (!follows || t.value("frame") > 60) continue;
            Words r(40);
            // The frame begins 120 samples before the end of its look-ahead.
            zspsResidualFilter_G729_16s(a.data(), &speech[320 - 120 + 40 * k], r.data(), 40);
            expectEqual(r, half(t.words("residual"), k), what);
        }
    });
}

TEST(G729Weighting, Corners)
{
    const Words lowest(11, -32768);
    Words p(11), q(11);
    zspsWeightLPC_G729_16s(lowest.data(), -32768, p.data());
    EXPECT_EQ(p[0], -32768);
    EXPECT_EQ(p[1], 32767); // the one product that saturates
    EXPECT_EQ(p[2], -32767);
    zspsWeightLPC_G729A_16s(lowest.data(), p.data(), q.data());
    EXPECT_EQ(q[0], 4096);
    EXPECT_EQ(p[1], -24576);
    EXPECT_EQ(q[1], -24576 + 22938);
}

TEST(G729Weighting, EveryStepSaturates)
{
    // Up beyond the range by the first two products, then back by the last: 32767 is not undone.
    const Words lpc = {32767, 32767, 0, 0, 0, 0, 0, 0, 0, 0, -32768};
    Words src(11);
    src[10] = src[9] = src[0] = 32767;
    Words dst(1);
    zspsResidualFilter_G729_16s(lpc.data(), &src[10], dst.data(), 1);
    EXPECT_EQ(dst[0], 8);
}

} // namespace
