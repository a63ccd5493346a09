// The table of codecs and what is found out from its rows alone.

#include "voice/api/names.hpp"
#include "voice/api/record.hpp"
#include "voice/codec/rows.hpp"

#include <algorithm>
#include <array>

namespace zsp::voice {

namespace {

// Not a deduced std::array, which the compiler would leave in writable memory.
constexpr auto kCodecs = std::to_array<const Codec*>({
#define ZSPV_CODEC(name) &name,
#include "voice/codec/codecs.inc"
});

} // namespace

const Codec* findCodec(const ZspvCodec* info) noexcept
{
    const auto found = std::find_if(kCodecs.begin(), kCodecs.end(),
                                    [info](const Codec* codec) { return &codec->info == info; });
    return found == kCodecs.end() ? nullptr : *found;
}

Frame lookAtFrame(const Codec& codec, In8 rest) noexcept
{
    if (codec.look) return codec.look(codec, rest);

    const auto step = static_cast<std::size_t>(stepBytes(codec.info));
    return wholeSteps(codec, std::min(rest.size() / step * step,
                                      static_cast<std::size_t>(codec.info.maxFrameBytes)));
}

Frame wholeSteps(const Codec& codec, std::size_t bytes) noexcept
{
    const auto step = static_cast<std::size_t>(stepBytes(codec.info));
    const std::size_t samples = bytes / step * static_cast<std::size_t>(codec.info.stepSamples);
    if (bytes == 0 || bytes % step != 0 || samples > INT32_MAX) return {.status = zspStsSizeErr};
    return {.bytes = bytes, .samples = static_cast<std::int32_t>(samples)};
}

bool hasBitRate(const ZspvCodec& info, std::int32_t bitRate) noexcept
{
    const std::int32_t* end = info.bitRates + info.bitRateCount;
    return std::find(info.bitRates, end, bitRate) != end;
}

ZspStatus makeSettings(const Codec& codec, const ZspvParams* params, Settings& settings) noexcept
{
    ZspvParams own = params ? readRecord(*params) : ZspvParams{};
    own.structSize = sizeof own;
    if (own.bitRate == 0) own.bitRate = codec.info.bitRates[0];
    if (!hasBitRate(codec.info, own.bitRate)) return zspStsRangeErr;
    if (own.dtx && !codec.has(zspvCodecDtx)) return zspStsRangeErr;

    // A peer that takes no silence frames must not get any.
    own.dtx = own.dtx && !own.noSilenceFrames;
    settings = {.params = own, .bitRate = own.bitRate, .dtx = own.dtx};
    return zspStsNoErr;
}

} // namespace zsp::voice

using zsp::voice::kCodecs;

std::int32_t zspvCodecCount(void)
{
    return static_cast<std::int32_t>(kCodecs.size());
}

const ZspvCodec* zspvCodecByIndex(std::int32_t index)
{
    if (index < 0 || index >= zspvCodecCount()) return nullptr;
    return &kCodecs[static_cast<std::size_t>(index)]->info;
}

const ZspvCodec* zspvCodecByName(const char* rtpName, std::int32_t rtpClock)
{
    if (!rtpName) return nullptr;
    for (const auto* codec : kCodecs)
        if (zsp::voice::sameName(codec->info.rtpName, rtpName) &&
            (rtpClock == 0 || codec->info.rtpClock == rtpClock))
            return &codec->info;
    return nullptr;
}

const ZspvCodec* zspvCodecByPayloadType(std::int32_t payloadType)
{
    if (payloadType < 0) return nullptr; // what rows without a static type have
    for (const auto* codec : kCodecs)
        if (codec->info.payloadType == payloadType) return &codec->info;
    return nullptr;
}

std::int64_t zspvCodecTicks(const ZspvCodec* codec, std::int64_t samples)
{
    if (!codec || samples < 0) return -1;
    // Split, so that no count of samples overflows on its way: the clock is never the faster one
    // by more than what a second of samples takes.
    const std::int64_t seconds = samples / codec->sampleRate;
    const std::int64_t rest = samples % codec->sampleRate;
    return seconds * codec->rtpClock + rest * codec->rtpClock / codec->sampleRate;
}
