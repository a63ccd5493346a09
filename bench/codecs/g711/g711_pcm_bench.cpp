// Blocks of speech through G.711: our definition, our fast version and the peers.

#include "bench/support/peers.hpp"
#include "bench/support/speech.hpp"
#include "bench/support/versions.hpp"
#include "codecs/g711/g711_pcm.hpp"

#include <string>

namespace {

using namespace zsp::bench;
using namespace zsp::g711;

std::vector<std::uint8_t> codes(Law law)
{
    const auto samples = fullScaleSpeech();
    std::vector<std::uint8_t> all(samples.size());
    encodeScalar(samples, all, law);
    return all;
}

using Encode = void (*)(zsp::In16, zsp::Out8, Law);

void encode(benchmark::State& state, Law law, Encode kernel)
{
    const auto block = static_cast<std::size_t>(state.range(0));
    Blocks blocks(fullScaleSpeech(), block);
    std::vector<std::uint8_t> out(block);
    loop(state, block, [&] { kernel(blocks.next(), out, law); });
}

using Decode = void (*)(zsp::In8, zsp::Out16, Law);

void decode(benchmark::State& state, Law law, Decode kernel)
{
    const auto block = static_cast<std::size_t>(state.range(0));
    Blocks blocks(codes(law), block);
    std::vector<std::int16_t> out(block);
    loop(state, block, [&] { kernel(blocks.next(), out, law); });
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

void encodeLibavcodec(benchmark::State& state, Law law)
{
    const auto block = static_cast<std::size_t>(state.range(0));
    Blocks blocks(fullScaleSpeech(), block);
    const auto id = law == Law::mu ? AV_CODEC_ID_PCM_MULAW : AV_CODEC_ID_PCM_ALAW;
    Avcodec coder(avcodec_find_encoder(id), 8000, [](AVCodecContext&) {});
    coder.allocateFrame(static_cast<int>(block));
    loop(state, block, [&] {
        if (coder.encode(blocks.next()) <= 0) state.SkipWithError("encoder failed");
    });
}

#endif

const Runs kBlocks = {{80}, {160}, {1024}};

const bool registered = [] {
    for (const Law law : {Law::mu, Law::a}) {
        const std::string name = law == Law::mu ? "/mulaw" : "/alaw";
        add<Encode>(
            "g711Encode" + name, [law](auto& state, Encode k) { encode(state, law, k); },
            {{"definition", encodeScalar}, {"avx2", encodeAvx2}}, kBlocks);
        add<Decode>(
            "g711Decode" + name, [law](auto& state, Decode k) { decode(state, law, k); },
            {{"definition", decodeScalar}, {"avx2", decodeAvx2}}, kBlocks);
#ifdef ZSPSC_PEER_SPANDSP
        add<Encode>(
            "g711Encode" + name, [law](auto& state, Encode k) { encode(state, law, k); },
            {{"spandsp", encodeSpandsp}}, kBlocks);
        add<Decode>(
            "g711Decode" + name, [law](auto& state, Decode k) { decode(state, law, k); },
            {{"spandsp", decodeSpandsp}}, kBlocks);
#endif
#ifdef ZSPSC_PEER_LIBAVCODEC
        using Encoder = void (*)(benchmark::State&, Law);
        add<Encoder>(
            "g711Encode" + name, [law](auto& state, Encoder run) { run(state, law); },
            {{"libavcodec", encodeLibavcodec}}, kBlocks);
#endif
    }
    return true;
}();

} // namespace
