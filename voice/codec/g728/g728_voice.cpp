// G728: ITU-T G.728, 16 kbit/s with 0.625 ms of delay, in the fixed-point form of Annex G.

#include "voice/codec/g728/g728_decoder.hpp"
#include "voice/codec/g728/g728_encoder.hpp"
#include "voice/codec/rows.hpp"

namespace zsp::voice {

namespace {

constexpr std::array<std::int32_t, 1> kBitRates = {16000};

struct EncoderState {
    G728Encoder<> coder;

    static std::size_t size(const Codec& /*codec*/) noexcept { return sizeof(EncoderState); }

    void start(const Codec& /*codec*/, const Settings& /*settings*/) noexcept { coder.start(); }

    Coded encode(const Codec& /*codec*/, const Settings& /*settings*/, In16 samples,
                 Out8 bytes) noexcept
    {
        coder.encode(samples.first<kG728Frame>(), bytes.first<kG728FrameBytes>());
        return {.bytes = kG728FrameBytes};
    }
};

struct DecoderState {
    G728Decoder<> coder;

    static std::size_t size(const Codec& /*codec*/) noexcept { return sizeof(DecoderState); }

    void start(const Codec& /*codec*/, const Settings& /*settings*/) noexcept { coder.start(); }

    void decode(const Codec& /*codec*/, const Settings& settings, ZspvFrameKind /*kind*/, In8 bytes,
                Out16 samples) noexcept
    {
        coder.decode(bytes, settings.params.noPostFilter == 0, samples.first<kG728Frame>());
    }
};

} // namespace

constinit const Codec kG728 = {.info = {.structSize = sizeof(ZspvCodec),
                                        .rtpName = "G728",
                                        .family = "g728",
                                        .standard = "ITU-T G.728",
                                        .fileExtension = "g728",
                                        .defaultFmtp = "",
                                        .payloadType = 15,
                                        .sampleRate = 8000,
                                        .rtpClock = 8000,
                                        .channels = 1,
                                        .frameSamples = kG728Frame,
                                        .stepSamples = kG728Frame,
                                        .maxFrameBytes = kG728FrameBytes,
                                        .lookAhead = 0,
                                        .filterDelay = 0,
                                        .defaultPacketMs = 20,
                                        .flags = zspvCodecConceals,
                                        .bitRateCount = 1,
                                        .bitRates = kBitRates.data()},
                               .encoder = encoderFunctions<EncoderState>(),
                               .decoder = decoderFunctions<DecoderState>()};

} // namespace zsp::voice
