// The adaptive codebook of G.729: the reference's traces, taming, and the fast forms.

#include "codecs/g729/coder/g729_searches.hpp"

#include "tests/codecs/g729/g729_trace.hpp"

#include <array>

namespace {

using namespace zsp::test;
using namespace zsp::test::g729;
namespace coder = zsp::g729;

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsConvPartial_G729_16s),
             {in<std::int16_t>(40), in<std::int16_t>(40), out<std::int16_t>(40)}),
    Contract(ZSP_NAMED(zspsAdaptiveCodebookSearch_G729_16s),
             {in<std::int16_t>(40), in<std::int16_t>(40), number(20), number(29), number(0),
              out<std::int16_t>(194), out<std::int16_t>(1), out<std::int16_t>(1)})
        .row({{2, number(19)}}, zspStsCodecRangeErr)
        .row({{3, number(144)}}, zspStsCodecRangeErr)
        .row({{3, number(30)}}, zspStsCodecRangeErr)
        .row({{3, number(19)}}, zspStsCodecRangeErr)
        .row({{4, number(2)}}, zspStsCodecRangeErr),
    Contract(ZSP_NAMED(zspsAdaptiveCodebookSearch_G729A_16s),
             {in<std::int16_t>(40), number(134), number(143), number(1), out<std::int16_t>(194),
              out<std::int16_t>(1), out<std::int16_t>(1)})
        .row({{1, number(133)}}, zspStsCodecRangeErr)
        .row({{2, number(144)}}, zspStsCodecRangeErr)
        .row({{3, number(-1)}}, zspStsCodecRangeErr),
    Contract(
        ZSP_NAMED(zspsAdaptiveCodebookGain_G729_16s),
        {in<std::int16_t>(40), in<std::int16_t>(40), out<std::int16_t>(4), out<std::int16_t>(1)}),
    Contract(ZSP_NAMED(zspsTamingTest_G729_32s),
             {in<std::int32_t>(4), number(144), number(1), out<std::int32_t>(1)})
        .row({{1, number(17)}}, zspStsCodecRangeErr)
        .row({{1, number(145)}}, zspStsCodecRangeErr)
        .row({{2, number(2)}}, zspStsCodecRangeErr),
    Contract(ZSP_NAMED(zspsTamingUpdate_G729_32s_I), {number(0), number(144), out<std::int32_t>(4)})
        .row({{1, number(17)}}, zspStsCodecRangeErr)
        .row({{1, number(145)}}, zspStsCodecRangeErr),
});

TEST(G729Adaptive, Traces)
{
    Past past(154);
    int compared = 0;
    forEachEncoded([&](const TracedFrame& t, bool isMain, const std::string& what) {
        past.frame(t);
        int centre = t.value("open_loop_lag") - 3;
        for (std::size_t k = 0; k < 2; ++k) {
            const Words target = t.words("target", k), response = t.words("impulse_response", k);
            const Words r = isMain ? t.words("residual", k) : half(t.words("residual"), k);
            const int width = k == 0 ? 6 : 9, first = std::clamp(centre, 20, 143 - width);
            Words e = past.with(r);
            std::int16_t lag = 0, fraction = 0;
            if (past.isWhole()) {
                ++compared;
                if (isMain)
                    zspsAdaptiveCodebookSearch_G729_16s(target.data(), response.data(), first,
                                                        first + width, static_cast<int>(k),
                                                        e.data(), &lag, &fraction);
                else
                    zspsAdaptiveCodebookSearch_G729A_16s(
                        t.words("pitch_correlations_backward", k).data(), first, first + width,
                        static_cast<int>(k), e.data(), &lag, &fraction);
                EXPECT_EQ(lag, t.word("lag", k)) << what;
                EXPECT_EQ(fraction, t.word("lag_fraction", k)) << what;
                expectEqual(Words(e.begin() + 154, e.end()), t.words("adaptive_vector", k), what);
            }
            centre = t.value("lag", k) - 5;
            past.push(t.words("excitation", k));

            Words filtered(40), sums(4);
            if (isMain) {
                zspsConvPartial_G729_16s(t.words("adaptive_vector", k).data(), response.data(),
                                         filtered.data());
                expectEqual(filtered, t.words("filtered_adaptive", k), what);
            }
            std::int16_t gain = 0;
            zspsAdaptiveCodebookGain_G729_16s(target.data(), t.words("filtered_adaptive", k).data(),
                                              sums.data(), &gain);
            expectEqual(sums, t.words("pitch_correlations", k), what);
            EXPECT_EQ(gain, t.word("pitch_gain_unquantised", k)) << what;
        }
    });
    EXPECT_GE(compared, 12);
}

TEST(G729Adaptive, LoudVectorsAreDividedByFour)
{
    const Words loud(40, 8000), opposite(40, -8000);
    Words sums(4);
    std::int16_t gain = 0;
    zspsAdaptiveCodebookGain_G729_16s(loud.data(), loud.data(), sums.data(), &gain);
    EXPECT_NEAR(gain, 16384, 4);
    zspsAdaptiveCodebookGain_G729_16s(opposite.data(), loud.data(), sums.data(), &gain);
    EXPECT_EQ(gain, 0);
    EXPECT_EQ(sums[3], -15);
}

TEST(G729Adaptive, TamingFollowsAConstantGain)
{
    // Above 1 errors grow from subframe to subframe, and with a short lag twice in each.
    std::array<std::int32_t, 4> errors = {16384, 16384, 16384, 16384};
    int first = 0;
    for (int n = 1; n < 60 && first == 0; ++n) {
        zspsTamingUpdate_G729_32s_I(18000, 30, errors.data());
        std::int32_t tame = 0;
        zspsTamingTest_G729_32s(errors.data(), 30, 0, &tame);
        if (tame) first = n;
    }
    EXPECT_GT(errors[0], 983040000);
    EXPECT_GT(errors[0], errors[1]);
    std::int32_t tame = 0;
    struct Row {
        int lag, fraction, zone, want;
    };
    for (const Row& r : {Row{30, 0, 0, 1}, Row{31, 0, 0, 1}, Row{31, 0, 1, 0}, Row{31, 1, 1, 1},
                         Row{89, 0, 0, 1}, Row{89, 1, 0, 0}, Row{90, 0, 0, 0}, Row{144, 1, 3, 1},
                         Row{144, 0, 1, 0}, Row{144, 0, 2, 1}}) {
        errors.fill(0);
        errors[static_cast<std::size_t>(r.zone)] = 983040001;
        zspsTamingTest_G729_32s(errors.data(), r.lag, r.fraction, &tame);
        EXPECT_EQ(tame, r.want) << r.lag << ' ' << r.fraction << ' ' << r.zone;
    }
    errors.fill(983040000);
    zspsTamingTest_G729_32s(errors.data(), 100, 0, &tame);
    EXPECT_EQ(tame, 0);
    errors = {1, 2 << 20, 3, 4};
    zspsTamingUpdate_G729_32s_I(16384, 100, errors.data()); // zones 1 and 2
    EXPECT_EQ(errors, (std::array<std::int32_t, 4>{16384 + (2 << 20), 1, 2 << 20, 3}));
}

TEST(G729Adaptive, FastEqualsDefinition)
{
    Samples samples(37);
    for (int round = 0; round < 4000; ++round) {
        const Words target = anyWords(samples, 40, round),
                    response = anyWords(samples, 40, round / 16);
        Words a = anyWords(samples, 194, round / 3), b = a;
        const int first = samples.below(124) + 20, last = std::min(first + samples.below(10), 143);
        const auto t = zsp::spanOf<40>(target.data()), h = zsp::spanOf<40>(response.data());
        for (const bool isMain : {true, false}) {
            const bool isFirst = samples.below(2) == 0;
            coder::Lag want{}, got{};
            if (isMain) {
                want = coder::adaptiveSearchScalar(t, h, first, last, isFirst,
                                                   zsp::spanOf<194>(a.data()));
                got = coder::adaptiveSearchAvx2(t, h, first, last, isFirst,
                                                zsp::spanOf<194>(b.data()));
            } else {
                want = coder::adaptiveSearchAScalar(t, first, last, isFirst,
                                                    zsp::spanOf<194>(a.data()));
                got =
                    coder::adaptiveSearchAAvx2(t, first, last, isFirst, zsp::spanOf<194>(b.data()));
            }
            ASSERT_EQ(got.whole, want.whole) << round;
            ASSERT_EQ(got.thirds, want.thirds) << round;
            expectEqual(b, a, "excitation, round " + std::to_string(round));
        }
        Words x(40), y(40);
        coder::convolveScalar(t, h, zsp::spanOf<40>(x.data()));
        coder::convolveAvx2(t, h, zsp::spanOf<40>(y.data()));
        expectEqual(y, x, "convolution, round " + std::to_string(round));
    }
}

} // namespace
