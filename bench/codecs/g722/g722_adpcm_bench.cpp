// Speech at 16 kHz through G.722 at 64 kbit/s, in blocks of 20 ms: the whole encoder and the whole
// decoder, filters included. Every coder is set up once and goes on from block to
// block; the peers code the same speech to and from bytes of the packed stream.

#include "bench/support/peers.hpp"
#include "bench/support/speech.hpp"
#include "bench/support/versions.hpp"
#include "codecs/g722/g722_adpcm.hpp"
#include "codecs/g722/g722_qmf.hpp"

#include <array>
#include <vector>

namespace {

using namespace zsp::bench;
using namespace zsp::g722;

constexpr std::size_t kBlock = 320;
using Block = std::array<std::int16_t, kBlock>;

std::vector<std::int16_t> samples()
{
    return speech(kVoice16);
}

std::vector<std::int16_t> subbands()
{
    const auto in = samples();
    std::vector<std::int16_t> pairs(in.size());
    std::array<std::int16_t, 24> line{};
    analyseScalar(in, pairs, line);
    return pairs;
}

std::vector<std::int16_t> codes()
{
    const auto pairs = subbands();
    std::vector<std::int16_t> out(pairs.size());
    State state;
    encodeScalar(pairs, out, state);
    return out;
}

/// Measures `block`, a function of an input block.
template <typename T, typename Function>
void measure(benchmark::State& state, std::vector<T> signal, std::size_t length, Function block)
{
    Blocks<T> blocks(std::move(signal), length);
    loop(state, kBlock, [&] { block(blocks.next()); });
}

/// The two parts of an encoder and of a decoder.
struct Encoder {
    void (*filter)(zsp::In16, zsp::Out16, DelayLine);
    void (*coder)(zsp::In16, zsp::Out16, State&);
};

struct Decoder {
    void (*coder)(zsp::In16, zsp::Out16, int, State&);
    void (*filter)(zsp::In16, zsp::Out16, DelayLine);
};

void encode(benchmark::State& state, Encoder kernel)
{
    State record;
    std::array<std::int16_t, 24> line{};
    Block pairs, out;
    measure(state, samples(), kBlock, [&](zsp::In16 block) {
        kernel.filter(block, pairs, line);
        kernel.coder(pairs, out, record);
    });
}

void decode(benchmark::State& state, Decoder kernel)
{
    State record;
    std::array<std::int16_t, 24> line{};
    Block pairs, out;
    measure(state, codes(), kBlock, [&](zsp::In16 block) {
        kernel.coder(block, pairs, 1, record);
        kernel.filter(pairs, out, line);
    });
}

const bool registered[] = {
    add<Encoder>(
        "g722Encode", encode,
        {{"definition", {analyseScalar, encodeScalar}}, {"avx2", {analyseAvx2, encodeAvx2}}}),
    add<Decoder>(
        "g722Decode", decode,
        {{"definition", {decodeScalar, synthesiseScalar}}, {"avx2", {decodeAvx2, synthesiseAvx2}}}),
};

/// The packed stream.
[[maybe_unused]] std::vector<std::uint8_t> bytes()
{
    const auto pairs = codes();
    std::vector<std::uint8_t> packed(pairs.size() / 2);
    for (std::size_t i = 0; i < packed.size(); ++i)
        packed[i] = static_cast<std::uint8_t>(pairs[2 * i + 1] * 64 + pairs[2 * i]);
    return packed;
}

#ifdef ZSPSC_PEER_SPANDSP

void encodeSpandsp(benchmark::State& state)
{
    g722_encode_state_t* coder = g722_encode_init(nullptr, 64000, 0);
    std::array<std::uint8_t, kBlock / 2> out;
    measure(state, samples(), kBlock,
            [&](zsp::In16 block) { g722_encode(coder, out.data(), block.data(), kBlock); });
    g722_encode_free(coder);
}

void decodeSpandsp(benchmark::State& state)
{
    g722_decode_state_t* coder = g722_decode_init(nullptr, 64000, 0);
    Block out;
    measure(state, bytes(), kBlock / 2,
            [&](zsp::In8 block) { g722_decode(coder, out.data(), block.data(), kBlock / 2); });
    g722_decode_free(coder);
}

BENCHMARK(encodeSpandsp)->Name("g722Encode/spandsp");
BENCHMARK(decodeSpandsp)->Name("g722Decode/spandsp");

#endif
#ifdef ZSPSC_PEER_LIBAVCODEC

void encodeLibavcodec(benchmark::State& state)
{
    Avcodec coder(avcodec_find_encoder(AV_CODEC_ID_ADPCM_G722), 16000,
                  [](AVCodecContext& context) { context.trellis = 0; });
    coder.allocateFrame(kBlock);
    measure(state, samples(), kBlock, [&](zsp::In16 block) {
        if (coder.encode(block) != int{kBlock / 2}) state.SkipWithError("encoder failed");
    });
}

void decodeLibavcodec(benchmark::State& state)
{
    Avcodec coder(avcodec_find_decoder(AV_CODEC_ID_ADPCM_G722), 16000, [](AVCodecContext&) {});
    coder.allocatePacket(kBlock / 2);
    measure(state, bytes(), kBlock / 2, [&](zsp::In8 block) {
        if (!coder.decode(block, kBlock)) state.SkipWithError("decoder failed");
    });
}

BENCHMARK(encodeLibavcodec)->Name("g722Encode/libavcodec");
BENCHMARK(decodeLibavcodec)->Name("g722Decode/libavcodec");

#endif

} // namespace
