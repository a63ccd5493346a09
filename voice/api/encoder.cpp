// Encoder objects: a header with the codec and its settings, and the codec's own state behind it.

#include "voice/api/coder.hpp"

#include <cstdlib>

namespace zsp::voice {

namespace {

struct EncoderObject {
    const Codec* codec;
    Settings settings;
    std::int32_t active; // what the codec said of the last frame

    static const EncoderFunctions& functions(const Codec& codec) noexcept { return codec.encoder; }

    void restart() noexcept
    {
        active = 1;
        codec->encoder.start(behind(this), *codec, settings);
    }
};

} // namespace

} // namespace zsp::voice

using zsp::voice::Codec;
using zsp::voice::EncoderObject;
using zsp::voice::placed;
using zsp::voice::stepBytes;

ZspStatus zspvEncoderGetSize(const ZspvCodec* codec, const ZspvParams* params, std::int32_t* size)
{
    return zsp::voice::coderSize<EncoderObject>(codec, params, size);
}

ZspStatus zspvEncoderInit(void* memory, std::int32_t capacity, const ZspvCodec* codec,
                          const ZspvParams* params, ZspvEncoder** encoder)
{
    return zsp::voice::coderInit<EncoderObject>(memory, capacity, codec, params, encoder);
}

ZspStatus zspvEncoderCreate(const ZspvCodec* codec, const ZspvParams* params, ZspvEncoder** encoder)
{
    return zsp::voice::coderCreate<EncoderObject>(codec, params, encoder);
}

void zspvEncoderDestroy(ZspvEncoder* encoder)
{
    std::free(encoder);
}

ZspStatus zspvEncoderReset(ZspvEncoder* encoder)
{
    if (!encoder) return zspStsNullPtrErr;

    placed<EncoderObject>(encoder)->restart();
    return zspStsNoErr;
}

ZspStatus zspvEncode(ZspvEncoder* encoder, const std::int16_t* samples, std::int32_t count,
                     std::uint8_t* bytes, std::int32_t capacity, std::int32_t* length,
                     ZspvFrameKind* kind)
{
    if (!encoder || !samples || !bytes || !length) return zspStsNullPtrErr;
    auto* object = placed<EncoderObject>(encoder);
    const Codec& codec = *object->codec;
    const std::int32_t unit = codec.info.stepSamples;
    if (count < 1 || count % unit != 0) return zspStsSizeErr;
    if (!codec.takesSteps() && count != unit) return zspStsSizeErr;
    const std::int32_t largest =
        codec.takesSteps() ? count / unit * stepBytes(codec.info) : codec.info.maxFrameBytes;
    if (capacity < largest) {
        *length = largest;
        return zspStsSizeErr;
    }

    const zsp::voice::Coded coded = codec.encoder.encode(
        zsp::voice::behind(object), codec, object->settings,
        {samples, static_cast<std::size_t>(count)}, {bytes, static_cast<std::size_t>(largest)});
    object->active = coded.active;
    *length = static_cast<std::int32_t>(coded.bytes);
    if (kind) *kind = coded.kind;
    return zspStsNoErr;
}

ZspStatus zspvEncoderSetBitRate(ZspvEncoder* encoder, std::int32_t bitRate)
{
    if (!encoder) return zspStsNullPtrErr;
    auto* object = placed<EncoderObject>(encoder);
    if (!zsp::voice::hasBitRate(object->codec->info, bitRate)) return zspStsRangeErr;

    object->settings.bitRate = bitRate;
    return zspStsNoErr;
}

ZspStatus zspvEncoderGetBitRate(const ZspvEncoder* encoder, std::int32_t* bitRate)
{
    if (!encoder || !bitRate) return zspStsNullPtrErr;

    *bitRate = placed<EncoderObject>(encoder)->settings.bitRate;
    return zspStsNoErr;
}

ZspStatus zspvEncoderSetDtx(ZspvEncoder* encoder, std::int32_t dtx)
{
    if (!encoder) return zspStsNullPtrErr;
    auto* object = placed<EncoderObject>(encoder);
    if (dtx && !object->codec->has(zspvCodecDtx)) return zspStsRangeErr;

    object->settings.dtx = dtx && !object->settings.params.noSilenceFrames;
    return zspStsNoErr;
}

ZspStatus zspvEncoderGetDtx(const ZspvEncoder* encoder, std::int32_t* dtx)
{
    if (!encoder || !dtx) return zspStsNullPtrErr;

    *dtx = placed<EncoderObject>(encoder)->settings.dtx;
    return zspStsNoErr;
}

ZspStatus zspvEncoderGetActivity(const ZspvEncoder* encoder, std::int32_t* active)
{
    if (!encoder || !active) return zspStsNullPtrErr;

    *active = placed<EncoderObject>(encoder)->active;
    return zspStsNoErr;
}

const ZspvCodec* zspvEncoderGetCodec(const ZspvEncoder* encoder)
{
    return encoder ? &placed<EncoderObject>(encoder)->codec->info : nullptr;
}
