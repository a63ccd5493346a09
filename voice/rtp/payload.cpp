// RTP payloads of all codecs: arguments, capacities and counts. How frames lie in a payload is the
// business of the codec's format.

#include "voice/api/record.hpp"
#include "voice/rtp/payload_format.hpp"

#include <algorithm>
#include <limits>

namespace zsp::voice {

std::uint8_t* FrameSink::add(ZspvFrameKind kind, std::size_t length, std::int32_t samples) noexcept
{
    std::uint8_t* place = bytes_ ? bytes_ + byteCount_ : nullptr;
    const auto bytes = static_cast<std::int32_t>(length);
    if (frames_)
        frames_[frameCount_] = {
            .kind = kind,
            .offset = byteCount_,
            .length = bytes,
            .samples = samples,
            .ticks = static_cast<std::int32_t>(zspvCodecTicks(&codec_.info, samples_))};
    ++frameCount_;
    samples_ += samples;
    byteCount_ += bytes;
    hasSid_ = hasSid_ || isSid(kind);
    return place;
}

void PayloadSink::put(unsigned number, std::size_t count) noexcept
{
    const std::size_t octet = bits_ / 8, used = bits_ % 8;
    const unsigned pair = number << (16 - used - count); // of the next two octets
    bits_ += count;
    if (!octets_) return;
    const unsigned before = used ? octets_[octet] : 0U;
    octets_[octet] = static_cast<std::uint8_t>(before | pair >> 8);
    if (used + count > 8) octets_[octet + 1] = static_cast<std::uint8_t>(pair);
}

void PayloadSink::put(const std::uint8_t* from, std::size_t count) noexcept
{
    if (!octets_) {
        bits_ += count;
        return;
    }
    if (bits_ % 8 == 0) {
        std::copy_n(from, count / 8, octets_ + bits_ / 8);
        from += count / 8;
        bits_ += count / 8 * 8;
        count %= 8;
    }
    for (; count >= 8; count -= 8)
        put(*from++, 8);
    if (count > 0) put(unsigned{*from} >> (8 - count), count);
}

bool mayAsk(const PayloadFormat& format, const ZspvParams& params, std::int32_t mode) noexcept
{
    if (mode == ZSPV_NO_REQUEST) return true;
    if (mode < 0 || mode > format.highestRequest) return false;
    return params.modeSet == 0 || (params.modeSet >> mode & 1) != 0;
}

namespace {

/// The arguments that all three functions have.
struct Subject {
    ZspStatus status = zspStsNoErr;
    const Codec* codec = nullptr;
    const PayloadFormat* format = nullptr;
    ZspvParams params{};
};

Subject checked(const ZspvCodec* info, const ZspvParams* params, bool sizesAreGood) noexcept
{
    if (params && !plausible(*params)) return {zspStsSizeErr};
    if (!sizesAreGood) return {zspStsSizeErr};
    const Codec* codec = findCodec(info);
    if (!codec) return {zspStsRangeErr};
    const PayloadFormat* format = codec->payload ? codec->payload : &kPlainPayload;
    const ZspvParams own = params ? readRecord(*params) : ZspvParams{};
    if (!format->supports(own)) return {zspStsRangeErr};
    return {zspStsNoErr, codec, format, own};
}

bool plausibleLength(std::int32_t length) noexcept
{
    return length >= 0 && length <= kLongestPayload;
}

In8 octetsOf(const std::uint8_t* payload, std::int32_t length) noexcept
{
    return {payload, static_cast<std::size_t>(length)};
}

/// Samples of all frames; -1 if a frame's numbers are no sizes, or all are too many.
std::int64_t durationOf(const Codec& codec, std::span<const ZspvFrame> frames) noexcept
{
    std::int64_t sum = 0;
    for (const ZspvFrame& frame : frames) {
        if (frame.offset < 0 || frame.length < 0 || frame.samples < 0) return -1;
        const bool empty = frame.kind == zspvFrameNoData || frame.kind == zspvFrameLost;
        if (empty && frame.length > 0) return -1;
        if (codec.takesSteps() && !empty)
            sum += std::int64_t{frame.length / stepBytes(codec.info)} * codec.info.stepSamples;
        else if (codec.takesSteps() && frame.samples > 0)
            sum += frame.samples;
        else
            sum += codec.info.frameSamples;
    }
    return sum <= std::numeric_limits<std::int32_t>::max() ? sum : -1;
}

bool isSpeech(ZspvFrameKind kind) noexcept
{
    return kind == zspvFrameSpeech || kind == zspvFrameSpeechDamaged;
}

/// The payload of frames that begin and end with one that was sent; nothing for none.
ZspStatus join(const Subject& subject, const Packet& packet, PayloadSink& sink) noexcept
{
    if (packet.frames.empty()) return zspStsNoErr;
    return subject.format->join(*subject.codec, subject.params, packet, sink);
}

} // namespace
} // namespace zsp::voice

ZspStatus zspvInspect(const ZspvCodec* codec, const ZspvParams* params, const uint8_t* payload,
                      int32_t length, ZspvPayloadInfo* info)
{
    using namespace zsp::voice;
    if (!codec || !payload || !info) return zspStsNullPtrErr;
    const Subject subject = checked(codec, params, plausible(*info) && plausibleLength(length));
    if (subject.status != zspStsNoErr) return subject.status;

    FrameSink counts(*subject.codec);
    const ZspStatus status =
        subject.format->split(*subject.codec, subject.params, octetsOf(payload, length), counts);
    if (status != zspStsNoErr) return status;
    writeRecord(*info, {.structSize = 0,
                        .frames = counts.frames(),
                        .samples = counts.samples(),
                        .bytes = counts.bytes(),
                        .hasSid = counts.hasSid(),
                        .modeRequest = counts.modeRequest});
    return zspStsNoErr;
}

ZspStatus zspvUnpack(const ZspvCodec* codec, const ZspvParams* params, const uint8_t* payload,
                     int32_t length, uint8_t* bytes, int32_t byteCapacity, ZspvFrame* frames,
                     int32_t frameCapacity, int32_t* frameCount, int32_t* modeRequest)
{
    using namespace zsp::voice;
    if (!codec || !payload || !bytes || !frames || !frameCount) return zspStsNullPtrErr;
    const Subject subject = checked(codec, params, plausibleLength(length));
    if (subject.status != zspStsNoErr) return subject.status;

    const In8 octets = octetsOf(payload, length);
    FrameSink counts(*subject.codec);
    const ZspStatus status = subject.format->split(*subject.codec, subject.params, octets, counts);
    if (status != zspStsNoErr) return status;
    *frameCount = counts.frames();
    if (counts.bytes() > byteCapacity || counts.frames() > frameCapacity) return zspStsSizeErr;

    FrameSink sink(*subject.codec, bytes, frames);
    subject.format->split(*subject.codec, subject.params, octets, sink);
    if (modeRequest) *modeRequest = sink.modeRequest;
    return zspStsNoErr;
}

ZspStatus zspvPack(const ZspvCodec* codec, const ZspvParams* params, const uint8_t* bytes,
                   const ZspvFrame* frames, int32_t frameCount, ZspvFrameKind before,
                   int32_t modeRequest, uint8_t* payload, int32_t capacity, ZspvPacketInfo* info)
{
    using namespace zsp::voice;
    if (!codec || !bytes || !frames || !payload || !info) return zspStsNullPtrErr;
    const Subject subject = checked(codec, params, plausible(*info) && frameCount >= 1);
    if (subject.status != zspStsNoErr) return subject.status;
    std::span<const ZspvFrame> all(frames, static_cast<std::size_t>(frameCount));
    const std::int64_t samples = durationOf(*subject.codec, all);
    if (samples < 0) return zspStsSizeErr;
    if (!mayAsk(*subject.format, subject.params, modeRequest)) return zspStsRangeErr;

    // Nobody needs to be told of frames at the end for which nothing was sent.
    while (!all.empty() && all.back().kind == zspvFrameNoData)
        all = all.first(all.size() - 1);
    const Packet packet{bytes, all, modeRequest};
    PayloadSink counts;
    const ZspStatus status = join(subject, packet, counts);
    if (status != zspStsNoErr) return status;
    if (counts.length() > kLongestPayload) return zspStsSizeErr;
    const auto length = static_cast<std::int32_t>(counts.length());
    if (length > capacity) {
        info->length = length;
        return zspStsSizeErr;
    }

    PayloadSink sink(payload);
    join(subject, packet, sink);
    const bool silentBefore = before == zspvFrameNoData || isSid(before);
    writeRecord(*info, {.structSize = 0,
                        .length = length,
                        .samples = static_cast<std::int32_t>(samples),
                        .ticks = static_cast<std::int32_t>(zspvCodecTicks(codec, samples)),
                        .marker = silentBefore && isSpeech(frames[0].kind)});
    return zspStsNoErr;
}
