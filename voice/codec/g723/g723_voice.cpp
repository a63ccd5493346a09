// G723: ITU-T G.723.1 at 6.3 and 5.3 kbit/s, with the silence compression of Annex A.

#include "voice/codec/g723/g723_decoder.hpp"
#include "voice/codec/g723/g723_encoder.hpp"
#include "voice/codec/rows.hpp"

#include <array>

namespace zsp::voice {

namespace {

constexpr std::array<std::int32_t, 2> kBitRates = {6300, 5300};

struct EncoderState {
    G723Encoder<> coder;

    static std::size_t size(const Codec& /*codec*/) noexcept { return sizeof(EncoderState); }

    void start(const Codec& /*codec*/, const Settings& /*settings*/) noexcept { coder.start(); }

    Coded encode(const Codec& /*codec*/, const Settings& settings, In16 samples,
                 Out8 bytes) noexcept
    {
        const G723Options options{.rate = settings.bitRate == 6300 ? zspG723Rate63 : zspG723Rate53,
                                  .hasHighPass = settings.params.noHighPass == 0,
                                  .hasDtx = settings.dtx != 0};
        const G723Coded coded =
            coder.encode(samples.first<kG723Frame>(), options, bytes.first<kG723FrameBytes>());
        if (coded.type == zspG723Untransmitted)
            return {.bytes = 0, .kind = zspvFrameNoData, .active = false};
        if (coded.type == zspG723Sid)
            return {.bytes = coded.bytes,
                    .kind = coded.isFirstOfPause ? zspvFrameSidFirst : zspvFrameSidUpdate,
                    .active = false};
        return {.bytes = coded.bytes};
    }
};

struct DecoderState {
    G723Decoder<> coder;

    static std::size_t size(const Codec& /*codec*/) noexcept { return sizeof(DecoderState); }

    void start(const Codec& /*codec*/, const Settings& /*settings*/) noexcept { coder.start(); }

    void decode(const Codec& /*codec*/, const Settings& settings, ZspvFrameKind kind, In8 bytes,
                Out16 samples) noexcept
    {
        const bool isLost =
            kind == zspvFrameLost || kind == zspvFrameSpeechDamaged || kind == zspvFrameSidDamaged;
        coder.decode(bytes, isLost, settings.params.noPostFilter == 0, samples.first<kG723Frame>());
    }
};

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
    .encoder = encoderFunctions<EncoderState>(),
    .decoder = decoderFunctions<DecoderState>(),
    .look = look};

} // namespace zsp::voice
