// Decisions of the detectors: pinned, and beside those of the standards' own encoders.

#include "tests/support/speech.hpp"
#include "tests/support/vectors.hpp"
#include "zspvoice.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace {

using namespace zsp::test;

std::vector<ZspvActivityInfo> decide(std::int32_t detector, const Words& samples)
{
    ZspvActivityConfig config{};
    config.structSize = sizeof config;
    config.detector = detector;
    config.sampleRate = detector == zspvDetectorAmrWb ? 12800 : 8000;
    ZspvActivity* activity = nullptr;
    EXPECT_EQ(zspvActivityCreate(&config, &activity), zspStsNoErr);
    const std::int32_t frame = config.sampleRate / 50;
    std::vector<ZspvActivityInfo> infos;
    for (auto n = 0; n + frame <= static_cast<int>(samples.size()); n += frame) {
        ZspvActivityInfo info{};
        info.structSize = sizeof info;
        EXPECT_EQ(
            zspvActivityProcess(activity, &samples[static_cast<std::size_t>(n)], frame, &info),
            zspStsNoErr);
        infos.push_back(info);
    }
    zspvActivityDestroy(activity);
    return infos;
}

/// FNV-1a over decision and kind of every frame.
std::uint64_t hashOf(const std::vector<ZspvActivityInfo>& infos)
{
    std::uint64_t hash = 14695981039346656037U;
    for (const ZspvActivityInfo& info : infos)
        hash = (hash ^ static_cast<std::uint64_t>(4 * info.active + info.kind)) * 1099511628211U;
    return hash;
}

// Pre-processing and pitch search have no standard to be compared with: these decisions are those
// of the first release.
TEST(ActivityDetector, DecisionsStay)
{
    struct Case {
        std::int32_t detector;
        const char* signal;
        std::uint64_t hash;
    };
    constexpr Case kCases[] = {
        {1, "bundled", 0xa0afd7f0664c672f},
        {1, "extremes", 0x53c7d68b083815f1},
        {1, "music", 0xc4d753b44e51d824},
        {1, "silence_steps", 0xa1c55bdeb713d24d},
        {1, "speech_babble15", 0x46e14339499377bf},
        {1, "speech_car10", 0xc4d753b44e51d824},
        {1, "speech_clean", 0xd9ec800e8a329d16},
        {1, "speech_loud_clip", 0x69d57df3412ac5b5},
        {1, "speech_pink5", 0xdd762465372339a2},
        {1, "speech_quiet", 0x7bcf2f926871ed8d},
        {1, "speech_white20", 0xfab1e4e88dc92dfc},
        {1, "tones", 0x3974b1adf4d83bdb},
        {2, "bundled", 0xc7e8bc55e59f6217},
        {2, "extremes", 0x7f9eae68f5eee01e},
        {2, "music", 0xc8e106d45234f7ce},
        {2, "silence_steps", 0x8eef38e85c59659a},
        {2, "speech_babble15", 0x46e14339499377bf},
        {2, "speech_car10", 0x948a747c30611b8e},
        {2, "speech_clean", 0x86cd493f3201c1ba},
        {2, "speech_loud_clip", 0x79e405c4ca8d3cb2},
        {2, "speech_pink5", 0x5106d909948d75a3},
        {2, "speech_quiet", 0x7786f4e9f0070331},
        {2, "speech_white20", 0xecfd85dd0175bef1},
        {2, "tones", 0x7504b0dead041398},
        {3, "bundled", 0xf644d8a69a5a71ca},
        {3, "extremes", 0x133a9c7546364c39},
        {3, "music", 0xee850107c3a35e91},
        {3, "silence_steps", 0x29de5a2ec1fcc08a},
        {3, "speech_babble15", 0xf2d1fed3ea13ca98},
        {3, "speech_clean", 0xfa0bd8a8b345c1e2},
        {3, "speech_loud_clip", 0xee850107c3a35e91},
        {3, "speech_pink5", 0x6d752b9e639ce464},
        {3, "tones", 0xee850107c3a35e91},
    };
    for (const Case& c : kCases) {
        const std::string folder = c.detector == zspvDetectorAmrWb ? "amrwb/" : "gsmamr/";
        const Words samples = std::string(c.signal) == "bundled"
                                  ? speech(8000)
                                  : readVector<std::int16_t>(folder + c.signal + ".pcm");
        EXPECT_EQ(hashOf(decide(c.detector, samples)), c.hash) << c.detector << ' ' << c.signal;
    }
}

// The encoders run the same detectors behind a fixed-point filter and a search in weighted speech.
// The vectors are what comes out of that filter, which halves: hence the gain. In a car's rumble
// option 1 takes more for pitch here than the encoder does, and hears speech all the time.
TEST(ActivityDetector, AgreesWithTheEncoders)
{
    struct Case {
        std::int32_t detector;
        const char* signal;
        double agreement;
    };
    constexpr Case kCases[] = {
        {1, "speech_clean", 0.99},  {1, "speech_babble15", 0.99}, {1, "speech_pink5", 0.98},
        {1, "speech_quiet", 0.99},  {1, "speech_white20", 0.99},  {1, "speech_car10", 0.70},
        {2, "speech_clean", 0.99},  {2, "speech_babble15", 0.99}, {2, "speech_pink5", 0.98},
        {2, "speech_quiet", 0.99},  {2, "speech_white20", 0.99},  {2, "speech_car10", 0.94},
        {3, "speech_clean", 0.97},  {3, "speech_babble15", 0.99}, {3, "speech_pink5", 0.98},
        {3, "silence_steps", 0.89},
    };
    for (const Case& c : kCases) {
        const bool wide = c.detector == zspvDetectorAmrWb;
        const std::string name = (wide ? "amrwb/" : "gsmamr/") + std::string(c.signal);
        Words samples = readVector<std::int16_t>(name + ".pcm");
        const Words want =
            readVector<std::int16_t>(name + (wide                             ? ".vad"
                                             : c.detector == zspvDetectorAmr1 ? ".vad1"
                                                                              : ".vad2"));
        const std::size_t record = wide ? 89 : c.detector == zspvDetectorAmr1 ? 59 : 96;
        if (c.detector == zspvDetectorAmr1) // its records are 5 ms ahead of the power's frame
            samples.erase(samples.begin(), samples.begin() + 40);
        for (std::int16_t& x : samples)
            x = static_cast<std::int16_t>(std::clamp(wide ? x : 2 * x, -32768, 32767));
        const auto infos = decide(c.detector, samples);
        const std::size_t frames = std::min(infos.size(), want.size() / record);
        ASSERT_GT(frames, 200U);
        double agreed = 0;
        for (std::size_t i = 0; i < frames; ++i)
            agreed += (want[i * record + (wide ? 1 : 0)] != 0) == (infos[i].active != 0) ? 1 : 0;
        EXPECT_GE(agreed / static_cast<double>(frames), c.agreement)
            << c.detector << ' ' << c.signal;
    }
}

// Down from 16 kHz the decisions are those of the signal at 12.8 kHz, up to the delay of the
// filter.
TEST(ActivityDetector, SixteenKilohertzAgreeWithTheRateOfAmrWb)
{
    // 8 kHz speech at both rates: up by 2, and by 8 / 5 between neighbouring samples.
    const Words& narrow = speech(8000);
    Words at12800;
    for (std::size_t m = 0; m * 5 / 8 + 1 < narrow.size(); ++m) {
        const double t = static_cast<double>(m) * 5 / 8;
        const auto n = static_cast<std::size_t>(t);
        const double share = t - static_cast<double>(n);
        at12800.push_back(
            static_cast<std::int16_t>((1 - share) * narrow[n] + share * narrow[n + 1]));
    }
    const auto want = decide(zspvDetectorAmrWb, at12800);

    ZspvActivityConfig config{};
    config.structSize = sizeof config;
    config.detector = zspvDetectorAmrWb;
    config.sampleRate = 16000;
    ZspvActivity* activity = nullptr;
    ASSERT_EQ(zspvActivityCreate(&config, &activity), zspStsNoErr);
    double agreed = 0, frames = 0;
    for (std::size_t n = 0; n + 320 <= speech(16000).size() && frames < 1200; n += 320, ++frames) {
        ZspvActivityInfo info{};
        info.structSize = sizeof info;
        ASSERT_EQ(zspvActivityProcess(activity, &speech(16000)[n], 320, &info), zspStsNoErr);
        agreed += info.active == want[n / 320].active ? 1 : 0;
    }
    zspvActivityDestroy(activity);
    EXPECT_GE(agreed / frames, 0.97);
}

} // namespace
