// G726-16 to G726-40: ITU-T G.726, and AAL2-G726-16 to -40, the same with the code words packed
// from the other end of the octets.

#include "voice/codec/rows.hpp"

#include <array>

namespace zsp::voice {

namespace {

/// What tells the rows apart, by their `variant`.
struct Variant {
    std::int32_t bitRate;
    std::int32_t stepSamples; // code words that fill whole octets
    std::int32_t bits;        // of a code word
    bool highFirst;           // the first code word in the high bits, ITU-T I.366.2 Annex E
    const char* rtpName;
};

constexpr std::array<Variant, 8> kVariants = {{
    {16000, 4, 2, false, "G726-16"},
    {24000, 8, 3, false, "G726-24"},
    {32000, 2, 4, false, "G726-32"},
    {40000, 8, 5, false, "G726-40"},
    {16000, 4, 2, true, "AAL2-G726-16"},
    {24000, 8, 3, true, "AAL2-G726-24"},
    {32000, 2, 4, true, "AAL2-G726-32"},
    {40000, 8, 5, true, "AAL2-G726-40"},
}};

constexpr Codec row(std::size_t index)
{
    const Variant& v = kVariants[index];
    const char* family = v.highFirst ? "g726aal2" : "g726";
    return {.info = {.structSize = sizeof(ZspvCodec),
                     .rtpName = v.rtpName,
                     .family = family,
                     .standard = "ITU-T G.726",
                     .fileExtension = family,
                     .defaultFmtp = "",
                     .payloadType = -1,
                     .sampleRate = 8000,
                     .rtpClock = 8000,
                     .channels = 1,
                     .frameSamples = 80,
                     .stepSamples = v.stepSamples,
                     .maxFrameBytes = 80 * v.bits / 8,
                     .lookAhead = 0,
                     .filterDelay = 0,
                     .defaultPacketMs = 20,
                     .flags = 0,
                     .bitRateCount = 1,
                     .bitRates = &v.bitRate},
            .variant = static_cast<std::int32_t>(index)};
}

} // namespace

constinit const Codec kG726Rate16 = row(0);
constinit const Codec kG726Rate24 = row(1);
constinit const Codec kG726Rate32 = row(2);
constinit const Codec kG726Rate40 = row(3);
constinit const Codec kG726Aal2Rate16 = row(4);
constinit const Codec kG726Aal2Rate24 = row(5);
constinit const Codec kG726Aal2Rate32 = row(6);
constinit const Codec kG726Aal2Rate40 = row(7);

} // namespace zsp::voice
