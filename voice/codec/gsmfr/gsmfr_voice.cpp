// GSM: full-rate speech of ETSI GSM 06.10 in 13 kbit/s, frames of 33 octets, with homing frames;
// lost frames are substituted and muted after GSM 06.11.

#include "voice/codec/gsmfr/gsmfr_decoder.hpp"
#include "voice/codec/gsmfr/gsmfr_encoder.hpp"
#include "voice/codec/gsmfr/gsmfr_substitution.hpp"
#include "voice/codec/rows.hpp"

#include <algorithm>
#include <array>

namespace zsp::voice {

namespace {

using namespace gsmfr;

constexpr std::array<std::int32_t, 1> kBitRates = {13000};

/// What an encoder in its start state makes of 160 samples of 8, and what a decoder in its start
/// state answers with these. Either coder is in its start state afterwards.
constexpr std::array<std::uint8_t, kFrameBytes> kHomingFrame = {
    0xd2, 0x57, 0x7a, 0x1c, 0xda, 0x50, 0x00, 0x49, 0x24, 0x92, 0x49,
    0x24, 0x50, 0x00, 0x49, 0x24, 0x92, 0x49, 0x24, 0x50, 0x00, 0x49,
    0x24, 0x92, 0x49, 0x24, 0x50, 0x00, 0x49, 0x23, 0x92, 0x49, 0x24};
constexpr std::int16_t kHomingSample = 8;

struct EncoderState {
    Encoder<> coder;

    static std::size_t size(const Codec& /*codec*/) noexcept { return sizeof(EncoderState); }

    void start(const Codec& /*codec*/, const Settings& /*settings*/) noexcept { coder.start(); }

    Coded encode(const Codec& codec, const Settings& settings, In16 samples, Out8 bytes) noexcept
    {
        coder.encode(samples.first<kFrame>(), bytes.first<kFrameBytes>());
        if (std::all_of(samples.begin(), samples.end(), // of 13 bits
                        [](std::int16_t x) { return (x & ~7) == kHomingSample; }))
            start(codec, settings);
        return {.bytes = kFrameBytes};
    }
};

struct DecoderState {
    Decoder<> coder;
    Substitution substitution;
    bool home; ///< still in the start state

    static std::size_t size(const Codec& /*codec*/) noexcept { return sizeof(DecoderState); }

    void start(const Codec& /*codec*/, const Settings& /*settings*/) noexcept
    {
        coder.start();
        substitution.start();
        home = true;
    }

    /// A frame with bit errors is a lost one: GSM 06.11 knows no other use of it.
    void decode(const Codec& codec, const Settings& settings, ZspvFrameKind kind, In8 bytes,
                Out16 samples) noexcept
    {
        if (bytes.empty() || kind == zspvFrameSpeechDamaged) {
            home = false;
            return coder.decode(substitution.lost(), samples.first<kFrame>());
        }
        const bool homing = std::equal(bytes.begin(), bytes.end(), kHomingFrame.begin());
        if (homing && home) return std::fill(samples.begin(), samples.end(), kHomingSample);

        Parameters parameters;
        zspsUnpackFrame_GSMFR_8u16s(bytes.data(), parameters.data());
        coder.decode(parameters, samples.first<kFrame>());
        substitution.received(parameters);
        home = false;
        if (homing) start(codec, settings);
    }
};

Frame look(const Codec& /*codec*/, In8 rest) noexcept
{
    if (rest.size() < kFrameBytes) return {.status = zspStsSizeErr};
    if (rest[0] >> 4 != 0xd) return {.status = zspStsCodecRangeErr};
    return {.bytes = kFrameBytes, .samples = kFrame};
}

} // namespace

constinit const Codec kGsmFullRate = {.info = {.structSize = sizeof(ZspvCodec),
                                               .rtpName = "GSM",
                                               .family = "gsm",
                                               .standard = "ETSI GSM 06.10",
                                               .fileExtension = "gsm",
                                               .defaultFmtp = "",
                                               .payloadType = 3,
                                               .sampleRate = 8000,
                                               .rtpClock = 8000,
                                               .channels = 1,
                                               .frameSamples = kFrame,
                                               .stepSamples = kFrame,
                                               .maxFrameBytes = kFrameBytes,
                                               .lookAhead = 0,
                                               .filterDelay = 0,
                                               .defaultPacketMs = 20,
                                               .flags = zspvCodecConceals,
                                               .bitRateCount = 1,
                                               .bitRates = kBitRates.data()},
                                      .encoder = encoderFunctions<EncoderState>(),
                                      .decoder = decoderFunctions<DecoderState>(),
                                      .look = look};

} // namespace zsp::voice
