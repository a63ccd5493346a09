// GSM full rate: signals through an encoder and a decoder made of the blocks, and every block's
// result in some frames of speech.

#include "conformance/families.hpp"
#include "zspsc/gsmfr/frame.h"
#include "zspsc/gsmfr/residual.h"
#include "zspsc/gsmfr/shortterm.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <functional>

namespace zsp::conformance {

namespace {

constexpr std::size_t kFrame = 160, kSegment = 40, kPast = 120, kPulses = 13, kBytes = 33;

/// What sees a block's result under the name that the standard's clauses give it.
using Probe = std::function<void(const char* name, std::span<const std::int32_t> result)>;

template <typename T>
void show(const Probe& probe, const char* name, const T* values, std::size_t count)
{
    if (probe) probe(name, std::vector<std::int32_t>(values, values + count));
}

/// Reflection coefficients from coded log area ratios, which follow those of the frame before.
struct Ratios {
    std::array<std::int16_t, 8> last{};

    std::array<std::int16_t, 32> reflect(const std::int16_t* codes, const Probe& probe)
    {
        constexpr const char* kParts[] = {"rp_0_12", "rp_13_26", "rp_27_39", "rp_40_159"};
        std::array<std::int16_t, 8> now{};
        std::array<std::int16_t, 32> coefs{};
        require(zspsLARDequant_GSMFR_16s(codes, now.data()), "LARDequant");
        require(zspsLARInterpolateToReflect_GSMFR_16s(last.data(), now.data(), coefs.data()),
                "LARInterpolateToReflect");
        show(probe, "LARpp", now.data(), 8);
        for (std::size_t i = 0; i < 4; ++i)
            show(probe, kParts[i], &coefs[8 * i], 8);
        last = now;
        return coefs;
    }
};

struct Encoder {
    Probe probe;
    ZspPreprocessState_GSMFR before{};
    Ratios ratios;
    std::array<std::int16_t, 8> memory{};
    Words line = Words(kPast); // the residual, from 120 zeros on

    void shortTerm(Words& s, std::int16_t* codes)
    {
        std::array<std::int32_t, 9> acf{};
        std::int32_t scale = 0;
        require(zspsPreprocess_GSMFR_16s(s.data(), s.data(), kFrame, &before), "Preprocess");
        show(probe, "s", s.data(), kFrame);
        require(zspsAutoCorr_GSMFR_16s32s_I(s.data(), acf.data(), &scale), "AutoCorr");
        show(probe, "scalauto", &scale, 1);
        show(probe, "L_ACF", acf.data(), 9);
        require(zspsSchur_GSMFR_32s16s(acf.data(), codes), "Schur");
        show(probe, "r", codes, 8);
        require(zspsReflectToLAR_GSMFR_16s(codes, codes), "ReflectToLAR");
        show(probe, "LAR", codes, 8);
        require(zspsLARQuant_GSMFR_16s(codes, codes), "LARQuant");
        show(probe, "LARc", codes, 8);
        show(probe, "s_rescaled", s.data(), kFrame);
        const auto reflect = ratios.reflect(codes, probe);
        require(zspsShortTermAnalysisFilter_GSMFR_16s(s.data(), reflect.data(), s.data(),
                                                      memory.data()),
                "ShortTermAnalysisFilter");
        show(probe, "d", s.data(), kFrame);
    }

    void segment(const std::int16_t* d, std::int16_t* parameters)
    {
        Words x(kSegment), xm(kPulses);
        std::int32_t lag = 0, gain = 0, grid = 0, amplitude = 0;
        line.resize(line.size() + kSegment);
        std::int16_t* now = &line[line.size() - kSegment];
        require(zspsLTPSearch_GSMFR_16s(d, now, &lag, &gain), "LTPSearch");
        show(probe, "Nc", &lag, 1);
        show(probe, "bc", &gain, 1);
        require(zspsLongTermPredict_GSMFR_16s(d, now, lag, gain, x.data()), "LongTermPredict");
        show(probe, "e", x.data(), kSegment);
        require(zspsWeightingFilter_GSMFR_16s(x.data(), x.data()), "WeightingFilter");
        show(probe, "x", x.data(), kSegment);
        require(zspsRPEGridSelect_GSMFR_16s(x.data(), xm.data(), &grid), "RPEGridSelect");
        show(probe, "Mc", &grid, 1);
        show(probe, "xM", xm.data(), kPulses);
        require(zspsAPCMQuant_GSMFR_16s(xm.data(), parameters + 4, &amplitude), "APCMQuant");
        show(probe, "xmaxc", &amplitude, 1);
        show(probe, "xMc", parameters + 4, kPulses);
        require(zspsAPCMDequant_GSMFR_16s(parameters + 4, amplitude, xm.data()), "APCMDequant");
        show(probe, "xMp", xm.data(), kPulses);
        require(zspsLongTermSynthesis_GSMFR_16s(xm.data(), grid, lag, gain, now),
                "LongTermSynthesis");
        show(probe, "dp", now, kSegment);
        const std::int32_t fields[] = {lag, gain, grid, amplitude};
        std::transform(fields, fields + 4, parameters,
                       [](std::int32_t field) { return static_cast<std::int16_t>(field); });
    }

    std::array<std::uint8_t, kBytes> encode(const std::int16_t* samples)
    {
        Words s(samples, samples + kFrame), parameters(76);
        std::array<std::uint8_t, kBytes> frame{};
        show(probe, "in", samples, kFrame);
        shortTerm(s, parameters.data());
        for (std::size_t j = 0; j < 4; ++j)
            segment(&s[kSegment * j], &parameters[8 + 17 * j]);
        require(zspsPackFrame_GSMFR_16s8u(parameters.data(), frame.data()), "PackFrame");
        show(probe, "frame", frame.data(), kBytes);
        return frame;
    }
};

struct Decoder {
    Probe probe;
    Ratios ratios;
    std::array<std::int16_t, 8> memory{};
    std::int16_t msr = 0;
    std::int32_t lag = 40;
    Words line = Words(kPast);

    Words decode(const std::uint8_t* frame)
    {
        Words p(76), out(kFrame), pulses(kPulses);
        require(zspsUnpackFrame_GSMFR_8u16s(frame, p.data()), "UnpackFrame");
        for (std::size_t at = 8; at < p.size(); at += 17) {
            if (p[at] >= 40 && p[at] <= 120) lag = p[at];
            line.resize(line.size() + kSegment);
            std::int16_t* now = &line[line.size() - kSegment];
            require(zspsAPCMDequant_GSMFR_16s(&p[at + 4], p[at + 3], pulses.data()), "APCMDequant");
            show(probe, "xMp", pulses.data(), kPulses);
            require(zspsLongTermSynthesis_GSMFR_16s(pulses.data(), p[at + 2], lag, p[at + 1], now),
                    "LongTermSynthesis");
            show(probe, "drp", now, kSegment);
        }
        const auto reflect = ratios.reflect(p.data(), probe);
        require(zspsShortTermSynthesisFilter_GSMFR_16s(&line[line.size() - kFrame], reflect.data(),
                                                       out.data(), memory.data()),
                "ShortTermSynthesisFilter");
        show(probe, "sr", out.data(), kFrame);
        require(zspsDeemphasis_GSMFR_16s(out.data(), out.data(), kFrame, &msr), "Deemphasis");
        show(probe, "out", out.data(), kFrame);
        return out;
    }
};

void checkEncoder(const Vectors& vectors, const std::string& name)
{
    const Words signal = vectors.words("gsmfr/" + name + ".pcm");
    const auto want = vectors.read<std::uint8_t>("gsmfr/" + name + ".gsm");
    std::vector<std::uint8_t> got;
    Encoder encoder;
    for (std::size_t i = 0; i < recordsOf(signal.size(), kFrame, name + ".pcm"); ++i)
        for (const std::uint8_t byte : encoder.encode(&signal[i * kFrame]))
            got.push_back(byte);
    requireEqual(got, want, name + ".gsm");
}

void checkDecoder(const Vectors& vectors, const std::string& name)
{
    const auto frames = vectors.read<std::uint8_t>("gsmfr/" + name + ".gsm");
    const Words want = vectors.words("gsmfr/" + name + ".out.pcm");
    Words got;
    Decoder decoder;
    for (std::size_t i = 0; i < recordsOf(frames.size(), kBytes, name + ".gsm"); ++i)
        for (const std::int16_t sample : decoder.decode(&frames[i * kBytes]))
            got.push_back(sample);
    requireEqual(got, want, name + ".out.pcm");
}

/// The lines of the trace, NAME COUNT: VALUES in the order of processing; those of inner results
/// that no block gives are passed over.
class Trace {
  public:
    explicit Trace(const Vectors& vectors) : lines_(vectors.runs("gsmfr/trace.txt")) {}

    std::vector<std::int32_t> next(const std::string& name)
    {
        while (at_ < lines_.size() && lines_[at_][0] != name)
            ++at_;
        if (at_ == lines_.size()) throw Fault("trace.txt has no further " + name);
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
    std::vector<std::vector<std::string>> lines_;
    std::size_t at_ = 0;
};

void checkTrace(const Vectors& vectors)
{
    Trace trace(vectors), inputs(vectors);
    const Probe probe = [&trace](const std::string& name, std::span<const std::int32_t> result) {
        const auto want = trace.next(name);
        requireEqual(result, want, name + " in line " + std::to_string(trace.at()));
    };
    Encoder encoder;
    Decoder decoder;
    encoder.probe = decoder.probe = probe;
    while (trace.left() > 0) {
        const auto in = inputs.next("in");
        const Words samples(in.begin(), in.end());
        recordsOf(samples.size(), kFrame, "trace.txt");
        decoder.decode(encoder.encode(samples.data()).data());
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
