// Frames of 10 ms through the coders of G.729, main body and Annex A, and libbcg729's and
// libavcodec's on the same speech.

#include "voice/codec/g729/g729_decoder.hpp"
#include "voice/codec/g729/g729_encoder.hpp"

#include "bench/support/peers.hpp"
#include "bench/support/speech.hpp"
#include "bench/support/versions.hpp"

#ifdef ZSPSC_PEER_LIBBCG729
extern "C" {
#include <bcg729/decoder.h>
#include <bcg729/encoder.h>
}
#endif

#include <array>
#include <vector>

namespace {

using namespace zsp::bench;
using namespace zsp::voice;

std::span<const std::int16_t, kG729Frame> frameOf(Blocks<std::int16_t>& blocks)
{
    return std::span<const std::int16_t, kG729Frame>(blocks.next());
}

/// The speech as frames of Annex A.
std::vector<std::uint8_t> coded()
{
    const auto signal = fullScaleSpeech();
    std::vector<std::uint8_t> frames(signal.size() / kG729Frame * kG729Bytes);
    Blocks blocks(signal, kG729Frame);
    G729Encoder<> encoder;
    encoder.start(true);
    for (std::size_t at = 0; at < frames.size(); at += kG729Bytes)
        encoder.encode(frameOf(blocks), false,
                       std::span<std::uint8_t, kG729Bytes>(&frames[at], kG729Bytes));
    return frames;
}

void encode(benchmark::State& state, bool annexA, bool hasDtx)
{
    Blocks blocks(fullScaleSpeech(), kG729Frame);
    std::array<std::uint8_t, kG729Bytes> bytes;
    G729Encoder<> encoder;
    encoder.start(annexA);
    loop(state, kG729Frame,
         [&] { benchmark::DoNotOptimize(encoder.encode(frameOf(blocks), hasDtx, bytes)); });
}

void decode(benchmark::State& state, bool annexA)
{
    Blocks blocks(coded(), kG729Bytes);
    std::array<std::int16_t, kG729Frame> heard;
    G729Decoder<> decoder;
    decoder.start(annexA);
    loop(state, kG729Frame, [&] {
        decoder.decode(G729Arrival::received, blocks.next(), true, heard);
        benchmark::DoNotOptimize(heard);
    });
}

BENCHMARK_CAPTURE(encode, annexA, true, false)->Name("g729Encode/annexA/zspvoice");
BENCHMARK_CAPTURE(encode, annexADtx, true, true)->Name("g729Encode/annexA/dtx/zspvoice");
BENCHMARK_CAPTURE(encode, main, false, false)->Name("g729Encode/main/zspvoice");
BENCHMARK_CAPTURE(encode, mainDtx, false, true)->Name("g729Encode/main/dtx/zspvoice");
BENCHMARK_CAPTURE(decode, annexA, true)->Name("g729Decode/annexA/zspvoice");
BENCHMARK_CAPTURE(decode, main, false)->Name("g729Decode/main/zspvoice");

#ifdef ZSPSC_PEER_LIBBCG729

void encodeLibbcg729(benchmark::State& state, std::uint8_t hasDtx)
{
    Blocks blocks(fullScaleSpeech(), kG729Frame);
    std::array<std::uint8_t, kG729Bytes> bytes;
    std::uint8_t length = 0;
    auto* encoder = initBcg729EncoderChannel(hasDtx);
    loop(state, kG729Frame,
         [&] { bcg729Encoder(encoder, blocks.next().data(), bytes.data(), &length); });
    closeBcg729EncoderChannel(encoder);
}

void decodeLibbcg729(benchmark::State& state)
{
    Blocks blocks(coded(), kG729Bytes);
    std::array<std::int16_t, kG729Frame> heard;
    auto* decoder = initBcg729DecoderChannel();
    loop(state, kG729Frame,
         [&] { bcg729Decoder(decoder, blocks.next().data(), kG729Bytes, 0, 0, 0, heard.data()); });
    closeBcg729DecoderChannel(decoder);
}

BENCHMARK_CAPTURE(encodeLibbcg729, annexA, 0)->Name("g729Encode/annexA/libbcg729");
BENCHMARK_CAPTURE(encodeLibbcg729, dtx, 1)->Name("g729Encode/annexA/dtx/libbcg729");
BENCHMARK(decodeLibbcg729)->Name("g729Decode/annexA/libbcg729");

#endif

#ifdef ZSPSC_PEER_LIBAVCODEC

void decodeLibavcodec(benchmark::State& state)
{
    Blocks blocks(coded(), kG729Bytes);
    Avcodec coder(avcodec_find_decoder(AV_CODEC_ID_G729), 8000, [](AVCodecContext&) {});
    coder.allocatePacket(kG729Bytes);
    loop(state, kG729Frame, [&] {
        if (!coder.decode(blocks.next(), kG729Frame)) state.SkipWithError("decoder failed");
    });
}

BENCHMARK(decodeLibavcodec)->Name("g729Decode/main/libavcodec");

#endif

} // namespace
