// The adaptive codebook search of G.723.1 against the reference's traces.

#include "codecs/g723/g723_searches.hpp"

#include "tests/codecs/g723/g723_trace.hpp"

namespace {

using namespace zsp::test;
using namespace zsp::test::g723;

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsAdaptiveCodebookSearch_G723_16s),
             {words(60), words(60), words(145), in<std::int32_t>(5), number(0), number(1),
              asOutput(frameArgument())})
        .row({{5, number(-1)}}, zspStsCodecRangeErr)
        .row({{5, number(4)}}, zspStsCodecRangeErr)
        .row({{6, spoilt(asOutput(frameArgument()), &ZspG723Frame::type, 2)}}, zspStsCodecRangeErr)
        .row({{6, spoilt(asOutput(frameArgument()), &ZspG723Frame::lag, 17)}}, zspStsCodecRangeErr)
        .row({{6, spoilt(asOutput(frameArgument()), &ZspG723Frame::lag, 142)}},
             zspStsCodecRangeErr),
    Contract(ZSP_NAMED(zspsAdaptiveSubtract_G723_16s_I),
             {words(60), words(60), out<std::int16_t>(60)}),
    Contract(ZSP_NAMED(zspsTamingUpdate_G723_32s_I),
             {frameArgument(), number(0), out<std::int32_t>(5)})
        .row({{1, number(-1)}}, zspStsCodecRangeErr)
        .row({{1, number(4)}}, zspStsCodecRangeErr)
        .row({{0, spoilt(frameArgument(), &ZspG723Frame::acbGain, 170)}}, zspStsCodecRangeErr)
        .row({{0, spoilt(frameArgument(), &ZspG723Frame::lagOffset, 4)}}, zspStsCodecRangeErr),
});

TEST(G723Adaptive, Traces)
{
    for (const std::string& mode : kModes) {
        Words past(145);
        std::vector<std::int32_t> errors(5, 4);
        for (const TracedFrame& t : traced(mode, "encode")) {
            if (!isActive(t)) break; // comfort noise moves the past on
            ZspG723Frame f = fieldsOf(t);
            const ZspG723Frame want = f;
            const Words open = t.words("open_loop_lag");
            std::copy(open.begin(), open.end(), f.lag);
            for (std::int32_t i = 0; i < 4; ++i) {
                const auto k = static_cast<std::size_t>(i);
                f.lagOffset[k] = f.acbGain[k] = -1;
                const Words response = t.words("impulse_response", k);
                const auto sine = t.value("sine_detector") < 0;
                zspsAdaptiveCodebookSearch_G723_16s(t.words("target", k).data(), response.data(),
                                                    past.data(), errors.data(), sine, i, &f);
                EXPECT_EQ(f.lag[k / 2], want.lag[k / 2]);
                EXPECT_EQ(f.lagOffset[k], want.lagOffset[k]);
                EXPECT_EQ(f.acbGain[k], want.acbGain[k]);

                Words vector(60), target = t.words("target", k);
                zspsDecodeAdaptiveVector_G723_16s(&f, i, past.data(), vector.data());
                expectEqual(vector, t.words("adaptive_vector", k), mode);
                zspsAdaptiveSubtract_G723_16s_I(vector.data(), response.data(), target.data());
                expectEqual(target, t.words("target_fixed", k), mode);
                zspsTamingUpdate_G723_32s_I(&f, i, errors.data());
                expectEqual(errors, t.longs("taming_errors", k), mode);

                const Words excitation = t.words("excitation", k);
                past.erase(past.begin(), past.begin() + 60);
                past.insert(past.end(), excitation.begin(), excitation.end());
            }
        }
    }
}

TEST(G723Adaptive, CorrelationsAndTamingOfTheTraces)
{
    const auto frames = traced("63", "encode");
    Words past(145);
    std::vector<std::int32_t> errors(5, 4);
    for (const TracedFrame& t : frames)
        for (std::size_t k = 0; k < 4; ++k) {
            const bool even = k % 2 == 0;
            const int lag = even ? std::clamp<int>(t.words("open_loop_lag")[k / 2], 19, 140)
                                 : t.word("lag", k - 1);
            zsp::g723::AdaptiveCorrelations corr{};
            const Words target = t.words("target", k), response = t.words("impulse_response", k);
            const std::size_t count = zsp::g723::adaptiveCorrelationsScalar(
                zsp::spanOf<60>(target.data()), zsp::spanOf<60>(response.data()),
                zsp::spanOf<145>(past.data()), lag - 1, even ? 3 : 4, corr);
            expectEqual(Words(corr.data(), corr.data() + count), t.words("acb_correlations", k),
                        "correlations");
            EXPECT_EQ(zsp::g723::tamingRoom(zsp::spanOf<5>(errors.data()),
                                            t.value("sine_detector") < 0, lag - 1,
                                            lag + (even ? 1 : 2)),
                      t.word("taming_test", k));
            errors = t.longs("taming_errors", k);
            const Words excitation = t.words("excitation", k);
            past.erase(past.begin(), past.begin() + 60);
            past.insert(past.end(), excitation.begin(), excitation.end());
        }
}

TEST(G723Adaptive, ASineLeavesNoRoom)
{
    const std::vector<std::int32_t> quiet(5, 4), loud(5, 0x40000001), half(5, 1 << 29);
    const auto room = [](const std::vector<std::int32_t>& e, bool sine) {
        return zsp::g723::tamingRoom(zsp::spanOf<5>(e.data()), sine, 99, 101);
    };
    EXPECT_EQ(room(quiet, false), 127);
    EXPECT_EQ(room(quiet, true), 0);
    EXPECT_EQ(room(loud, false), 0);
    EXPECT_EQ(room(half, false), 64);
}

TEST(G723Adaptive, FastFormsEqualDefinitions)
{
    using namespace zsp::g723;
    Samples samples(16);
    for (int round = 0; round < 4000; ++round) {
        const std::string what = "round " + std::to_string(round);
        const Words target = anyWords(samples, 60, round),
                    response = anyWords(samples, 60, round / 8);
        const Words past = anyWords(samples, 145, round / 4);
        const In<60> x(target.data(), 60), r(response.data(), 60);
        const int lag = 17 + samples.below(124);
        const std::size_t count = round % 2 == 0 ? 3 : 4;
        AdaptiveCorrelations want{}, got{};
        adaptiveCorrelationsScalar(x, r, In<145>(past.data(), 145), lag, count, want);
        adaptiveCorrelationsAvx2(x, r, In<145>(past.data(), 145), lag, count, got);
        expectEqual(got, want, what);

        Words corr(want.begin(), want.begin() + 20);
        if (round % 4 == 0) corr = anyWords(samples, 20, round / 4);
        GainChoice best, fast;
        for (const bool small : {true, false}) {
            const auto bound = static_cast<std::size_t>(samples.uniform(51, small ? 85 : 170));
            searchGainsScalar(corr.data(), small, bound, 2, best);
            searchGainsAvx2(corr.data(), small, bound, 2, fast);
            ASSERT_EQ(fast.measure, best.measure) << what;
            ASSERT_EQ(fast.index, best.index) << what;
            ASSERT_EQ(fast.candidate, best.candidate) << what;
        }
        Words left = target, left2 = target;
        subtractAdaptiveScalar(In<60>(past.data(), 60), r, zsp::spanOf<60>(left.data()));
        subtractAdaptiveAvx2(In<60>(past.data(), 60), r, zsp::spanOf<60>(left2.data()));
        expectEqual(left2, left, what);
    }
}

/// Correlations with the signs of a gain vector give the largest sums that there are, which
/// saturate with some vectors.
TEST(G723Adaptive, TheLargestSumsSaturateAlike)
{
    using namespace zsp::g723;
    for (const bool small : {true, false})
        for (std::size_t i = 0; i < (small ? 85u : 170u); ++i)
            for (const int size : {32767, 20000}) {
                Words corr(20);
                for (std::size_t j = 0; j < corr.size(); ++j)
                    corr[j] = static_cast<std::int16_t>(gainVector(small, i)[j] < 0 ? -size : size);
                GainChoice want, got;
                searchGainsScalar(corr.data(), small, small ? 85 : 170, 0, want);
                searchGainsAvx2(corr.data(), small, small ? 85 : 170, 0, got);
                ASSERT_EQ(got.measure, want.measure) << i;
                ASSERT_EQ(got.index, want.index) << i;
            }
}

} // namespace
