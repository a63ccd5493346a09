// G.728: signals through an encoder and a decoder made of the blocks, with and without post-filter
// and with losses, and what every block gives in some frames of speech and noise.

#include "conformance/families.hpp"
#include "conformance/trace.hpp"
#include "voice/codec/g728/g728_decoder.hpp"
#include "voice/codec/g728/g728_encoder.hpp"

#include <algorithm>

namespace zsp::conformance {

namespace {

using voice::G728Decoder;
using voice::G728Encoder;
using voice::kG728Frame;
using voice::kG728FrameBytes;
using Octets = std::vector<std::uint8_t>;
/// Signals, which the traces print with their oldest sample first.
const std::set<std::string> kSignals = {
    "speech",   "zero_input_weighted", "speech_weighted", "weighting_memory", "decoded",
    "residual", "decimated",           "output",          "excitation_past"};
/// Numbers that the blocks keep to themselves.
const std::set<std::string> kInner = {"target", "target_correlated", "postfiltered",
                                      "erasure_delay"};

/// What the blocks have given, as the traces print it.
Results printed()
{
    Results results = Recorder::results();
    for (auto& [name, all] : results)
        for (auto& values : all) {
            if (values.size() == 6 || values.size() == 2) { // block floating point: Q comes first
                std::rotate(values.begin(), values.end() - 1, values.end());
                std::reverse(values.begin() + 1, values.end());
            }
            if (kSignals.contains(name)) std::reverse(values.begin(), values.end());
        }
    return results;
}

/// Works on frame `number` and, if the trace has it, holds what the blocks give against that.
template <typename Work>
void traced(std::size_t number, const Trace* trace, Work work)
{
    Recorder::results().clear();
    work();
    const auto frame = static_cast<std::int32_t>(number);
    if (trace && trace->frames().contains(frame)) trace->requireFrame(frame, printed(), kInner);
}

template <typename Probe>
Octets encoded(const Words& samples, const Trace* trace = nullptr)
{
    recordsOf(samples.size(), kG728Frame, "the signal");
    G728Encoder<Probe> encoder;
    encoder.start();
    Octets bytes;
    for (std::size_t at = 0; at < samples.size(); at += kG728Frame) {
        std::array<std::uint8_t, kG728FrameBytes> frame;
        traced(at / kG728Frame, trace, [&] {
            encoder.encode(std::span(samples).subspan(at).template first<kG728Frame>(), frame);
        });
        bytes.insert(bytes.end(), frame.begin(), frame.end());
    }
    return bytes;
}

/// Frames of a file; lost ones are empty.
std::vector<Octets> framesOf(const Vectors& vectors, const std::string& name)
{
    const Octets bytes = vectors.read<std::uint8_t>(name);
    const bool isContainer = name.ends_with("f");
    std::vector<Octets> frames;
    for (std::size_t at = isContainer ? 7 : 0; at < bytes.size();) {
        const std::size_t count = isContainer && bytes[at++] == 255 ? 0 : kG728FrameBytes;
        if (bytes.size() - at < count) throw Fault(name + " ends inside of a frame");
        frames.emplace_back(bytes.begin() + static_cast<std::ptrdiff_t>(at),
                            bytes.begin() + static_cast<std::ptrdiff_t>(at + count));
        at += count;
    }
    return frames;
}

template <typename Probe>
Words decoded(const std::vector<Octets>& frames, bool hasPostFilter, const Trace* trace = nullptr)
{
    G728Decoder<Probe> decoder;
    decoder.start();
    Words samples;
    for (std::size_t n = 0; n < frames.size(); ++n) {
        std::array<std::int16_t, kG728Frame> some;
        traced(n, trace, [&] { decoder.decode(frames[n], hasPostFilter, some); });
        samples.insert(samples.end(), some.begin(), some.end());
    }
    return samples;
}

void checkRun(const Vectors& vectors, const std::vector<std::string>& run)
{
    const std::string in = "g728/" + run.at(2), out = "g728/" + run.at(3);
    if (run[0] == "encode")
        requireEqual(encoded<voice::NoProbe>(vectors.words(in)), vectors.read<std::uint8_t>(out),
                     out);
    else
        requireEqual(decoded<voice::NoProbe>(framesOf(vectors, in), run[1] == "on"),
                     vectors.words(out), out);
}

} // namespace

void checkG728(const Vectors& vectors, Checks& checks)
{
    for (const auto& run : vectors.runs("g728/runs.txt"))
        checks.add(run.at(0) + "r, " + run.at(2) + (run.at(1) == "off" ? ", no post-filter" : ""),
                   [&] { checkRun(vectors, run); });
    for (const std::string name : {"trace_encoder.txt", "trace_encoder_start.txt"})
        checks.add("every block of the encoder, " + name, [&] {
            const Trace trace(vectors, "g728/" + name, "frame");
            encoded<Recorder>(vectors.words("g728/speech.pcm"), &trace);
        });
    const std::pair<const char*, const char*> kDecoded[] = {
        {"trace_decoder.txt", "speech.g728"},
        {"trace_erasure_voiced.txt", "speech_erased.g728f"},
        {"trace_erasure_unvoiced.txt", "noise_erased.g728f"}};
    for (const auto& [name, coded] : kDecoded)
        checks.add(
            std::string("every block of the decoder, ") + name, [&, file = name, in = coded] {
                const Trace trace(vectors, std::string("g728/") + file, "frame");
                decoded<Recorder>(framesOf(vectors, std::string("g728/") + in), true, &trace);
            });
}

} // namespace zsp::conformance
