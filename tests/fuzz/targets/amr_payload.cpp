// Payloads of AMR and AMR-WB of any content: what counting finds is what writing writes, and the
// frames put together again give the same frames.

#include "tests/fuzz/targets/target.hpp"
#include "voice/rtp/payload_format.hpp"

#include <cstring>

using namespace zsp::fuzz;
using namespace zsp::voice;

namespace {

struct Format {
    const PayloadFormat& payload;
    Codec codec{};
    ZspvParams params{};
};

struct Unpacked {
    Unpacked(const Format& format, In8 payload, const FrameSink& counts)
        : bytes(static_cast<std::size_t>(counts.bytes())),
          frames(static_cast<std::size_t>(counts.frames())), request(counts.modeRequest)
    {
        FrameSink sink(format.codec, bytes.data(), frames.data());
        must(!format.payload.split(format.codec, format.params, payload, sink) &&
                 sink.bytes() == counts.bytes() && sink.frames() == counts.frames(),
             "what was counted is written");
    }

    Exact<std::uint8_t> bytes;
    Exact<ZspvFrame> frames;
    std::int32_t request;
};

bool isEmpty(const ZspvFrame& frame)
{
    return frame.length == 0;
}

void checkJoined(const Format& format, Unpacked& first)
{
    if (isEmpty(first.frames.all().front()) || isEmpty(first.frames.all().back())) return;
    const Packet packet{first.bytes.data(), first.frames.all(), first.request};
    PayloadSink counts;
    if (format.payload.join(format.codec, format.params, packet, counts) != zspStsNoErr) return;
    Exact<std::uint8_t> payload(counts.length());
    PayloadSink sink(payload.data());
    must(!format.payload.join(format.codec, format.params, packet, sink) &&
             sink.length() == counts.length(),
         "what was counted is put together");
    FrameSink found(format.codec);
    must(!format.payload.split(format.codec, format.params, payload.all(), found),
         "what was put together is taken apart");
    Unpacked second(format, payload.all(), found);
    must(second.request == first.request && second.frames.count() == first.frames.count(),
         "and holds as many frames");
    must(second.bytes.count() == first.bytes.count() &&
             std::memcmp(second.bytes.data(), first.bytes.data(), first.bytes.all().size()) == 0,
         "with the same bytes");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Choices choices(std::span(data, size));
    const auto switches = choices.bits<std::uint8_t>();
    Format format{switches & 1 ? kAmrWbPayload : kAmrPayload};
    format.codec.info.frameSamples = format.codec.info.stepSamples = switches & 1 ? 320 : 160;
    format.codec.info.sampleRate = format.codec.info.rtpClock = switches & 1 ? 16000 : 8000;
    format.params.octetAlign = switches >> 1 & 1;
    Exact<std::uint8_t> payload = take(choices, kLongestPayload);
    FrameSink counts(format.codec);
    if (format.payload.split(format.codec, format.params, payload.all(), counts) != zspStsNoErr)
        return 0;
    Unpacked unpacked(format, payload.all(), counts);
    if (unpacked.frames.count() > 0) checkJoined(format, unpacked);
    return 0;
}
