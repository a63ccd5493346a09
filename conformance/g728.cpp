// G.728: signals through an encoder and a decoder made of the blocks, with and without post-filter
// and with losses, and what every block gives in some frames of speech and noise.

#include "conformance/families.hpp"
#include "voice/codec/g728/g728_decoder.hpp"
#include "voice/codec/g728/g728_encoder.hpp"

#include <algorithm>
#include <cstdlib>
#include <map>
#include <type_traits>

namespace zsp::conformance {

namespace {

using voice::G728Decoder;
using voice::G728Encoder;
using voice::kG728Frame;
using voice::kG728FrameBytes;
using Octets = std::vector<std::uint8_t>;
using Values = std::vector<std::int64_t>;
using Results = std::map<std::string, Values>; // by name
using Frame = std::vector<Results>;            // of the frame itself, then of each vector

/// Signals, which the traces print with their oldest sample first.
const std::set<std::string> kSignals = {
    "speech",   "zero_input_weighted", "speech_weighted", "weighting_memory", "decoded",
    "residual", "decimated",           "output",          "excitation_past"};
/// Numbers that the blocks keep to themselves; indices are held as what is sent.
const std::set<std::string> kInner = {"target",        "target_correlated", "postfiltered",
                                      "erasure_delay", "shape_index",       "gain_index"};

/// Writes down what the blocks give.
struct Recorder {
    static inline thread_local Frame frame{1};

    template <typename T>
    static void show(const char* name, const T& words)
    {
        const std::string what = name;
        if (what == "count") {
            frame.emplace_back();
            return;
        }
        Values values;
        if constexpr (std::is_integral_v<T>)
            values = {words};
        else
            values.assign(words.begin(), words.end());
        if (values.size() == 6 || values.size() == 2) { // block floating point: the Q comes first
            std::rotate(values.begin(), values.end() - 1, values.end());
            std::reverse(values.begin() + 1, values.end());
        }
        if (kSignals.contains(what)) std::reverse(values.begin(), values.end());
        frame.back()[what] = values;
    }
};

/// Frames of a trace by their numbers.
std::map<int, Frame> readTrace(const Vectors& vectors, const std::string& name)
{
    std::map<int, Frame> frames;
    Frame* frame = nullptr;
    for (const auto& line : vectors.runs(name)) {
        const auto number = [](const std::string& word) {
            return std::strtol(word.c_str(), nullptr, 10);
        };
        if (line[0] == "frame") {
            frame = &frames[static_cast<int>(number(line.at(1)))];
            frame->resize(1);
            continue;
        }
        if (!frame) throw Fault(name + " begins without a frame");
        if (line[0] == "count") {
            frame->emplace_back();
            continue;
        }
        Values values;
        for (std::size_t i = 2; i < line.size(); ++i)
            values.push_back(number(line[i]));
        frame->back()[line[0]] = values;
    }
    return frames;
}

/// Faults where a block of the frame that was coded last has given something else.
void requireFrame(const Frame& want, const std::string& what)
{
    if (Recorder::frame.size() != want.size()) throw Fault(what + ": other vectors");
    for (std::size_t i = 0; i < want.size(); ++i)
        for (const auto& [name, values] : want[i])
            if (!kInner.contains(name))
                requireEqual(Recorder::frame[i][name], values,
                             what + ", part " + std::to_string(i) + ", " + name);
}

template <typename Probe>
Octets encoded(const Words& samples, const std::map<int, Frame>& want = {})
{
    recordsOf(samples.size(), kG728Frame, "the signal");
    G728Encoder<Probe> encoder;
    encoder.start();
    Octets bytes;
    for (std::size_t at = 0; at < samples.size(); at += kG728Frame) {
        std::array<std::uint8_t, kG728FrameBytes> frame;
        Recorder::frame.assign(1, {});
        encoder.encode(std::span(samples).subspan(at).template first<kG728Frame>(), frame);
        bytes.insert(bytes.end(), frame.begin(), frame.end());
        const auto number = static_cast<int>(at / kG728Frame);
        if (want.contains(number)) requireFrame(want.at(number), "frame " + std::to_string(number));
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
Words decoded(const std::vector<Octets>& frames, bool hasPostFilter,
              const std::map<int, Frame>& want = {})
{
    G728Decoder<Probe> decoder;
    decoder.start();
    Words samples;
    for (std::size_t n = 0; n < frames.size(); ++n) {
        std::array<std::int16_t, kG728Frame> some;
        Recorder::frame.assign(1, {});
        decoder.decode(frames[n], hasPostFilter, some);
        samples.insert(samples.end(), some.begin(), some.end());
        const auto number = static_cast<int>(n);
        if (want.contains(number)) requireFrame(want.at(number), "frame " + std::to_string(number));
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
    for (const std::string trace : {"trace_encoder.txt", "trace_encoder_start.txt"})
        checks.add("every block of the encoder, " + trace, [&] {
            encoded<Recorder>(vectors.words("g728/speech.pcm"),
                              readTrace(vectors, "g728/" + trace));
        });
    const std::pair<const char*, const char*> kDecoded[] = {
        {"trace_decoder.txt", "speech.g728"},
        {"trace_erasure_voiced.txt", "speech_erased.g728f"},
        {"trace_erasure_unvoiced.txt", "noise_erased.g728f"}};
    for (const auto& [trace, coded] : kDecoded)
        checks.add(std::string("every block of the decoder, ") + trace,
                   [&, name = trace, in = coded] {
                       decoded<Recorder>(framesOf(vectors, std::string("g728/") + in), true,
                                         readTrace(vectors, std::string("g728/") + name));
                   });
}

} // namespace zsp::conformance
