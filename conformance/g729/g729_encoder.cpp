// G.729's encoder: signals through the main body and Annex A, with and without pauses, and what the
// blocks give in some frames.

#include "voice/codec/g729/g729_encoder.hpp"
#include "conformance/families.hpp"
#include "conformance/trace.hpp"

namespace zsp::conformance {

namespace {

using namespace voice;

/// What the blocks keep to themselves, and the places of the trace.
const std::set<std::string> kInner = namesOf(
    "frame subframe frame_type autocorr_high autocorr_low lag_windowed_high lag_windowed_low "
    "reflection lpc_interpolated lsf lsf_weights lsp_predictor lsp_target lsp_first_stage "
    "lsp_second_low lsp_second_high lsp_distance lsf_quantised lpc_quantised lpc_weighted "
    "lpc_weighted_numerator lpc_weighted_denominator open_loop_sections normalised_correlations "
    "fixed_threshold impulse_correlations past_gain_energies predicted_code_gain "
    "predicted_code_gain_q best_gains "
    "gain_preselect_1 gain_preselect_2");

using FrameSamples = std::span<const std::int16_t, kG729Frame>;

/// Raw frames, or with pauses a container's.
void checkSignal(const Vectors& vectors, const std::string& signal, bool annexA, bool hasDtx)
{
    const Words samples = vectors.words("g729codec/" + signal + ".pcm");
    const std::string head = "#!G729\n";
    std::vector<std::uint8_t> got;
    if (hasDtx) got.assign(head.begin(), head.end());
    G729Encoder<> encoder;
    encoder.start(annexA);
    for (std::size_t i = 0; i < recordsOf(samples.size(), kG729Frame, signal + ".pcm"); ++i) {
        std::array<std::uint8_t, kG729Bytes> bytes;
        const G729Coded coded =
            encoder.encode(FrameSamples(&samples[kG729Frame * i], kG729Frame), hasDtx, bytes);
        if (hasDtx) got.push_back(static_cast<std::uint8_t>(coded.bytes));
        for (std::size_t k = 0; k < coded.bytes; ++k)
            got.push_back(bytes[k]);
    }
    const std::string name = signal + (annexA ? ".a" : ".m") + (hasDtx ? "dtx.g729f" : ".g729");
    requireEqual(got, vectors.read<std::uint8_t>("g729codec/" + name), name);
}

void checkBlocks(const Vectors& vectors, bool annexA)
{
    const Trace trace(
        vectors, std::string("g729codec/encode.") + (annexA ? "annexa" : "main") + ".trace.txt",
        "frame");
    const Words samples = vectors.words("g729codec/sentence.pcm");
    G729Encoder<Recorder> encoder;
    encoder.start(annexA);
    const std::int32_t last = trace.frames().rbegin()->first;
    for (std::int32_t n = 0; n <= last; ++n) {
        Recorder::results().clear();
        std::array<std::uint8_t, kG729Bytes> bytes;
        const auto at = kG729Frame * static_cast<std::size_t>(n);
        encoder.encode(FrameSamples(&samples.at(at), kG729Frame), false, bytes);
        if (trace.frames().contains(n)) trace.requireFrame(n, Recorder::results(), kInner);
    }
}

} // namespace

void checkG729Encoder(const Vectors& vectors, Checks& checks)
{
    for (const std::string signal : {"extremes", "rare_filters", "rare_taming", "sentence",
                                     "silence_steps", "speech_noise", "vad_edges"})
        for (const bool annexA : {true, false})
            for (const bool hasDtx : {false, true})
                checks.add(
                    "encoder, " + signal + (annexA ? ", Annex A" : ", main body") +
                        (hasDtx ? " with pauses" : ""),
                    [&, signal, annexA, hasDtx] { checkSignal(vectors, signal, annexA, hasDtx); });
    for (const bool annexA : {true, false})
        checks.add(std::string("encoder's blocks, ") + (annexA ? "Annex A" : "main body"),
                   [&, annexA] { checkBlocks(vectors, annexA); });
}

} // namespace zsp::conformance
