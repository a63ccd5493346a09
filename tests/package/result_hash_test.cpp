// Hashes of what the families that compute in floating point give for fixed input. The same values
// on every platform: mathematics libraries differ in their last digits, the results here do not.

#include "zspsc.h"

#include "tests/support/vectors.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <vector>

namespace {

/// FNV-1a.
class Hash {
  public:
    template <typename T>
    void add(std::span<const T> values)
    {
        for (const std::byte b : std::as_bytes(values))
            hash_ = (hash_ ^ static_cast<std::uint64_t>(b)) * 0x100'0000'01b3;
    }
    template <typename T>
    void add(const std::vector<T>& values)
    {
        add(std::span<const T>(values));
    }
    std::uint64_t value() const { return hash_; }

  private:
    std::uint64_t hash_ = 0xcbf2'9ce4'8422'2325;
};

/// Noise from integer arithmetic alone, in bursts, so that levels rise and fall.
std::vector<std::int16_t> noise(std::size_t count)
{
    std::vector<std::int16_t> samples(count);
    std::uint32_t x = 12345;
    for (std::size_t i = 0; i < count; ++i) {
        x = x * 1664525 + 1013904223;
        const int value = static_cast<std::int16_t>(x >> 16);
        samples[i] = static_cast<std::int16_t>((i / 4000) % 3 == 0 ? value / 512 : value / 4);
    }
    return samples;
}

std::vector<float> toFloat(const std::vector<std::int16_t>& samples)
{
    return {samples.begin(), samples.end()};
}

struct Shape {
    std::int32_t order, frameSize, windowLen;
    bool builtIn;
};
constexpr Shape kShapes[] = {
    {5, 24, 128, true}, {6, 44, 256, true}, {6, 40, 320, false}, {9, 300, 1024, false}};

template <typename Sample, typename Bin, typename GetSize, typename Init, typename Analyse,
          typename Synthesise>
std::uint64_t bank(const std::vector<Sample>& input, Sample one, GetSize getSize, Init init,
                   Analyse analyse, Synthesise synthesise)
{
    Hash hash;
    for (const Shape& shape : kShapes) {
        std::int32_t stateSize = 0, initSize = 0, workSize = 0;
        getSize(shape.order, shape.windowLen, &stateSize, &initSize, &workSize);
        const auto bytes = [](std::int32_t n) {
            return std::vector<std::byte>(static_cast<std::size_t>(n) + 1);
        };
        auto analysis = bytes(stateSize), synthesis = bytes(stateSize), work = bytes(workSize);
        auto scratch = bytes(initSize);
        std::vector<Sample> window(static_cast<std::size_t>(shape.windowLen));
        for (std::size_t i = 0; i < window.size(); ++i) // a triangle
            window[i] =
                static_cast<Sample>(one * static_cast<float>(std::min(i + 1, window.size() - i)) /
                                    static_cast<float>(window.size()));
        const Sample* taps = shape.builtIn ? nullptr : window.data();
        for (auto* state : {&analysis, &synthesis})
            EXPECT_EQ(init(state->data(), shape.order, shape.frameSize, shape.windowLen, taps,
                           scratch.data()),
                      zspStsNoErr);
        std::vector<Bin> bins((std::size_t{1} << shape.order) / 2 + 1);
        const auto hop = static_cast<std::size_t>(shape.frameSize);
        std::vector<Sample> out(hop);
        for (std::size_t i = 0; i + hop <= input.size(); i += hop) {
            analyse(&input[i], bins.data(), analysis.data(), work.data());
            synthesise(bins.data(), out.data(), synthesis.data(), work.data());
            hash.add(bins);
            hash.add(out);
        }
    }
    return hash.value();
}

std::uint64_t levelControl()
{
    Hash hash;
    ZspAlcState_G169 state;
    zspsALCInit_G169_16s(&state);
    zspsALCSetGain_G169_16s(17.3F, &state);
    zspsALCSetLevel_G169_16s(21.7F, 1.1F, &state);
    const std::vector<std::int16_t> in = noise(80'000);
    std::vector<std::int16_t> out(in.size());
    zspsALC_G169_16s(in.data(), out.data(), static_cast<std::int32_t>(in.size()), &state);
    hash.add(out);
    hash.add(std::span<const ZspAlcState_G169>(&state, 1));
    return hash.value();
}

std::uint64_t controller()
{
    constexpr std::int32_t kBands = 33, kTaps = 5;
    using Vector = std::vector<Zsp32fc>;
    std::int32_t size = 0;
    zspsSubbandControllerGetSize_EC_32f(kBands, 44, kTaps, 16000, &size);
    std::vector<std::byte> state(static_cast<std::size_t>(size));
    zspsSubbandControllerInit_EC_32f(state.data(), kBands, 44, kTaps, 16000);

    const std::vector<std::int16_t> samples = noise(60'000);
    std::size_t next = 0;
    const auto fresh = [&](float scale) {
        Vector v(kBands);
        for (Zsp32fc& z : v) {
            z.re = static_cast<float>(samples[next % samples.size()]) * scale;
            z.im = static_cast<float>(samples[(next + 7) % samples.size()]) * scale;
            next += 13;
        }
        return v;
    };
    std::vector<Vector> history, adaptive, fixed;
    for (int t = 0; t < kTaps; ++t) {
        history.push_back(fresh(1));
        adaptive.push_back(fresh(1e-5F));
        fixed.push_back(fresh(1e-5F));
    }
    const auto pointers = [](std::vector<Vector>& vectors) {
        std::vector<Zsp32fc*> result;
        for (Vector& v : vectors)
            result.push_back(v.data());
        return result;
    };
    Hash hash;
    std::vector<double> steps(kBands);
    for (int frame = 0; frame < 300; ++frame) {
        history.pop_back();
        history.insert(history.begin(), fresh(1));
        auto past = pointers(history), a = pointers(adaptive), f = pointers(fixed);
        const std::vector<const Zsp32fc*> newestFirst(past.begin(), past.end());
        const Vector reference = fresh(0.5F);
        const Vector adaptErr = fresh(frame % 3 ? 0.1F : 0.4F), fixedErr = fresh(0.2F);
        zspsSubbandAPControllerUpdate_EC_32f(newestFirst.data(), reference.data(), steps.data(),
                                             0.7F, state.data());
        float factor = 0;
        zspsSubbandController_EC_32f(adaptErr.data(), fixedErr.data(), a.data(), f.data(), &factor,
                                     state.data());
        hash.add(steps);
        hash.add(std::span<const float>(&factor, 1));
        for (const Vector& v : fixed)
            hash.add(v);
    }
    return hash.value();
}

std::uint64_t toneDetector()
{
    Hash hash;
    for (const std::int32_t rate : {8000, 16000}) {
        std::int32_t size = 0;
        zspsToneDetectGetStateSize_EC_32f(rate, &size);
        std::vector<std::byte> state(static_cast<std::size_t>(size) + 16);
        void* aligned = state.data() + (16 - reinterpret_cast<std::uintptr_t>(state.data()) % 16);
        zspsToneDetectInit_EC_32f(aligned, rate);
        // 2000 Hz, near enough to the resonance, with a reversal every 0.45 s
        const std::array<float, 8> cycle = {0, 0.7071F, 1, 0.7071F, 0, -0.7071F, -1, -0.7071F};
        const auto period = static_cast<std::size_t>(rate / 2000);
        std::vector<float> tone(static_cast<std::size_t>(rate) * 2);
        for (std::size_t i = 0; i < tone.size(); ++i) {
            const float sign = (i * 20 / static_cast<std::size_t>(rate) / 9) % 2 ? -1.0F : 1.0F;
            tone[i] = 8000 * sign * cycle[(i % period) * 8 / period];
        }
        std::int32_t result = 0;
        zspsToneDetect_EC_32f(tone.data(), static_cast<std::int32_t>(tone.size()), &result,
                              aligned);
        hash.add(std::span<const std::int32_t>(&result, 1));
        hash.add(std::span<const std::byte>(static_cast<std::byte*>(aligned), 64).subspan(8));
    }
    return hash.value();
}

std::uint64_t correlation()
{
    Hash hash;
    std::vector<float> samples = toFloat(noise(4000));
    float memory = 0, best = 0;
    std::int32_t lag = 0;
    zspsPreemphasize_32f_I(0.68F, samples.data(), static_cast<std::int32_t>(samples.size()),
                           &memory);
    for (std::size_t i = 200; i + 80 < samples.size(); i += 80) {
        zspsAutoCorrLagMax_32f(&samples[i], 80, 20, 143, &best, &lag);
        hash.add(std::span<const float>(&best, 1));
        hash.add(std::span<const std::int32_t>(&lag, 1));
    }
    hash.add(samples);
    return hash.value();
}

TEST(ResultHash, SameOnEveryPlatform)
{
    const std::vector<std::int16_t> words = noise(20'000);
    const std::map<std::string, std::uint64_t> got = {
        {"alc", levelControl()},
        {"correlation", correlation()},
        {"subband-controller", controller()},
        {"tone-detector", toneDetector()},
        {"subband-32f",
         bank<float, Zsp32fc>(toFloat(words), 1.0F, zspsSubbandProcessGetSize_32f,
                              zspsSubbandProcessInit_32f, zspsSubbandAnalysis_32f32fc,
                              zspsSubbandSynthesis_32fc32f)},
        {"subband-16s", bank<std::int16_t, Zsp32sc>(
                            words, 8192, zspsSubbandProcessGetSize_16s, zspsSubbandProcessInit_16s,
                            [](const std::int16_t* src, Zsp32sc* dst, void* state, void* work) {
                                return zspsSubbandAnalysis_16s32sc_Sfs(src, dst, state, 1, work);
                            },
                            [](const Zsp32sc* src, std::int16_t* dst, void* state, void* work) {
                                return zspsSubbandSynthesis_32sc16s_Sfs(src, dst, state, -1, work);
                            })},
    };
    std::map<std::string, std::uint64_t> wanted;
    for (const auto& line : zsp::test::readRuns("result_hashes.txt"))
        wanted[line.at(0)] = std::stoull(line.at(1), nullptr, 16);
    for (const auto& [name, hash] : got)
        EXPECT_EQ(hash, wanted[name]) << name << " " << std::hex << hash;
    EXPECT_EQ(wanted.size(), got.size());
}

} // namespace
