// One channel of speech through G.726, in blocks of 1024 samples: our definition, our fast version
// and the peers. Every coder is set up once and goes on from block to block.

#include "bench/support/peers.hpp"
#include "bench/support/speech.hpp"
#include "bench/support/versions.hpp"
#include "codecs/g726/g726_adpcm.hpp"

#include <array>
#include <string>

namespace {

using namespace zsp::bench;
using namespace zsp::g726;

constexpr std::size_t kBlock = 1024;
constexpr std::array kKilobits = {16, 24, 32, 40};
constexpr std::array kLaws = {Law::uniform, Law::mulaw, Law::alaw};
constexpr std::array kLawNames = {"linear", "mulaw", "alaw"};

std::vector<std::uint8_t> codes(std::size_t rate)
{
    const auto sl = speech();
    std::vector<std::uint8_t> all(sl.size());
    CoderState state{.rateIndex = static_cast<std::int16_t>(rate)};
    encodeScalar(state, sl, all);
    return all;
}

using Encode = void (*)(CoderState&, zsp::In16, zsp::Out8);

void encode(benchmark::State& state, std::size_t rate, Encode kernel)
{
    Blocks blocks(speech(), kBlock);
    CoderState coder{.rateIndex = static_cast<std::int16_t>(rate)};
    std::vector<std::uint8_t> out(kBlock);
    loop(state, kBlock, [&] { kernel(coder, blocks.next(), out); });
}

using Decode = void (*)(CoderState&, Law, zsp::In8, zsp::Out16);

void decode(benchmark::State& state, std::size_t rate, Law law, Decode kernel)
{
    Blocks blocks(codes(rate), kBlock);
    CoderState coder{.rateIndex = static_cast<std::int16_t>(rate)};
    std::vector<std::int16_t> out(kBlock);
    loop(state, kBlock, [&] { kernel(coder, law, blocks.next(), out); });
}

#ifdef ZSPSC_PEER_SPANDSP

void encodeSpandsp(benchmark::State& state, std::size_t rate)
{
    Blocks blocks(fullScaleSpeech(), kBlock);
    g726_state_t* coder =
        g726_init(nullptr, kKilobits[rate] * 1000, G726_ENCODING_LINEAR, G726_PACKING_NONE);
    std::vector<std::uint8_t> out(kBlock);
    loop(state, kBlock, [&] { g726_encode(coder, out.data(), blocks.next().data(), kBlock); });
    g726_free(coder);
}

void decodeSpandsp(benchmark::State& state, std::size_t rate, int encoding)
{
    Blocks blocks(codes(rate), kBlock);
    g726_state_t* coder = g726_init(nullptr, kKilobits[rate] * 1000, encoding, G726_PACKING_NONE);
    std::vector<std::int16_t> out(kBlock);
    loop(state, kBlock, [&] { g726_decode(coder, out.data(), blocks.next().data(), kBlock); });
    g726_free(coder);
}

#endif
#ifdef ZSPSC_PEER_LIBAVCODEC

Avcodec openLibavcodec(const AVCodec* codec, std::size_t rate)
{
    return {codec, 8000, [rate](AVCodecContext& context) {
                context.bit_rate = kKilobits[rate] * 1000;
                context.bits_per_coded_sample = static_cast<int>(rate) + 2;
            }};
}

void encodeLibavcodec(benchmark::State& state, std::size_t rate)
{
    Blocks blocks(fullScaleSpeech(), kBlock);
    auto coder = openLibavcodec(avcodec_find_encoder(AV_CODEC_ID_ADPCM_G726), rate);
    coder.allocateFrame(kBlock);
    loop(state, kBlock, [&] {
        if (coder.encode(blocks.next()) <= 0) state.SkipWithError("encoder failed");
    });
}

void decodeLibavcodec(benchmark::State& state, std::size_t rate)
{
    // Packed, the first code word in the upper bits.
    const auto plain = codes(rate);
    const std::size_t bits = rate + 2;
    std::vector<std::uint8_t> packed(plain.size() * bits / 8);
    for (std::size_t i = 0; i < packed.size() * 8; ++i)
        packed[i / 8] = static_cast<std::uint8_t>(packed[i / 8] * 2 +
                                                  (plain[i / bits] >> (bits - 1 - i % bits) & 1));

    Blocks blocks(std::move(packed), kBlock * bits / 8);
    auto coder = openLibavcodec(avcodec_find_decoder(AV_CODEC_ID_ADPCM_G726), rate);
    coder.allocatePacket(static_cast<int>(kBlock * bits / 8));
    loop(state, kBlock, [&] {
        if (!coder.decode(blocks.next(), kBlock)) state.SkipWithError("decoder failed");
    });
}

#endif

/// The whole benchmark's name, and what it measures: run(state) for peers, which are no kernels.
template <typename Peer>
[[maybe_unused]] void addPeer(const std::string& name, const char* peer, Peer run)
{
    benchmark::RegisterBenchmark((name + "/" + peer).c_str(), run);
}

void addEncoders(std::size_t rate)
{
    const std::string name = "g726Encode/" + std::to_string(kKilobits[rate]);
    add<Encode>(name, [=](auto& state, Encode kernel) { encode(state, rate, kernel); },
                {{"definition", encodeScalar}, {"avx2", encodeAvx2}});
#ifdef ZSPSC_PEER_SPANDSP
    addPeer(name, "spandsp", [=](auto& state) { encodeSpandsp(state, rate); });
#endif
#ifdef ZSPSC_PEER_LIBAVCODEC
    addPeer(name, "libavcodec", [=](auto& state) { encodeLibavcodec(state, rate); });
#endif
}

void addDecoders(std::size_t rate, std::size_t law)
{
    const std::string name =
        std::string("g726Decode/") + kLawNames[law] + "/" + std::to_string(kKilobits[rate]);
    add<Decode>(name, [=](auto& state, Decode kernel) { decode(state, rate, kLaws[law], kernel); },
                {{"definition", decodeScalar}, {"avx2", decodeAvx2}});
#ifdef ZSPSC_PEER_SPANDSP
    constexpr std::array kEncodings = {G726_ENCODING_LINEAR, G726_ENCODING_ULAW,
                                       G726_ENCODING_ALAW};
    addPeer(name, "spandsp", [=](auto& state) { decodeSpandsp(state, rate, kEncodings[law]); });
#endif
#ifdef ZSPSC_PEER_LIBAVCODEC
    if (kLaws[law] == Law::uniform)
        addPeer(name, "libavcodec", [=](auto& state) { decodeLibavcodec(state, rate); });
#endif
}

const bool registered = [] {
    for (std::size_t rate = 0; rate < kKilobits.size(); ++rate)
        addEncoders(rate);
    for (std::size_t law = 0; law < kLaws.size(); ++law)
        for (std::size_t rate = 0; rate < kKilobits.size(); ++rate)
            addDecoders(rate, law);
    return true;
}();

} // namespace
