// The host's echo canceller on simulated calls: what a listener at the far end would get.

#include "signals/measure.hpp"
#include "signals/room.hpp"
#include "tools/zsp/io/audio.hpp"
#include "tools/zsp/voice/echo_canceller.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace {

using namespace zsp::host;
using namespace zsp::signals;
using Words = std::vector<std::int16_t>;

const Audio& speech(int rate)
{
    const auto load = [](const char* path) {
        AudioReader reader(path);
        return readAsStored(reader);
    };
    static const Audio narrow = load(ZSPSC_DATA_DIR "/speech_8k.wav");
    static const Audio wide = resampled(narrow, 16000);
    return rate == 8000 ? narrow : wide;
}

/// `seconds` of speech after `pause` seconds of silence, from second `from` of the recording, which
/// goes round.
Words talk(int rate, double from, double seconds, double pause = 0)
{
    const Words& all = speech(rate).samples;
    Words words(static_cast<std::size_t>(pause * rate));
    const auto first = static_cast<std::size_t>(from * rate);
    for (std::size_t n = 0; n < static_cast<std::size_t>(seconds * rate); ++n)
        words.push_back(all[(first + n) % all.size()]);
    return words;
}

struct Result {
    Words out;                                    // in time with the microphone
    std::vector<double> bypassStarts, bypassEnds; // s
    int restarts = 0;
};

Result cancel(const Call& call, int rate, int tailMs, bool suppressor = true)
{
    EchoCanceller canceller({rate, tailMs, suppressor});
    const std::size_t hop = canceller.hop(), total = call.mic.size() + canceller.delay();
    std::vector<float> far(hop), mic(hop), out(hop);
    const auto sample = [](const Words& words, std::size_t n) {
        return n < words.size() ? static_cast<float>(words[n]) : 0.0F;
    };
    Result run;
    bool bypassed = false;
    for (std::size_t n = 0; n < total; n += hop) {
        for (std::size_t i = 0; i < hop; ++i) {
            far[i] = sample(call.far, n + i);
            mic[i] = sample(call.mic, n + i);
        }
        canceller.process(far, mic, out);
        for (const float x : out) {
            EXPECT_TRUE(std::isfinite(x));
            run.out.push_back(
                static_cast<std::int16_t>(std::lrintf(std::clamp(x, -32768.0F, 32767.0F))));
        }
        run.restarts += canceller.status().restarted ? 1 : 0;
        if (canceller.status().bypassed != bypassed) {
            bypassed = !bypassed;
            (bypassed ? run.bypassStarts : run.bypassEnds)
                .push_back(static_cast<double>(n + hop) / rate);
        }
    }
    run.out.erase(run.out.begin(),
                  run.out.begin() + static_cast<std::ptrdiff_t>(canceller.delay()));
    run.out.resize(call.mic.size());
    return run;
}

std::span<const std::int16_t> part(const Words& words, int rate, double from, double to)
{
    const auto first = static_cast<std::size_t>(from * rate);
    return std::span(words).subspan(first, static_cast<std::size_t>(to * rate) - first);
}

/// Echo return loss enhancement in dB: power of the echo over what is left beside the near end.
double enhancement(const Call& call, const Result& run, int rate, double from, double to)
{
    const Words left = difference(run.out, call.near);
    return levelDbfs(part(call.echo, rate, from, to)) - levelDbfs(part(left, rate, from, to));
}

/// Seconds after `change` at which the enhancement over 250 ms is 20 dB.
double recovery(const Call& call, const Result& run, int rate, double change)
{
    double at = change;
    while (at < change + 3 && enhancement(call, run, rate, at, at + 0.25) < 20)
        at += 0.05;
    return at - change;
}

std::vector<float> path(int rate, int tailMs, int which)
{
    if (rate == 8000)
        return which == 0 ? hybridResponse(rate, tailMs * 0.3, tailMs, 8, 1)
                          : hybridResponse(rate, tailMs * 0.1, tailMs * 0.8, 10, 2);
    Room room;
    room.decaySeconds = tailMs / 1000.0 * 1.3;
    if (which == 1) room.microphone = {3.4, 2.6, 1.3};
    return roomResponse(room, rate, static_cast<std::size_t>(tailMs * rate / 1000));
}

struct Case {
    int rate, tailMs;
};
class EchoCancellerPaths : public testing::TestWithParam<Case> {};

TEST_P(EchoCancellerPaths, RemovesEchoAndKeepsTheNearEnd)
{
    const auto [rate, tailMs] = GetParam();
    const bool room = rate == 16000;
    const Words far = talk(rate, 0, 12), near = talk(rate, 13, 5, 7);
    const Call call = simulateCall(far, near, {.path = path(rate, tailMs, 0)});
    const Result run = cancel(call, rate, tailMs);

    if (room) {
        EXPECT_GE(enhancement(call, run, rate, 0, 3), 37);
    }
    EXPECT_GE(enhancement(call, run, rate, 3, 7), room ? 40 : 33);
    EXPECT_EQ(run.restarts, 0);

    const auto near1 = part(call.near, rate, 7, 12), out1 = part(run.out, rate, 7, 12);
    EXPECT_GE(segmentalSnrDb(near1, out1, rate), room ? 23 : 27);
    EXPECT_NEAR(levelDbfs(out1), levelDbfs(near1), 0.5);

    // The suppressor is only the last part of it.
    const Result linear = cancel(call, rate, tailMs, false);
    EXPECT_GE(enhancement(call, linear, rate, 3, 7), 25);
    EXPECT_GE(enhancement(call, run, rate, 3, 7), enhancement(call, linear, rate, 3, 7));
}

TEST_P(EchoCancellerPaths, FollowsAChange)
{
    const auto [rate, tailMs] = GetParam();
    const Call call = simulateCall(talk(rate, 0, 9), {},
                                   {.path = path(rate, tailMs, 0),
                                    .pathAfter = path(rate, tailMs, 1),
                                    .changeAt = static_cast<std::size_t>(5 * rate)});
    const Result run = cancel(call, rate, tailMs);
    EXPECT_GE(enhancement(call, run, rate, 4, 5), 30);
    EXPECT_LT(enhancement(call, run, rate, 5, 5.1), 15) << "the change must hurt at first";
    EXPECT_LE(recovery(call, run, rate, 5), 0.8);
}

INSTANTIATE_TEST_SUITE_P(RoomsAndHybrids, EchoCancellerPaths,
                         testing::Values(Case{16000, 64}, Case{16000, 128}, Case{16000, 256},
                                         Case{8000, 8}, Case{8000, 32}, Case{8000, 64}),
                         [](const auto& shape) {
                             return std::to_string(shape.param.rate / 1000) + "kHz" +
                                    std::to_string(shape.param.tailMs) + "ms";
                         });

TEST(EchoCanceller, LeavesTheNearEndAlone)
{
    for (const int rate : {8000, 16000}) {
        const Words near = talk(rate, 3, 6);
        const Call call = simulateCall(Words(near.size()), near, {});
        const Result run = cancel(call, rate, 64);
        EXPECT_GE(snrDb(near, run.out), 44) << rate;
    }
}

TEST(EchoCanceller, NoiseStaysAndOnlyEchoGoes)
{
    const int rate = 16000;
    const Call call =
        simulateCall(talk(rate, 0, 8), {}, {.path = path(rate, 128, 0), .noiseDbfs = -55});
    const Result run = cancel(call, rate, 128);
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

TEST(EchoCanceller, StepsAsideForAModem)
{
    for (const int rate : {8000, 16000}) {
        Words near(static_cast<std::size_t>(3 * rate)); // after 3 s of far-end speech
        const Words call = modem(rate, 3.3, 3);
        near.insert(near.end(), call.begin(), call.end());
        Words far = talk(rate, 0, 3);
        far.resize(near.size());
        const Words answer = modem(rate, 0, 2.5);
        std::copy(answer.begin(), answer.end(),
                  far.begin() + static_cast<std::ptrdiff_t>(6.6 * rate));
        for (Words* words : {&near, &far}) {
            words->resize(words->size() + static_cast<std::size_t>(rate)); // the line goes quiet
            const Words more = talk(rate, 5, 3);
            words->insert(words->end(), more.begin(), more.end());
        }
        const Call simulated = simulateCall(far, near, {.path = path(rate, 64, 0)});
        const Result run = cancel(simulated, rate, 64);

        ASSERT_EQ(run.bypassStarts.size(), 1U) << rate;
        EXPECT_LE(run.bypassStarts[0], 3.95) << rate;
        EXPECT_GE(snrDb(part(simulated.mic, rate, 4, 9), part(run.out, rate, 4, 9)), 44) << rate;
        ASSERT_EQ(run.bypassEnds.size(), 1U) << rate;
        EXPECT_NEAR(run.bypassEnds[0], 9.3 + 0.4, 0.1) << rate;
    }
}

TEST(EchoCanceller, SurvivesAnySignal)
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
                const Result run =
                    cancel(call, shape.rate, shape.tailMs); // checks for finite output
                EXPECT_LE(levelDbfs(run.out), levelDbfs(call.mic) + 0.5);
                EXPECT_EQ(run.out, cancel(call, shape.rate, shape.tailMs).out);
            }
        }
    }
}

} // namespace
