// The frames of G.723.1 through the blocks, one after the other.

#include "conformance/g723.hpp"
#include "zspsc/g723/encoder.h"
#include "zspsc/g723/search.h"

#include <algorithm>
#include <bit>

namespace zsp::conformance::g723 {

Common::Common()
    : lsp{3131, 4721, 7690, 10806, 13872, 16495, 19752, 22260, 25484, 27718}, sidLsp(lsp)
{
}

Words Common::comfortNoise(ZspG723Frame& f)
{
    gain_ = inPause ? static_cast<std::int16_t>((7 * gain_ + sidGain_) >> 3) : sidGain_;
    Words drawn(kFrame);
    require(zspsComfortNoiseExcitation_G723_16s(gain_, &seed_, excitation.data(), &f, drawn.data()),
            "ComfortNoiseExcitation");
    return drawn;
}

Words Common::interpolate(const Words& next)
{
    Words lpc(40);
    require(zspsLSPInterpolateToLPC_G723_16s(lsp.data(), next.data(), lpc.data()),
            "LSPInterpolateToLPC");
    show("quantised_lpc", lpc.data(), lpc.size());
    lsp = next;
    return lpc;
}

Encoder::Encoder(std::int32_t type) : type_(type)
{
    require(zspsVADInit_G723(&vad_), "VADInit");
    require(zspsSIDInit_G723(&sid_), "SIDInit");
}

void Encoder::analyse(const std::int16_t* samples)
{
    std::copy(input_.end() - 120, input_.end(), input_.begin());
    std::int16_t* fresh = &input_[120];
    if (highPass)
        require(zspsHighPassFilter_G723_16s(samples, fresh, kFrame, memory_), "HighPassFilter");
    else
        std::transform(samples, samples + kFrame, fresh,
                       [](std::int16_t x) { return static_cast<std::int16_t>(x >> 1); });
    show("hp", fresh, kFrame);
    Words corr(44), shifts(4);
    for (std::size_t k = 0; k < 4; ++k) {
        std::int16_t error = 0, reflection = 0;
        require(zspsAutoCorr_G723_16s(&input_[kSub * k], &corr[11 * k], &shifts[k]), "AutoCorr");
        show("acf", &corr[11 * k], 11);
        require(zspsLevinsonDurbin_G723_16s(&corr[11 * k], &lpc_[10 * k], &error, &reflection),
                "LevinsonDurbin");
        show("lpc", &lpc_[10 * k], 10);
        show("second_reflection", reflection);
        sines_ = static_cast<std::uint16_t>(sines_ << 1 | (reflection > 31130 ? 1 : 0));
    }
    sines_ &= 0x7fff;
    if (std::popcount(sines_) >= 14) sines_ |= 0x8000;
    show("sine_detector", static_cast<std::int16_t>(sines_));
    require(zspsSIDUpdate_G723_16s(corr.data(), shifts.data(), &sid_), "SIDUpdate");
    require(zspsLPCToLSP_G723_16s(&lpc_[30], lsp.data(), next_.data()), "LPCToLSP");
    show("lsp", next_.data(), 10);
}

void Encoder::weight()
{
    std::copy(weighted_.end() - kPast, weighted_.end(), weighted_.begin());
    for (std::size_t k = 0; k < 4; ++k) {
        std::int16_t* coefs = &coefs_[20 * k];
        require(zspsWeightingCoefs_G723_16s(&lpc_[10 * k], coefs), "WeightingCoefs");
        require(zspsPerceptualWeighting_G723_16s(coefs, &input_[60 + kSub * k],
                                                 &weighted_[kPast + kSub * k], weighting_.data()),
                "PerceptualWeighting");
    }
    show("perceptual_lpc", coefs_.data(), 80);
    show("weighted", &weighted_[kPast], kFrame);
    require(
        zspsOpenLoopPitchSearch_G723_16s(weighted_.data(), normalised_.data(), openLoop_.data()),
        "OpenLoopPitchSearch");
    show("open_loop_lag", openLoop_.data(), 2);
    vad_.lags[2] = openLoop_[0];
    vad_.lags[3] = openLoop_[1];
}

void Encoder::subframe(ZspG723Frame& f, std::size_t i, const Words& lpc, std::int16_t& budget)
{
    const auto number = static_cast<std::int32_t>(i);
    const std::int16_t *a = &lpc[10 * i], *coefs = &coefs_[20 * i];
    std::int16_t* x = &target_[kSub * i];
    Words response(kSub), adaptive(kSub), fixed(kSub), excited(kSub);
    require(
        zspsImpulseResponse_G723_16s(a, coefs, harmonicLag_[i], harmonicGain_[i], response.data()),
        "ImpulseResponse");
    show("impulse_response", response.data(), kSub);
    require(zspsRingingSubtract_G723_16s_I(a, coefs, harmonicLag_[i], harmonicGain_[i],
                                           ringing_.data(), x),
            "RingingSubtract");
    show("target", x, kSub);
    require(zspsAdaptiveCodebookSearch_G723_16s(x, response.data(), excitation.data(),
                                                errors_.data(), sines_ >> 15, number, &f),
            "AdaptiveCodebookSearch");
    show("lag_offset", f.lagOffset[i]);
    show("acb_gain_index", f.acbGain[i]);
    require(zspsDecodeAdaptiveVector_G723_16s(&f, number, excitation.data(), adaptive.data()),
            "DecodeAdaptiveVector");
    require(zspsAdaptiveSubtract_G723_16s_I(adaptive.data(), response.data(), x),
            "AdaptiveSubtract");
    show("target_fixed", x, kSub);
    if (f.type == zspG723Rate63) {
        require(zspsMPMLQSearch_G723_16s(x, response.data(), number, &f), "MPMLQSearch");
    } else {
        Words sharpened(kSub), filtered(kSub), corr(416);
        require(zspsACELPCorrelations_G723_16s(&f, number, response.data(), sharpened.data(),
                                               corr.data()),
                "ACELPCorrelations");
        require(zspsACELPSearch_G723_16s(x, sharpened.data(), corr.data(), number, &budget, &f,
                                         filtered.data()),
                "ACELPSearch");
        require(zspsACELPGainQuant_G723_16s(x, filtered.data(), &f.fcbGain[i]), "ACELPGainQuant");
    }
    show("fcb_gain_index", f.fcbGain[i]);
    show("pulse_positions", f.position[i]);
    show("pulse_signs", f.signs[i]);
    require(zspsDecodeFixedVector_G723_16s(&f, number, fixed.data()), "DecodeFixedVector");
    require(zspsExcitation_G723_16s(fixed.data(), adaptive.data(), excited.data()), "Excitation");
    show("excitation", excited.data(), kSub);
    excitation.erase(excitation.begin(), excitation.begin() + kSub);
    excitation.insert(excitation.end(), excited.begin(), excited.end());
    require(zspsTamingUpdate_G723_32s_I(&f, number, errors_.data()), "TamingUpdate");
    show("taming_errors", errors_.data(), 5);
    require(zspsRingingUpdate_G723_16s(a, coefs, excited.data(), ringing_.data()), "RingingUpdate");
}

void Encoder::speech(ZspG723Frame& f)
{
    for (std::size_t i = 0; i < 4; ++i) {
        const std::size_t at = kPast + kSub * i;
        require(zspsHarmonicSearch_G723_16s(&normalised_[at], f.lag[i / 2], &harmonicLag_[i],
                                            &harmonicGain_[i]),
                "HarmonicSearch");
        show("harmonic_lag", harmonicLag_[i]);
        require(zspsHarmonicFilter_G723_16s(&weighted_[at], harmonicLag_[i], harmonicGain_[i],
                                            &target_[kSub * i]),
                "HarmonicFilter");
    }
    show("harmonic_weighted", target_.data(), kFrame);
    Words decoded(10);
    require(zspsLSPDequant_G723_16s(f.lspIndex, 0, lsp.data(), decoded.data()), "LSPDequant");
    show("quantised_lsp", decoded.data(), 10);
    const Words lpc = interpolate(decoded);
    std::int16_t budget = 120;
    for (std::size_t i = 0; i < 4; ++i)
        subframe(f, i, lpc, budget);
    seed_ = 12345;
}

void Encoder::pause(ZspG723Frame& f)
{
    require(zspsSIDEncode_G723_16s(!inPause, vad_.adaptation == 0, lsp.data(), vad_.noiseLpc,
                                   sidLsp.data(), &f, &sid_),
            "SIDEncode");
    show("sid_lsp", sidLsp.data(), 10);
    if (f.type == zspG723Sid)
        require(zspsSIDGainDequant_G723_16s(f.sidGain, &sidGain_), "SIDGainDequant");
    const Words drawn = comfortNoise(f);
    show("cng_excitation", drawn.data(), kFrame);
    const Words lpc = interpolate(sidLsp);
    for (std::size_t i = 0; i < 4; ++i) {
        require(zspsTamingUpdate_G723_32s_I(&f, static_cast<std::int32_t>(i), errors_.data()),
                "TamingUpdate");
        require(zspsRingingUpdate_G723_16s(&lpc[10 * i], &coefs_[20 * i], &drawn[kSub * i],
                                           ringing_.data()),
                "RingingUpdate");
    }
}

std::vector<std::uint8_t> Encoder::encode(const std::int16_t* samples)
{
    ZspG723Frame f{};
    f.type = type_;
    analyse(samples);
    std::int16_t active = 1;
    if (dtx) require(zspsVAD_G723_16s(&input_[120], sines_ >> 15, &vad_, &active), "VAD");
    show("vad", active);
    require(zspsLSPQuant_G723_16s32s(next_.data(), lsp.data(), &f.lspIndex), "LSPQuant");
    show("lsp_index", f.lspIndex);
    weight();
    std::copy(openLoop_.begin(), openLoop_.end(), f.lag);
    if (active != 0)
        speech(f);
    else
        pause(f);
    inPause = active == 0;
    std::vector<std::uint8_t> bytes(24);
    std::int32_t length = 0;
    require(zspsPackFrame_G723_8u(&f, bytes.data(), &length), "PackFrame");
    bytes.resize(static_cast<std::size_t>(length));
    show("frame", bytes.data(), bytes.size());
    return bytes;
}

Words Decoder::speech(const ZspG723Frame& f, Words& lpc)
{
    lost_ = 0;
    require(zspsLSPDequant_G723_16s(f.lspIndex, 0, lsp.data(), sidLsp.data()), "LSPDequant");
    Words all = excitation, out(kFrame), fixed(kSub), adaptive(kSub);
    all.resize(kPast + kFrame);
    for (std::int32_t i = 0; i < 4; ++i) {
        std::int16_t* past = &all[kSub * static_cast<std::size_t>(i)];
        require(zspsDecodeFixedVector_G723_16s(&f, i, fixed.data()), "DecodeFixedVector");
        require(zspsDecodeAdaptiveVector_G723_16s(&f, i, past, adaptive.data()),
                "DecodeAdaptiveVector");
        require(zspsExcitation_G723_16s(fixed.data(), adaptive.data(), past + kPast), "Excitation");
    }
    show("excitation", &all[kPast], kFrame);
    require(zspsConcealAnalysis_G723_16s(&f, all.data(), &lag_, &amplitude_, &energy_, &shift_),
            "ConcealAnalysis");
    require(zspsPitchPostFilter_G723_16s(&f, all.data(), out.data()), "PitchPostFilter");
    if (!postFilters) std::copy(all.begin() + kPast, all.end(), out.begin());
    excitation.assign(all.end() - kPast, all.end());
    lpc = interpolate(sidLsp);
    show("interpolation_index", lag_);
    show("interpolation_gain", amplitude_);
    seed_ = 12345;
    return out;
}

Words Decoder::lost(Words& lpc)
{
    Words next(10), out(kFrame);
    require(zspsLSPDequant_G723_16s(0, 1, lsp.data(), next.data()), "LSPDequant");
    lost_ = std::min(lost_ + 1, 3);
    amplitude_ = static_cast<std::int16_t>((3 * amplitude_ + 2) >> 2);
    require(zspsConcealExcitation_G723_16s(lag_, amplitude_, lost_, &noise_, excitation.data(),
                                           out.data()),
            "ConcealExcitation");
    lpc = interpolate(next);
    seed_ = 12345;
    return out;
}

Words Decoder::decode(const std::uint8_t* bytes, std::size_t length)
{
    ZspG723Frame f{};
    const bool good =
        zspsUnpackFrame_G723_8u(bytes, static_cast<std::int32_t>(length), &f) == zspStsNoErr;
    if (!good) f.type = zspG723Untransmitted;
    Words lpc, source, out(kFrame);
    if (good && f.type <= zspG723Rate53) {
        source = speech(f, lpc);
        inPause = false;
    } else if (!good && !inPause) {
        source = lost(lpc);
    } else {
        if (f.type == zspG723Sid) {
            require(zspsSIDGainDequant_G723_16s(f.sidGain, &sidGain_), "SIDGainDequant");
            require(zspsLSPDequant_G723_16s(f.lspIndex, 0, lsp.data(), sidLsp.data()),
                    "LSPDequant");
        } else if (!inPause) {
            std::int16_t index = 0;
            require(zspsSIDGainQuant_G723_16s(&energy_, &shift_, 0, &index), "SIDGainQuant");
            require(zspsSIDGainDequant_G723_16s(index, &sidGain_), "SIDGainDequant");
        }
        source = comfortNoise(f);
        lpc = interpolate(sidLsp);
        inPause = true;
    }
    show("postfiltered_excitation", source.data(), kFrame);
    for (std::size_t k = 0; k < 4; ++k) {
        std::int16_t* part = &out[kSub * k];
        require(
            zspsSynthesisFilter_G723_16s(&lpc[10 * k], &source[kSub * k], part, synthesis_.data()),
            "SynthesisFilter");
        if (!postFilters) {
            std::transform(part, part + kSub, part, [](int x) {
                return static_cast<std::int16_t>(std::clamp(2 * x, -32768, 32767));
            });
            continue;
        }
        show("synthesis", part, kSub);
        std::int32_t energy = 0;
        require(
            zspsFormantPostFilter_G723_16s(&lpc[10 * k], part, part, &energy, postFilter_.data()),
            "FormantPostFilter");
        show("formant_postfilter", part, kSub);
        show("synthesis_energy", energy);
        require(zspsGainControl_G723_16s_I(part, energy, &control_), "GainControl");
        show("agc_gain", control_);
    }
    show("out", out.data(), kFrame);
    return out;
}

} // namespace zsp::conformance::g723
