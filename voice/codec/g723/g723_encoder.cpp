// Encoding after ITU-T G.723.1 with Annex A, clause 2.

#include "voice/codec/g723/g723_state.hpp"
#include "zspsc/g723/encoder.h"
#include "zspsc/g723/search.h"

#include <algorithm>
#include <bit>

namespace zsp::voice {

/// A frame on its way.
struct G723Encoder::Work {
    std::array<std::int16_t, 120 + kG723Frame> input; // with the history in front
    std::array<std::int16_t, 40> lpc, quantised;      // of four sub-frames
    std::array<std::int16_t, 80> coefs;
    std::array<std::int16_t, kG723Past + kG723Frame> weighted, normalised;
    std::array<std::int16_t, kG723Frame> target;
    std::array<std::int16_t, 4> harmonicLag, harmonicGain;
    G723Lsp lsp;
    ZspG723Frame frame;
};

std::size_t G723Encoder::size(const Codec& /*codec*/) noexcept
{
    return sizeof(G723Encoder);
}

void G723Encoder::start(const Codec& /*codec*/, const Settings& /*settings*/) noexcept
{
    *this = {};
    zspsVADInit_G723(&vad);
    zspsSIDInit_G723(&sid);
    taming.fill(4);
    lsp = kG723LspMean;
    noise.start();
}

void G723Encoder::filterInput(Work& w, In16 samples, const Settings& settings) noexcept
{
    std::int16_t* fresh = std::ranges::copy(history, w.input.begin()).out;
    if (settings.params.noHighPass)
        std::ranges::transform(samples, fresh,
                               [](std::int16_t x) { return static_cast<std::int16_t>(x >> 1); });
    else
        zspsHighPassFilter_G723_16s(samples.data(), fresh, countOf(samples), highPass.data());
    std::copy(w.input.end() - 120, w.input.end(), history.begin());
}

/// Prediction, line spectral pairs, and whether the input is a sine.
void G723Encoder::analyse(Work& w) noexcept
{
    std::array<std::int16_t, 44> corr;
    std::array<std::int16_t, 4> shifts;
    for (std::size_t k = 0; k < 4; ++k) {
        std::int16_t error = 0, reflection = 0;
        zspsAutoCorr_G723_16s(&w.input[kG723Subframe * k], &corr[11 * k], &shifts[k]);
        zspsLevinsonDurbin_G723_16s(&corr[11 * k], &w.lpc[10 * k], &error, &reflection);
        sines = static_cast<std::uint16_t>(sines << 1 | (reflection > 31130 ? 1 : 0));
    }
    sines &= 0x7fff;
    if (std::popcount(sines) >= 14) sines |= 0x8000;
    zspsLPCToLSP_G723_16s(&w.lpc[30], lsp.data(), w.lsp.data());
    zspsSIDUpdate_G723_16s(corr.data(), shifts.data(), &sid);
}

/// Weighted speech and the open-loop pitch.
void G723Encoder::weight(Work& w) noexcept
{
    std::int16_t* to = std::ranges::copy(weighted, w.weighted.begin()).out;
    for (std::size_t k = 0; k < 4; ++k) {
        zspsWeightingCoefs_G723_16s(&w.lpc[10 * k], &w.coefs[20 * k]);
        zspsPerceptualWeighting_G723_16s(&w.coefs[20 * k], &w.input[60 + kG723Subframe * k],
                                         to + kG723Subframe * k, weighting.data());
    }
    std::copy(w.weighted.end() - kG723Past, w.weighted.end(), weighted.begin());
    zspsOpenLoopPitchSearch_G723_16s(w.weighted.data(), w.normalised.data(), w.frame.lag);
    vad.lags[2] = w.frame.lag[0];
    vad.lags[3] = w.frame.lag[1];
}

void G723Encoder::encodeSubframe(Work& w, std::size_t i, std::int16_t& budget) noexcept
{
    const auto number = static_cast<std::int32_t>(i);
    const std::int16_t* lpc = &w.quantised[10 * i];
    const std::int16_t* coefs = &w.coefs[20 * i];
    const std::int16_t lag = w.harmonicLag[i], gain = w.harmonicGain[i];
    std::int16_t* target = &w.target[kG723Subframe * i];
    std::array<std::int16_t, kG723Subframe> response, adaptive, fixed;
    zspsImpulseResponse_G723_16s(lpc, coefs, lag, gain, response.data());
    zspsRingingSubtract_G723_16s_I(lpc, coefs, lag, gain, ringing.data(), target);

    zspsAdaptiveCodebookSearch_G723_16s(target, response.data(), excitation.data(), taming.data(),
                                        sines >> 15, number, &w.frame);
    zspsDecodeAdaptiveVector_G723_16s(&w.frame, number, excitation.data(), adaptive.data());
    zspsAdaptiveSubtract_G723_16s_I(adaptive.data(), response.data(), target);

    if (w.frame.type == zspG723Rate63) {
        zspsMPMLQSearch_G723_16s(target, response.data(), number, &w.frame);
    } else {
        std::array<std::int16_t, kG723Subframe> sharpened, filtered;
        std::array<std::int16_t, 416> corr;
        zspsACELPCorrelations_G723_16s(&w.frame, number, response.data(), sharpened.data(),
                                       corr.data());
        zspsACELPSearch_G723_16s(target, sharpened.data(), corr.data(), number, &budget, &w.frame,
                                 filtered.data());
        zspsACELPGainQuant_G723_16s(target, filtered.data(), &w.frame.fcbGain[i]);
    }
    zspsDecodeFixedVector_G723_16s(&w.frame, number, fixed.data());
    zspsExcitation_G723_16s(fixed.data(), adaptive.data(), fixed.data());
    std::copy(excitation.begin() + kG723Subframe, excitation.end(), excitation.begin());
    std::ranges::copy(fixed, excitation.end() - kG723Subframe);
    zspsTamingUpdate_G723_32s_I(&w.frame, number, taming.data());
    zspsRingingUpdate_G723_16s(lpc, coefs, fixed.data(), ringing.data());
}

void G723Encoder::encodeSpeech(Work& w) noexcept
{
    for (std::size_t i = 0; i < 4; ++i) {
        const std::size_t at = kG723Past + kG723Subframe * i;
        zspsHarmonicSearch_G723_16s(&w.normalised[at], w.frame.lag[i / 2], &w.harmonicLag[i],
                                    &w.harmonicGain[i]);
        zspsHarmonicFilter_G723_16s(&w.weighted[at], w.harmonicLag[i], w.harmonicGain[i],
                                    &w.target[kG723Subframe * i]);
    }
    zspsLSPQuant_G723_16s32s(w.lsp.data(), lsp.data(), &w.frame.lspIndex);
    G723Lsp next;
    zspsLSPDequant_G723_16s(w.frame.lspIndex, 0, lsp.data(), next.data());
    zspsLSPInterpolateToLPC_G723_16s(lsp.data(), next.data(), w.quantised.data());
    lsp = next;
    std::int16_t budget = 120;
    for (std::size_t i = 0; i < 4; ++i)
        encodeSubframe(w, i, budget);
    noise.seed = kG723NoiseSeed;
}

void G723Encoder::encodePause(Work& w) noexcept
{
    zspsSIDEncode_G723_16s(!inPause, vad.adaptation == 0, lsp.data(), vad.noiseLpc,
                           noise.lsp.data(), &w.frame, &sid);
    if (w.frame.type == zspG723Sid) zspsSIDGainDequant_G723_16s(w.frame.sidGain, &noise.sidGain);
    noise.follow(!inPause);
    std::array<std::int16_t, kG723Frame> drawn;
    zspsComfortNoiseExcitation_G723_16s(noise.gain, &noise.seed, excitation.data(), &w.frame,
                                        drawn.data());
    zspsLSPInterpolateToLPC_G723_16s(lsp.data(), noise.lsp.data(), w.quantised.data());
    lsp = noise.lsp;
    for (std::size_t i = 0; i < 4; ++i) {
        zspsTamingUpdate_G723_32s_I(&w.frame, static_cast<std::int32_t>(i), taming.data());
        zspsRingingUpdate_G723_16s(&w.quantised[10 * i], &w.coefs[20 * i],
                                   &drawn[kG723Subframe * i], ringing.data());
    }
}

Coded G723Encoder::encode(const Codec& /*codec*/, const Settings& settings, In16 samples,
                          Out8 bytes) noexcept
{
    Work w;
    w.frame = {};
    w.frame.type = settings.bitRate == 6300 ? zspG723Rate63 : zspG723Rate53;
    filterInput(w, samples, settings);
    analyse(w);
    std::int16_t active = 1;
    if (settings.dtx) zspsVAD_G723_16s(&w.input[120], sines >> 15, &vad, &active);
    weight(w);

    Coded coded;
    coded.active = active != 0;
    if (coded.active) {
        encodeSpeech(w);
    } else {
        encodePause(w);
        if (w.frame.type == zspG723Untransmitted)
            coded.kind = zspvFrameNoData;
        else
            coded.kind = inPause ? zspvFrameSidUpdate : zspvFrameSidFirst;
    }
    inPause = !coded.active;
    if (coded.kind != zspvFrameNoData) {
        std::int32_t length = 0;
        zspsPackFrame_G723_8u(&w.frame, bytes.data(), &length);
        coded.bytes = static_cast<std::size_t>(length);
    }
    return coded;
}

} // namespace zsp::voice
