// The echo canceller on simulated calls: what a listener at the far end would get.

#include "tests/voice/echo/echo_call.hpp"

#include <gtest/gtest.h>

#include <numbers>
#include <string>

namespace {

using namespace zsp::test;

ZspvEchoConfig suppressing(int rate, int tailMs)
{
    ZspvEchoConfig config = echoConfig(rate, tailMs);
    config.suppressor = zspvOn;
    return config;
}

struct Case {
    int rate, tailMs;
};
class EchoPaths : public testing::TestWithParam<Case> {};

TEST_P(EchoPaths, RemovesEchoAndKeepsTheNearEnd)
{
    const auto [rate, tailMs] = GetParam();
    const bool room = rate == 16000;
    const Words far = talk(rate, 0, 12), near = talk(rate, 13, 5, 7);
    const Call call = simulateCall(far, near, {.path = echoPath(rate, tailMs)});
    const EchoRun run = cancel(call, suppressing(rate, tailMs));

    if (room) {
        EXPECT_GE(enhancement(call, run.out, rate, 0, 3), 37);
    }
    EXPECT_GE(enhancement(call, run.out, rate, 3, 7), room ? 40 : 33);
    EXPECT_EQ(run.metrics.back().restarts, 0);

    const auto near1 = part(call.near, rate, 7, 12), out1 = part(run.out, rate, 7, 12);
    EXPECT_GE(segmentalSnrDb(near1, out1, rate), room ? 23 : 27);
    EXPECT_NEAR(levelDbfs(out1), levelDbfs(near1), 0.5);

    // The suppressor is only the last part of it, and is off unless asked for.
    const EchoRun linear = cancel(call, echoConfig(rate, tailMs));
    EXPECT_GE(enhancement(call, linear.out, rate, 3, 7), 25);
    EXPECT_GE(enhancement(call, run.out, rate, 3, 7) + 0.01,
              enhancement(call, linear.out, rate, 3, 7));
}

TEST_P(EchoPaths, FollowsAChange)
{
    const auto [rate, tailMs] = GetParam();
    const Call call = simulateCall(talk(rate, 0, 9), {},
                                   {.path = echoPath(rate, tailMs),
                                    .pathAfter = echoPath(rate, tailMs, 1),
                                    .changeAt = static_cast<std::size_t>(5 * rate)});
    const EchoRun run = cancel(call, suppressing(rate, tailMs));
    EXPECT_GE(enhancement(call, run.out, rate, 4, 5), 30);
    EXPECT_LT(enhancement(call, run.out, rate, 5, 5.1), 15) << "the change must hurt at first";
    EXPECT_LE(recovery(call, run.out, rate, 5), 0.8);
}

INSTANTIATE_TEST_SUITE_P(RoomsAndHybrids, EchoPaths,
                         testing::Values(Case{16000, 64}, Case{16000, 128}, Case{16000, 256},
                                         Case{8000, 8}, Case{8000, 32}, Case{8000, 64}),
                         [](const auto& shape) {
                             return std::to_string(shape.param.rate / 1000) + "kHz" +
                                    std::to_string(shape.param.tailMs) + "ms";
                         });

TEST(Echo, LeavesTheNearEndAlone)
{
    for (const int rate : {8000, 16000}) {
        const Words near = talk(rate, 3, 6);
        const Call call = simulateCall(Words(near.size()), near, {});
        EXPECT_GE(snrDb(near, cancel(call, suppressing(rate, 64)).out), 44) << rate;
    }
}

TEST(Echo, NoiseStaysAndOnlyEchoGoes)
{
    const int rate = 16000;
    const Call call =
        simulateCall(talk(rate, 0, 8), {}, {.path = echoPath(rate, 128), .noiseDbfs = -55});
    const EchoRun run = cancel(call, suppressing(rate, 128));
    const double noise = levelDbfs(part(call.near, rate, 4, 8));
    EXPECT_NEAR(levelDbfs(part(run.out, rate, 4, 8)), noise, 3);
}

/// Answer tone with a phase reversal every 450 ms, then noise in the band of a modem.
Words modem(int rate, double toneSeconds, double dataSeconds)
{
    Words words;
    const auto tone = static_cast<int>(toneSeconds * rate);
    for (int n = 0; n < tone; ++n) {
        const double phase = 2 * std::numbers::pi * 2100 * n / rate;
        const bool reversed = n / (rate * 9 / 20) % 2 != 0;
        words.push_back(static_cast<std::int16_t>((reversed ? -4000 : 4000) * std::sin(phase)));
    }
    Noise noise(5);
    double amplitude = 0;
    for (int n = 0; n < static_cast<int>(dataSeconds * rate); ++n) {
        if (n % (rate / 1000) == 0) amplitude = noise.uniform() < 0.5 ? -3000 : 3000;
        words.push_back(static_cast<std::int16_t>(
            amplitude * std::cos(2 * std::numbers::pi * 1800 * n / rate)));
    }
    return words;
}

/// Far-end speech, a modem at the near end, its answer, a second of silence, speech at both ends.
Call modemCall(int rate)
{
    Words near(static_cast<std::size_t>(3 * rate));
    const Words data = modem(rate, 3.3, 3);
    near.insert(near.end(), data.begin(), data.end());
    Words far = talk(rate, 0, 3);
    far.resize(near.size());
    const Words answer = modem(rate, 0, 2.5);
    std::copy(answer.begin(), answer.end(), far.begin() + static_cast<std::ptrdiff_t>(6.6 * rate));
    for (Words* words : {&near, &far}) {
        words->resize(words->size() + static_cast<std::size_t>(rate));
        const Words more = talk(rate, 5, 3);
        words->insert(words->end(), more.begin(), more.end());
    }
    return simulateCall(far, near, {.path = echoPath(rate, 64)});
}

TEST(Echo, StepsAsideForAModem)
{
    for (const int rate : {8000, 16000}) {
        const Call call = modemCall(rate);
        const EchoRun run = cancel(call, suppressing(rate, 64));
        std::vector<double> changes; // in seconds, of the bypass
        for (std::size_t i = 1; i < run.metrics.size(); ++i)
            if (run.metrics[i].bypassed != run.metrics[i - 1].bypassed)
                changes.push_back(static_cast<double>(i + 1) / 100);
        ASSERT_EQ(changes.size(), 2U) << rate;
        EXPECT_LE(changes[0], 3.95) << rate;
        EXPECT_NEAR(changes[1], 9.3 + 0.4, 0.1) << rate;
        EXPECT_GE(snrDb(part(call.mic, rate, 4, 9), part(run.out, rate, 4, 9)), 44) << rate;

        ZspvEchoConfig always = suppressing(rate, 64);
        always.toneBypass = zspvOff;
        for (const ZspvEchoMetrics& metrics : cancel(call, always).metrics)
            ASSERT_EQ(metrics.bypassed, 0) << rate;
    }
}

TEST(Echo, SurvivesAnySignal)
{
    struct Signal {
        const char* name;
        Words (*make)(int rate);
    };
    const Signal signals[] = {
        {"silence", [](int rate) { return Words(static_cast<std::size_t>(rate)); }},
        {"constant", [](int rate) { return Words(static_cast<std::size_t>(rate), -32768); }},
        {"faint",
         [](int rate) {
             Words words(static_cast<std::size_t>(rate));
             for (std::size_t n = 0; n < words.size(); n += 3)
                 words[n] = n % 2 == 0 ? 1 : -1;
             return words;
         }},
        {"clipped",
         [](int rate) {
             Words words = talk(rate, 1, 1);
             for (std::int16_t& x : words)
                 x = static_cast<std::int16_t>(std::clamp(60 * x, -32768, 32767));
             return words;
         }},
        {"speech", [](int rate) { return talk(rate, 1, 1); }},
    };
    for (const Case& shape : {Case{8000, 8}, Case{16000, 8}, Case{16000, 64}, Case{8000, 512}}) {
        for (const Signal& farSignal : signals) {
            for (const Signal& micSignal : signals) {
                SCOPED_TRACE(std::string(farSignal.name) + " / " + micSignal.name);
                Call call;
                call.far = farSignal.make(shape.rate);
                call.mic = micSignal.make(shape.rate);
                const auto config = suppressing(shape.rate, shape.tailMs);
                const EchoRun run = cancel(call, config); // checks for finite output
                EXPECT_LE(levelDbfs(run.out), levelDbfs(call.mic) + 0.5);
                EXPECT_EQ(run.out, cancel(call, config).out);
            }
        }
    }
}

} // namespace
