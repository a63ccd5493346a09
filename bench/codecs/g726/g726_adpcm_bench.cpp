// One channel of speech through G.726, in blocks of 1024 samples: our definition, our fast version
// and the peers. Every coder is set up once and goes on from block to block.

#include "bench/support/speech.hpp"
#include "codecs/g726/g726_adpcm.hpp"

#include <benchmark/benchmark.h>

#include <array>
#include <string>

#ifdef ZSPSC_PEER_LIBAVCODEC
#include "bench/support/avcodec.hpp"
#endif
#ifdef ZSPSC_PEER_SPANDSP
#include <spandsp.h>
#endif

namespace {

using namespace zsp::g726;

constexpr std::size_t kBlock = 1024;
constexpr std::array kKilobits = {16, 24, 32, 40};
constexpr std::array kLaws = {Law::uniform, Law::mulaw, Law::alaw};
constexpr std::array kLawNames = {"linear", "mulaw", "alaw"};

std::vector<std::uint8_t> codes(std::size_t rate)
{
    const auto sl = zsp::bench::speech();
    std::vector<std::uint8_t> all(sl.size());
    CoderState state{.rateIndex = static_cast<std::int16_t>(rate)};
    encodeScalar(state, sl, all);
    return all;
}

void finish(benchmark::State& state, std::size_t block)
{
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(block));
}

using Encode = void (*)(CoderState&, zsp::In16, zsp::Out8) noexcept;

void encode(benchmark::State& state, std::size_t rate, Encode kernel)
{
    zsp::bench::Blocks blocks(zsp::bench::speech(), kBlock);
    CoderState coder{.rateIndex = static_cast<std::int16_t>(rate)};
    std::vector<std::uint8_t> out(kBlock);
    for (auto _ : state) {
        kernel(coder, blocks.next(), out);
        benchmark::ClobberMemory();
    }
    finish(state, kBlock);
}

using Decode = void (*)(CoderState&, Law, zsp::In8, zsp::Out16) noexcept;

void decode(benchmark::State& state, std::size_t rate, Law law, Decode kernel)
{
    zsp::bench::Blocks blocks(codes(rate), kBlock);
    CoderState coder{.rateIndex = static_cast<std::int16_t>(rate)};
    std::vector<std::int16_t> out(kBlock);
    for (auto _ : state) {
        kernel(coder, law, blocks.next(), out);
        benchmark::ClobberMemory();
    }
    finish(state, kBlock);
}

#ifdef ZSPSC_PEER_SPANDSP

void encodeSpandsp(benchmark::State& state, std::size_t rate)
{
    auto sl = zsp::bench::speech();
    for (auto& sample : sl)
        sample = static_cast<std::int16_t>(sample * 4);
    zsp::bench::Blocks blocks(std::move(sl), kBlock);
    g726_state_t* coder =
        g726_init(nullptr, kKilobits[rate] * 1000, G726_ENCODING_LINEAR, G726_PACKING_NONE);
    std::vector<std::uint8_t> out(kBlock);
    for (auto _ : state) {
        g726_encode(coder, out.data(), blocks.next().data(), kBlock);
        benchmark::ClobberMemory();
    }
    finish(state, kBlock);
    g726_free(coder);
}

void decodeSpandsp(benchmark::State& state, std::size_t rate, int encoding)
{
    zsp::bench::Blocks blocks(codes(rate), kBlock);
    g726_state_t* coder = g726_init(nullptr, kKilobits[rate] * 1000, encoding, G726_PACKING_NONE);
    std::vector<std::int16_t> out(kBlock);
    for (auto _ : state) {
        g726_decode(coder, out.data(), blocks.next().data(), kBlock);
        benchmark::ClobberMemory();
    }
    finish(state, kBlock);
    g726_free(coder);
}

#endif
#ifdef ZSPSC_PEER_LIBAVCODEC

zsp::bench::Avcodec openLibavcodec(const AVCodec* codec, std::size_t rate)
{
    return {codec, 8000, [rate](AVCodecContext& context) {
                context.bit_rate = kKilobits[rate] * 1000;
                context.bits_per_coded_sample = static_cast<int>(rate) + 2;
            }};
}

void encodeLibavcodec(benchmark::State& state, std::size_t rate)
{
    auto sl = zsp::bench::speech();
    for (auto& sample : sl)
        sample = static_cast<std::int16_t>(sample * 4);
    zsp::bench::Blocks blocks(std::move(sl), kBlock);
    auto coder = openLibavcodec(avcodec_find_encoder(AV_CODEC_ID_ADPCM_G726), rate);
    coder.allocateFrame(kBlock);
    for (auto _ : state) {
        const auto block = blocks.next();
        std::copy(block.begin(), block.end(),
                  reinterpret_cast<std::int16_t*>(coder.frame->data[0]));
        if (avcodec_send_frame(coder.context, coder.frame) != 0 ||
            avcodec_receive_packet(coder.context, coder.packet) != 0)
            state.SkipWithError("encoder failed");
        av_packet_unref(coder.packet);
    }
    finish(state, kBlock);
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

    zsp::bench::Blocks blocks(std::move(packed), kBlock * bits / 8);
    auto coder = openLibavcodec(avcodec_find_decoder(AV_CODEC_ID_ADPCM_G726), rate);
    coder.allocatePacket(static_cast<int>(kBlock * bits / 8));
    for (auto _ : state) {
        const auto block = blocks.next();
        std::copy(block.begin(), block.end(), coder.packet->data);
        if (avcodec_send_packet(coder.context, coder.packet) != 0 ||
            avcodec_receive_frame(coder.context, coder.frame) != 0 ||
            coder.frame->nb_samples != static_cast<int>(kBlock))
            state.SkipWithError("decoder failed");
    }
    finish(state, kBlock);
}

#endif

const bool registered = [] {
    const auto add = [](const std::string& name, auto function, auto... arguments) {
        benchmark::RegisterBenchmark(name.c_str(), function, arguments...);
    };
    for (std::size_t rate = 0; rate < kKilobits.size(); ++rate) {
        const std::string name = "g726Encode/" + std::to_string(kKilobits[rate]) + "/";
        add(name + "definition", encode, rate, encodeScalar);
        add(name + "avx2", encode, rate, encodeAvx2);
#ifdef ZSPSC_PEER_SPANDSP
        add(name + "spandsp", encodeSpandsp, rate);
#endif
#ifdef ZSPSC_PEER_LIBAVCODEC
        add(name + "libavcodec", encodeLibavcodec, rate);
#endif
    }
    for (std::size_t law = 0; law < kLaws.size(); ++law)
        for (std::size_t rate = 0; rate < kKilobits.size(); ++rate) {
            const std::string name = std::string("g726Decode/") + kLawNames[law] + "/" +
                                     std::to_string(kKilobits[rate]) + "/";
            add(name + "definition", decode, rate, kLaws[law], decodeScalar);
            add(name + "avx2", decode, rate, kLaws[law], decodeAvx2);
#ifdef ZSPSC_PEER_SPANDSP
            constexpr std::array kEncodings = {G726_ENCODING_LINEAR, G726_ENCODING_ULAW,
                                               G726_ENCODING_ALAW};
            add(name + "spandsp", decodeSpandsp, rate, static_cast<int>(kEncodings[law]));
#endif
#ifdef ZSPSC_PEER_LIBAVCODEC
            if (kLaws[law] == Law::uniform) add(name + "libavcodec", decodeLibavcodec, rate);
#endif
        }
    return true;
}();

} // namespace
