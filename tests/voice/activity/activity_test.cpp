// What holds for an activity detector in any call: contracts, memory, restart, the record.

#include "signals/measure.hpp"
#include "tests/support/contract.hpp"
#include "tests/support/speech.hpp"
#include "zspvoice.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <memory>
#include <numbers>
#include <vector>

namespace {

using namespace zsp::test;

ZspvActivityConfig configOf(std::int32_t detector, std::int32_t rate, std::int32_t hangoverMs = 0)
{
    ZspvActivityConfig config{};
    config.structSize = sizeof config;
    config.detector = detector;
    config.sampleRate = rate;
    config.hangoverMs = hangoverMs;
    return config;
}

ZspvActivityConfig valid()
{
    return configOf(zspvDetectorAmr1, 8000);
}

std::int32_t sizeOf(const ZspvActivityConfig& config)
{
    std::int32_t size = 0;
    EXPECT_EQ(zspvActivityGetSize(&config, &size), zspStsNoErr);
    return size;
}

Argument ready()
{
    return state(static_cast<std::size_t>(sizeOf(valid())), [](void* memory) {
        const ZspvActivityConfig config = valid();
        ZspvActivity* activity = nullptr;
        EXPECT_EQ(zspvActivityInit(memory, sizeOf(config), &config, &activity), zspStsNoErr);
        EXPECT_EQ(static_cast<void*>(activity), memory);
    });
}

Argument settings(std::int32_t detector, std::int32_t rate, std::int32_t hangoverMs = 0)
{
    return in(std::vector{configOf(detector, rate, hangoverMs)});
}

Argument info(std::int32_t structSize)
{
    ZspvActivityInfo record{};
    record.structSize = structSize;
    return out(std::vector{record});
}

/// The checks of the settings, which are argument `n`.
Contract withSettings(Contract contract, std::size_t n)
{
    ZspvActivityConfig tooSmall = valid();
    tooSmall.structSize = 8;
    return contract.row({{n, in(std::vector{tooSmall})}}, zspStsSizeErr)
        .row({{n, settings(0, 8000)}}, zspStsRangeErr)
        .row({{n, settings(4, 8000)}}, zspStsRangeErr)
        .row({{n, settings(zspvDetectorAmr1, 0)}}, zspStsRangeErr)
        .row({{n, settings(zspvDetectorAmr1, 16000)}}, zspStsRangeErr)
        .row({{n, settings(zspvDetectorAmr2, 12800)}}, zspStsRangeErr)
        .row({{n, settings(zspvDetectorAmrWb, 8000)}}, zspStsRangeErr)
        .row({{n, settings(zspvDetectorAmr1, 8000, -20)}}, zspStsRangeErr)
        .row({{n, settings(zspvDetectorAmr1, 8000, 30)}}, zspStsRangeErr)
        .row({{n, settings(zspvDetectorAmr1, 8000, 2020)}}, zspStsRangeErr);
}

const bool registered = addContracts({
    withSettings(
        Contract(ZSP_NAMED(zspvActivityGetSize), {in(std::vector{valid()}), out<std::int32_t>(1)}),
        0),
    withSettings(
        Contract(ZSP_NAMED(zspvActivityInit),
                 {state(static_cast<std::size_t>(sizeOf(valid()))), number(sizeOf(valid())),
                  in(std::vector{valid()}), out<ZspvActivity*>(1)})
            .row({{1, number(sizeOf(valid()) - 1)}}, zspStsSizeErr),
        2),
    Contract(ZSP_NAMED(zspvActivityReset), {ready()}),
    Contract(ZSP_NAMED(zspvActivityProcess),
             {ready(), in<std::int16_t>(160), number(160), info(sizeof(ZspvActivityInfo))})
        .row({{2, number(159)}}, zspStsSizeErr)
        .row({{2, number(320)}}, zspStsSizeErr)
        .row({{2, number(0)}}, zspStsSizeErr)
        .row({{3, info(0)}}, zspStsSizeErr),
    Contract(ZSP_NAMED(zspvActivityGetBands),
             {ready(), out<float>(10).optional(), out<float>(9).optional(),
              out<float>(9).optional(), number(9), out<std::int32_t>(1)}),
});

struct Deleter {
    void operator()(ZspvActivity* activity) const { zspvActivityDestroy(activity); }
};
using Pointer = std::unique_ptr<ZspvActivity, Deleter>;

Pointer make(const ZspvActivityConfig& config)
{
    ZspvActivity* activity = nullptr;
    EXPECT_EQ(zspvActivityCreate(&config, &activity), zspStsNoErr);
    return Pointer(activity);
}

std::vector<ZspvActivityInfo> run(ZspvActivity* activity, const Words& samples, std::size_t frame)
{
    std::vector<ZspvActivityInfo> infos;
    for (std::size_t n = 0; n + frame <= samples.size(); n += frame) {
        ZspvActivityInfo now{};
        now.structSize = sizeof now;
        EXPECT_EQ(
            zspvActivityProcess(activity, &samples[n], static_cast<std::int32_t>(frame), &now),
            zspStsNoErr);
        infos.push_back(now);
    }
    return infos;
}

bool same(const std::vector<ZspvActivityInfo>& a, const std::vector<ZspvActivityInfo>& b)
{
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof a[0]) == 0;
}

struct Shape {
    std::int32_t detector, rate;
};
constexpr Shape kShapes[] = {{zspvDetectorAmr1, 8000},
                             {zspvDetectorAmr2, 8000},
                             {zspvDetectorAmrWb, 12800},
                             {zspvDetectorAmrWb, 16000}};

TEST(Activity, WorksAtAnyAddressCopiedAndReset)
{
    for (const Shape& shape : kShapes) {
        SCOPED_TRACE(shape.detector);
        const auto frame = static_cast<std::size_t>(shape.rate) / 50;
        const ZspvActivityConfig config = configOf(shape.detector, shape.rate, 40);
        const Words first = talk(16000, 0, 1.5), second = talk(16000, 4, 1.5);
        const auto both = [&] {
            const Pointer activity = make(config);
            run(activity.get(), first, frame);
            return run(activity.get(), second, frame);
        }();
        const auto fresh = run(make(config).get(), first, frame);
        const auto size = static_cast<std::size_t>(sizeOf(config));
        for (std::size_t offset = 0; offset < 16; ++offset) {
            std::vector<std::byte> memory(size + offset), copy(size + offset + 16);
            ZspvActivity* activity = nullptr;
            ASSERT_EQ(zspvActivityInit(&memory[offset], static_cast<std::int32_t>(size), &config,
                                       &activity),
                      zspStsNoErr);
            EXPECT_TRUE(same(run(activity, first, frame), fresh));
            // Bytewise to an address with the same remainder modulo 16.
            const auto distance = (reinterpret_cast<std::uintptr_t>(activity) -
                                   reinterpret_cast<std::uintptr_t>(copy.data())) %
                                  16;
            std::memcpy(&copy[distance], activity, size);
            EXPECT_TRUE(
                same(run(reinterpret_cast<ZspvActivity*>(&copy[distance]), second, frame), both));
            EXPECT_EQ(zspvActivityReset(activity), zspStsNoErr);
            EXPECT_TRUE(same(run(activity, first, frame), fresh));
        }
    }
}

// Speech, then silence: decisions are held so much longer, and what is sent follows them.
TEST(Activity, HangoverHoldsDecisions)
{
    Words signal = talk(8000, 0, 3);
    signal.resize(signal.size() + 4 * 8000);
    const auto lastActive = [&](std::int32_t hangoverMs) {
        const auto infos =
            run(make(configOf(zspvDetectorAmr2, 8000, hangoverMs)).get(), signal, 160);
        std::size_t last = 0, lastSpeech = 0;
        for (std::size_t i = 0; i < infos.size(); ++i) {
            if (infos[i].active) last = i;
            if (infos[i].kind == zspvFrameSpeech) lastSpeech = i;
        }
        EXPECT_EQ(lastSpeech, last + 7) << "the handler's own hangover";
        return last;
    };
    const std::size_t own = lastActive(0);
    EXPECT_GT(own, 140U);
    EXPECT_EQ(lastActive(20), own + 1);
    EXPECT_EQ(lastActive(2000), own + 100);
}

// TS 26.093: a first descriptor, the next in the third frame after it, then every eighth.
TEST(Activity, SilenceIsDescribedOnSchedule)
{
    for (const Shape& shape : kShapes) {
        SCOPED_TRACE(shape.detector);
        const auto frame = static_cast<std::size_t>(shape.rate) / 50;
        Words signal = talk(16000, 0, 3);
        signal.resize(signal.size() + 3 * static_cast<std::size_t>(shape.rate));
        const auto infos = run(make(configOf(shape.detector, shape.rate)).get(), signal, frame);
        auto pause = infos.size(); // begins where the signal's last one does
        while (pause > 0 && infos[pause - 1].kind != zspvFrameSpeech)
            --pause;
        ASSERT_GT(infos.size() - pause, 60U);
        for (std::size_t i = pause; i < infos.size(); ++i) {
            const std::size_t since = i - pause;
            const ZspvFrameKind want = since == 0                     ? zspvFrameSidFirst
                                       : since >= 3 && since % 8 == 3 ? zspvFrameSidUpdate
                                                                      : zspvFrameNoData;
            ASSERT_EQ(infos[i].kind, want) << since;
            EXPECT_EQ(infos[i].active, 0);
        }
    }
}

TEST(Activity, LevelIsRelativeToAFullScaleSquareWave)
{
    const auto level = [](const auto& sample) {
        Words words(160);
        for (std::size_t i = 0; i < words.size(); ++i)
            words[i] = static_cast<std::int16_t>(sample(i));
        return run(make(valid()).get(), words, 160)[0].levelDbov;
    };
    EXPECT_NEAR(level([](std::size_t i) { return i % 2 ? 32767 : -32767; }), 0, 1e-3);
    EXPECT_NEAR(level([](std::size_t i) {
                    return 32767 * std::sin(std::numbers::pi * static_cast<double>(i) / 8);
                }),
                -3.01, 0.01);
    EXPECT_NEAR(level([](std::size_t) { return 1; }), -90.31, 0.01);
    EXPECT_EQ(level([](std::size_t) { return 0; }), -127);
}

// The score is about 0 in steady noise and clearly above it in speech.
TEST(Activity, ScoreTellsSpeechFromNoise)
{
    for (const Shape& shape : kShapes) {
        SCOPED_TRACE(shape.detector);
        const auto frame = static_cast<std::size_t>(shape.rate) / 50;
        Words signal(static_cast<std::size_t>(5 * shape.rate));
        const Words voice = talk(16000, 0, 2);
        std::uint32_t noise = 1;
        for (std::size_t n = 0; n < signal.size(); ++n) {
            noise = noise * 1664525U + 1013904223U;
            const int x = static_cast<int>(noise >> 26) - 32; // 32 either way
            const std::size_t at = n - signal.size() / 2;
            signal[n] = static_cast<std::int16_t>(
                x + (n >= signal.size() / 2 && at < voice.size() ? voice[at] : 0));
        }
        const auto infos = run(make(configOf(shape.detector, shape.rate)).get(), signal, frame);
        float calm = 0, loudest = 0;
        for (std::size_t i = 75; i < 120; ++i)
            calm += infos[i].scoreDb / 45;
        for (const ZspvActivityInfo& now : infos)
            loudest = std::max(loudest, now.scoreDb);
        EXPECT_NEAR(calm, 0, 3);
        EXPECT_GE(loudest, 15);
    }
}

TEST(Activity, BandsOfEachDetector)
{
    for (const Shape& shape : kShapes) {
        const Pointer activity = make(configOf(shape.detector, shape.rate));
        const std::int32_t bands = shape.detector == zspvDetectorAmr1   ? 9
                                   : shape.detector == zspvDetectorAmr2 ? 16
                                                                        : 12;
        std::vector<float> edges(18, -1), levels(17, -1);
        std::int32_t count = 0;
        EXPECT_EQ(zspvActivityGetBands(activity.get(), edges.data(), levels.data(), nullptr,
                                       bands - 1, &count),
                  zspStsSizeErr);
        EXPECT_EQ(count, bands);
        EXPECT_EQ(edges[0], -1);
        EXPECT_EQ(zspvActivityGetBands(activity.get(), edges.data(), levels.data(), nullptr, bands,
                                       &count),
                  zspStsNoErr);
        const auto end = static_cast<std::size_t>(bands);
        EXPECT_TRUE(std::is_sorted(edges.begin(), edges.begin() + bands + 1));
        EXPECT_GE(edges[end], 3969);
        EXPECT_EQ(edges[end + 1], -1);
        EXPECT_EQ(levels[end], -1);
    }
}

} // namespace
