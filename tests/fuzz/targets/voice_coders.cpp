// Decoders of the voice layer get bytes of any content and length as frames of any kind, and now
// and then what an encoder made, with errors in it.

#include "tests/fuzz/targets/target.hpp"
#include "zspvoice.h"

using namespace zsp::fuzz;

namespace {

ZspvParams anyParams(Choices& choices, const ZspvCodec& codec)
{
    ZspvParams params{};
    params.structSize = sizeof params;
    params.bitRate = codec.bitRates[choices.below(codec.bitRateCount)];
    params.dtx = (codec.flags & zspvCodecDtx) != 0 && choices.below(2);
    params.noSilenceFrames = choices.oneIn(8);
    return params;
}

class Call {
  public:
    Call(Choices& choices, const ZspvCodec& codec)
        : choices_(choices), codec_(codec), params_(anyParams(choices, codec)),
          encoderMemory_(sizeOf(zspvEncoderGetSize)), decoderMemory_(sizeOf(zspvDecoderGetSize))
    {
        must(!zspvEncoderInit(encoderMemory_.data(), encoderMemory_.count(), &codec, &params_,
                              &encoder_),
             "an encoder is built in the size it reports");
        must(!zspvDecoderInit(decoderMemory_.data(), decoderMemory_.count(), &codec, &params_,
                              &decoder_),
             "a decoder is built in the size it reports");
    }

    void step()
    {
        const int rate = codec_.bitRates[choices_.below(codec_.bitRateCount)];
        switch (choices_.below(8)) {
        case 0:
            conceal();
            break;
        case 1:
            must(!zspvDecoderSetBitRate(decoder_, rate), "a decoder takes the codec's rates");
            must(!zspvEncoderSetBitRate(encoder_, rate), "an encoder takes the codec's rates");
            break;
        case 2:
            choices_.oneIn(4) ? zspvDecoderReset(decoder_) : zspvEncoderReset(encoder_);
            break;
        case 3:
        case 4:
            decodeEncoded();
            break;
        default: {
            const auto most = static_cast<std::size_t>(2 * codec_.maxFrameBytes + 3);
            const bool whole = choices_.below(2);
            Exact<std::uint8_t> bytes =
                take(choices_, whole ? static_cast<std::size_t>(codec_.maxFrameBytes)
                                     : choices_.bits<std::uint16_t>() % most);
            decode(bytes, static_cast<ZspvFrameKind>(choices_.below(8)));
        }
        }
    }

  private:
    std::size_t sizeOf(ZspStatus (*getSize)(const ZspvCodec*, const ZspvParams*, std::int32_t*))
    {
        std::int32_t size = 0;
        must(!getSize(&codec_, &params_, &size), "the size of a coder is told");
        return static_cast<std::size_t>(size);
    }

    // First without room, to hear how much it takes.
    void decode(Exact<std::uint8_t>& bytes, ZspvFrameKind kind)
    {
        std::int32_t wanted = -1, count = -1;
        std::int16_t none = 0;
        const ZspStatus first =
            zspvDecode(decoder_, kind, bytes.data(), bytes.count(), &none, 0, &wanted);
        must(first != zspStsNoErr, "no frame fits into nothing");
        if (first != zspStsSizeErr || wanted < 0) return;
        Exact<std::int16_t> samples(static_cast<std::size_t>(wanted));
        const ZspStatus second = zspvDecode(decoder_, kind, bytes.data(), bytes.count(),
                                            samples.data(), samples.count(), &count);
        const bool mayRefuse = kind != zspvFrameNoData && kind != zspvFrameSpeech &&
                               kind != zspvFrameSpeechDamaged && kind != zspvFrameLost;
        if (mayRefuse && second == zspStsCodecRangeErr) return; // no kind that the codec has
        must(!second && count == wanted, "a frame is decoded into the room that it asks for");
        samples.seen();
    }

    void conceal()
    {
        Exact<std::int16_t> samples(static_cast<std::size_t>(codec_.frameSamples));
        std::int32_t count = 0;
        must(!zspvConceal(decoder_, samples.data(), samples.count(), &count) &&
                 count == codec_.frameSamples,
             "a frame is concealed");
        samples.seen();
    }

    void decodeEncoded()
    {
        Exact<std::int16_t> samples(static_cast<std::size_t>(codec_.frameSamples));
        choices_.fill(samples.all());
        Exact<std::uint8_t> room(static_cast<std::size_t>(codec_.maxFrameBytes));
        std::int32_t length = 0;
        ZspvFrameKind kind = zspvFrameNoData;
        must(!zspvEncode(encoder_, samples.data(), samples.count(), room.data(), room.count(),
                         &length, &kind) &&
                 length >= 0 && length <= room.count(),
             "a frame is encoded in at most the bytes that the codec tells");
        Exact<std::uint8_t> bytes(room.all().first(static_cast<std::size_t>(length)));
        bytes.seen();
        const bool hit = choices_.below(2) && length > 0;
        if (hit)
            bytes.all()[choices_.bits<std::uint16_t>() % static_cast<std::size_t>(length)] ^=
                choices_.bits<std::uint8_t>();
        decode(bytes, kind);
    }

    Choices& choices_;
    const ZspvCodec& codec_;
    ZspvParams params_;
    Exact<std::uint8_t> encoderMemory_, decoderMemory_;
    ZspvEncoder* encoder_ = nullptr;
    ZspvDecoder* decoder_ = nullptr;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Choices choices(std::span(data, size));
    Call call(choices, *zspvCodecByIndex(choices.below(zspvCodecCount())));
    while (choices.left() > 0)
        call.step();
    return 0;
}
