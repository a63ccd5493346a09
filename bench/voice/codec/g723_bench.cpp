// Frames of 30 ms through G.723.1, and libavcodec's encoder (6.3 kbit/s alone) and decoder on the
// same speech.

#include "bench/support/peers.hpp"
#include "bench/support/speech.hpp"
#include "bench/support/versions.hpp"
#include "zspvoice.h"

#include <vector>

namespace {

using namespace zsp::bench;

constexpr std::size_t kSamples = 240;

ZspvParams paramsOf(std::int32_t bitRate, bool postFilter)
{
    ZspvParams params{};
    params.structSize = sizeof params;
    params.bitRate = bitRate;
    params.noPostFilter = !postFilter;
    return params;
}

std::vector<std::uint8_t> coded(std::int32_t bitRate)
{
    const auto signal = fullScaleSpeech();
    const ZspvParams params = paramsOf(bitRate, true);
    const std::size_t octets = bitRate == 6300 ? 24 : 20;
    std::vector<std::uint8_t> frames(signal.size() / kSamples * octets + 24);
    ZspvEncoder* encoder = nullptr;
    zspvEncoderCreate(zspvCodecByPayloadType(4), &params, &encoder);
    for (std::size_t i = 0; (i + 1) * kSamples <= signal.size(); ++i) {
        std::int32_t length = 0;
        zspvEncode(encoder, &signal[i * kSamples], kSamples, &frames[i * octets], 24, &length,
                   nullptr);
    }
    zspvEncoderDestroy(encoder);
    frames.resize(frames.size() - 24);
    return frames;
}

void encode(benchmark::State& state, std::int32_t bitRate)
{
    Blocks blocks(fullScaleSpeech(), kSamples);
    const ZspvParams params = paramsOf(bitRate, true);
    std::vector<std::uint8_t> bytes(24);
    ZspvEncoder* encoder = nullptr;
    zspvEncoderCreate(zspvCodecByPayloadType(4), &params, &encoder);
    std::int32_t length = 0;
    loop(state, kSamples, [&] {
        zspvEncode(encoder, blocks.next().data(), kSamples, bytes.data(), 24, &length, nullptr);
    });
    zspvEncoderDestroy(encoder);
}

void decode(benchmark::State& state, std::int32_t bitRate, bool postFilter)
{
    const std::size_t octets = bitRate == 6300 ? 24 : 20;
    Blocks blocks(coded(bitRate), octets);
    const ZspvParams params = paramsOf(bitRate, postFilter);
    std::vector<std::int16_t> heard(kSamples);
    ZspvDecoder* decoder = nullptr;
    zspvDecoderCreate(zspvCodecByPayloadType(4), &params, &decoder);
    std::int32_t count = 0;
    loop(state, kSamples, [&] {
        zspvDecode(decoder, zspvFrameSpeech, blocks.next().data(),
                   static_cast<std::int32_t>(octets), heard.data(), kSamples, &count);
    });
    zspvDecoderDestroy(decoder);
}

BENCHMARK_CAPTURE(encode, high, 6300)->Name("g723Encode/6.3/zspvoice");
BENCHMARK_CAPTURE(encode, low, 5300)->Name("g723Encode/5.3/zspvoice");
BENCHMARK_CAPTURE(decode, high, 6300, true)->Name("g723Decode/6.3/zspvoice");
BENCHMARK_CAPTURE(decode, low, 5300, true)->Name("g723Decode/5.3/zspvoice");
BENCHMARK_CAPTURE(decode, plain, 6300, false)->Name("g723Decode/6.3/plain/zspvoice");

#ifdef ZSPSC_PEER_LIBAVCODEC

void encodeLibavcodec(benchmark::State& state)
{
    Blocks blocks(fullScaleSpeech(), kSamples);
    Avcodec coder(avcodec_find_encoder(AV_CODEC_ID_G723_1), 8000,
                  [](AVCodecContext& c) { c.bit_rate = 6300; });
    coder.allocateFrame(kSamples);
    loop(state, kSamples, [&] {
        if (coder.encode(blocks.next()) < 0) state.SkipWithError("encoder failed");
    });
}

void decodeLibavcodec(benchmark::State& state)
{
    Blocks blocks(coded(6300), 24);
    Avcodec coder(avcodec_find_decoder(AV_CODEC_ID_G723_1), 8000, [](AVCodecContext&) {});
    coder.allocatePacket(24);
    loop(state, kSamples, [&] {
        if (!coder.decode(blocks.next(), kSamples)) state.SkipWithError("decoder failed");
    });
}

BENCHMARK(encodeLibavcodec)->Name("g723Encode/6.3/libavcodec");
BENCHMARK(decodeLibavcodec)->Name("g723Decode/6.3/libavcodec");

#endif

} // namespace
