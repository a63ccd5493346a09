// G722: ITU-T G.722, 7 kHz speech in 64, 56 or 48 kbit/s.

#include "voice/codec/rows.hpp"

#include <array>

namespace zsp::voice {

namespace {

constexpr std::array<std::int32_t, 3> kBitRates = {64000, 56000, 48000};

} // namespace

constinit const Codec kG722 = {
    .info = {.structSize = sizeof(ZspvCodec),
             .rtpName = "G722",
             .family = "g722",
             .standard = "ITU-T G.722",
             .fileExtension = "g722",
             .defaultFmtp = "",
             .payloadType = 9,
             .sampleRate = 16000,
             .rtpClock = 8000, // by a mistake of the first payload format, kept since: RFC 3551
             .channels = 1,
             .frameSamples = 160,
             .stepSamples = 2,
             .maxFrameBytes = 80, // at every bit rate: lower ones leave bits unused
             .lookAhead = 0,
             .filterDelay = 22,
             .defaultPacketMs = 20,
             .flags = 0,
             .bitRateCount = 3,
             .bitRates = kBitRates.data()}};

} // namespace zsp::voice
