// The far end by render and capture: order, gaps, surplus, threads.

#include "tests/voice/echo/echo_call.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace {

using namespace zsp::test;

constexpr int kRate = 8000;
constexpr std::size_t kBlock = 80; // 10 ms

void render(ZspvEcho* echo, const Words& far, std::size_t first, std::size_t count,
            ZspStatus want = zspStsNoErr)
{
    EXPECT_EQ(zspvEchoRender(echo, &far[first], static_cast<std::int32_t>(count)), want);
}

void capture(ZspvEcho* echo, const Call& call, Words& out, std::size_t first)
{
    EXPECT_EQ(zspvEchoCapture(echo, &call.mic[first], &out[first], kBlock), zspStsNoErr);
}

/// The output in time with the microphone.
Words inTime(Words out)
{
    out.erase(out.begin(), out.begin() + kRate / 50);
    out.resize(out.size() + kRate / 50);
    return out;
}

Call lineCall(double seconds)
{
    return simulateCall(talk(kRate, 0, seconds), {}, {.path = echoPath(kRate, 32)});
}

TEST(EchoFeed, RenderAndCaptureInTurnEqualProcess)
{
    const Call call = lineCall(3);
    const EchoPointer one = makeEcho(echoConfig(kRate)), two = makeEcho(echoConfig(kRate));
    Words want(call.mic.size()), got(call.mic.size());
    std::size_t rendered = 0;
    for (std::size_t n = 0; n + kBlock <= want.size(); n += kBlock) {
        EXPECT_EQ(zspvEchoProcess(one.get(), &call.far[n], &call.mic[n], &want[n], kBlock),
                  zspStsNoErr);
        while (rendered < n + kBlock) { // in pieces of another length, just in time
            const std::size_t piece =
                std::min<std::size_t>(1 + rendered % 37, n + kBlock - rendered);
            render(two.get(), call.far, rendered, piece);
            rendered += piece;
        }
        capture(two.get(), call, got, n);
    }
    EXPECT_EQ(got, want);
    EXPECT_EQ(metricsOf(two.get()).farMissing, 0);
    EXPECT_EQ(metricsOf(two.get()).farDropped, 0);
}

TEST(EchoFeed, FloatAndWordsAgree)
{
    const Call call = lineCall(1);
    const EchoPointer one = makeEcho(echoConfig(kRate)), two = makeEcho(echoConfig(kRate));
    Words want(call.mic.size());
    for (std::size_t n = 0; n < want.size(); n += kBlock) {
        render(one.get(), call.far, n, kBlock);
        capture(one.get(), call, want, n);
        std::vector<float> far(kBlock), mic(kBlock);
        for (std::size_t i = 0; i < kBlock; ++i) {
            far[i] = static_cast<float>(call.far[n + i]) / 32768;
            mic[i] = static_cast<float>(call.mic[n + i]) / 32768;
        }
        EXPECT_EQ(zspvEchoRenderFloat(two.get(), far.data(), kBlock), zspStsNoErr);
        EXPECT_EQ(zspvEchoCaptureFloat(two.get(), mic.data(), mic.data(), kBlock), zspStsNoErr);
        for (std::size_t i = 0; i < kBlock; ++i)
            ASSERT_EQ(std::lrintf(32768 * mic[i]), want[n + i]) << n + i;
    }
}

// Playing has begun half a second before recording: those samples are of no use.
TEST(EchoFeed, CaptureMayStartLater)
{
    const Call call = lineCall(5);
    const EchoPointer echo = makeEcho(echoConfig(kRate));
    Words out(call.mic.size());
    std::size_t lost = 0;
    for (std::size_t n = 0; n < out.size(); n += kBlock) {
        const bool room = n < kRate / 5 || n >= kRate / 2 + kBlock; // 200 ms
        render(echo.get(), call.far, n, kBlock, room ? zspStsNoErr : zspStsOverflow);
        if (n >= kRate / 2) capture(echo.get(), call, out, n);
        lost += n < kRate / 2 ? kBlock : 0;
    }
    const ZspvEchoMetrics metrics = metricsOf(echo.get());
    EXPECT_EQ(metrics.farDropped, static_cast<std::int64_t>(lost));
    EXPECT_EQ(metrics.farMissing, 0);
    EXPECT_GE(enhancement(call, inTime(out), kRate, 3, 4.9), 25);
}

// The rendering thread stands still for 90 ms and then gives all at once, or nothing of it.
TEST(EchoFeed, OvercomesGaps)
{
    for (const bool late : {true, false}) {
        SCOPED_TRACE(late ? "late" : "lost");
        const Call call = lineCall(9);
        const EchoPointer echo = makeEcho(echoConfig(kRate));
        Words out(call.mic.size());
        const std::size_t from = 3 * kRate, to = from + 9 * kBlock;
        for (std::size_t n = 0; n < out.size(); n += kBlock) {
            if (n < from || n >= to)
                render(echo.get(), call.far, n, kBlock);
            else if (late && n + kBlock == to)
                render(echo.get(), call.far, from, to - from);
            capture(echo.get(), call, out, n);
        }
        const ZspvEchoMetrics metrics = metricsOf(echo.get());
        EXPECT_EQ(metrics.farMissing, (late ? 8 : 9) * static_cast<std::int64_t>(kBlock));
        EXPECT_EQ(metrics.farDropped, late ? metrics.farMissing : 0) << "the surplus afterwards";
        EXPECT_GE(enhancement(call, inTime(out), kRate, 7, 8.9), 25);
    }
}

// The rendering thread is a block ahead for two seconds, then it is not, and so on: after the first
// turn its lead is no more taken for surplus, and the reference stays where it is.
TEST(EchoFeed, LearnsTheThreadsRhythm)
{
    const Call call = lineCall(12);
    const EchoPointer echo = makeEcho(echoConfig(kRate));
    Words out(call.mic.size());
    std::size_t rendered = 0;
    for (std::size_t n = 0; n + kBlock < out.size(); n += kBlock) {
        const bool ahead = n / (2 * kRate) % 2 == 1;
        for (; rendered < n + (ahead ? 2 : 1) * kBlock; rendered += kBlock)
            render(echo.get(), call.far, rendered, kBlock);
        capture(echo.get(), call, out, n);
    }
    const ZspvEchoMetrics metrics = metricsOf(echo.get());
    EXPECT_EQ(metrics.farMissing, kBlock);
    EXPECT_EQ(metrics.farDropped, kBlock);
    EXPECT_GE(enhancement(call, inTime(out), kRate, 9, 11.9), 25);
}

// The capturing thread stands still for longer than the ring lasts, and its samples are lost.
TEST(EchoFeed, OvercomesSurplus)
{
    const Call call = lineCall(9);
    const EchoPointer echo = makeEcho(echoConfig(kRate));
    Words out(call.mic.size());
    for (std::size_t n = 0; n < out.size(); n += kBlock) {
        const bool still = n >= 3 * kRate && n < 3 * kRate + kRate / 2;
        const ZspStatus status =
            zspvEchoRender(echo.get(), &call.far[n], static_cast<std::int32_t>(kBlock));
        const std::size_t stillFor = n < 3 * kRate ? 0 : n - 3 * kRate;
        EXPECT_EQ(status == zspStsOverflow, stillFor >= kRate / 5 && stillFor <= kRate / 2) << n;
        if (!still) capture(echo.get(), call, out, n);
    }
    const ZspvEchoMetrics metrics = metricsOf(echo.get());
    EXPECT_EQ(metrics.farMissing, 0);
    EXPECT_EQ(metrics.farDropped, kRate / 2);
    EXPECT_GE(enhancement(call, inTime(out), kRate, 7, 8.9), 25);
}

// Two threads at full speed: what goes in comes out or is counted, and a reset in between harms
// nothing. The thread sanitizer looks at the rest.
TEST(EchoFeed, TwoThreadsNeedNoLock)
{
    const Call call = lineCall(4);
    const EchoPointer echo = makeEcho(echoConfig(kRate));
    std::atomic<bool> done = false;
    std::int64_t overflows = 0;
    std::thread renderer([&] {
        for (std::size_t n = 0; !done; n = (n + 50) % (call.far.size() - 50)) {
            const ZspStatus status = zspvEchoRender(echo.get(), &call.far[n], 50);
            overflows += status == zspStsOverflow ? 1 : 0;
            if (status == zspStsOverflow) std::this_thread::yield();
        }
    });
    Words out(call.mic.size());
    for (int round = 0; round < 3; ++round) {
        for (std::size_t n = 0; n < out.size(); n += kBlock)
            capture(echo.get(), call, out, n);
        const ZspvEchoMetrics metrics = metricsOf(echo.get());
        EXPECT_EQ(metrics.framesProcessed, 400);
        EXPECT_GE(metrics.farDropped, 0);
        EXPECT_LE(metrics.farMissing, static_cast<std::int64_t>(out.size()));
        EXPECT_EQ(zspvEchoReset(echo.get()), zspStsNoErr);
    }
    done = true;
    renderer.join();
    EXPECT_EQ(metricsOf(echo.get()).framesProcessed, 0);
}

} // namespace
