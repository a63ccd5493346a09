// Payloads of AMR and AMR-WB, RFC 4867, clause 4: a mode request, a table of contents with an entry
// per frame, then the frames' bits. Octet-aligned, every part fills whole octets; in the
// bandwidth-efficient form only the whole does.
//
// A frame outside of a payload has the form of the files, clause 5.3: an octet FT << 3 | Q << 2,
// then its bits from the top of the next octet on.

#include "voice/rtp/payload_format.hpp"

#include <array>

namespace zsp::voice {
namespace {

/// What the two codecs differ in. Bits of a frame by its type FT; a silence descriptor is the type
/// behind the last mode, and -1 is reserved. TS 26.101 and TS 26.201, table 1a.
struct Types {
    std::array<std::int16_t, 16> bits;
    int sid;
};

constexpr unsigned kLost = 14, kNoData = 15;

constexpr Types kAmrTypes = {{95, 103, 118, 134, 148, 159, 204, 244, 39, -1, -1, -1, -1, -1, -1, 0},
                             8};
constexpr Types kAmrWbTypes = {
    {132, 177, 253, 285, 317, 365, 397, 461, 477, 40, -1, -1, -1, -1, 0, 0}, 9};

/// Takes bits off the front of a payload, the top bit of each octet first.
class BitSource {
  public:
    explicit BitSource(In8 octets) noexcept : octets_(octets) {}

    std::size_t left() const noexcept { return octets_.size() * 8 - at_; }

    /// The next bits as a number, at most 8; they must be there.
    unsigned take(std::size_t count) noexcept
    {
        const std::size_t octet = at_ / 8;
        unsigned pair = unsigned{octets_[octet]} << 8;
        if (octet + 1 < octets_.size()) pair |= octets_[octet + 1];
        const unsigned bits = pair >> (16 - at_ % 8 - count) & ((1U << count) - 1);
        at_ += count;
        return bits;
    }

    /// The next bits into octets, from the top of the first one on.
    void take(std::uint8_t* to, std::size_t count) noexcept
    {
        for (; count > 8; count -= 8)
            *to++ = static_cast<std::uint8_t>(take(8));
        if (count > 0) *to = static_cast<std::uint8_t>(take(count) << (8 - count));
    }

    void skip(std::size_t count) noexcept { at_ += count; }
    void align() noexcept { at_ = (at_ + 7) / 8 * 8; }

  private:
    In8 octets_;
    std::size_t at_ = 0;
};

/// An entry of the table of contents.
struct Entry {
    bool more;
    unsigned type;
    bool good;
};

/// The table's entries are read twice: to see what there must be, and along with the frames.
struct TableReader {
    BitSource bits;
    bool aligned;

    std::size_t entryBits() const noexcept { return aligned ? 8 : 6; }
    Entry next() noexcept
    {
        const unsigned entry = bits.take(entryBits()) >> (aligned ? 2 : 0);
        return {(entry & 0x20) != 0, entry >> 1 & 15, (entry & 1) != 0};
    }
};

/// `bits` are those of the frame: in a silence descriptor, bit 35 tells an update.
ZspvFrameKind kindOf(const Types& types, const Entry& entry, BitSource bits) noexcept
{
    if (entry.type == kNoData) return zspvFrameNoData;
    if (entry.type == kLost) return zspvFrameLost;
    if (static_cast<int>(entry.type) != types.sid)
        return entry.good ? zspvFrameSpeech : zspvFrameSpeechDamaged;
    if (!entry.good) return zspvFrameSidDamaged;
    bits.skip(35);
    return bits.take(1) != 0 ? zspvFrameSidUpdate : zspvFrameSidFirst;
}

bool supports(const ZspvParams& params) noexcept
{
    return !params.crc && !params.robustSorting && !params.interleaving && params.channels <= 1;
}

constexpr std::size_t storedBytes(std::size_t bits) noexcept
{
    return bits == 0 ? 0 : 1 + (bits + 7) / 8;
}

ZspStatus splitAmr(const Types& types, const Codec& codec, bool aligned, In8 payload,
                   FrameSink& sink) noexcept
{
    if (payload.empty()) return zspStsNoErr;
    TableReader table{BitSource(payload), aligned};
    const auto request = static_cast<std::int32_t>(table.bits.take(4));
    if (aligned) table.bits.align();
    if (request < types.sid) sink.modeRequest = request;

    // The whole table first: behind it the frames begin, and their bits must all be there.
    TableReader again = table;
    std::size_t frameBits = 0;
    for (bool more = true; more;) {
        if (table.bits.left() < table.entryBits()) return zspStsSizeErr;
        const Entry entry = table.next();
        const int bits = types.bits[entry.type];
        if (bits < 0) return zspStsCodecRangeErr;
        frameBits += static_cast<std::size_t>(aligned ? (bits + 7) / 8 * 8 : bits);
        more = entry.more;
    }
    BitSource source = table.bits;
    if (source.left() < frameBits || source.left() - frameBits > 7) return zspStsSizeErr;

    for (bool more = true; more;) {
        const Entry entry = again.next();
        const auto bits = static_cast<std::size_t>(types.bits[entry.type]);
        std::uint8_t* to =
            sink.add(kindOf(types, entry, source), storedBytes(bits), codec.info.frameSamples);
        if (to && bits > 0) {
            to[0] = static_cast<std::uint8_t>(entry.type << 3 | unsigned{entry.good} << 2);
            source.take(to + 1, bits);
        } else {
            source.skip(bits);
        }
        if (aligned) source.align();
        more = entry.more;
    }
    return zspStsNoErr;
}

/// What stands in the table for a frame; zspStsSizeErr or zspStsCodecRangeErr if nothing can.
ZspStatus entryOf(const Types& types, const ZspvParams& params, const ZspvFrame& frame, In8 bytes,
                  Entry& entry) noexcept
{
    entry.good = frame.kind != zspvFrameSpeechDamaged && frame.kind != zspvFrameSidDamaged &&
                 frame.kind != zspvFrameLost;
    if (frame.kind == zspvFrameNoData || frame.kind == zspvFrameLost) {
        const bool known = frame.kind == zspvFrameLost && types.bits[kLost] == 0;
        entry.type = known ? kLost : kNoData;
        return bytes.empty() ? zspStsNoErr : zspStsSizeErr;
    }
    if (frame.kind < zspvFrameSpeech || frame.kind > zspvFrameLost) return zspStsCodecRangeErr;
    if (bytes.empty()) return zspStsSizeErr;
    entry.type = bytes[0] >> 3 & 15;
    const int bits = types.bits[entry.type];
    if (bits <= 0) return zspStsCodecRangeErr;
    if (bytes.size() != storedBytes(static_cast<std::size_t>(bits))) return zspStsSizeErr;

    const int type = static_cast<int>(entry.type);
    if ((type == types.sid) != isSid(frame.kind)) return zspStsCodecRangeErr;
    const bool agreed = type == types.sid || params.modeSet == 0 || (params.modeSet >> type & 1);
    return agreed ? zspStsNoErr : zspStsCodecRangeErr;
}

ZspStatus joinAmr(const Types& types, const ZspvParams& params, bool aligned, const Packet& packet,
                  PayloadSink& sink) noexcept
{
    sink.put(static_cast<unsigned>(packet.modeRequest), 4);
    if (aligned) sink.align();
    for (const ZspvFrame& frame : packet.frames) {
        Entry entry{};
        const ZspStatus status = entryOf(types, params, frame, packet.bytesOf(frame), entry);
        if (status != zspStsNoErr) return status;
        entry.more = &frame != &packet.frames.back();
        sink.put(unsigned{entry.more} << 5 | entry.type << 1 | unsigned{entry.good}, 6);
        if (aligned) sink.align();
    }
    for (const ZspvFrame& frame : packet.frames) {
        if (frame.length == 0) continue;
        const In8 bytes = packet.bytesOf(frame);
        const unsigned type = bytes[0] >> 3 & 15;
        sink.put(bytes.data() + 1, static_cast<std::size_t>(types.bits[type]));
        if (aligned) sink.align();
    }
    return zspStsNoErr;
}

template <const Types& types>
constexpr PayloadFormat format() noexcept
{
    return {.supports = supports,
            .highestRequest = types.sid - 1,
            .split =
                [](const Codec& codec, const ZspvParams& params, In8 payload,
                   FrameSink& sink) noexcept {
                    return splitAmr(types, codec, params.octetAlign != 0, payload, sink);
                },
            .join =
                [](const Codec&, const ZspvParams& params, const Packet& packet,
                   PayloadSink& sink) noexcept {
                    return joinAmr(types, params, params.octetAlign != 0, packet, sink);
                }};
}

} // namespace

const PayloadFormat kAmrPayload = format<kAmrTypes>();
const PayloadFormat kAmrWbPayload = format<kAmrWbTypes>();

} // namespace zsp::voice
