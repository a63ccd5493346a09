// Decoder objects: a header with the codec and its settings, and the codec's own state behind it.

#include "voice/api/coder.hpp"

#include <cstdlib>

namespace zsp::voice {

namespace {

struct DecoderObject {
    const Codec* codec;
    Settings settings;
    std::int32_t bitRate; // of the last frame
    std::int32_t inPause; // a silence descriptor came, and no speech since

    static const DecoderFunctions& functions(const Codec& codec) noexcept { return codec.decoder; }

    void restart() noexcept
    {
        bitRate = settings.bitRate;
        inPause = 0;
        codec->decoder.start(behind(this), *codec, settings);
    }
};

bool hasNoBytes(std::int32_t kind) noexcept
{
    return kind == zspvFrameNoData || kind == zspvFrameLost;
}

bool isSid(std::int32_t kind) noexcept
{
    return kind == zspvFrameSidFirst || kind == zspvFrameSidUpdate || kind == zspvFrameSidDamaged;
}

/// What zspvDecode() has been given, as far as it can be told without the state: one frame of a
/// codec with frames, any number of steps of another.
Frame inspectFrame(const Codec& codec, std::int32_t kind, In8 bytes) noexcept
{
    if (hasNoBytes(kind)) return {.samples = codec.info.frameSamples};
    if (bytes.empty()) return {.status = zspStsSizeErr};
    if (codec.takesSteps()) return wholeSteps(codec, bytes.size());

    Frame frame = lookAtFrame(codec, bytes);
    if (frame.status == zspStsNoErr && frame.bytes != bytes.size()) frame.status = zspStsSizeErr;
    return frame;
}

} // namespace

} // namespace zsp::voice

using zsp::voice::Codec;
using zsp::voice::DecoderObject;
using zsp::voice::placed;

ZspStatus zspvDecoderGetSize(const ZspvCodec* codec, const ZspvParams* params, std::int32_t* size)
{
    return zsp::voice::coderSize<DecoderObject>(codec, params, size);
}

ZspStatus zspvDecoderInit(void* memory, std::int32_t capacity, const ZspvCodec* codec,
                          const ZspvParams* params, ZspvDecoder** decoder)
{
    return zsp::voice::coderInit<DecoderObject>(memory, capacity, codec, params, decoder);
}

ZspStatus zspvDecoderCreate(const ZspvCodec* codec, const ZspvParams* params, ZspvDecoder** decoder)
{
    return zsp::voice::coderCreate<DecoderObject>(codec, params, decoder);
}

void zspvDecoderDestroy(ZspvDecoder* decoder)
{
    std::free(decoder);
}

ZspStatus zspvDecoderReset(ZspvDecoder* decoder)
{
    if (!decoder) return zspStsNullPtrErr;

    placed<DecoderObject>(decoder)->restart();
    return zspStsNoErr;
}

ZspStatus zspvDecode(ZspvDecoder* decoder, ZspvFrameKind kind, const std::uint8_t* bytes,
                     std::int32_t length, std::int16_t* samples, std::int32_t capacity,
                     std::int32_t* count)
{
    if (!decoder || !samples || !count) return zspStsNullPtrErr;
    if (!bytes && length != 0) return zspStsNullPtrErr;
    if (length < 0) return zspStsSizeErr;
    auto* object = placed<DecoderObject>(decoder);
    const Codec& codec = *object->codec;
    const auto what = static_cast<std::int32_t>(kind);
    const bool lacksBytes = zsp::voice::hasNoBytes(what);
    const zsp::voice::In8 coded(bytes, lacksBytes ? 0 : static_cast<std::size_t>(length));
    const zsp::voice::Frame frame = zsp::voice::inspectFrame(codec, what, coded);
    if (frame.status == zspStsSizeErr) return frame.status;
    if (frame.status == zspStsNoErr && capacity < frame.samples) {
        *count = frame.samples;
        return zspStsSizeErr;
    }
    if (what < zspvFrameNoData || what > zspvFrameLost) return zspStsCodecRangeErr;
    if (zsp::voice::isSid(what) && !codec.has(zspvCodecSid)) return zspStsCodecRangeErr;
    if (frame.status != zspStsNoErr) return frame.status;

    codec.decoder.decode(zsp::voice::behind(object), codec, object->settings, kind, coded,
                         {samples, static_cast<std::size_t>(frame.samples)});
    *count = frame.samples;
    if (!lacksBytes) {
        // Frames that tell their kind may also say that there is no data.
        if (frame.kind != zspvFrameNoData)
            object->inPause = zsp::voice::isSid(what) || zsp::voice::isSid(frame.kind);
        object->bitRate = frame.bitRate ? frame.bitRate : object->settings.bitRate;
    }
    return zspStsNoErr;
}

ZspStatus zspvConceal(ZspvDecoder* decoder, std::int16_t* samples, std::int32_t capacity,
                      std::int32_t* count)
{
    if (!decoder || !samples || !count) return zspStsNullPtrErr;

    // In a pause nothing is sent most of the time; after speech a frame is missing.
    const bool inPause = placed<DecoderObject>(decoder)->inPause != 0;
    return zspvDecode(decoder, inPause ? zspvFrameNoData : zspvFrameLost, nullptr, 0, samples,
                      capacity, count);
}

ZspStatus zspvDecoderSetBitRate(ZspvDecoder* decoder, std::int32_t bitRate)
{
    if (!decoder) return zspStsNullPtrErr;
    auto* object = placed<DecoderObject>(decoder);
    if (!zsp::voice::hasBitRate(object->codec->info, bitRate)) return zspStsRangeErr;

    object->settings.bitRate = bitRate;
    return zspStsNoErr;
}

ZspStatus zspvDecoderGetBitRate(const ZspvDecoder* decoder, std::int32_t* bitRate)
{
    if (!decoder || !bitRate) return zspStsNullPtrErr;

    *bitRate = placed<DecoderObject>(decoder)->bitRate;
    return zspStsNoErr;
}

const ZspvCodec* zspvDecoderGetCodec(const ZspvDecoder* decoder)
{
    return decoder ? &placed<DecoderObject>(decoder)->codec->info : nullptr;
}
