// How the frames of a codec lie in an RTP payload. A codec whose frames simply follow each other
// needs nothing of this file; another one brings a PayloadFormat, and its descriptor points to it.
//
// Formats work twice on the same input: the first time sinks only count, so that everything has
// been checked before the second time writes.
#pragma once

#include "voice/codec/codec.hpp"

#include <cstddef>
#include <cstdint>
#include <span>

namespace zsp::voice {

/// The longest payload: what carries RTP counts octets in 16 bits.
inline constexpr std::int32_t kLongestPayload = 65535;

/// Takes the frames of a payload, oldest first.
class FrameSink {
  public:
    /// Counts, and writes as well if there is somewhere to write to.
    explicit FrameSink(const Codec& codec, std::uint8_t* bytes = nullptr,
                       ZspvFrame* frames = nullptr) noexcept
        : codec_(codec), bytes_(bytes), frames_(frames)
    {
    }

    /// Adds a frame. Gives the place of its bytes, null while only counting.
    std::uint8_t* add(ZspvFrameKind kind, std::size_t length, std::int32_t samples) noexcept;

    std::int32_t modeRequest = ZSPV_NO_REQUEST;

    std::int32_t frames() const noexcept { return frameCount_; }
    std::int32_t samples() const noexcept { return samples_; }
    std::int32_t bytes() const noexcept { return byteCount_; }
    bool hasSid() const noexcept { return hasSid_; }

  private:
    const Codec& codec_;
    std::uint8_t* bytes_;
    ZspvFrame* frames_;
    std::int32_t frameCount_ = 0, samples_ = 0, byteCount_ = 0;
    bool hasSid_ = false;
};

/// The frames of a packet, and the buffer that their offsets mean.
struct Packet {
    const std::uint8_t* bytes;
    std::span<const ZspvFrame> frames;
    std::int32_t modeRequest;

    In8 bytesOf(const ZspvFrame& frame) const noexcept
    {
        return {bytes + frame.offset, static_cast<std::size_t>(frame.length)};
    }
};

/// Takes the octets of a payload.
class PayloadSink {
  public:
    explicit PayloadSink(std::uint8_t* octets = nullptr) noexcept : octets_(octets) {}

    /// Appends `count` bits of `from`, its top bit first. The last octet is filled up with zeros.
    void put(const std::uint8_t* from, std::size_t count) noexcept;

    /// Appends the low `count` bits of a number, at most 8.
    void put(unsigned number, std::size_t count) noexcept;

    /// Goes on at the next octet.
    void align() noexcept { bits_ = (bits_ + 7) / 8 * 8; }

    std::size_t length() const noexcept { return (bits_ + 7) / 8; }

  private:
    std::uint8_t* octets_;
    std::size_t bits_ = 0;
};

struct PayloadFormat {
    /// Whether what the parameters ask for is built.
    bool (*supports)(const ZspvParams& params) noexcept = nullptr;
    /// The largest mode that a peer can be asked for; -1 if there are no requests.
    std::int32_t highestRequest = -1;
    /// zspStsSizeErr: not the length of whole frames; zspStsCodecRangeErr: a reserved type
    ZspStatus (*split)(const Codec& codec, const ZspvParams& params, In8 payload,
                       FrameSink& sink) noexcept = nullptr;
    /// zspStsSizeErr: not a frame's length; zspStsCodecRangeErr: not in a payload, or not together.
    /// The first and the last frame have bytes, and a frame's place is not negative.
    ZspStatus (*join)(const Codec& codec, const ZspvParams& params, const Packet& packet,
                      PayloadSink& sink) noexcept = nullptr;
};

/// Frames that follow each other.
extern const PayloadFormat kPlainPayload;

/// AMR and AMR-WB, RFC 4867, in both forms.
extern const PayloadFormat kAmrPayload, kAmrWbPayload;

/// Whether a peer may be asked for a mode, or for none.
bool mayAsk(const PayloadFormat& format, const ZspvParams& params, std::int32_t mode) noexcept;

constexpr bool isSid(ZspvFrameKind kind) noexcept
{
    return kind == zspvFrameSidFirst || kind == zspvFrameSidUpdate || kind == zspvFrameSidDamaged;
}

} // namespace zsp::voice
