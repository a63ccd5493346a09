// PCMU and PCMA: ITU-T G.711.

#include "voice/codec/rows.hpp"
#include "voice/codec/shared/concealer.hpp"
#include "zspsc/g711.h"

#include <array>

namespace zsp::voice {

namespace {

/// Has nothing to remember.
struct G711Encoder {
    static std::size_t size(const Codec& /*codec*/) noexcept { return sizeof(G711Encoder); }
    void start(const Codec& /*codec*/, const Settings& /*settings*/) noexcept {}

    Coded encode(const Codec& codec, const Settings& /*settings*/, In16 samples,
                 Out8 bytes) noexcept
    {
        zspsEncode_G711_16s8u(samples.data(), bytes.data(), countOf(samples), codec.variant);
        return {.bytes = samples.size()};
    }
};

struct G711Decoder {
    Concealer concealer;

    static std::size_t size(const Codec& /*codec*/) noexcept { return sizeof(G711Decoder); }

    void start(const Codec& codec, const Settings& /*settings*/) noexcept
    {
        concealer.start(codec.info.sampleRate);
    }

    void decode(const Codec& codec, const Settings& /*settings*/, ZspvFrameKind /*kind*/, In8 bytes,
                Out16 samples) noexcept
    {
        if (bytes.empty()) {
            concealer.gap(samples);
            return;
        }
        zspsDecode_G711_8u16s(bytes.data(), samples.data(), countOf(bytes), codec.variant);
        concealer.good(samples);
    }
};

constexpr std::array<std::int32_t, 1> kBitRates = {64000};

constexpr Codec row(const char* name, const char* family, const char* extension, int payloadType,
                    ZspG711Law law)
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
                     .bitRates = kBitRates.data()},
            .variant = law,
            .encoder = encoderFunctions<G711Encoder>(),
            .decoder = decoderFunctions<G711Decoder>()};
}

} // namespace

constinit const Codec kPcmu = row("PCMU", "pcmu", "ul", 0, zspG711LawMu);
constinit const Codec kPcma = row("PCMA", "pcma", "al", 8, zspG711LawA);

} // namespace zsp::voice
