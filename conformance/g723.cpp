// G.723.1: signals through an encoder and a decoder made of the blocks, and what the blocks give in
// some frames.

#include "conformance/families.hpp"
#include "conformance/trace.hpp"
#include "voice/codec/g723/g723_decoder.hpp"
#include "voice/codec/g723/g723_encoder.hpp"

namespace zsp::conformance {

namespace {

using voice::G723Decoder;
using voice::G723Encoder;
using voice::G723Options;
using voice::kG723Frame;
using voice::kG723FrameBytes;

/// Numbers that the blocks keep to themselves.
const std::set<std::string> kInsideEncoder = namesOf(
    "shifted taming_test acb_correlations lag impulse_response_acelp acelp_backward "
    "acelp_correlations acelp_pulses grid train mlq_trial synthesis ringing_fir ringing_iir "
    "vad_aen vad_energy vad_noise_level vad_vcnt vad_hcnt vad_noise_lpc sid_gain cng_gain "
    "random_seed frame_type sid_ener sid_acf sid_acf_shift sid_gain_index sid_lpc sid_rc "
    "sid_rc_shift cng_lag cng_acb_gain");
const std::set<std::string> kInsideDecoder =
    namesOf("pitch_postfilter_lag pitch_postfilter_gain pitch_postfilter_scale sid_gain cng_gain "
            "tilt_memory");

/// Mode 63 or 53, then dtx or nohp.
G723Options optionsOf(const std::string& mode)
{
    return {.rate = mode.starts_with("53") ? zspG723Rate53 : zspG723Rate63,
            .hasHighPass = !mode.ends_with("nohp"),
            .hasDtx = mode.ends_with("dtx")};
}

template <typename Probe>
std::vector<std::uint8_t> encoded(G723Encoder<Probe>& encoder,
                                  std::span<const std::int16_t> samples, const std::string& mode)
{
    std::vector<std::uint8_t> bytes(kG723FrameBytes);
    bytes.resize(encoder
                     .encode(samples.first<kG723Frame>(), optionsOf(mode),
                             std::span(bytes).template first<kG723FrameBytes>())
                     .bytes);
    return bytes;
}

template <typename Probe>
std::array<std::int16_t, kG723Frame>
decoded(G723Decoder<Probe>& decoder, std::span<const std::uint8_t> bytes, bool hasPostFilter)
{
    std::array<std::int16_t, kG723Frame> samples;
    decoder.decode(bytes, false, hasPostFilter, samples);
    return samples;
}

void checkEncoder(const Vectors& vectors, const std::string& signal, const std::string& mode)
{
    const Words samples = vectors.words("g723/" + signal + ".pcm");
    std::vector<std::uint8_t> got;
    G723Encoder<> encoder;
    encoder.start();
    for (std::size_t i = 0; i < recordsOf(samples.size(), kG723Frame, signal + ".pcm"); ++i)
        for (const std::uint8_t byte :
             encoded(encoder, std::span(samples).subspan(i * kG723Frame), mode))
            got.push_back(byte);
    const std::string name = signal + "." + mode + ".g723";
    requireEqual(got, vectors.read<std::uint8_t>("g723/" + name), name);
}

void checkDecoder(const Vectors& vectors, const std::string& stream, const std::string& output)
{
    const auto bytes = vectors.read<std::uint8_t>("g723/" + stream + ".g723");
    const Words want = vectors.words("g723/" + output + ".out.pcm");
    G723Decoder<> decoder;
    decoder.start();
    Words got;
    for (std::size_t at = 0; at < bytes.size() && got.size() < want.size();) {
        constexpr std::array<std::size_t, 4> kBytes = {24, 20, 4, 1};
        const std::size_t length = kBytes[bytes[at] & 3];
        if (at + length > bytes.size()) throw Fault(stream + ".g723 ends within a frame");
        for (const std::int16_t x :
             decoded(decoder, std::span(bytes).subspan(at, length), !output.ends_with("nopf")))
            got.push_back(x);
        at += length;
    }
    requireEqual(got, want, output + ".out.pcm");
}

void checkTrace(const Vectors& vectors, const std::string& mode)
{
    const std::string file = "g723/trace." + mode + ".txt";
    const Trace encoding(vectors, file, "encode_frame", "decode_frame");
    const Trace decoding(vectors, file, "decode_frame", "encode_frame");
    G723Encoder<Recorder> encoder;
    G723Decoder<Recorder> decoder;
    encoder.start();
    decoder.start();
    for (const auto& [number, wanted] : encoding.frames()) {
        const auto& in = wanted.at("in").at(0);
        const Words samples(in.begin(), in.end());
        recordsOf(samples.size(), kG723Frame, file);
        Recorder::results().clear();
        const auto bytes = encoded(encoder, samples, mode);
        auto inside = kInsideEncoder;
        if (wanted.at("vad").at(0).at(0) == 0) inside.insert("lsp_index"); // not sent
        encoding.requireFrame(number, Recorder::results(), inside);
        Recorder::results().clear();
        decoded(decoder, bytes, true);
        decoding.requireFrame(number, Recorder::results(), kInsideDecoder);
    }
}

} // namespace

void checkG723(const Vectors& vectors, Checks& checks)
{
    using Modes = std::vector<std::string>;
    const std::pair<const char*, Modes> kSignals[] = {
        {"speech", {"63", "53", "63dtx", "53dtx", "63nohp"}},
        {"pauses", {"63", "53", "63dtx", "53dtx"}},
        {"tones", {"63", "53"}},
        {"extreme", {"63", "53"}},
        {"budget", {"53"}}};
    for (const auto& [name, modes] : kSignals)
        for (const std::string& mode : modes)
            checks.add(std::string("encoder, ") + name + ", " + mode,
                       [&, signal = name] { checkEncoder(vectors, signal, mode); });
    for (const std::string stream : {"speech.63", "pauses.53dtx", "extreme.53", "lost.63",
                                     "lost.53dtx", "mixed.rates", "lsp.63", "random.all"})
        checks.add("decoder, " + stream, [&] { checkDecoder(vectors, stream, stream); });
    checks.add("decoder without post-filters",
               [&] { checkDecoder(vectors, "speech.63", "speech.63.nopf"); });
    for (const std::string mode : {"63", "53", "63dtx"})
        checks.add("blocks of some frames, " + mode, [&] { checkTrace(vectors, mode); });
}

} // namespace zsp::conformance
