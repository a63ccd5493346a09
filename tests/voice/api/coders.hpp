// Encoders and decoders that free themselves, for tests.
#pragma once

#include "zspvoice.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace zsp::test {

using Octets = std::vector<std::uint8_t>;
using Words = std::vector<std::int16_t>;

inline std::vector<const ZspvCodec*> allCodecs()
{
    std::vector<const ZspvCodec*> all;
    for (std::int32_t i = 0; i < zspvCodecCount(); ++i)
        all.push_back(zspvCodecByIndex(i));
    return all;
}

struct Free {
    void operator()(ZspvEncoder* encoder) const { zspvEncoderDestroy(encoder); }
    void operator()(ZspvDecoder* decoder) const { zspvDecoderDestroy(decoder); }
};

using Encoder = std::unique_ptr<ZspvEncoder, Free>;
using Decoder = std::unique_ptr<ZspvDecoder, Free>;

inline ZspvParams paramsOf(std::int32_t bitRate)
{
    ZspvParams params{};
    params.structSize = sizeof params;
    params.bitRate = bitRate;
    return params;
}

inline Encoder makeEncoder(const ZspvCodec* codec, std::int32_t bitRate = 0)
{
    const ZspvParams params = paramsOf(bitRate);
    ZspvEncoder* encoder = nullptr;
    EXPECT_EQ(zspvEncoderCreate(codec, &params, &encoder), zspStsNoErr);
    return Encoder(encoder);
}

inline Decoder makeDecoder(const ZspvCodec* codec, std::int32_t bitRate = 0)
{
    const ZspvParams params = paramsOf(bitRate);
    ZspvDecoder* decoder = nullptr;
    EXPECT_EQ(zspvDecoderCreate(codec, &params, &decoder), zspStsNoErr);
    return Decoder(decoder);
}

/// Samples and octets of the blocks that a signal is given in: a frame each, or all of it at once
/// where a codec takes that.
inline std::size_t blockSamples(const ZspvCodec* codec, std::size_t all)
{
    const bool takesSteps = codec->stepSamples < codec->frameSamples;
    return takesSteps ? all : static_cast<std::size_t>(codec->frameSamples);
}
inline std::size_t blockOctets(const ZspvCodec* codec, std::span<const std::uint8_t> rest)
{
    if (codec->stepSamples < codec->frameSamples) return rest.size();
    constexpr std::size_t kG723[] = {24, 20, 4, 1};
    const bool tells = (codec->flags & zspvCodecFrameHasKind) != 0 && codec->payloadType == 4;
    return tells ? kG723[rest[0] & 3] : static_cast<std::size_t>(codec->maxFrameBytes);
}

/// What is left behind the last whole frame is left out.
inline Octets encode(ZspvEncoder* encoder, std::span<const std::int16_t> samples)
{
    const std::size_t block = blockSamples(zspvEncoderGetCodec(encoder), samples.size());
    Octets octets(samples.size());
    std::size_t coded = 0;
    for (std::size_t at = 0; at < samples.size() && at + block <= samples.size(); at += block) {
        std::int32_t length = 0;
        ZspvFrameKind kind = zspvFrameNoData;
        EXPECT_EQ(zspvEncode(encoder, &samples[at], static_cast<std::int32_t>(block),
                             octets.data() + coded,
                             static_cast<std::int32_t>(octets.size() - coded), &length, &kind),
                  zspStsNoErr);
        EXPECT_EQ(kind, zspvFrameSpeech);
        coded += static_cast<std::size_t>(length);
    }
    octets.resize(coded);
    return octets;
}

inline Words decode(ZspvDecoder* decoder, std::span<const std::uint8_t> octets)
{
    Words samples(12 * octets.size());
    std::size_t heard = 0;
    for (std::size_t at = 0, block = 0; at < octets.size(); at += block) {
        block = blockOctets(zspvDecoderGetCodec(decoder), octets.subspan(at));
        std::int32_t count = 0;
        EXPECT_EQ(zspvDecode(decoder, zspvFrameSpeech, &octets[at],
                             static_cast<std::int32_t>(std::min(block, octets.size() - at)),
                             samples.data() + heard,
                             static_cast<std::int32_t>(samples.size() - heard), &count),
                  zspStsNoErr);
        heard += static_cast<std::size_t>(count);
    }
    samples.resize(heard);
    return samples;
}

/// One nominal frame.
inline Words conceal(ZspvDecoder* decoder)
{
    Words samples(static_cast<std::size_t>(zspvDecoderGetCodec(decoder)->frameSamples));
    std::int32_t count = 0;
    EXPECT_EQ(
        zspvConceal(decoder, samples.data(), static_cast<std::int32_t>(samples.size()), &count),
        zspStsNoErr);
    EXPECT_EQ(count, zspvDecoderGetCodec(decoder)->frameSamples);
    return samples;
}

} // namespace zsp::test
