// Blocks of speech through G.711: our definition, our fast version and the peers.

#include "bench/support/speech.hpp"
#include "codecs/g711/g711_pcm.hpp"

#include <benchmark/benchmark.h>

#include <sstream>

#ifdef ZSPSC_PEER_LIBAVCODEC
#include "bench/support/avcodec.hpp"
#endif
#ifdef ZSPSC_PEER_SPANDSP
#include <spandsp.h>
#endif

namespace {

using namespace zsp::g711;

std::vector<std::int16_t> fullScaleSpeech()
{
    auto samples = zsp::bench::speech();
    for (auto& sample : samples)
        sample = static_cast<std::int16_t>(sample * 4);
    return samples;
}

std::vector<std::uint8_t> codes(Law law)
{
    const auto samples = fullScaleSpeech();
    std::vector<std::uint8_t> all(samples.size());
    encodeScalar(samples, all, law);
    return all;
}

using Encode = void (*)(zsp::In16, zsp::Out8, Law) noexcept;

void encode(benchmark::State& state, Law law, std::size_t block, Encode kernel)
{
    zsp::bench::Blocks blocks(fullScaleSpeech(), block);
    std::vector<std::uint8_t> out(block);
    for (auto _ : state) {
        kernel(blocks.next(), out, law);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(block));
}

using Decode = void (*)(zsp::In8, zsp::Out16, Law) noexcept;

void decode(benchmark::State& state, Law law, std::size_t block, Decode kernel)
{
    zsp::bench::Blocks blocks(codes(law), block);
    std::vector<std::int16_t> out(block);
    for (auto _ : state) {
        kernel(blocks.next(), out, law);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(block));
}

#ifdef ZSPSC_PEER_SPANDSP

void encodeSpandsp(zsp::In16 samples, zsp::Out8 out, Law law) noexcept
{
    for (std::size_t i = 0; i < samples.size(); ++i)
        out[i] = law == Law::mu ? linear_to_ulaw(samples[i]) : linear_to_alaw(samples[i]);
}

void decodeSpandsp(zsp::In8 in, zsp::Out16 out, Law law) noexcept
{
    for (std::size_t i = 0; i < in.size(); ++i)
        out[i] = law == Law::mu ? ulaw_to_linear(in[i]) : alaw_to_linear(in[i]);
}

#endif
#ifdef ZSPSC_PEER_LIBAVCODEC

void encodeLibavcodec(benchmark::State& state, Law law, std::size_t block)
{
    zsp::bench::Blocks blocks(fullScaleSpeech(), block);
    const auto id = law == Law::mu ? AV_CODEC_ID_PCM_MULAW : AV_CODEC_ID_PCM_ALAW;
    zsp::bench::Avcodec coder(avcodec_find_encoder(id), 8000, [](AVCodecContext&) {});
    coder.allocateFrame(static_cast<int>(block));
    for (auto _ : state) {
        const auto samples = blocks.next();
        std::copy(samples.begin(), samples.end(),
                  reinterpret_cast<std::int16_t*>(coder.frame->data[0]));
        if (avcodec_send_frame(coder.context, coder.frame) != 0 ||
            avcodec_receive_packet(coder.context, coder.packet) != 0)
            state.SkipWithError("encoder failed");
        av_packet_unref(coder.packet);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(block));
}

#endif

const bool registered = [] {
    for (const Law law : {Law::mu, Law::a})
        for (const std::size_t block : {80u, 160u, 1024u}) {
            const auto add = [law, block](const char* direction, const char* version, auto function,
                                          auto... kernel) {
                std::ostringstream name;
                name << direction << (law == Law::mu ? "/mulaw/" : "/alaw/") << version << '/'
                     << block;
                benchmark::RegisterBenchmark(name.str().c_str(), function, law, block, kernel...);
            };
            add("g711Encode", "definition", encode, encodeScalar);
            add("g711Encode", "avx2", encode, encodeAvx2);
            add("g711Decode", "definition", decode, decodeScalar);
            add("g711Decode", "avx2", decode, decodeAvx2);
#ifdef ZSPSC_PEER_SPANDSP
            add("g711Encode", "spandsp", encode, encodeSpandsp);
            add("g711Decode", "spandsp", decode, decodeSpandsp);
#endif
#ifdef ZSPSC_PEER_LIBAVCODEC
            add("g711Encode", "libavcodec", encodeLibavcodec);
#endif
        }
    return true;
}();

} // namespace
