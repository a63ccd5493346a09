// Simulated calls through an echo canceller, and what a listener at the far end gets of them.
#pragma once

#include "signals/measure.hpp"
#include "signals/room.hpp"
#include "tests/support/speech.hpp"
#include "zspvoice.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <memory>
#include <span>
#include <vector>

namespace zsp::test {

using namespace zsp::signals;

inline ZspvEchoConfig echoConfig(int rate, int tailMs = 0)
{
    ZspvEchoConfig config{};
    config.structSize = sizeof config;
    config.sampleRate = rate;
    config.tailMs = tailMs;
    return config;
}

struct EchoDeleter {
    void operator()(ZspvEcho* echo) const { zspvEchoDestroy(echo); }
};
using EchoPointer = std::unique_ptr<ZspvEcho, EchoDeleter>;

inline EchoPointer makeEcho(const ZspvEchoConfig& config)
{
    ZspvEcho* echo = nullptr;
    EXPECT_EQ(zspvEchoCreate(&config, &echo), zspStsNoErr);
    return EchoPointer(echo);
}

inline ZspvEchoMetrics metricsOf(const ZspvEcho* echo)
{
    ZspvEchoMetrics metrics{};
    metrics.structSize = sizeof metrics;
    EXPECT_EQ(zspvEchoGetMetrics(echo, &metrics), zspStsNoErr);
    return metrics;
}

struct EchoRun {
    Words out;                            // in time with the microphone
    std::vector<ZspvEchoMetrics> metrics; // after each 10 ms
};

/// A call in blocks of 10 ms, of float samples, which show what is no number.
inline EchoRun cancel(const Call& call, const ZspvEchoConfig& config,
                      const std::function<void(ZspvEcho*, double seconds)>& atEachBlock = {})
{
    const EchoPointer echo = makeEcho(config);
    std::int32_t delay = 0;
    EXPECT_EQ(zspvEchoGetDelay(echo.get(), &delay), zspStsNoErr);
    const auto block = static_cast<std::size_t>(config.sampleRate) / 100;
    const std::size_t total = call.mic.size() + static_cast<std::size_t>(delay);
    std::vector<float> far(block), mic(block), out(block);
    const auto sample = [](const Words& words, std::size_t n) {
        return n < words.size() ? static_cast<float>(words[n]) / 32768.0F : 0.0F;
    };
    EchoRun run;
    for (std::size_t n = 0; n < total; n += block) {
        for (std::size_t i = 0; i < block; ++i) {
            far[i] = sample(call.far, n + i);
            mic[i] = sample(call.mic, n + i);
        }
        if (atEachBlock) atEachBlock(echo.get(), static_cast<double>(n) / config.sampleRate);
        EXPECT_EQ(zspvEchoProcessFloat(echo.get(), far.data(), mic.data(), out.data(),
                                       static_cast<std::int32_t>(block)),
                  zspStsNoErr);
        for (const float x : out) {
            EXPECT_TRUE(std::isfinite(x));
            run.out.push_back(static_cast<std::int16_t>(
                std::lrintf(std::clamp(32768.0F * x, -32768.0F, 32767.0F))));
        }
        run.metrics.push_back(metricsOf(echo.get()));
    }
    run.out.erase(run.out.begin(), run.out.begin() + delay);
    run.out.resize(call.mic.size());
    return run;
}

inline std::span<const std::int16_t> part(const Words& words, int rate, double from, double to)
{
    const auto first = static_cast<std::size_t>(from * rate);
    return std::span(words).subspan(first, static_cast<std::size_t>(to * rate) - first);
}

/// Echo return loss enhancement in dB: power of the echo over what is left beside the near end.
inline double enhancement(const Call& call, const Words& out, int rate, double from, double to)
{
    const Words left = difference(out, call.near);
    return levelDbfs(part(call.echo, rate, from, to)) - levelDbfs(part(left, rate, from, to));
}

/// Seconds after `change` at which the enhancement over 250 ms is 20 dB.
inline double recovery(const Call& call, const Words& out, int rate, double change)
{
    double at = change;
    while (at < change + 3 && enhancement(call, out, rate, at, at + 0.25) < 20)
        at += 0.05;
    return at - change;
}

/// The echo path of a room at 16 kHz, of a line at 8 kHz; another one for each `which`.
inline std::vector<float> echoPath(int rate, int tailMs, int which = 0)
{
    if (rate == 8000)
        return which == 0 ? hybridResponse(rate, tailMs * 0.3, tailMs, 8, 1)
                          : hybridResponse(rate, tailMs * 0.1, tailMs * 0.8, 10, 2);
    Room room;
    room.decaySeconds = tailMs / 1000.0 * 1.3;
    if (which == 1) room.microphone = {3.4, 2.6, 1.3};
    return roomResponse(room, rate, static_cast<std::size_t>(tailMs * rate / 1000));
}

/// A single reflection.
inline std::vector<float> pureDelay(int rate, double ms, double lossDb)
{
    std::vector<float> path(static_cast<std::size_t>(std::lround(ms * rate / 1000)) + 1);
    path.back() = static_cast<float>(std::pow(10, -lossDb / 20));
    return path;
}

} // namespace zsp::test
