// Frames of 2.5 ms through a coder that is made of the definitions. What the fast versions bring is
// the distance to voiceEncode/G728 and voiceDecode/G728 of the voice layer. No package offers this
// codec: there is nothing else to compare with.

#include "tests/codecs/g728/g728_definitions.hpp"

namespace zsp::voice {
// The coders call the exports by name, and so find these first; with the enumerations of the public
// header they would find the exports as well.
using namespace g728::definitions;
template <typename... Rest>
void zspsHybridWindow_G728_16s(ZspG728Window window, Rest... rest) noexcept
{
    g728::definitions::zspsHybridWindow_G728_16s(window, rest...);
}
template <typename... Rest>
void zspsBandwidthExpand_G728_16s(ZspG728Expansion expansion, Rest... rest) noexcept
{
    g728::definitions::zspsBandwidthExpand_G728_16s(expansion, rest...);
}
} // namespace zsp::voice

#include "bench/support/speech.hpp"
#include "bench/support/versions.hpp"
#include "voice/codec/g728/g728_decoder.hpp"
#include "voice/codec/g728/g728_encoder.hpp"

#include <benchmark/benchmark.h>

#include <array>
#include <cstdint>
#include <vector>

namespace {

using namespace zsp::bench;
using zsp::voice::kG728Frame, zsp::voice::kG728FrameBytes;

/// Makes the coders this file's own.
struct Definitions : zsp::voice::NoProbe {};

using Encoder = zsp::voice::G728Encoder<Definitions>;
using Decoder = zsp::voice::G728Decoder<Definitions>;

void encode(benchmark::State& state)
{
    Blocks blocks(fullScaleSpeech(), kG728Frame);
    std::array<std::uint8_t, kG728FrameBytes> bytes;
    Encoder encoder;
    encoder.start();
    loop(state, kG728Frame, [&] { encoder.encode(blocks.next().first<kG728Frame>(), bytes); });
}
BENCHMARK(encode)->Name("g728Encode/definition");

void decode(benchmark::State& state)
{
    const auto signal = fullScaleSpeech();
    std::vector<std::uint8_t> coded(signal.size() / kG728Frame * kG728FrameBytes);
    Encoder encoder;
    encoder.start();
    for (std::size_t i = 0; i < coded.size() / kG728FrameBytes; ++i)
        encoder.encode(std::span(signal).subspan(i * kG728Frame).first<kG728Frame>(),
                       std::span(coded).subspan(i * kG728FrameBytes).first<kG728FrameBytes>());
    Blocks blocks(coded, kG728FrameBytes);
    std::array<std::int16_t, kG728Frame> heard;
    Decoder decoder;
    decoder.start();
    loop(state, kG728Frame, [&] { decoder.decode(blocks.next(), true, heard); });
}
BENCHMARK(decode)->Name("g728Decode/definition");

} // namespace
