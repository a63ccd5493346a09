// Speech through every codec, packets of 20 ms or single frames: encoded, decoded, concealed; and
// comfort noise.

#include "bench/support/speech.hpp"
#include "bench/support/versions.hpp"
#include "zspvoice.h"

#include <benchmark/benchmark.h>

#include <string>

namespace {

using zsp::bench::Blocks;

/// 20 ms, or what a codec takes that wants single frames.
std::size_t packetSamples(const ZspvCodec* codec)
{
    if (codec->stepSamples == codec->frameSamples)
        return static_cast<std::size_t>(codec->frameSamples);
    return static_cast<std::size_t>(codec->sampleRate / 50);
}

std::vector<std::int16_t> speechFor(const ZspvCodec* codec)
{
    if (codec->sampleRate == 16000) return zsp::bench::speech(zsp::bench::kVoice16);
    return zsp::bench::fullScaleSpeech();
}

void encode(benchmark::State& state, const ZspvCodec* codec)
{
    const std::size_t samples = packetSamples(codec);
    Blocks blocks(speechFor(codec), samples);
    std::vector<std::uint8_t> bytes(samples);
    std::int32_t length = 0;
    ZspvEncoder* encoder = nullptr;
    zspvEncoderCreate(codec, nullptr, &encoder);
    zsp::bench::loop(state, samples, [&] {
        zspvEncode(encoder, blocks.next().data(), static_cast<std::int32_t>(samples), bytes.data(),
                   static_cast<std::int32_t>(samples), &length, nullptr);
    });
    zspvEncoderDestroy(encoder);
}

/// Whole packets, one after the other.
std::vector<std::uint8_t> coded(const ZspvCodec* codec)
{
    const auto speech = speechFor(codec);
    const std::size_t samples = packetSamples(codec);
    std::vector<std::uint8_t> bytes(speech.size());
    std::size_t done = 0;
    ZspvEncoder* encoder = nullptr;
    zspvEncoderCreate(codec, nullptr, &encoder);
    for (std::size_t at = 0; at + samples <= speech.size(); at += samples) {
        std::int32_t length = 0;
        zspvEncode(encoder, &speech[at], static_cast<std::int32_t>(samples), bytes.data() + done,
                   static_cast<std::int32_t>(bytes.size() - done), &length, nullptr);
        done += static_cast<std::size_t>(length);
    }
    zspvEncoderDestroy(encoder);
    bytes.resize(done);
    return bytes;
}

/// Packet after packet; with `gaps` a lost one after each, which is what a gap costs at most: its
/// beginning is the most expensive part.
void receive(benchmark::State& state, const ZspvCodec* codec, bool gaps)
{
    const std::size_t samples = packetSamples(codec);
    const auto bytes = coded(codec);
    const std::size_t octets = bytes.size() / (speechFor(codec).size() / samples);
    Blocks blocks(bytes, octets);
    std::vector<std::int16_t> heard(samples);
    std::int32_t count = 0;
    ZspvDecoder* decoder = nullptr;
    zspvDecoderCreate(codec, nullptr, &decoder);
    zsp::bench::loop(state, samples * (gaps ? 2 : 1), [&] {
        zspvDecode(decoder, zspvFrameSpeech, blocks.next().data(),
                   static_cast<std::int32_t>(octets), heard.data(),
                   static_cast<std::int32_t>(samples), &count);
        if (count != static_cast<std::int32_t>(samples)) state.SkipWithError("nothing decoded");
        for (std::size_t done = 0; gaps && done < samples; done += static_cast<std::size_t>(count))
            zspvConceal(decoder, &heard[done], codec->frameSamples, &count);
    });
    zspvDecoderDestroy(decoder);
}

void decode(benchmark::State& state, const ZspvCodec* codec)
{
    receive(state, codec, false);
}

void concealEveryOther(benchmark::State& state, const ZspvCodec* codec)
{
    receive(state, codec, true);
}

void comfortNoise(benchmark::State& state)
{
    const std::vector<std::uint8_t> payload = {50, 47, 187, 97, 147, 127, 107, 140, 127};
    std::vector<std::int16_t> samples(160);
    ZspvComfortNoise* noise = nullptr;
    zspvComfortNoiseCreate(8000, &noise);
    zspvComfortNoiseRead(noise, payload.data(), static_cast<std::int32_t>(payload.size()));
    zsp::bench::loop(state, samples.size(),
                     [&] { zspvComfortNoiseGenerate(noise, samples.data(), 160); });
    zspvComfortNoiseDestroy(noise);
}

const bool registered = [] {
    using Run = void (*)(benchmark::State&, const ZspvCodec*);
    for (const auto& [what, run] : {std::pair<const char*, Run>{"voiceEncode/", encode},
                                    {"voiceDecode/", decode},
                                    {"voiceConcealEveryOther/", concealEveryOther}})
        for (std::int32_t i = 0; i < zspvCodecCount(); ++i) {
            std::string name = what;
            name += zspvCodecByIndex(i)->rtpName;
            benchmark::RegisterBenchmark(name.c_str(), run, zspvCodecByIndex(i));
        }
    benchmark::RegisterBenchmark("voiceComfortNoise/generate", comfortNoise);
    return true;
}();

} // namespace
