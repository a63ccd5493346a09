// G723: ITU-T G.723.1 at 6.3 and 5.3 kbit/s, with the silence compression of Annex A.

#include "voice/codec/g723/g723_state.hpp"
#include "voice/codec/rows.hpp"

#include <array>

namespace zsp::voice {

namespace {

constexpr std::array<std::int32_t, 2> kBitRates = {6300, 5300};

/// The two lowest bits of the first octet tell what a frame is. A frame that was not sent is an
/// octet in files.
Frame look(const Codec& /*codec*/, In8 rest) noexcept
{
    constexpr std::array<Frame, 4> kTypes = {{
        {.kind = zspvFrameSpeech, .bytes = 24, .samples = kG723Frame, .bitRate = 6300},
        {.kind = zspvFrameSpeech, .bytes = 20, .samples = kG723Frame, .bitRate = 5300},
        {.kind = zspvFrameSidUpdate, .bytes = 4, .samples = kG723Frame},
        {.kind = zspvFrameNoData, .bytes = 1, .samples = kG723Frame},
    }};
    Frame frame = kTypes[rest[0] & 3];
    if (rest.size() < frame.bytes) frame.status = zspStsSizeErr;
    return frame;
}

} // namespace

constinit const Codec kG723 = {
    .info = {.structSize = sizeof(ZspvCodec),
             .rtpName = "G723",
             .family = "g7231",
             .standard = "ITU-T G.723.1",
             .fileExtension = "g723",
             .defaultFmtp = "",
             .payloadType = 4,
             .sampleRate = 8000,
             .rtpClock = 8000,
             .channels = 1,
             .frameSamples = kG723Frame,
             .stepSamples = kG723Frame,
             .maxFrameBytes = 24,
             .lookAhead = 60,
             .filterDelay = 0,
             .defaultPacketMs = 30,
             .flags = zspvCodecDtx | zspvCodecSid | zspvCodecConceals | zspvCodecFrameHasKind,
             .bitRateCount = 2,
             .bitRates = kBitRates.data()},
    .encoder = encoderFunctions<G723Encoder>(),
    .decoder = decoderFunctions<G723Decoder>(),
    .look = look};

} // namespace zsp::voice
