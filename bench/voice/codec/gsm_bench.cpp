// GSM full rate by others, with what coders_bench.cpp measures as voiceEncode/GSM and
// voiceDecode/GSM: libgsm, whose results are the same bits, and the decoder of libavcodec, whose
// are not: it does not saturate.

#include "bench/support/peers.hpp"
#include "bench/support/speech.hpp"
#include "bench/support/versions.hpp"
#include "zspvoice.h"

#include <algorithm>
#include <array>
#include <vector>

namespace {

using namespace zsp::bench;

constexpr std::size_t kSamples = 160, kOctets = 33;

[[maybe_unused]] std::vector<std::uint8_t> coded()
{
    const auto signal = fullScaleSpeech();
    std::vector<std::uint8_t> frames(signal.size() / kSamples * kOctets);
    ZspvEncoder* encoder = nullptr;
    zspvEncoderCreate(zspvCodecByPayloadType(3), nullptr, &encoder);
    for (std::size_t i = 0; i * kOctets < frames.size(); ++i) {
        std::int32_t length = 0;
        zspvEncode(encoder, &signal[i * kSamples], kSamples, &frames[i * kOctets], kOctets, &length,
                   nullptr);
    }
    zspvEncoderDestroy(encoder);
    return frames;
}

#ifdef ZSPSC_PEER_LIBGSM

void encodeLibgsm(benchmark::State& state)
{
    Blocks blocks(fullScaleSpeech(), kSamples);
    std::array<gsm_signal, kSamples> in;
    std::array<gsm_byte, kOctets> out;
    gsm coder = gsm_create();
    loop(state, kSamples, [&] {
        std::ranges::copy(blocks.next(), in.begin());
        gsm_encode(coder, in.data(), out.data());
    });
    gsm_destroy(coder);
}

void decodeLibgsm(benchmark::State& state)
{
    Blocks blocks(coded(), kOctets);
    std::array<gsm_byte, kOctets> in;
    std::array<gsm_signal, kSamples> out;
    gsm coder = gsm_create();
    loop(state, kSamples, [&] {
        std::ranges::copy(blocks.next(), in.begin());
        if (gsm_decode(coder, in.data(), out.data()) != 0) state.SkipWithError("decoder failed");
    });
    gsm_destroy(coder);
}

BENCHMARK(encodeLibgsm)->Name("voiceEncode/GSM/libgsm");
BENCHMARK(decodeLibgsm)->Name("voiceDecode/GSM/libgsm");

#endif
#ifdef ZSPSC_PEER_LIBAVCODEC

void decodeLibavcodec(benchmark::State& state)
{
    Blocks blocks(coded(), kOctets);
    Avcodec coder(avcodec_find_decoder_by_name("gsm"), 8000, [](AVCodecContext&) {});
    coder.allocatePacket(kOctets);
    loop(state, kSamples, [&] {
        if (!coder.decode(blocks.next(), kSamples)) state.SkipWithError("decoder failed");
    });
}

BENCHMARK(decodeLibavcodec)->Name("voiceDecode/GSM/libavcodec");

#endif

} // namespace
