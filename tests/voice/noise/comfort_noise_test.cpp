// Comfort noise: levels and spectra through analysis, payload and generator.

#include "voice/noise/spectrum_model.hpp"

#include "signals/measure.hpp"
#include "tests/support/contract.hpp"
#include "zspvoice.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <memory>
#include <vector>

namespace {

using namespace zsp::test;
using zsp::voice::NoiseStatistics;

constexpr int kMost = ZSPV_NOISE_MAX_ORDER;

struct Free {
    void operator()(ZspvComfortNoise* noise) const { zspvComfortNoiseDestroy(noise); }
};
using Noise = std::unique_ptr<ZspvComfortNoise, Free>;

Noise make(std::int32_t rate)
{
    ZspvComfortNoise* noise = nullptr;
    EXPECT_EQ(zspvComfortNoiseCreate(rate, &noise), zspStsNoErr);
    return Noise(noise);
}

std::vector<std::int16_t> generate(ZspvComfortNoise* noise, int count)
{
    std::vector<std::int16_t> samples(static_cast<std::size_t>(count));
    EXPECT_EQ(zspvComfortNoiseGenerate(noise, samples.data(), count), zspStsNoErr);
    return samples;
}

std::int32_t sizeOf(std::int32_t rate)
{
    std::int32_t size = 0;
    EXPECT_EQ(zspvComfortNoiseGetSize(rate, &size), zspStsNoErr);
    return size;
}

Argument ready()
{
    return state(static_cast<std::size_t>(sizeOf(8000)), [](void* memory) {
        ZspvComfortNoise* noise = nullptr;
        EXPECT_EQ(zspvComfortNoiseInit(memory, sizeOf(8000), 8000, &noise), zspStsNoErr);
    });
}

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspvComfortNoiseGetSize), {number(16000), out<std::int32_t>(1)})
        .row({{0, number(12000)}}, zspStsRangeErr),
    Contract(ZSP_NAMED(zspvComfortNoiseInit),
             {state(static_cast<std::size_t>(sizeOf(8000))), number(sizeOf(8000)), number(8000),
              out<ZspvComfortNoise*>(1)})
        .row({{1, number(sizeOf(8000) - 1)}}, zspStsSizeErr)
        .row({{2, number(0)}}, zspStsRangeErr),
    Contract(ZSP_NAMED(zspvComfortNoiseReset), {ready()}),
    Contract(ZSP_NAMED(zspvComfortNoiseAnalyse), {ready(), in<std::int16_t>(960), number(960)})
        .row({{2, number(79)}}, zspStsSizeErr)
        .row({{2, number(961)}}, zspStsSizeErr),
    Contract(ZSP_NAMED(zspvComfortNoiseWrite),
             {ready(), number(kMost), out<std::uint8_t>(kMost + 1), number(kMost + 1),
              out<std::int32_t>(1).reported()})
        .row({{3, number(0)}}, zspStsSizeErr)
        .row({{1, number(-1)}}, zspStsRangeErr)
        .row({{1, number(kMost + 1)}}, zspStsRangeErr),
    Contract(ZSP_NAMED(zspvComfortNoiseRead), {ready(), in<std::uint8_t>(200), number(200)})
        .row({{2, number(0)}}, zspStsSizeErr),
    Contract(ZSP_NAMED(zspvComfortNoiseGenerate), {ready(), out<std::int16_t>(33), number(33)})
        .row({{2, number(0)}}, zspStsSizeErr),
});

TEST(ComfortNoise, LevelIsTheStatedOne)
{
    // Loud noise of a resonant spectrum would clip; RFC 3389 means pauses.
    const std::vector<std::vector<std::uint8_t>> spectra = {
        {},
        {37},
        {217},
        {67, 187, 97},
        {17, 227, 147, 107, 127, 137, 117, 127, 120, 127, 130, 124}};
    for (const int rate : {8000, 16000})
        for (const auto& spectrum : spectra)
            for (int level = 20; level <= 80; level += 5) {
                std::vector<std::uint8_t> payload{static_cast<std::uint8_t>(level)};
                payload.insert(payload.end(), spectrum.begin(), spectrum.end());
                const auto noise = make(rate);
                ASSERT_EQ(zspvComfortNoiseRead(noise.get(), payload.data(),
                                               static_cast<std::int32_t>(payload.size())),
                          zspStsNoErr);
                generate(noise.get(), rate / 20);
                EXPECT_NEAR(zsp::signals::levelDbfs(generate(noise.get(), 4 * rate)), -level, 1.0)
                    << "order " << spectrum.size() << " at " << rate;
            }
}

TEST(ComfortNoise, WhatIsAnalysedIsWhatIsHeard)
{
    // Each payload from noise that was generated from another: level and spectrum come back.
    const std::vector<std::uint8_t> sent = {45, 47, 187, 97, 147, 127, 107, 140, 127};
    for (const int rate : {8000, 16000}) {
        const auto noise = make(rate);
        zspvComfortNoiseRead(noise.get(), sent.data(), static_cast<std::int32_t>(sent.size()));
        generate(noise.get(), rate / 10);
        for (int i = 0; i < 50; ++i) {
            const auto heard = generate(noise.get(), 960);
            ASSERT_EQ(zspvComfortNoiseAnalyse(noise.get(), heard.data(), 960), zspStsNoErr);
        }
        std::vector<std::uint8_t> got(sent.size());
        std::int32_t length = 0;
        ASSERT_EQ(zspvComfortNoiseWrite(noise.get(), 8, got.data(), 9, &length), zspStsNoErr);
        ASSERT_EQ(length, 9);
        EXPECT_NEAR(got[0], sent[0], 1);
        for (std::size_t i = 1; i < sent.size(); ++i)
            EXPECT_NEAR(got[i], sent[i], 12) << i; // of 254, what 0.3 s of noise let one know
    }
}

TEST(ComfortNoise, ReflectionCoefficientsHaveTheSignOfTheRecommendations)
{
    NoiseStatistics lowPass;
    lowPass.power = 1e4;
    for (std::size_t lag = 0; lag < lowPass.autocorrelation.size(); ++lag)
        lowPass.autocorrelation[lag] = 1e4 * std::pow(0.9, static_cast<double>(lag));
    const auto reflection = zsp::voice::reflectionOf(lowPass);
    EXPECT_NEAR(reflection[0], -0.9, 1e-3);
    for (std::size_t m = 1; m < reflection.size(); ++m)
        EXPECT_NEAR(reflection[m], 0, 1e-2) << m;
}

TEST(ComfortNoise, OctetsOfRfc3389)
{
    EXPECT_EQ(zsp::voice::levelOctet(32768.0 * 32768.0), 0);
    EXPECT_EQ(zsp::voice::levelOctet(32768.0 * 32768.0 * 1e-3), 30);
    EXPECT_EQ(zsp::voice::levelOctet(0), 127);
    EXPECT_FLOAT_EQ(zsp::voice::reflectionValue(0), -258.0F * 127 / 32768);
    EXPECT_EQ(zsp::voice::reflectionValue(127), 0);
    EXPECT_EQ(zsp::voice::reflectionValue(255), 0) << "none, not an unstable filter";
    for (int octet = 0; octet < 255; ++octet)
        EXPECT_EQ(zsp::voice::reflectionOctet(
                      zsp::voice::reflectionValue(static_cast<std::uint8_t>(octet))),
                  octet);
}

TEST(ComfortNoise, MovesSmoothlyAndInTime)
{
    const std::vector<std::uint8_t> loud = {30}, soft = {60, 200, 90};
    const auto noise = make(8000);
    zspvComfortNoiseRead(noise.get(), loud.data(), 1);
    const auto first = generate(noise.get(), 8);
    EXPECT_LT(zsp::signals::levelDbfs(first), -36) << "fades in";
    EXPECT_NEAR(zsp::signals::levelDbfs(generate(noise.get(), 8000)), -30, 1);
    zspvComfortNoiseRead(noise.get(), soft.data(), 3);
    generate(noise.get(), 320);
    EXPECT_NEAR(zsp::signals::levelDbfs(generate(noise.get(), 8000)), -60, 1) << "40 ms later";
}

TEST(ComfortNoise, SplitsCopiesAndAnyPayloadGoOnAlike)
{
    std::vector<std::byte> memory(static_cast<std::size_t>(sizeOf(8000)) + 16), copy(memory.size());
    for (std::size_t offset = 0; offset < 16; ++offset) {
        // Every reflection coefficient at its ends, which is where a filter would be unstable.
        std::vector<std::uint8_t> payload(20, offset % 2 ? 0 : 254);
        payload[0] = 50;
        ZspvComfortNoise* noise = nullptr;
        ASSERT_EQ(zspvComfortNoiseInit(&memory[offset], sizeOf(8000), 8000, &noise), zspStsNoErr);
        ASSERT_EQ(zspvComfortNoiseRead(noise, payload.data(), 20), zspStsNoErr);
        std::memcpy(copy.data(), memory.data(), memory.size());
        auto* other = reinterpret_cast<ZspvComfortNoise*>(&copy[offset]);
        const auto whole = generate(noise, 2000);
        std::vector<std::int16_t> parts;
        while (parts.size() < whole.size()) {
            const auto part = generate(other, parts.size() % 3 == 0 ? 1 : 19);
            parts.insert(parts.end(), part.begin(), part.end());
        }
        parts.resize(whole.size());
        ASSERT_EQ(parts, whole);
    }
}

} // namespace
