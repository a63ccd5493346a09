// AMR-WB: the detector of voice activity with its whole record, immittance spectral frequencies,
// the quantiser of comfort noise.

#include "conformance/families.hpp"
#include "zspsc/amrwb/isf.h"
#include "zspsc/amrwb/vad.h"

#include <algorithm>
#include <array>

namespace zsp::conformance {

namespace {

constexpr const char* kSignals[] = {
    "extremes",     "music",        "silence_steps",    "speech_babble15",
    "speech_clean", "speech_pink5", "speech_loud_clip", "tones",
};

// Flag, tone word and whole record after every frame.
void checkVad(const Vectors& vectors, const std::string& name)
{
    constexpr std::size_t kRecord = 89; // the tone word before the call in front
    const Words pcm = vectors.words("amrwb/" + name + ".pcm");
    const Words want = vectors.words("amrwb/" + name + ".vad");
    const std::size_t frames = recordsOf(want.size(), kRecord, name + ".vad");
    if (pcm.size() != 256 * frames) throw Fault(name + ": the files differ in length");

    VadWbState state{};
    require(zspsVADInit_AMRWB_16s(&state), "the initialisation");
    for (std::size_t t = 0; t < frames; ++t) {
        std::int16_t tone = want[kRecord * t], flag = -1;
        require(zspsVAD_AMRWB_16s(&pcm[256 * t], &state, &tone, &flag), "a frame");
        Words got = wordsOf(state);
        got.insert(got.begin(), {flag, tone});
        requireEqual(got, std::span(&want[kRecord * t + 1], kRecord - 1),
                     "frame " + std::to_string(t));
    }
}

using Convert = ZspStatus (*)(const std::int16_t*, std::int16_t*, std::int32_t);

void checkConversion(const Vectors& vectors, Convert convert, const std::string& file)
{
    const Words words = vectors.words("amrwb/" + file);
    for (std::size_t r = 0; r < recordsOf(words.size(), 32, file); ++r) {
        const std::string what = "record " + std::to_string(r);
        const std::span given(&words[32 * r], 16), want(&words[32 * r + 16], 16);
        Words got(16), inPlace(given.begin(), given.end());
        require(convert(given.data(), got.data(), 16), what);
        requireEqual(got, want, what);
        require(convert(inPlace.data(), inPlace.data(), 16), what);
        requireEqual(inPlace, want, what + ", in place");
    }
}

void checkQuantiser(const Vectors& vectors)
{
    const Words words = vectors.words("amrwb/sid_quant.bin");
    for (std::size_t r = 0; r < recordsOf(words.size(), 37, "sid_quant.bin"); ++r) {
        const std::string what = "record " + std::to_string(r);
        const std::int16_t* given = &words[37 * r];
        Words isf(given, given + 16), quantised(16), indices(5);
        require(zspsISFQuantDTX_AMRWB_16s(isf.data(), quantised.data(), indices.data()), what);
        requireEqual(quantised, std::span(given + 16, 16), what);
        requireEqual(indices, std::span(given + 32, 5), what + ", indices");
        require(zspsISFQuantDTX_AMRWB_16s(isf.data(), isf.data(), indices.data()), what);
        requireEqual(isf, quantised, what + ", in place");
    }
}

void checkNoiseDecoder(const Vectors& vectors)
{
    const Words words = vectors.words("amrwb/sid_decode.bin");
    for (std::size_t r = 0; r < recordsOf(words.size(), 21, "sid_decode.bin"); ++r) {
        const std::int16_t* given = &words[21 * r];
        const std::string what = "record " + std::to_string(r);
        Words isf(16);
        require(zspsISFQuantDecodeDTX_AMRWB_16s(given, isf.data()), what);
        requireEqual(isf, std::span(given + 5, 16), what);
    }
}

} // namespace

void checkAmrWb(const Vectors& vectors, Checks& checks)
{
    for (const std::string name : kSignals)
        checks.add("detector, " + name, [&] { checkVad(vectors, name); });
    checks.add("ISF to ISP",
               [&] { checkConversion(vectors, zspsISFToISP_AMRWB_16s, "isf_to_isp.bin"); });
    checks.add("ISP to ISF",
               [&] { checkConversion(vectors, zspsISPToISF_Norm_AMRWB_16s, "isp_to_isf.bin"); });
    checks.add("comfort-noise quantiser", [&] { checkQuantiser(vectors); });
    checks.add("comfort-noise decoder", [&] { checkNoiseDecoder(vectors); });
}

} // namespace zsp::conformance
