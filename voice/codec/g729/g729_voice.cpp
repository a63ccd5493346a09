// G729: ITU-T G.729 at 8 kbit/s, main body or Annex A, with the silence compression of Annex B.

#include "voice/codec/g729/g729_decoder.hpp"
#include "voice/codec/g729/g729_encoder.hpp"
#include "voice/codec/rows.hpp"

#include <array>

namespace zsp::voice {

namespace {

constexpr std::array<std::int32_t, 1> kBitRates = {8000};

struct EncoderState {
    G729Encoder<> coder;

    static std::size_t size(const Codec& /*codec*/) noexcept { return sizeof(EncoderState); }

    void start(const Codec& /*codec*/, const Settings& settings) noexcept
    {
        coder.start(settings.params.annexA != 0);
    }

    Coded encode(const Codec& /*codec*/, const Settings& settings, In16 samples,
                 Out8 bytes) noexcept
    {
        const G729Coded coded =
            coder.encode(samples.first<kG729Frame>(), settings.dtx != 0, bytes.first<kG729Bytes>());
        ZspvFrameKind kind = zspvFrameSpeech;
        if (!coded.isActive)
            kind = coded.bytes == 0       ? zspvFrameNoData
                   : coded.isFirstOfPause ? zspvFrameSidFirst
                                          : zspvFrameSidUpdate;
        return {.bytes = coded.bytes, .kind = kind, .active = coded.isActive};
    }
};

struct DecoderState {
    G729Decoder<> coder;

    static std::size_t size(const Codec& /*codec*/) noexcept { return sizeof(DecoderState); }

    void start(const Codec& /*codec*/, const Settings& settings) noexcept
    {
        coder.start(settings.params.annexA != 0);
    }

    /// A frame with bit errors is a lost one: the Recommendation knows no other use of it.
    void decode(const Codec& /*codec*/, const Settings& settings, ZspvFrameKind kind, In8 bytes,
                Out16 samples) noexcept
    {
        const bool lost =
            kind == zspvFrameLost || kind == zspvFrameSpeechDamaged || kind == zspvFrameSidDamaged;
        const G729Arrival arrival = lost            ? G729Arrival::lost
                                    : bytes.empty() ? G729Arrival::untransmitted
                                                    : G729Arrival::received;
        coder.decode(arrival, bytes, settings.params.noPostFilter == 0,
                     samples.first<kG729Frame>());
    }
};

/// Two octets behind the last frame of ten are a silence descriptor.
Frame look(const Codec& /*codec*/, In8 rest) noexcept
{
    if (rest.size() >= kG729Bytes) return {.bytes = kG729Bytes, .samples = kG729Frame};
    if (rest.size() != kG729SidBytes) return {.status = zspStsSizeErr};
    return {.kind = zspvFrameSidUpdate, .bytes = kG729SidBytes, .samples = kG729Frame};
}

} // namespace

constinit const Codec kG729 = {.info = {.structSize = sizeof(ZspvCodec),
                                        .rtpName = "G729",
                                        .family = "g729",
                                        .standard = "ITU-T G.729",
                                        .fileExtension = "g729",
                                        .defaultFmtp = "",
                                        .payloadType = 18,
                                        .sampleRate = 8000,
                                        .rtpClock = 8000,
                                        .channels = 1,
                                        .frameSamples = kG729Frame,
                                        .stepSamples = kG729Frame,
                                        .maxFrameBytes = kG729Bytes,
                                        .lookAhead = 40,
                                        .filterDelay = 0,
                                        .defaultPacketMs = 20,
                                        .flags = zspvCodecDtx | zspvCodecSid | zspvCodecConceals,
                                        .bitRateCount = 1,
                                        .bitRates = kBitRates.data()},
                               .encoder = encoderFunctions<EncoderState>(),
                               .decoder = decoderFunctions<DecoderState>(),
                               .look = look};

} // namespace zsp::voice
