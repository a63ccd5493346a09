// GSM full rate: signals through an encoder and a decoder made of the blocks, and every block's
// result in some frames of speech.

#include "conformance/families.hpp"
#include "conformance/trace.hpp"
#include "voice/codec/gsmfr/gsmfr_decoder.hpp"
#include "voice/codec/gsmfr/gsmfr_encoder.hpp"

namespace zsp::conformance {

namespace {

using namespace voice::gsmfr;

using Coded = std::array<std::uint8_t, kFrameBytes>;

/// Numbers that the blocks keep to themselves.
const std::set<std::string> kInner = namesOf(
    "ACF LARp_0_12 LARp_13_26 LARp_27_39 LARp_40_159 subsegment scal L_max_scaled L_max L_power "
    "dpp exp mant ep erp");

template <typename Probe>
Coded encoded(Encoder<Probe>& encoder, std::span<const std::int16_t> samples)
{
    Coded bytes;
    encoder.encode(samples.first<kFrame>(), bytes);
    return bytes;
}

template <typename Probe>
std::array<std::int16_t, kFrame> decoded(Decoder<Probe>& decoder, const std::uint8_t* bytes)
{
    Parameters parameters;
    require(zspsUnpackFrame_GSMFR_8u16s(bytes, parameters.data()), "UnpackFrame");
    std::array<std::int16_t, kFrame> samples;
    decoder.decode(parameters, samples);
    return samples;
}

void checkEncoder(const Vectors& vectors, const std::string& name)
{
    const Words signal = vectors.words("gsmfr/" + name + ".pcm");
    const auto want = vectors.read<std::uint8_t>("gsmfr/" + name + ".gsm");
    std::vector<std::uint8_t> got;
    Encoder<> encoder;
    encoder.start();
    for (std::size_t i = 0; i < recordsOf(signal.size(), kFrame, name + ".pcm"); ++i)
        for (const std::uint8_t byte : encoded(encoder, std::span(signal).subspan(i * kFrame)))
            got.push_back(byte);
    requireEqual(got, want, name + ".gsm");
}

void checkDecoder(const Vectors& vectors, const std::string& name)
{
    const auto frames = vectors.read<std::uint8_t>("gsmfr/" + name + ".gsm");
    const Words want = vectors.words("gsmfr/" + name + ".out.pcm");
    Words got;
    Decoder<> decoder;
    decoder.start();
    for (std::size_t i = 0; i < recordsOf(frames.size(), kFrameBytes, name + ".gsm"); ++i)
        for (const std::int16_t sample : decoded(decoder, &frames[i * kFrameBytes]))
            got.push_back(sample);
    requireEqual(got, want, name + ".out.pcm");
}

void checkTrace(const Vectors& vectors)
{
    const std::string file = "gsmfr/trace.txt";
    const Trace encoding(vectors, file, "encode_frame", "decode_frame");
    const Trace decoding(vectors, file, "decode_frame", "encode_frame");
    Encoder<Recorder> encoder;
    Decoder<Recorder> decoder;
    encoder.start();
    decoder.start();
    for (const auto& [number, wanted] : encoding.frames()) {
        const auto& in = wanted.at("in").at(0);
        const Words samples(in.begin(), in.end());
        recordsOf(samples.size(), kFrame, file);
        Recorder::results().clear();
        const Coded bytes = encoded(encoder, samples);
        encoding.requireFrame(number, Recorder::results(), kInner);
        Recorder::results().clear();
        decoded(decoder, bytes.data());
        decoding.requireFrame(number, Recorder::results(), kInner);
    }
}

} // namespace

void checkGsmFullRate(const Vectors& vectors, Checks& checks)
{
    for (const std::string name : {"speech", "quiet", "clip", "noisy", "music", "tones", "steps",
                                   "extreme", "pauses", "wrap"})
        checks.add("encoder, " + name, [&] { checkEncoder(vectors, name); });
    for (const std::string name : {"speech", "quiet", "clip", "noisy", "music", "tones", "steps",
                                   "extreme", "pauses", "wrap", "random"})
        checks.add("decoder, " + name, [&] { checkDecoder(vectors, name); });
    checks.add("every block of six frames", [&] { checkTrace(vectors); });
}

} // namespace zsp::conformance
