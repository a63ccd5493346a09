// PCMU and PCMA: ITU-T G.711.

#include "voice/codec/rows.hpp"

#include <array>

namespace zsp::voice {

namespace {

constexpr std::array<std::int32_t, 1> kBitRates = {64000};

constexpr Codec row(const char* name, const char* family, const char* extension, int payloadType)
{
    return {.info = {.structSize = sizeof(ZspvCodec),
                     .rtpName = name,
                     .family = family,
                     .standard = "ITU-T G.711",
                     .fileExtension = extension,
                     .defaultFmtp = "",
                     .payloadType = payloadType,
                     .sampleRate = 8000,
                     .rtpClock = 8000,
                     .channels = 1,
                     .frameSamples = 80,
                     .stepSamples = 1,
                     .maxFrameBytes = 80,
                     .lookAhead = 0,
                     .filterDelay = 0,
                     .defaultPacketMs = 20,
                     .flags = 0,
                     .bitRateCount = 1,
                     .bitRates = kBitRates.data()}};
}

} // namespace

constinit const Codec kPcmu = row("PCMU", "pcmu", "ul", 0);
constinit const Codec kPcma = row("PCMA", "pcma", "al", 8);

} // namespace zsp::voice
