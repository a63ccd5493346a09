// G.729's decoder: streams of the main body and of Annex A, with pauses, losses, bit errors and
// random frames of all types, and what every block gives in some frames.

#include "voice/codec/g729/g729_decoder.hpp"
#include "conformance/families.hpp"
#include "conformance/trace.hpp"

namespace zsp::conformance {

namespace {

using namespace voice;

/// Numbers that the blocks keep to themselves.
const std::set<std::string> kInner = namesOf(
    "frame frame_type parameters past_gain_energies predicted_code_gain predicted_code_gain_q "
    "postfilter_lag postfilter_delay_int postfilter_phase long_term_gain tilt_coefficient "
    "postfilter_impulse_response cng_fraction cng_pulse_positions cng_pulse_signs cng_gaussian "
    "cng_mixed cng_code_gain subframe");

struct StreamFrame {
    G729Arrival arrival;
    std::vector<std::uint8_t> bytes;
};

std::vector<StreamFrame> framesOf(const Vectors& vectors, const std::string& name)
{
    const auto all = vectors.read<std::uint8_t>("g729codec/" + name);
    const bool isContainer = name.ends_with("f");
    std::vector<StreamFrame> frames;
    for (std::size_t at = isContainer ? 7 : 0; at < all.size();) {
        StreamFrame f{G729Arrival::received, {}};
        std::size_t length = all.size() - at < kG729Bytes ? kG729SidBytes : kG729Bytes;
        if (isContainer) {
            length = all[at++];
            if (length == 0) f.arrival = G729Arrival::untransmitted;
            if (length == 255) f.arrival = G729Arrival::lost;
            length %= 255;
        }
        if (all.size() - at < length) throw Fault(name + " ends inside of a frame");
        const auto first = all.begin() + static_cast<std::ptrdiff_t>(at);
        f.bytes.assign(first, first + static_cast<std::ptrdiff_t>(length));
        frames.push_back(f);
        at += length;
    }
    return frames;
}

/// Decodes all of a stream; calls after(number) behind each frame.
template <typename Probe, typename After>
Words decoded(const std::vector<StreamFrame>& frames, bool annexA, After after)
{
    G729Decoder<Probe> decoder;
    decoder.start(annexA);
    Words samples;
    for (std::size_t n = 0; n < frames.size(); ++n) {
        std::array<std::int16_t, kG729Frame> some;
        decoder.decode(frames[n].arrival, frames[n].bytes, true, some);
        samples.insert(samples.end(), some.begin(), some.end());
        after(static_cast<std::int32_t>(n));
    }
    return samples;
}

void checkRun(const Vectors& vectors, const std::vector<std::string>& run)
{
    const Words got =
        decoded<NoProbe>(framesOf(vectors, run.at(3)), run.at(1) == "g729a", [](std::int32_t) {});
    requireEqual(got, vectors.words("g729codec/" + run.at(4)), run.at(4));
}

void checkTrace(const Vectors& vectors, const std::string& name, const std::string& stream)
{
    const Trace trace(vectors, "g729codec/decode." + name + ".trace.txt", "frame");
    Recorder::results().clear();
    decoded<Recorder>(framesOf(vectors, stream), name.starts_with("annexa"),
                      [&](std::int32_t number) {
                          if (trace.frames().contains(number))
                              trace.requireFrame(number, Recorder::results(), kInner);
                          Recorder::results().clear();
                      });
}

} // namespace

void checkG729Decoder(const Vectors& vectors, Checks& checks)
{
    for (const auto& run : vectors.runs("g729codec/decode.runs.txt"))
        checks.add("decoder, " + run.at(1) + ", " + run.at(3), [&] { checkRun(vectors, run); });
    const std::pair<const char*, const char*> kTraces[] = {
        {"main", "speech_clean.m.g729"},
        {"annexa", "speech_clean.a.g729"},
        {"main_pauses", "speech_noise.mdtx.g729f"},
        {"annexa_pauses", "speech_noise.adtx.g729f"},
        {"main_losses", "speech_clean_erased.mer.g729f"},
        {"annexa_losses", "speech_clean_erased.aer.g729f"}};
    for (const auto& [name, stream] : kTraces)
        checks.add(std::string("every block of the decoder, ") + name,
                   [&, trace = name, from = stream] { checkTrace(vectors, trace, from); });
}

} // namespace zsp::conformance
