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
    Contract(ZSP_NAMED(zspsPerceptualWeighting_G729_16s),
             {in<std::int16_t>(10), in<std::int16_t>(10), in<std::int16_t>(2), out<std::int16_t>(2),
              out<std::int16_t>(2), out<std::int16_t>(3)}),
    Contract(
        ZSP_NAMED(zspsImpulseResponse_G729_16s),
        {in<std::int16_t>(11), in<std::int16_t>(11), in<std::int16_t>(11), out<std::int16_t>(40)}),
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

TEST(G729Weighting, TracesOfTheMainBody)
{
    Words memory(3), last(10);
    int number = 0;
    for (const TracedFrame& t : traced("encode.main")) {
        const bool follows = t.value("frame") == 0 || t.value("frame") == number + 1;
        number = t.value("frame");
        if (number == 0) {
            memory = {0, 0, 1};
            last = {30000, 26000, 21000, 15000, 8000, 0, -8000, -15000, -21000, -26000};
        }
        Words lsp = t.words("lsp"), between(10), lsf(10), gamma1(2), gamma2(2);
        zspsLSPInterpolate_G729_16s(last.data(), lsp.data(), between.data());
        zspsLSPToLSF_Norm_G729_16s(between.data(), lsf.data());
        zspsPerceptualWeighting_G729_16s(lsf.data(), t.words("lsf_normalised").data(),
                                         t.words("reflection").data(), gamma1.data(), gamma2.data(),
                                         memory.data());
        last = lsp;
        if (follows) {
            expectEqual(gamma1, t.words("gamma1"), "frame " + std::to_string(number));
            expectEqual(gamma2, t.words("gamma2"), "frame " + std::to_string(number));
        }
        for (std::size_t k = 0; k < 2; ++k) {
            Words response(40);
            zspsImpulseResponse_G729_16s(t.words("lpc_weighted_numerator", k).data(),
                                         t.words("lpc_weighted_denominator", k).data(),
                                         half(t.words("lpc_quantised"), k).data(), response.data());
            expectEqual(response, t.words("impulse_response", k), std::to_string(number));
        }
    }
}

TEST(G729Weighting, TiltedSpectraAreWeightedByTheirClosestFrequencies)
{
    struct Row {
        std::int16_t first, second; // reflection coefficients
        std::int16_t flat;
    };
    // Log area ratios of -1.74 and 0.65 lead to the one, -1.52 or 0.43 back to the other.
    Words lsf = {1000, 2000, 3000, 4000, 5000, 6000, 7000, 8000, 9000, 10000};
    Words gamma1(2), gamma2(2), memory = {0, 0, 1};
    for (const Row& r : {Row{-30900, 10000, 1}, Row{-32000, 25000, 0}, Row{-31500, 16500, 0},
                         Row{-29000, 16500, 1}, Row{-32000, 25000, 1}, Row{-32000, 25000, 0},
                         Row{-32000, 1000, 1}}) {
        const Words reflection = {r.first, r.second};
        zspsPerceptualWeighting_G729_16s(lsf.data(), lsf.data(), reflection.data(), gamma1.data(),
                                         gamma2.data(), memory.data());
        EXPECT_EQ(gamma1[1], memory[2] ? 30802 : 32113);
        EXPECT_EQ(gamma2[1], memory[2] ? 19661 : 13107) << "1000 apart";
    }
    memory = {-4000, 3000, 0};
    const Words tilted = {-32700, 30000};
    lsf[4] = 4050;
    zspsPerceptualWeighting_G729_16s(lsf.data(), lsf.data(), tilted.data(), gamma1.data(),
                                     gamma2.data(), memory.data());
    EXPECT_EQ(gamma2[0], 22938) << "50 apart";
    lsf[4] = 4500;
    zspsPerceptualWeighting_G729_16s(lsf.data(), lsf.data(), tilted.data(), gamma1.data(),
                                     gamma2.data(), memory.data());
    EXPECT_EQ(gamma2[0], (1024 - (19302 * 1000 >> 15)) * 32);
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
