// What the canceller says of itself, against the truth of simulated calls.

#include "tests/voice/echo/echo_call.hpp"

#include <gtest/gtest.h>

namespace {

using namespace zsp::test;

/// Share of the blocks between two times for which a field is set.
double share(const EchoRun& run, std::int32_t ZspvEchoMetrics::*field, double from, double to)
{
    double set = 0;
    for (auto i = static_cast<std::size_t>(from * 100); i < static_cast<std::size_t>(to * 100); ++i)
        set += run.metrics[i].*field != 0 ? 1 : 0;
    return set / (to - from) / 100;
}

/// Far end alone, both ends from 5 s on, near end alone from 8 s on, far end alone on another path
/// from 11 s on. The near end is as loud at the microphone as the echo.
struct Conversation {
    Conversation(int rate, double noiseDbfs)
    {
        Words far = talk(rate, 0, 8);
        far.resize(static_cast<std::size_t>(11 * rate));
        const Words again = talk(rate, 0, 4);
        far.insert(far.end(), again.begin(), again.end());
        near = talk(rate, 12, 6, 5);
        const Call loud = simulateCall(far, near, {.path = echoPath(rate, 64)});
        const double gain = std::pow(
            10,
            (levelDbfs(part(loud.echo, rate, 5, 8)) - levelDbfs(part(loud.near, rate, 5, 8))) / 20);
        for (std::int16_t& x : near)
            x = static_cast<std::int16_t>(gain * x);
        call = simulateCall(far, near,
                            {.path = echoPath(rate, 64),
                             .pathAfter = echoPath(rate, 64, 1),
                             .changeAt = static_cast<std::size_t>(11 * rate),
                             .noiseDbfs = noiseDbfs});
    }
    Words near;
    Call call;
};

TEST(EchoMetrics, TellWhoTalks)
{
    for (const int rate : {8000, 16000})
        for (const double noise : {-150.0, -60.0}) {
            SCOPED_TRACE(std::to_string(rate) + " Hz, noise " + std::to_string(noise));
            const Conversation talk(rate, noise);
            const EchoRun run = cancel(talk.call, echoConfig(rate));
            constexpr auto kBoth = &ZspvEchoMetrics::doubleTalk;
            EXPECT_LE(share(run, kBoth, 0, 5), 0.03);
            EXPECT_LE(share(run, kBoth, 8.5, 11), 0.0);
            EXPECT_LE(share(run, kBoth, 12.5, 15), 0.03);

            double talks = 0, seen = 0; // blocks in which both ends do
            for (std::size_t i = 500; i < 800; ++i) {
                const auto block = [&](const Words& words) {
                    return levelDbfs(part(words, rate, 0.01 * static_cast<double>(i),
                                          0.01 * static_cast<double>(i + 1)));
                };
                if (block(talk.near) < -40 || block(talk.call.far) < -40) continue;
                ++talks;
                seen += run.metrics[i + 2].doubleTalk;
            }
            ASSERT_GT(talks, 30);
            EXPECT_GE(seen / talks, 0.85);
        }
}

TEST(EchoMetrics, TellWhetherTheFiltersHaveConverged)
{
    for (const int rate : {8000, 16000}) {
        SCOPED_TRACE(rate);
        const Conversation talk(rate, -60);
        const EchoRun run = cancel(talk.call, echoConfig(rate));
        constexpr auto kConverged = &ZspvEchoMetrics::converged;
        EXPECT_EQ(share(run, kConverged, 0, 0.5), 0);
        EXPECT_EQ(share(run, kConverged, 3, 11), 1) << "also while the near end talks";
        EXPECT_EQ(share(run, kConverged, 12, 12.3), 0) << "the path has changed";
        EXPECT_EQ(share(run, kConverged, 14.5, 15), 1);
    }
}

TEST(EchoMetrics, TellTheLossOfPathAndCanceller)
{
    for (const int rate : {8000, 16000})
        for (const double loss : {0.0, 6.0, 20.0}) {
            SCOPED_TRACE(std::to_string(rate) + " Hz, loss " + std::to_string(loss));
            Noise noise(9);
            Words far(static_cast<std::size_t>(6 * rate));
            for (std::int16_t& x : far)
                x = static_cast<std::int16_t>(1500 * noise.gaussian());
            const Call call = simulateCall(
                far, {}, {.path = pureDelay(rate, 20, loss), .noiseDbfs = -30 - loss - 20});
            const EchoRun run = cancel(call, echoConfig(rate));
            const ZspvEchoMetrics& last = run.metrics[598]; // before the signal ends
            EXPECT_NEAR(last.tailLossDb, loss, 1);
            EXPECT_NEAR(last.pathDelayMs, 20, 1);
            EXPECT_NEAR(
                last.echoLossDb,
                levelDbfs(part(call.mic, rate, 5, 6)) - levelDbfs(part(run.out, rate, 5, 6)), 1);
            EXPECT_EQ(last.doubleTalk, 0);
        }
}

TEST(EchoMetrics, CountBlocksAndStartAtZero)
{
    const EchoPointer echo = makeEcho(echoConfig(8000));
    const ZspvEchoMetrics fresh = metricsOf(echo.get());
    EXPECT_EQ(fresh.echoLossDb, 0);
    EXPECT_EQ(fresh.tailLossDb, 0);
    EXPECT_EQ(fresh.pathDelayMs, 0);
    EXPECT_EQ(fresh.converged, 0);
    Words block(240);
    EXPECT_EQ(zspvEchoProcess(echo.get(), block.data(), block.data(), block.data(), 240),
              zspStsNoErr);
    EXPECT_EQ(metricsOf(echo.get()).framesProcessed, 3);

    // A caller that was compiled with the first version's record, and one with a later one.
    struct {
        ZspvEchoMetrics known;
        std::int64_t later;
    } longer{};
    longer.known.structSize = sizeof longer;
    longer.later = 77;
    EXPECT_EQ(zspvEchoGetMetrics(echo.get(), &longer.known), zspStsNoErr);
    EXPECT_EQ(longer.known.framesProcessed, 3);
    EXPECT_EQ(longer.later, 77);

    std::vector<float> bins(33, -1);
    std::int32_t count = 0;
    EXPECT_EQ(zspvEchoGetUncertainty(echo.get(), bins.data(), 16, &count), zspStsSizeErr);
    EXPECT_EQ(count, 17);
    EXPECT_EQ(bins[0], -1);
    EXPECT_EQ(zspvEchoGetUncertainty(echo.get(), bins.data(), 33, &count), zspStsNoErr);
    EXPECT_NEAR(bins[16], 1, 1e-5);
    EXPECT_EQ(bins[17], -1);
}

} // namespace
