// RTP payloads of any content for every codec: what a payload is found to hold is what taking it
// apart gives, and the frames put together again give the same frames.

#include "tests/fuzz/targets/target.hpp"
#include "zspvoice.h"

#include <cstring>

using namespace zsp::fuzz;

namespace {

using Bytes = Exact<std::uint8_t>;
using Frames = Exact<ZspvFrame>;

struct Format {
    const ZspvCodec* codec;
    ZspvParams params;
};

bool isSame(const ZspvFrame& a, const ZspvFrame& b)
{
    return a.kind == b.kind && a.offset == b.offset && a.length == b.length &&
           a.samples == b.samples && a.ticks == b.ticks;
}

std::size_t size(std::int32_t n)
{
    return static_cast<std::size_t>(n);
}

/// Takes a payload apart, into exactly the room that it needs.
struct Unpacked {
    Unpacked(const Format& format, const ZspvPayloadInfo& info, Bytes& payload)
        : bytes(size(info.bytes)), frames(size(info.frames))
    {
        std::int32_t count = -1, fewer = -1;
        const auto unpack = [&](std::int32_t byteRoom, std::int32_t frameRoom,
                                std::int32_t& found) {
            return zspvUnpack(format.codec, &format.params, payload.data(), payload.count(),
                              bytes.data(), byteRoom, frames.data(), frameRoom, &found, &request);
        };
        must(!unpack(bytes.count(), frames.count(), count) && count == info.frames,
             "what was inspected can be unpacked");
        must(request == info.modeRequest, "both find the same request");
        if (count > 0)
            must(unpack(bytes.count(), frames.count() - 1, fewer) == zspStsSizeErr &&
                     fewer == count,
                 "a capacity that is short is told");
        std::int32_t samples = 0, end = 0;
        for (const ZspvFrame& frame : frames.all()) {
            must(frame.offset == end && frame.length >= 0 && frame.samples >= 0,
                 "frames follow each other");
            must(frame.ticks == zspvCodecTicks(format.codec, samples), "and so does their time");
            end += frame.length;
            samples += frame.samples;
        }
        bytes.seen();
        must(end == info.bytes && samples == info.samples, "and fill what was inspected");
    }

    Bytes bytes;
    Frames frames;
    std::int32_t request = -1;
};

ZspStatus inspect(const Format& format, Bytes& payload, ZspvPayloadInfo& info)
{
    info = {};
    info.structSize = sizeof info;
    return zspvInspect(format.codec, &format.params, payload.data(), payload.count(), &info);
}

/// Puts frames together, into exactly the room that it takes; empty where they cannot be.
Bytes pack(const Format& format, Bytes& bytes, Frames& frames, std::int32_t request)
{
    ZspvPacketInfo info{};
    info.structSize = sizeof info;
    const auto into = [&](Bytes& payload) {
        return zspvPack(format.codec, &format.params, bytes.data(), frames.data(), frames.count(),
                        zspvFrameNoData, request, payload.data(), payload.count(), &info);
    };
    Bytes none(0);
    info.length = -1;
    if (into(none) != zspStsSizeErr || info.length <= 0) return none;
    const std::int32_t length = info.length;
    Bytes payload(size(length));
    must(!into(payload) && info.length == length, "frames fit into the room that is asked for");
    payload.seen();
    return payload;
}

void unpackAndPack(const Format& format, Bytes& payload)
{
    ZspvPayloadInfo info;
    const ZspStatus status = inspect(format, payload, info);
    if (status != zspStsNoErr) {
        std::int32_t count = -1;
        std::uint8_t byte = 0;
        ZspvFrame frame{};
        must(zspvUnpack(format.codec, &format.params, payload.data(), payload.count(), &byte, 0,
                        &frame, 0, &count, nullptr) == status &&
                 count == -1,
             "what fails inspection fails alike when taken apart");
        return;
    }
    Unpacked first(format, info, payload);
    if (first.frames.count() == 0) return;
    Bytes again = pack(format, first.bytes, first.frames, first.request);
    if (again.count() == 0) return;
    ZspvPayloadInfo infoAgain;
    must(!inspect(format, again, infoAgain), "what was put together can be inspected");
    Unpacked second(format, infoAgain, again);
    for (std::size_t i = 0; i < second.frames.all().size();
         ++i) // frames at the end may be left out
        must(isSame(first.frames.all()[i], second.frames.all()[i]), "and holds the same frames");
    must(std::memcmp(first.bytes.data(), second.bytes.data(), second.bytes.all().size()) == 0,
         "with the same bytes");
}

/// Frames as a careless caller may have them, inside of their buffer.
void packAnything(const Format& format, Choices& choices)
{
    Bytes bytes = take(choices, 400);
    Frames frames(1 + size(choices.below(6)));
    for (ZspvFrame& frame : frames.all()) {
        frame.kind = static_cast<ZspvFrameKind>(choices.below(8));
        frame.offset = choices.below(bytes.count() + 1);
        frame.length = choices.below(2) ? bytes.count() - frame.offset
                                        : choices.below(bytes.count() - frame.offset + 1);
        frame.samples = choices.below(2) ? 0 : static_cast<std::int32_t>(choices.bits<unsigned>());
    }
    Bytes payload = pack(format, bytes, frames, choices.below(18) - 1);
    if (payload.count() > 0) unpackAndPack(format, payload);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t bytes)
{
    Choices choices(std::span(data, bytes));
    Format format{zspvCodecByIndex(choices.below(zspvCodecCount())), {}};
    format.params.structSize = sizeof format.params;
    const auto switches = choices.bits<std::uint8_t>();
    format.params.octetAlign = switches & 1;
    format.params.noSilenceFrames = switches >> 1 & 1;
    format.params.crc = (switches & 0x1c) == 0x1c; // not built
    format.params.modeSet = switches & 0x20 ? choices.bits<std::uint16_t>() : 0;
    if (switches & 0x40) return packAnything(format, choices), 0;
    Bytes payload = take(choices, 66000);
    unpackAndPack(format, payload);
    return 0;
}
