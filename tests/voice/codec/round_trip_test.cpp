// Encoder and decoder objects of every row: whatever the blocks, one stream; what comes back is the
// signal, and concealment never ends.

#include "tests/support/coder_signal.hpp"
#include "zspvoice.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

namespace {

using Bytes = std::vector<std::uint8_t>;
using Words = std::vector<std::int16_t>;

/// Encodes in blocks of `steps` steps; the last one may be shorter.
Bytes encoded(const ZspvCodec& codec, const Words& pcm, std::int32_t steps)
{
    ZspvEncoder* encoder = nullptr;
    EXPECT_EQ(zspvEncoderCreate(&codec, nullptr, &encoder), zspStsNoErr);
    Bytes all;
    const auto block = static_cast<std::size_t>(steps * codec.stepSamples);
    for (std::size_t i = 0; i < pcm.size(); i += block) {
        Bytes bytes(4096);
        std::int32_t length = 0;
        ZspvFrameKind kind = zspvFrameNoData;
        const auto count = static_cast<std::int32_t>(std::min(block, pcm.size() - i));
        EXPECT_EQ(zspvEncode(encoder, &pcm[i], count, bytes.data(), 4096, &length, &kind),
                  zspStsNoErr);
        EXPECT_EQ(kind, zspvFrameSpeech);
        all.insert(all.end(), bytes.begin(), bytes.begin() + length);
    }
    zspvEncoderDestroy(encoder);
    return all;
}

Words decoded(const ZspvCodec& codec, const Bytes& bytes, std::size_t block)
{
    ZspvDecoder* decoder = nullptr;
    EXPECT_EQ(zspvDecoderCreate(&codec, nullptr, &decoder), zspStsNoErr);
    Words all;
    for (std::size_t i = 0; i < bytes.size(); i += block) {
        Words samples(4096);
        std::int32_t count = 0;
        const auto length = static_cast<std::int32_t>(std::min(block, bytes.size() - i));
        EXPECT_EQ(
            zspvDecode(decoder, zspvFrameSpeech, &bytes[i], length, samples.data(), 4096, &count),
            zspStsNoErr);
        all.insert(all.end(), samples.begin(), samples.begin() + count);
    }
    zspvDecoderDestroy(decoder);
    return all;
}

TEST(VoiceCodec, AnyBlocksGiveTheSameStream)
{
    for (std::int32_t row = 0; row < zspvCodecCount(); ++row) {
        const ZspvCodec& codec = *zspvCodecByIndex(row);
        SCOPED_TRACE(codec.rtpName);
        const Words pcm = zsp::test::CoderSignal(7).pcm(4800);
        const std::int32_t whole = codec.frameSamples / codec.stepSamples;
        const Bytes stream = encoded(codec, pcm, whole);
        EXPECT_EQ(stream.size(), pcm.size() / static_cast<std::size_t>(codec.frameSamples) *
                                     static_cast<std::size_t>(codec.maxFrameBytes));
        const auto frame = static_cast<std::size_t>(codec.maxFrameBytes);
        const auto step = frame / static_cast<std::size_t>(whole);
        const Words heard = decoded(codec, stream, frame);
        EXPECT_EQ(heard.size(), pcm.size());
        for (const std::int32_t steps : {1, 3, whole + 1, 5 * whole}) {
            EXPECT_EQ(encoded(codec, pcm, steps), stream) << steps;
            EXPECT_EQ(decoded(codec, stream, static_cast<std::size_t>(steps) * step), heard)
                << steps;
        }
    }
}

TEST(VoiceCodec, GivesTheSignalBack)
{
    for (std::int32_t row = 0; row < zspvCodecCount(); ++row) {
        const ZspvCodec& codec = *zspvCodecByIndex(row);
        Words pcm(8000);
        for (std::size_t i = 0; i < pcm.size(); ++i)
            pcm[i] = static_cast<std::int16_t>(6000 * std::sin(0.2 * static_cast<double>(i)));
        const Words heard =
            decoded(codec, encoded(codec, pcm, codec.frameSamples / codec.stepSamples),
                    static_cast<std::size_t>(codec.maxFrameBytes));
        double power = 0, error = 0;
        const auto delay = static_cast<std::size_t>(codec.filterDelay);
        for (std::size_t i = 2000; i < pcm.size(); ++i) {
            power += std::pow(pcm[i - delay], 2);
            error += std::pow(heard[i] - pcm[i - delay], 2);
        }
        // 2-bit code words follow a tone about so well.
        EXPECT_GT(10 * std::log10(power / error), codec.bitRates[0] < 20000 ? 8 : 15)
            << codec.rtpName;
    }
}

TEST(VoiceCodec, ConcealsForEverAndFadesToSilence)
{
    for (std::int32_t row = 0; row < zspvCodecCount(); ++row) {
        const ZspvCodec& codec = *zspvCodecByIndex(row);
        SCOPED_TRACE(codec.rtpName);
        ZspvDecoder* decoder = nullptr;
        ASSERT_EQ(zspvDecoderCreate(&codec, nullptr, &decoder), zspStsNoErr);
        const Words pcm = zsp::test::CoderSignal(8).pcm(1600);
        const Bytes stream = encoded(codec, pcm, codec.frameSamples / codec.stepSamples);
        Words samples(2000);
        std::int32_t count = 0;
        ASSERT_EQ(zspvDecode(decoder, zspvFrameSpeech, stream.data(),
                             static_cast<std::int32_t>(stream.size()), samples.data(), 2000,
                             &count),
                  zspStsNoErr);
        for (int i = 0; i < 1000; ++i) {
            ASSERT_EQ(zspvConceal(decoder, samples.data(), 2000, &count), zspStsNoErr);
            ASSERT_EQ(count, codec.frameSamples);
            const auto end = samples.begin() + count;
            const bool silent = std::all_of(samples.begin(), end, [](int x) { return x == 0; });
            EXPECT_TRUE(silent || i < 8) << i;
        }
        EXPECT_EQ(zspvConceal(decoder, samples.data(), codec.frameSamples - 1, &count),
                  zspStsSizeErr);
        EXPECT_EQ(count, codec.frameSamples);
        zspvDecoderDestroy(decoder);
    }
}

} // namespace
