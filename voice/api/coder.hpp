// What encoder and decoder objects have in common: the checks of their settings, their size, their
// place and their start. An object type has a codec, settings, and
//     static const auto& functions(const Codec&)   the codec's functions on the state behind it
//     void restart()
#pragma once

#include "voice/api/object.hpp"
#include "voice/api/record.hpp"
#include "voice/codec/codec.hpp"

namespace zsp::voice {

template <typename Object>
std::int32_t coderBytes(const Codec& codec) noexcept
{
    return placedSize(padded(sizeof(Object)) + Object::functions(codec).size(codec));
}

/// zspvEncoderGetSize() and zspvDecoderGetSize().
template <typename Object>
ZspStatus coderSize(const ZspvCodec* row, const ZspvParams* params, std::int32_t* size) noexcept
{
    if (!row || !size) return zspStsNullPtrErr;
    if (params && !plausible(*params)) return zspStsSizeErr;
    const Codec* codec = findCodec(row);
    if (!codec) return zspStsBadArgErr;
    Settings settings;
    const ZspStatus status = makeSettings(*codec, params, settings);
    if (status != zspStsNoErr) return status;

    *size = coderBytes<Object>(*codec);
    return zspStsNoErr;
}

/// zspvEncoderInit() and zspvDecoderInit().
template <typename Object, typename Handle>
ZspStatus coderInit(void* memory, std::int32_t capacity, const ZspvCodec* row,
                    const ZspvParams* params, Handle** handle) noexcept
{
    if (!memory || !row || !handle) return zspStsNullPtrErr;
    if (params && !plausible(*params)) return zspStsSizeErr;
    const Codec* codec = findCodec(row);
    if (!codec) return capacity < 1 ? zspStsSizeErr : zspStsBadArgErr;
    if (capacity < coderBytes<Object>(*codec)) return zspStsSizeErr;
    Settings settings;
    const ZspStatus status = makeSettings(*codec, params, settings);
    if (status != zspStsNoErr) return status;

    auto* object = placed<Object>(memory);
    *object = Object{};
    object->codec = codec;
    object->settings = settings;
    object->restart();
    *handle = static_cast<Handle*>(memory);
    return zspStsNoErr;
}

/// zspvEncoderCreate() and zspvDecoderCreate().
template <typename Object, typename Handle>
ZspStatus coderCreate(const ZspvCodec* row, const ZspvParams* params, Handle** handle) noexcept
{
    if (!row || !handle) return zspStsNullPtrErr;
    std::int32_t size = 0;
    const ZspStatus status = coderSize<Object>(row, params, &size);
    if (status != zspStsNoErr) return status;

    const auto init = [row, params](void* memory, std::int32_t capacity, Handle** made) {
        return coderInit<Object>(memory, capacity, row, params, made);
    };
    return createObject(size, init, handle);
}

} // namespace zsp::voice
