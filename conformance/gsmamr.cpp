// GSM-AMR: both detectors of voice activity with their whole records, the handler and the buffers
// of discontinuous transmission.

#include "conformance/gsmamr.hpp"
#include "conformance/families.hpp"

#include <algorithm>
#include <array>

namespace zsp::conformance {

namespace {

constexpr const char* kSignals[] = {
    "extremes",     "music",        "silence_steps",  "speech_babble15",
    "speech_car10", "speech_clean", "speech_pink5",   "speech_loud_clip",
    "speech_quiet", "tones",        "speech_white20",
};

/// A signal with what a caller passes beside it, and the records of a detector.
struct Signal {
    Words pcm, side, want;
    std::size_t frames;

    Signal(const Vectors& vectors, const std::string& name, const char* detector,
           std::size_t record)
        : pcm(vectors.words("gsmamr/" + name + ".pcm")),
          side(vectors.words("gsmamr/" + name + ".side")),
          want(vectors.words("gsmamr/" + name + detector)),
          frames(recordsOf(want.size(), record, name + detector))
    {
        if (pcm.size() != 160 * frames + 40 || side.size() != 4 * frames)
            throw Fault(name + ": the files differ in length");
    }
};

// The caller keeps the pitch word: a bit per frame.
void checkVad1(const Vectors& vectors, const std::string& name)
{
    const Signal signal(vectors, name, ".vad1", 59);
    Vad1State state = resetVad1();
    for (std::size_t t = 0; t < signal.frames; ++t) {
        const std::int16_t* side = &signal.side[4 * t];
        state.pitch = static_cast<std::int16_t>((state.pitch >> 1) | (side[1] ? 0x4000 : 0));
        std::int16_t flag = -1;
        require(zspsVAD1_GSMAMR_16s(&signal.pcm[160 * t], &state, &flag, side[0], side[2]),
                "a frame");
        Words got = wordsOf(state);
        got.insert(got.begin(), flag);
        requireEqual(got, std::span(&signal.want[59 * t], 59), "frame " + std::to_string(t));
    }
}

// The second word of a record says which half-frames were speech; the export does not tell.
void checkVad2(const Vectors& vectors, const std::string& name)
{
    const Signal signal(vectors, name, ".vad2", 96);
    Vad2State state{};
    for (std::size_t t = 0; t < signal.frames; ++t) {
        const std::int16_t* want = &signal.want[96 * t];
        const bool ltp = signal.side[4 * t + 3] != 0;
        std::int16_t flag = -1;
        // any bit of the flag counts
        require(zspsVAD2_GSMAMR_16s(&signal.pcm[160 * t], &state, &flag, ltp ? 1 << 16 : 0),
                "a frame");
        Words got = wordsOf(state);
        got.insert(got.begin(), {flag, want[1]});
        requireEqual(got, std::span(want, 96), "frame " + std::to_string(t));
    }
}

// Hangover and elapsed count carry on from record to record. The middle record sets them afresh.
void checkHandler(const Vectors& vectors)
{
    const Words words = vectors.words("gsmamr/dtx_handler.bin");
    const std::size_t records = recordsOf(words.size(), 8, "dtx_handler.bin");
    std::int16_t hangover = words[1], elapsed = words[2];
    for (std::size_t i = 0; i < records; ++i) {
        const std::int16_t* r = &words[8 * i];
        const std::string what = "record " + std::to_string(i);
        if (i == records / 2) {
            hangover = r[1];
            elapsed = r[2];
        }
        requireEqual(std::array{hangover, elapsed}, std::array{r[1], r[2]}, what + " before");
        std::int16_t mode = r[3], newSid = -1;
        require(zspsEncDTXHandler_GSMAMR_16s(&hangover, &elapsed, &mode, &newSid, r[0]), what);
        requireEqual(std::array{hangover, elapsed, mode, newSid},
                     std::array{r[4], r[5], r[6], r[7]}, what);
    }
}

// The whole histories: the newest entry is written, the others are kept.
void checkBuffers(const Vectors& vectors)
{
    constexpr std::size_t kRecord = 160 + 10 + 2;
    const Words words = vectors.words("gsmamr/dtx_buffer.bin");
    const std::size_t records = recordsOf(words.size(), kRecord, "dtx_buffer.bin");
    std::int16_t encIndex = 0, decIndex = 0;
    Words encLsp(80, 111), decLsp(80, 111), wantLsp(80, 111);
    Words encEnergy(8, 222), decEnergy(8, 222), wantEnergy(8, 222);
    for (std::size_t i = 0; i < records; ++i) {
        const std::string what = "record " + std::to_string(i);
        const std::int16_t *speech = &words[i * kRecord], *lsp = speech + 160, *want = lsp + 10;
        require(
            zspsEncDTXBuffer_GSMAMR_16s(speech, lsp, &encIndex, encLsp.data(), encEnergy.data()),
            what);
        require(
            zspsDecDTXBuffer_GSMAMR_16s(speech, lsp, &decIndex, decLsp.data(), decEnergy.data()),
            what);
        requireEqual(std::array{encIndex, decIndex}, std::array{want[0], want[0]},
                     what + ", index");
        if (want[0] < 0 || want[0] > 7) throw Fault(what + ": an index beyond the history");
        const auto at = static_cast<std::size_t>(want[0]);
        std::copy(lsp, lsp + 10, wantLsp.begin() + static_cast<std::ptrdiff_t>(at * 10));
        wantEnergy[at] = want[1];
        requireEqual(encLsp, wantLsp, what + ", encoder's LSPs");
        requireEqual(decLsp, wantLsp, what + ", decoder's LSPs");
        requireEqual(encEnergy, wantEnergy, what + ", encoder's energies");
        requireEqual(std::array{decEnergy[at] >> 1}, std::array{int{want[1]}},
                     what + ", half of the decoder's energy");
    }
}

} // namespace

void checkGsmAmr(const Vectors& vectors, Checks& checks)
{
    for (const std::string name : kSignals)
        checks.add("detector 1, " + name, [&] { checkVad1(vectors, name); });
    for (const std::string name : kSignals)
        checks.add("detector 2, " + name, [&] { checkVad2(vectors, name); });
    checks.add("DTX handler", [&] { checkHandler(vectors); });
    checks.add("DTX buffers", [&] { checkBuffers(vectors); });
}

} // namespace zsp::conformance
