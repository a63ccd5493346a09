// The multi-pulse search of G.723.1 against the reference's traces, trial by trial.

#include "codecs/g723/g723_searches.hpp"

#include "tests/codecs/g723/g723_trace.hpp"

namespace {

using namespace zsp::test;
using namespace zsp::test::g723;
using namespace zsp::g723;

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsMPMLQSearch_G723_16s),
             {in<std::int16_t>(60), in<std::int16_t>(60), number(0), asOutput(frameArgument())})
        .row({{2, number(-1)}}, zspStsCodecRangeErr)
        .row({{2, number(4)}}, zspStsCodecRangeErr)
        .row({{3, spoilt(asOutput(frameArgument()), &ZspG723Frame::lag, 17)}}, zspStsCodecRangeErr)
        .row({{3, spoilt(asOutput(frameArgument()), &ZspG723Frame::lag, 142)}},
             zspStsCodecRangeErr),
});

TEST(G723MultiPulse, Traces)
{
    forEachFrame("encode", [](const TracedFrame& t, const std::string& what) {
        if (!isActive(t) || t.words("frame").size() != 24) return;
        const ZspG723Frame want = fieldsOf(t);
        for (std::int32_t i = 0; i < 4; ++i) {
            const auto k = static_cast<std::size_t>(i);
            ZspG723Frame f = want;
            f.position[k] = f.signs[k] = f.grid[k] = f.train[k] = f.fcbGain[k] = -1;
            zspsMPMLQSearch_G723_16s(t.words("target_fixed", k).data(),
                                     t.words("impulse_response", k).data(), i, &f);
            EXPECT_EQ(f.position[k], want.position[k]) << what;
            EXPECT_EQ(f.signs[k], want.signs[k]) << what;
            EXPECT_EQ(f.grid[k], want.grid[k]) << what;
            EXPECT_EQ(f.train[k], want.train[k]) << what;
            EXPECT_EQ(f.fcbGain[k], want.fcbGain[k]) << what;
        }
    });
}

/// Every trial of the reference: train, grid, gain index, measure, positions, amplitudes.
TEST(G723MultiPulse, TrialsOfTheTraces)
{
    std::size_t trials = 0;
    for (const TracedFrame& t : traced("63", "encode")) {
        const ZspG723Frame f = fieldsOf(t);
        std::size_t trial = 0;
        for (std::size_t k = 0; k < 4; ++k) {
            const auto count = static_cast<std::size_t>(kPulseCount[k]);
            const Words target = t.words("target_fixed", k),
                        response = t.words("impulse_response", k);
            const auto lag = static_cast<std::size_t>(f.lag[k / 2]);
            for (int train = 0; train < (lag < 58 ? 2 : 1); ++train) {
                const PulseProblem p =
                    pulseProblemScalar(zsp::spanOf<60>(target.data()),
                                       zsp::spanOf<60>(response.data()), count, train ? lag : 60);
                for (std::size_t grid = 0; grid < 2; ++grid)
                    for (std::size_t s = 0; s < 4; ++s, ++trial) {
                        const auto want = t.longs("mlq_trial", trial);
                        const PulseStart start = pulseStart(p, grid);
                        const std::size_t gain = start.gain - 2 + s;
                        const Pulses pulses = placePulsesScalar(p, start.place, kFixedGain[gain]);
                        std::vector<std::int32_t> got = {train, static_cast<std::int32_t>(grid),
                                                         static_cast<std::int32_t>(gain),
                                                         pulseMeasureScalar(p, pulses)};
                        for (std::size_t i = 0; i < count; ++i)
                            got.push_back(pulses.places[i]);
                        for (std::size_t i = 0; i < count; ++i)
                            got.push_back(pulses.amplitudes[i]);
                        expectEqual(got, want, "trial");
                    }
            }
        }
        trials += trial;
    }
    EXPECT_GT(trials, 200u);
}

TEST(G723MultiPulse, FastFormsEqualDefinitions)
{
    Samples samples(17);
    for (int round = 0; round < 4000; ++round) {
        const std::string what = "round " + std::to_string(round);
        const Words target = anyWords(samples, 60, round),
                    response = anyWords(samples, 60, round / 8);
        const std::size_t count = round % 2 == 0 ? 6 : 5;
        const auto period = static_cast<std::size_t>(18 + samples.below(43));
        const In<60> x(target.data(), 60), r(response.data(), 60);
        const PulseProblem p = pulseProblemScalar(x, r, count, period);
        const PulseProblem fast = pulseProblemAvx2(x, r, count, period);
        expectEqual(fast.response, p.response, what);
        expectEqual(fast.corr, p.corr, what);
        expectEqual(fast.cross, p.cross, what);
        const PulseTrials trials(p);
        for (std::size_t grid = 0; grid < 2; ++grid)
            for (const std::size_t gain : {0u, 7u, 15u, 19u, 23u}) {
                const PulseStart start = pulseStart(p, grid);
                const Pulses want = placePulsesScalar(p, start.place, kFixedGain[gain]);
                const Pulses got = trials.place(start.place, kFixedGain[gain]);
                expectEqual(got.places, want.places, what);
                expectEqual(got.amplitudes, want.amplitudes, what);
                ASSERT_EQ(trials.measure(want), pulseMeasureScalar(p, want)) << what;
            }
    }
}

} // namespace
