// The canceller's delay, the delay hint, and references that come too early or too late.

#include "tests/voice/echo/echo_call.hpp"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace zsp::test;

/// The same far end, given to the canceller `ms` later than it was played.
Call withLateReference(Call call, int rate, double ms)
{
    call.far.insert(call.far.begin(), static_cast<std::size_t>(ms * rate / 1000), 0);
    call.far.resize(call.mic.size());
    return call;
}

TEST(EchoDelay, IsAsStated)
{
    for (const int rate : {8000, 16000})
        for (const int hint : {0, 500, -7, -50}) {
            ZspvEchoConfig config = echoConfig(rate);
            config.delayMs = hint;
            std::int32_t delay = 0;
            ASSERT_EQ(zspvEchoGetDelay(makeEcho(config).get(), &delay), zspStsNoErr);
            EXPECT_EQ(delay, rate / 50 + std::max(-hint, 0) * rate / 1000);
            const Words near = talk(rate, 3, 2);
            const Call call = simulateCall(Words(near.size()), near, {});
            EXPECT_GE(snrDb(near, cancel(call, config).out), 44) << rate << ", hint " << hint;
        }
}

// The microphone may be 2.5 ms ahead of its reference as it is, and 50 ms more with a hint.
TEST(EchoDelay, TheMicrophoneMayBeAhead)
{
    struct Case {
        double lateMs;
        std::int32_t hint;
        double loss;
    };
    for (const int rate : {8000, 16000})
        for (const Case& c : {Case{0, 0, 34}, Case{1, 0, 26}, Case{2.5, 0, 42}, Case{5, -5, 34},
                              Case{20, -20, 34}, Case{52, -50, 26}}) {
            SCOPED_TRACE(std::to_string(rate) + " Hz, late by " + std::to_string(c.lateMs));
            const Call call = withLateReference(
                simulateCall(talk(rate, 0, 7), {}, {.path = pureDelay(rate, 0, 6)}), rate,
                c.lateMs);
            ZspvEchoConfig config = echoConfig(rate);
            config.delayMs = c.hint;
            const EchoRun run = cancel(call, config);
            EXPECT_GE(enhancement(call, run.out, rate, 3, 6.9), c.loss);
        }
}

// A device that plays 300 ms late is beyond the tail without a hint.
TEST(EchoDelay, TheHintMovesTheTail)
{
    for (const int rate : {8000, 16000}) {
        std::vector<float> path = pureDelay(rate, 300, 200);
        const std::vector<float> room = echoPath(rate, 64);
        path.insert(path.end(), room.begin(), room.end());
        const Call call = simulateCall(talk(rate, 0, 7), {}, {.path = path});
        ZspvEchoConfig config = echoConfig(rate, 128);
        EXPECT_LE(enhancement(call, cancel(call, config).out, rate, 3, 7), 10) << rate;
        config.delayMs = 300;
        const EchoRun run = cancel(call, config);
        EXPECT_GE(enhancement(call, run.out, rate, 3, 7), 25) << rate;
        EXPECT_LE(run.metrics.back().pathDelayMs, 40) << rate;
    }
}

// The device's delay changes, and the hint with it: what was learnt stays good.
TEST(EchoDelay, AChangeThatTheHintFollowsKeepsThePath)
{
    for (const int rate : {8000, 16000})
        for (const auto& [before, after] : {std::pair{0, 100}, std::pair{100, 0}}) {
            SCOPED_TRACE(std::to_string(rate) + " Hz, to " + std::to_string(after));
            const auto path = [rate = rate](int ms) {
                std::vector<float> late = pureDelay(rate, ms, 200);
                const std::vector<float> rest = echoPath(rate, 64);
                late.insert(late.end(), rest.begin(), rest.end());
                return late;
            };
            const Call call = simulateCall(talk(rate, 0, 7), {},
                                           {.path = path(before),
                                            .pathAfter = path(after),
                                            .changeAt = static_cast<std::size_t>(5 * rate)});
            ZspvEchoConfig config = echoConfig(rate);
            config.delayMs = before;
            const EchoRun run = cancel(call, config, [&, to = after](ZspvEcho* echo, double s) {
                if (s >= 5) {
                    EXPECT_EQ(zspvEchoSetDelay(echo, to), zspStsNoErr);
                }
            });
            EXPECT_GE(enhancement(call, run.out, rate, 5.25, 6), 25);
            EXPECT_EQ(run.metrics.back().restarts, 0);
        }
}

// A hint that is wrong by less than the tail costs a new start, no more.
TEST(EchoDelay, AWrongHintIsOvercome)
{
    const int rate = 16000;
    std::vector<float> path = pureDelay(rate, 60, 200);
    const std::vector<float> room = echoPath(rate, 64);
    path.insert(path.end(), room.begin(), room.end());
    const Call call = simulateCall(talk(rate, 0, 9), {}, {.path = path});
    const EchoRun run = cancel(call, echoConfig(rate), [](ZspvEcho* echo, double s) {
        if (s >= 5) {
            EXPECT_EQ(zspvEchoSetDelay(echo, 40), zspStsNoErr);
        }
    });
    EXPECT_GE(enhancement(call, run.out, rate, 4, 5), 30);
    EXPECT_LE(recovery(call, run.out, rate, 5), 2);
}

// Whatever is set wrongly, the near end comes through.
TEST(EchoDelay, NoSettingSilencesTheNearEnd)
{
    const int rate = 16000;
    const Words near = talk(rate, 13, 5, 2);
    const Call call = simulateCall(talk(rate, 0, 7), near, {.path = pureDelay(rate, 150, 20)});
    for (const int tail : {8, 512})
        for (const int hint : {-50, 0, 500})
            for (const std::int32_t suppressor : {zspvOn, zspvOff}) {
                ZspvEchoConfig config = echoConfig(rate, tail);
                config.delayMs = hint;
                config.suppressor = suppressor;
                const EchoRun run = cancel(call, config);
                EXPECT_NEAR(levelDbfs(part(run.out, rate, 2.5, 7)),
                            levelDbfs(part(call.near, rate, 2.5, 7)), 1)
                    << tail << " ms, hint " << hint << ", suppressor " << suppressor;
            }
}

} // namespace
