// Payloads in which frames simply follow each other: codecs without frames, whose blocks are cut
// into nominal frames, and those whose frames tell their length, or are told by what is left
// (G.729: frames of ten octets, then at most one silence descriptor of two).

#include "voice/rtp/payload_format.hpp"

#include <algorithm>

namespace zsp::voice {
namespace {

bool supportsAll(const ZspvParams&) noexcept
{
    return true;
}

ZspStatus split(const Codec& codec, const ZspvParams&, In8 payload, FrameSink& sink) noexcept
{
    while (!payload.empty()) {
        const Frame frame = lookAtFrame(codec, payload);
        if (frame.status != zspStsNoErr) return frame.status;
        if (frame.kind == zspvFrameNoData) return zspStsCodecRangeErr; // G.723.1: in files alone
        std::uint8_t* to = sink.add(frame.kind, frame.bytes, frame.samples);
        if (to) std::copy_n(payload.data(), frame.bytes, to);
        payload = payload.subspan(frame.bytes);
    }
    return zspStsNoErr;
}

/// Whether some bytes are a frame of the given kind, alone.
ZspStatus checkFrame(const Codec& codec, In8 bytes, ZspvFrameKind kind) noexcept
{
    if (bytes.empty()) return zspStsSizeErr;
    const Frame frame = lookAtFrame(codec, bytes);
    if (frame.status != zspStsNoErr) return frame.status;
    if (frame.bytes != bytes.size()) return zspStsSizeErr;
    return isSid(frame.kind) == isSid(kind) ? zspStsNoErr : zspStsCodecRangeErr;
}

ZspStatus join(const Codec& codec, const ZspvParams&, const Packet& packet,
               PayloadSink& sink) noexcept
{
    bool closed = false; // by a frame that only its being the last one tells
    for (const ZspvFrame& frame : packet.frames) {
        const bool sid = frame.kind == zspvFrameSidFirst || frame.kind == zspvFrameSidUpdate;
        if (frame.kind != zspvFrameSpeech && !(sid && codec.has(zspvCodecSid)))
            return zspStsCodecRangeErr;
        if (closed) return zspStsCodecRangeErr;

        const In8 bytes = packet.bytesOf(frame);
        if (codec.takesSteps()) {
            const auto step = static_cast<std::size_t>(stepBytes(codec.info));
            if (bytes.empty() || bytes.size() % step != 0) return zspStsSizeErr;
        } else if (const ZspStatus s = checkFrame(codec, bytes, frame.kind); s != zspStsNoErr) {
            return s;
        }
        sink.put(bytes.data(), bytes.size() * 8);
        closed = sid && !codec.has(zspvCodecFrameHasKind);
    }
    return zspStsNoErr;
}

} // namespace

const PayloadFormat kPlainPayload = {.supports = supportsAll, .split = split, .join = join};

} // namespace zsp::voice
