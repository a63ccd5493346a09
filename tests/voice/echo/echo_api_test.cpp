// What holds for an echo canceller in any call: contracts, splitting, formats, memory, restart.

#include "tests/support/contract.hpp"
#include "tests/support/samples.hpp"
#include "tests/voice/echo/echo_call.hpp"

#include <gtest/gtest.h>

#include <cstddef>
#include <limits>
#include <string>

namespace {

using namespace zsp::test;

constexpr std::int32_t kBlock = 80;

ZspvEchoConfig valid()
{
    return echoConfig(8000, 8);
}

/// The valid settings with one field changed.
template <typename Field>
Argument wrong(Field ZspvEchoConfig::*field, Field value)
{
    ZspvEchoConfig config = valid();
    config.*field = value;
    return in(std::vector{config});
}

std::size_t sizeOf(const ZspvEchoConfig& config)
{
    std::int32_t size = 0;
    EXPECT_EQ(zspvEchoGetSize(&config, &size), zspStsNoErr);
    return static_cast<std::size_t>(size);
}

Argument ready()
{
    return state(sizeOf(valid()), [](void* memory) {
        const ZspvEchoConfig config = valid();
        ZspvEcho* echo = nullptr;
        EXPECT_EQ(zspvEchoInit(memory, static_cast<std::int32_t>(sizeOf(config)), &config, &echo),
                  zspStsNoErr);
        EXPECT_EQ(static_cast<void*>(echo), memory);
    });
}

/// The checks of the settings, which are argument `n`.
Contract withSettings(Contract contract, std::size_t n)
{
    using Config = ZspvEchoConfig;
    return contract.row({{n, wrong(&Config::structSize, 0)}}, zspStsSizeErr)
        .row({{n, wrong(&Config::structSize, 24)}}, zspStsSizeErr)
        .row({{n, wrong(&Config::structSize, 100000)}}, zspStsSizeErr)
        .row({{n, wrong(&Config::sampleRate, 0)}}, zspStsRangeErr)
        .row({{n, wrong(&Config::sampleRate, 48000)}}, zspStsRangeErr)
        .row({{n, wrong(&Config::tailMs, 7)}}, zspStsRangeErr)
        .row({{n, wrong(&Config::tailMs, 513)}}, zspStsRangeErr)
        .row({{n, wrong(&Config::suppressor, 2)}}, zspStsRangeErr)
        .row({{n, wrong(&Config::toneBypass, -2)}}, zspStsRangeErr)
        .row({{n, wrong(&Config::ringMs, 9)}}, zspStsRangeErr)
        .row({{n, wrong(&Config::ringMs, 1001)}}, zspStsRangeErr)
        .row({{n, wrong(&Config::delayMs, -51)}}, zspStsRangeErr)
        .row({{n, wrong(&Config::delayMs, 501)}}, zspStsRangeErr);
}

template <typename Sample>
Contract blocks(std::string name, ZspStatus (*function)(ZspvEcho*, const Sample*, const Sample*,
                                                        Sample*, std::int32_t))
{
    return Contract(std::move(name), function,
                    {ready(), in<Sample>(kBlock), in<Sample>(kBlock), out<Sample>(kBlock),
                     number(kBlock)})
        .row({{4, number(0)}}, zspStsSizeErr)
        .row({{4, number(-kBlock)}}, zspStsSizeErr)
        .row({{4, number(kBlock / 2)}}, zspStsSizeErr)
        .row({{4, number(kBlock + 1)}}, zspStsSizeErr);
}

template <typename Sample>
Contract captured(std::string name,
                  ZspStatus (*function)(ZspvEcho*, const Sample*, Sample*, std::int32_t))
{
    return Contract(std::move(name), function,
                    {ready(), in<Sample>(kBlock), out<Sample>(kBlock), number(kBlock)})
        .row({{3, number(0)}}, zspStsSizeErr)
        .row({{3, number(kBlock - 1)}}, zspStsSizeErr);
}

template <typename Sample>
Contract rendered(std::string name, ZspStatus (*function)(ZspvEcho*, const Sample*, std::int32_t))
{
    return Contract(std::move(name), function, {ready(), in<Sample>(kBlock), number(kBlock)})
        .row({{2, number(0)}}, zspStsSizeErr)
        .row({{2, number(-1)}}, zspStsSizeErr);
}

Argument metrics(std::int32_t structSize)
{
    ZspvEchoMetrics record{};
    record.structSize = structSize;
    return out(std::vector{record});
}

const bool registered = addContracts({
    withSettings(
        Contract(ZSP_NAMED(zspvEchoGetSize), {in(std::vector{valid()}), out<std::int32_t>(1)}), 0),
    withSettings(Contract(ZSP_NAMED(zspvEchoInit),
                          {state(sizeOf(valid())), number(static_cast<double>(sizeOf(valid()))),
                           in(std::vector{valid()}), out<ZspvEcho*>(1)}),
                 2)
        .row({{1, number(static_cast<double>(sizeOf(valid()) - 1))}}, zspStsSizeErr)
        .row({{1, number(-1)}}, zspStsSizeErr),
    Contract(ZSP_NAMED(zspvEchoReset), {ready()}),
    blocks(ZSP_NAMED(zspvEchoProcess)),
    blocks(ZSP_NAMED(zspvEchoProcessFloat)),
    rendered(ZSP_NAMED(zspvEchoRender)),
    rendered(ZSP_NAMED(zspvEchoRenderFloat)),
    captured(ZSP_NAMED(zspvEchoCapture)),
    captured(ZSP_NAMED(zspvEchoCaptureFloat)),
    Contract(ZSP_NAMED(zspvEchoGetDelay), {ready(), out<std::int32_t>(1)}),
    Contract(ZSP_NAMED(zspvEchoSetDelay), {ready(), number(100)})
        .row({{1, number(-51)}}, zspStsRangeErr)
        .row({{1, number(501)}}, zspStsRangeErr),
    Contract(ZSP_NAMED(zspvEchoSetSuppressor), {ready(), number(zspvOn)})
        .row({{1, number(zspvDefault)}}, zspStsRangeErr)
        .row({{1, number(2)}}, zspStsRangeErr),
    Contract(ZSP_NAMED(zspvEchoGetMetrics), {ready(), metrics(sizeof(ZspvEchoMetrics))})
        .row({{1, metrics(0)}}, zspStsSizeErr),
    Contract(ZSP_NAMED(zspvEchoGetUncertainty),
             {ready(), out<float>(33), number(33), out<std::int32_t>(1)}),
});

/// Speech at both ends over a room or a line.
Call someCall(int rate, double seconds)
{
    return simulateCall(talk(rate, 0, seconds), talk(rate, 13, seconds / 3, seconds / 2),
                        {.path = echoPath(rate, 32), .noiseDbfs = -60});
}

/// The call in blocks of the lengths given, in units of 10 ms, over and over.
Words inBlocks(ZspvEcho* echo, const Call& call, int rate, const std::vector<int>& lengths)
{
    Words out(call.mic.size());
    for (std::size_t n = 0, i = 0; n < out.size(); ++i) {
        const std::size_t wanted =
            static_cast<std::size_t>(lengths[i % lengths.size()] * rate) / 100;
        const std::size_t length = std::min(wanted, out.size() - n);
        EXPECT_EQ(zspvEchoProcess(echo, &call.far[n], &call.mic[n], &out[n],
                                  static_cast<std::int32_t>(length)),
                  zspStsNoErr);
        n += length;
    }
    return out;
}

TEST(EchoApi, BlocksOfAnyLengthGiveTheSame)
{
    for (const int rate : {8000, 16000}) {
        const Call call = someCall(rate, 3);
        const Words want = inBlocks(makeEcho(echoConfig(rate)).get(), call, rate, {1});
        for (const std::vector<int>& lengths :
             {std::vector{2}, std::vector{3}, std::vector{1, 6, 2}, std::vector{300}})
            EXPECT_EQ(inBlocks(makeEcho(echoConfig(rate)).get(), call, rate, lengths), want);
    }
}

TEST(EchoApi, FloatAndWordsAgree)
{
    for (const int rate : {8000, 16000}) {
        const Call call = someCall(rate, 3);
        const std::size_t delay = static_cast<std::size_t>(rate) / 50;
        Words want = inBlocks(makeEcho(echoConfig(rate)).get(), call, rate, {1});
        want.erase(want.begin(), want.begin() + static_cast<std::ptrdiff_t>(delay));
        Words got = cancel(call, echoConfig(rate)).out; // float blocks
        got.resize(want.size());
        EXPECT_EQ(got, want);
    }
}

TEST(EchoApi, OutputMayBeEitherInput)
{
    const int rate = 16000;
    const Call call = someCall(rate, 2);
    const Words want = inBlocks(makeEcho(echoConfig(rate)).get(), call, rate, {2});
    for (const bool overFar : {false, true}) {
        Words far = call.far, mic = call.mic;
        Words& out = overFar ? far : mic;
        const EchoPointer echo = makeEcho(echoConfig(rate));
        for (std::size_t n = 0; n < out.size(); n += 320)
            EXPECT_EQ(zspvEchoProcess(echo.get(), &far[n], &mic[n], &out[n], 320), zspStsNoErr);
        EXPECT_EQ(out, want) << overFar;
    }
}

TEST(EchoApi, WorksAtAnyAddressAndInNoMoreThanItsSize)
{
    const ZspvEchoConfig config = echoConfig(8000, 32);
    const Call call = someCall(8000, 0.5);
    const Words want = inBlocks(makeEcho(config).get(), call, 8000, {1});
    const std::size_t size = sizeOf(config);
    for (std::size_t offset = 0; offset < 64; ++offset) {
        constexpr std::byte kGuard{0xA5};
        std::vector<std::byte> memory(size + 64 + 64, kGuard);
        ZspvEcho* echo = nullptr;
        ASSERT_EQ(zspvEchoInit(&memory[offset], static_cast<std::int32_t>(size), &config, &echo),
                  zspStsNoErr);
        EXPECT_EQ(inBlocks(echo, call, 8000, {1}), want) << offset;
        const auto guards = [](auto first, auto last) {
            return std::all_of(first, last, [](std::byte b) { return b == kGuard; });
        };
        const auto at = [&](std::size_t i) {
            return memory.begin() + static_cast<std::ptrdiff_t>(i);
        };
        EXPECT_TRUE(guards(at(0), at(offset)) && guards(at(offset + size), memory.end())) << offset;
    }
}

TEST(EchoApi, ResetEqualsAFreshOne)
{
    const int rate = 16000;
    const Call first = someCall(rate, 3);
    const Call second = simulateCall(talk(rate, 5, 3), {}, {.path = echoPath(rate, 64, 1)});
    ZspvEchoConfig config = echoConfig(rate);
    config.suppressor = zspvOn;
    config.delayMs = 3;
    const EchoPointer used = makeEcho(config), fresh = makeEcho(config);
    inBlocks(used.get(), first, rate, {1});
    EXPECT_EQ(zspvEchoRender(used.get(), first.far.data(), 5000), zspStsOverflow);
    EXPECT_EQ(zspvEchoReset(used.get()), zspStsNoErr);
    EXPECT_EQ(inBlocks(used.get(), second, rate, {1}), inBlocks(fresh.get(), second, rate, {1}));
    const ZspvEchoMetrics a = metricsOf(used.get()), b = metricsOf(fresh.get());
    EXPECT_EQ(a.framesProcessed, b.framesProcessed);
    EXPECT_EQ(a.echoLossDb, b.echoLossDb);
    EXPECT_EQ(a.pathDelayMs, b.pathDelayMs);
    EXPECT_EQ(a.farDropped, 0);
    EXPECT_EQ(a.restarts, b.restarts);
}

TEST(EchoApi, TheSuppressorCanBeSwitchedAtAnyTime)
{
    const int rate = 16000;
    const Call call = simulateCall(talk(rate, 0, 6), {}, {.path = echoPath(rate, 64)});
    const auto at = [](std::int32_t value) {
        return [value](ZspvEcho* echo, double s) {
            if (s >= 3) {
                EXPECT_EQ(zspvEchoSetSuppressor(echo, value), zspStsNoErr);
            }
        };
    };
    const Words off = cancel(call, echoConfig(rate)).out;
    const Words switched = cancel(call, echoConfig(rate), at(zspvOn)).out;
    EXPECT_TRUE(std::ranges::equal(part(off, rate, 0, 2.9), part(switched, rate, 0, 2.9)));
    EXPECT_GE(enhancement(call, switched, rate, 3.2, 6), enhancement(call, off, rate, 3.2, 6) + 5);
}

TEST(EchoApi, WhatIsNoNumberDoesNotStay)
{
    const int rate = 8000;
    const Call call = simulateCall(talk(rate, 0, 6), {}, {.path = echoPath(rate, 32)});
    const EchoPointer echo = makeEcho(echoConfig(rate));
    constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    Words out;
    for (std::size_t n = 0; n < call.mic.size(); n += 80) {
        std::vector<float> far(80), mic(80), left(80);
        for (std::size_t i = 0; i < 80; ++i) {
            far[i] = static_cast<float>(call.far[n + i]) / 32768;
            mic[i] = static_cast<float>(call.mic[n + i]) / 32768;
        }
        if (n == static_cast<std::size_t>(3 * rate)) {
            far[7] = kNan;
            far[30] = kInfinity;
            mic[9] = kNan;
            mic[50] = -kInfinity;
        }
        EXPECT_EQ(zspvEchoProcessFloat(echo.get(), far.data(), mic.data(), left.data(), 80),
                  zspStsNoErr);
        for (const float x : left) {
            ASSERT_TRUE(std::isfinite(x)) << n;
            out.push_back(static_cast<std::int16_t>(
                std::lrintf(std::clamp(32768.0F * x, -32768.0F, 32767.0F))));
        }
    }
    out.erase(out.begin(), out.begin() + rate / 50);
    out.resize(call.mic.size());
    EXPECT_GE(enhancement(call, out, rate, 5, 5.9), 20);
}

} // namespace
