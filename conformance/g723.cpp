// G.723.1: signals through an encoder and a decoder made of the blocks, and what the blocks give in
// some frames.

#include "conformance/g723.hpp"
#include "conformance/families.hpp"

#include <algorithm>
#include <array>
#include <cstdlib>

namespace zsp::conformance {

namespace {

using g723::Decoder;
using g723::Encoder;
using g723::kFrame;

/// Mode 63 or 53, then dtx, nohp or nopf.
Encoder encoderFor(const std::string& mode)
{
    Encoder encoder(mode.starts_with("53") ? zspG723Rate53 : zspG723Rate63);
    encoder.dtx = mode.ends_with("dtx");
    encoder.highPass = !mode.ends_with("nohp");
    return encoder;
}

void checkEncoder(const Vectors& vectors, const std::string& signal, const std::string& mode)
{
    const Words samples = vectors.words("g723/" + signal + ".pcm");
    std::vector<std::uint8_t> got;
    Encoder encoder = encoderFor(mode);
    for (std::size_t i = 0; i < recordsOf(samples.size(), kFrame, signal + ".pcm"); ++i)
        for (const std::uint8_t byte : encoder.encode(&samples[i * kFrame]))
            got.push_back(byte);
    const std::string name = signal + "." + mode + ".g723";
    requireEqual(got, vectors.read<std::uint8_t>("g723/" + name), name);
}

void checkDecoder(const Vectors& vectors, const std::string& stream, const std::string& output)
{
    const auto bytes = vectors.read<std::uint8_t>("g723/" + stream + ".g723");
    const Words want = vectors.words("g723/" + output + ".out.pcm");
    Decoder decoder;
    decoder.postFilters = !output.ends_with("nopf");
    Words got;
    for (std::size_t at = 0; at < bytes.size() && got.size() < want.size();) {
        constexpr std::array<std::size_t, 4> kBytes = {24, 20, 4, 1};
        const std::size_t length = kBytes[bytes[at] & 3];
        if (at + length > bytes.size()) throw Fault(stream + ".g723 ends within a frame");
        for (const std::int16_t x : decoder.decode(&bytes[at], length))
            got.push_back(x);
        at += length;
    }
    requireEqual(got, want, output + ".out.pcm");
}

/// The lines of a trace, NAME COUNT: VALUES in the order of processing; those of inner results that
/// no block gives are passed over.
class Trace {
  public:
    Trace(const Vectors& vectors, const std::string& name)
        : name_(name), lines_(vectors.runs("g723/" + name))
    {
    }

    std::vector<std::int32_t> next(const std::string& name)
    {
        while (at_ < lines_.size() && lines_[at_][0] != name)
            ++at_;
        if (at_ == lines_.size()) throw Fault(name_ + " has no further " + name);
        std::vector<std::int32_t> values;
        for (std::size_t i = 2; i < lines_[at_].size(); ++i)
            values.push_back(
                static_cast<std::int32_t>(std::strtol(lines_[at_][i].c_str(), nullptr, 10)));
        ++at_;
        return values;
    }
    [[nodiscard]] std::size_t at() const { return at_; }
    [[nodiscard]] std::size_t left() const { return lines_.size() - at_; }

  private:
    std::string name_;
    std::vector<std::vector<std::string>> lines_;
    std::size_t at_ = 0;
};

void checkTrace(const Vectors& vectors, const std::string& mode)
{
    Trace trace(vectors, "trace." + mode + ".txt"), inputs = trace;
    Encoder encoder = encoderFor(mode);
    Decoder decoder;
    encoder.probe =
        decoder.probe = [&trace](const std::string& name, std::span<const std::int32_t> result) {
            requireEqual(result, trace.next(name), name + " in line " + std::to_string(trace.at()));
        };
    while (trace.left() > 0) {
        const auto in = inputs.next("in");
        const Words samples(in.begin(), in.end());
        recordsOf(samples.size(), kFrame, "trace");
        const auto frame = encoder.encode(samples.data());
        decoder.decode(frame.data(), frame.size());
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
