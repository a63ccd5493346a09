// The encoder of ITU-T G.729: main body or Annex A, with the silence compression of Annex B.
#pragma once

#include "voice/codec/g729/g729_parts.hpp"
#include "zspsc/celp.h"
#include "zspsc/correlation.h"
#include "zspsc/g729/annexb.h"
#include "zspsc/g729/decoder.h"
#include "zspsc/g729/encoder.h"
#include "zspsc/g729/filters.h"
#include "zspsc/g729/lp.h"

#include <algorithm>
#include <span>

namespace zsp::voice {

/// What has become of a frame.
struct G729Coded {
    std::size_t bytes; ///< 10, 2 for a silence descriptor, 0 where nothing is sent
    bool isActive;
    bool isFirstOfPause;
};

/// A plain record.
template <typename Probe = NoProbe>
class G729Encoder {
  public:
    void start(bool annexA) noexcept
    {
        *this = G729Encoder{};
        annexA_ = annexA;
        constexpr std::array<std::int16_t, 6> kHighPass = {4096, 7807, -3733, 1899, -3798, 1899};
        zspsHighPassFilterInit_G729(kHighPass.data(), highPass_.data());
        zspsVADInit_G729B_16s(&vad_);
        zspsDTXInit_G729B_16s(&dtx_);
        lpc_[0] = 4096;
        lsp_ = quantised_ = kG729LspReset;
        for (std::size_t k = 0; k < 4; ++k)
            std::ranges::copy(kG729LsfReset, &lsfMemory_[kG729Order * k]);
        sidLsp_ = kG729SidLspReset;
        weighting_ = {0, 0, 1};
        sharp_ = 3277;
        taming_.fill(16384);
        pastGains_.fill(-14336);
        seed_ = kG729NoiseSeed;
        inSpeech_ = true;
    }

    G729Coded encode(std::span<const std::int16_t, kG729Frame> samples, bool hasDtx,
                     std::span<std::uint8_t, kG729Bytes> bytes) noexcept
    {
        Probe::show("input", samples);
        Work w;
        analyse(w, samples);
        std::int16_t active = 1;
        if (hasDtx) {
            zspsVAD_G729B_16s(speech_.data(), w.windowed.data(), w.exponent, w.lsf.data(),
                              reflection_[1], &vad_, &active);
            Probe::show("vad_decision", active);
            zspsDTXUpdate_G729B_32s16s(w.corr.data(), w.exponent, active, &dtx_);
        }
        if (!annexA_) weightMain(w);

        G729Coded coded{kG729Bytes, active != 0, active == 0 && inSpeech_};
        if (active != 0)
            encodeSpeech(w);
        else if (!encodePause(w))
            coded.bytes = 0;
        else
            coded.bytes = kG729SidBytes;
        inSpeech_ = active != 0;
        if (coded.bytes != 0) {
            zspsPackFrame_G729_16s8u(w.fields.data(), bytes.data(),
                                     static_cast<std::int32_t>(coded.bytes));
            Probe::show("parameters", std::span(w.fields).first(active != 0 ? 11U : 4U));
        }
        std::copy(speech_.begin() + kG729Frame, speech_.end(), speech_.begin());
        std::copy(weighted_.begin() + kG729Frame, weighted_.end(), weighted_.begin());
        std::copy(excitation_.begin() + kG729Frame, excitation_.end(), excitation_.begin());
        return coded;
    }

  private:
    static constexpr std::size_t kWindow = 240;
    static constexpr std::size_t kPresent = 120; // in the window; 40 samples follow the frame
    static constexpr std::size_t kLagPast = 143;
    static constexpr std::size_t kTaps = kG729Order + 1;
    using Taps = std::array<std::int16_t, kTaps>;
    using Memory = std::array<std::int16_t, kG729Order>;
    using Subframe = std::array<std::int16_t, kG729Subframe>;

    /// A frame on its way.
    struct Work {
        std::array<std::int32_t, 13> corr, windowed;
        std::int16_t exponent;
        G729Lsp lsp;
        G729Lsf lsf; // normalised
        std::array<Taps, 2> quantised;
        std::array<Taps, 2> numerator, denominator; // weighting
        std::array<std::int16_t, 11> fields;
        std::int16_t openLoopLag;
        std::int16_t firstLag;
    };

    /// Of a subframe on its way.
    struct Search {
        Subframe target, response, adaptive, fixed, code;
        std::array<std::int16_t, 4> pitchSums;
        std::int16_t lag, fraction, gain;
        std::int32_t isTamed;
    };

    static std::int16_t limited(std::int32_t x) noexcept
    {
        return static_cast<std::int16_t>(std::clamp(x, -32768, 32767));
    }

    const std::int16_t* present(std::size_t k) const noexcept
    {
        return &speech_[kPresent + kG729Subframe * k];
    }

    static void synthesise(const Taps& lpc, const std::int16_t* src, std::int16_t* dst,
                           Memory& memory) noexcept
    {
        zspsSynthesisFilter_NR_16s_Sfs(lpc.data(), src, dst, kG729Subframe, memory.data(), 12);
    }
    static void inverse(const Taps& lpc, const std::int16_t* src, std::int16_t* dst) noexcept
    {
        zspsResidualFilter_G729_16s(lpc.data(), src, dst, kG729Subframe);
    }

    void analyse(Work& w, std::span<const std::int16_t, kG729Frame> samples) noexcept
    {
        const auto fresh = std::span(speech_).template last<kG729Frame>();
        std::ranges::copy(samples, fresh.begin());
        zspsHighPassFilter_G729_16s_ISfs(fresh.data(), kG729Frame, 12, highPass_.data());
        Probe::show("pre_processed", fresh);
        zspsAutoCorr_G729_16s32s(speech_.data(), w.corr.data(), &w.exponent);
        Probe::show("autocorr_exponent", w.exponent);
        w.windowed = w.corr;
        zspsLagWindow_G729_32s_I(w.windowed.data());
        std::int16_t error = 0;
        zspsLevinsonDurbin_G729_32s16s(w.windowed.data(), lpc_.data(), reflection_.data(), &error);
        Probe::show("lpc", lpc_);
        if (annexA_)
            zspsLPCToLSP_G729A_16s(lpc_.data(), lsp_.data(), w.lsp.data());
        else
            zspsLPCToLSP_G729_16s(lpc_.data(), lsp_.data(), w.lsp.data());
        Probe::show("lsp", w.lsp);
        zspsLSPToLSF_Norm_G729_16s(w.lsp.data(), w.lsf.data());
        Probe::show("lsf_normalised", w.lsf);
    }

    /// Main body: weighted speech, from filters that are not quantised.
    void weightMain(Work& w) noexcept
    {
        std::array<Taps, 2> lpc;
        lpc[1] = lpc_;
        G729Lsp between;
        G729Lsf lsf;
        zspsLSPInterpolate_G729_16s(lsp_.data(), w.lsp.data(), between.data());
        zspsLSPToLPC_G729_16s(between.data(), lpc[0].data());
        zspsLSPToLSF_Norm_G729_16s(between.data(), lsf.data());
        lsp_ = w.lsp;
        std::array<std::int16_t, 2> gamma1, gamma2;
        zspsPerceptualWeighting_G729_16s(lsf.data(), w.lsf.data(), reflection_.data(),
                                         gamma1.data(), gamma2.data(), weighting_.data());
        Probe::show("gamma1", gamma1);
        Probe::show("gamma2", gamma2);
        for (std::size_t k = 0; k < 2; ++k) {
            zspsWeightLPC_G729_16s(lpc[k].data(), gamma1[k], w.numerator[k].data());
            zspsWeightLPC_G729_16s(lpc[k].data(), gamma2[k], w.denominator[k].data());
            Subframe r;
            inverse(w.numerator[k], present(k), r.data());
            synthesise(w.denominator[k], r.data(), &weighted_[kLagPast + kG729Subframe * k],
                       weightedMemory_);
        }
        Probe::show("weighted_speech", std::span(weighted_).template last<kG729Frame>());
    }

    /// Filters of both subframes, from the last frame's pairs to these.
    void takePairs(Work& w, const G729Lsp& lsp) noexcept
    {
        G729Lsp between;
        zspsLSPInterpolate_G729_16s(quantised_.data(), lsp.data(), between.data());
        zspsLSPToLPC_G729_16s(between.data(), w.quantised[0].data());
        zspsLSPToLPC_G729_16s(lsp.data(), w.quantised[1].data());
        quantised_ = lsp;
        for (std::size_t k = 0; annexA_ && k < 2; ++k)
            zspsWeightLPC_G729A_16s(w.quantised[k].data(), w.denominator[k].data(),
                                    w.numerator[k].data());
    }

    void encodeSpeech(Work& w) noexcept
    {
        seed_ = kG729NoiseSeed;
        if (annexA_) lsp_ = w.lsp;
        G729Lsp next;
        zspsLSPQuant_G729_16s(w.lsp.data(), lsfMemory_.data(), next.data(), w.fields.data());
        Probe::show("lsp_quantised", next);
        takePairs(w, next);
        std::int16_t* e = &excitation_[kG729Past];
        if (annexA_) {
            for (std::size_t k = 0; k < 2; ++k) {
                inverse(w.quantised[k], present(k), e + kG729Subframe * k);
                synthesise(w.numerator[k], e + kG729Subframe * k,
                           &weighted_[kLagPast + kG729Subframe * k], weightedMemory_);
            }
            Probe::show("residual", std::span(excitation_).template last<kG729Frame>());
            Probe::show("weighted_speech", std::span(weighted_).template last<kG729Frame>());
            zspsOpenLoopPitchSearch_G729A_16s(&weighted_[kLagPast], &w.openLoopLag);
        } else {
            zspsOpenLoopPitchSearch_G729_16s(&weighted_[kLagPast], &w.openLoopLag);
        }
        Probe::show("open_loop_lag", w.openLoopLag);
        for (std::size_t k = 0; k < 2; ++k)
            encodeSubframe(w, k);
    }

    void encodeSubframe(Work& w, std::size_t k) noexcept
    {
        Search s;
        std::int16_t* e = &excitation_[kG729Past + kG729Subframe * k];
        prepare(w, k, s);
        Probe::show("impulse_response", s.response);
        Probe::show("target", s.target);
        searchLag(w, k, s);
        Probe::show("lag", s.lag);
        Probe::show("lag_fraction", s.fraction);
        Probe::show("adaptive_vector", std::span(e, kG729Subframe));
        if (annexA_) {
            Memory none{};
            synthesise(w.denominator[k], e, s.adaptive.data(), none);
        } else {
            zspsConvPartial_G729_16s(e, s.response.data(), s.adaptive.data());
        }
        Probe::show("filtered_adaptive", s.adaptive);
        zspsAdaptiveCodebookGain_G729_16s(s.target.data(), s.adaptive.data(), s.pitchSums.data(),
                                          &s.gain);
        Probe::show("pitch_correlations", s.pitchSums);
        Probe::show("pitch_gain_unquantised", s.gain);
        zspsTamingTest_G729_32s(taming_.data(), s.lag, s.fraction, &s.isTamed);
        Probe::show("taming", s.isTamed);
        if (s.isTamed) s.gain = std::min<std::int16_t>(s.gain, 15564);
        searchFixed(w, k, s);

        std::array<std::int16_t, 5> sums, exponents;
        zspsGainCorrelation_G729_16s(s.pitchSums.data(), s.target.data(), s.adaptive.data(),
                                     s.fixed.data(), sums.data(), exponents.data());
        Probe::show("gain_correlations", sums);
        Probe::show("gain_correlations_q", exponents);
        std::int16_t pitchGain = 0, codeGain = 0;
        zspsGainQuant_G729_16s(sums.data(), exponents.data(), s.isTamed, s.code.data(),
                               pastGains_.data(), &pitchGain, &codeGain, &w.fields[6 + 4 * k]);
        Probe::show("pitch_gain", pitchGain);
        Probe::show("code_gain", codeGain);
        Probe::show("gain_index", w.fields[6 + 4 * k]);
        sharp_ = std::clamp<std::int16_t>(pitchGain, 3277, 13017);
        zspsExcitation_G729_16s_I(pitchGain, codeGain, s.code.data(), e);
        Probe::show("excitation", std::span(e, kG729Subframe));
        zspsTamingUpdate_G729_32s_I(pitchGain, s.lag, taming_.data());
        for (std::size_t j = 0, n = kG729Subframe - kG729Order; j < kG729Order; ++j, ++n) {
            const auto adaptive = limited((s.adaptive[n] * pitchGain) >> 14);
            const auto fixed = limited((s.fixed[n] * codeGain) >> 13);
            targetMemory_[j] = limited(s.target[n] - limited(adaptive + fixed));
        }
        Probe::show("target_memory", targetMemory_);
        if (!annexA_) followError(w, k);
    }

    /// Main body: what the decoder's output is off by.
    void followError(const Work& w, std::size_t k) noexcept
    {
        Subframe synthesis;
        synthesise(w.quantised[k], &excitation_[kG729Past + kG729Subframe * k], synthesis.data(),
                   synthesisMemory_);
        Probe::show("synthesis", synthesis);
        for (std::size_t j = 0, n = kG729Subframe - kG729Order; j < kG729Order; ++j, ++n)
            errorMemory_[j] = limited(present(k)[n] - synthesis[n]);
        Probe::show("error_memory", errorMemory_);
    }

    /// Impulse response, residual and target.
    void prepare(const Work& w, std::size_t k, Search& s) noexcept
    {
        std::int16_t* e = &excitation_[kG729Past + kG729Subframe * k];
        Memory memory{};
        if (annexA_) {
            Subframe impulse{4096};
            synthesise(w.denominator[k], impulse.data(), s.response.data(), memory);
            memory = targetMemory_;
            synthesise(w.denominator[k], e, s.target.data(), memory);
            return;
        }
        zspsImpulseResponse_G729_16s(w.numerator[k].data(), w.denominator[k].data(),
                                     w.quantised[k].data(), s.response.data());
        inverse(w.quantised[k], present(k), e);
        Probe::show("residual", std::span(e, kG729Subframe));
        std::array<std::int16_t, kG729Order + kG729Subframe> error;
        std::ranges::copy(errorMemory_, error.begin());
        memory = errorMemory_;
        synthesise(w.quantised[k], e, &error[kG729Order], memory);
        Subframe r;
        inverse(w.numerator[k], &error[kG729Order], r.data());
        memory = targetMemory_;
        synthesise(w.denominator[k], r.data(), s.target.data(), memory);
    }

    void searchLag(Work& w, std::size_t k, Search& s) noexcept
    {
        std::int16_t* past = &excitation_[kG729Subframe * k];
        const int width = k == 0 ? 6 : 9;
        const int centre = k == 0 ? w.openLoopLag - 3 : w.firstLag - 5;
        const int first = std::clamp(centre, 20, 143 - width);
        const auto number = static_cast<std::int32_t>(k);
        if (annexA_) {
            Subframe corr;
            zspsCrossCorr_NormM_16s(s.target.data(), s.response.data(), kG729Subframe, corr.data());
            Probe::show("pitch_correlations_backward", corr);
            zspsAdaptiveCodebookSearch_G729A_16s(corr.data(), first, first + width, number, past,
                                                 &s.lag, &s.fraction);
        } else {
            zspsAdaptiveCodebookSearch_G729_16s(s.target.data(), s.response.data(), first,
                                                first + width, number, past, &s.lag, &s.fraction);
        }
        const int index = k == 1       ? 3 * (s.lag - first) + 2 + s.fraction
                          : s.lag > 85 ? s.lag + 112
                                       : 3 * s.lag - 58 + s.fraction;
        w.fields[k == 0 ? 2 : 7] = static_cast<std::int16_t>(index);
        if (k == 0) {
            w.firstLag = s.lag;
            w.fields[3] = static_cast<std::int16_t>(g729Parity(index));
        }
    }

    void searchFixed(Work& w, std::size_t k, Search& s) noexcept
    {
        Subframe target, corr;
        for (std::size_t n = 0; n < kG729Subframe; ++n)
            target[n] = limited(s.target[n] - limited((s.adaptive[n] * s.gain) >> 14));
        Probe::show("target_fixed", target);
        zspsHarmonicSharpening_G729_16s_I(s.lag, sharp_, s.response.data());
        Probe::show("impulse_response_sharpened", s.response);
        std::array<std::int16_t, 616> matrix;
        zspsToeplizMatrix_G729_16s(s.response.data(), matrix.data());
        zspsCrossCorr_NormM_16s(target.data(), s.response.data(), kG729Subframe, corr.data());
        Probe::show("fixed_correlations", corr);
        std::int16_t &positions = w.fields[4 + 4 * k], &signs = w.fields[5 + 4 * k];
        if (annexA_)
            zspsFixedCodebookSearch_G729A_16s(corr.data(), matrix.data(), s.response.data(),
                                              &positions, &signs, s.fixed.data());
        else
            zspsFixedCodebookSearch_G729_16s(corr.data(), matrix.data(), s.response.data(),
                                             static_cast<std::int32_t>(k), &extra_, &positions,
                                             &signs, s.fixed.data());
        Probe::show("pulse_positions", positions);
        Probe::show("pulse_signs", signs);
        Probe::show("filtered_fixed", s.fixed);
        zspsFixedCodebookDecode_G729_16s(positions, signs, s.code.data());
        zspsHarmonicSharpening_G729_16s_I(s.lag, sharp_, s.code.data());
        Probe::show("fixed_vector", s.code);
    }

    /// Draws the noise that a decoder does; true if a descriptor is sent.
    bool encodePause(Work& w) noexcept
    {
        std::int32_t sends = 0;
        zspsDTXEncode_G729B_16s(annexA_, inSpeech_, quantised_.data(), lpc_.data(),
                                reflection_.data(), lsfMemory_.data(), sidLsp_.data(),
                                w.fields.data(), &sends, &dtx_);
        for (std::size_t k = 0; k < 2; ++k) {
            std::int16_t lag = 0, gain = 0;
            zspsComfortNoise_G729B_16s_I(dtx_.gain, &seed_, &excitation_[kG729Subframe * k], &lag,
                                         &gain);
            zspsTamingUpdate_G729_32s_I(gain, lag, taming_.data());
        }
        Probe::show("cng_excitation", std::span(excitation_).template last<kG729Frame>());
        takePairs(w, sidLsp_);
        for (std::size_t k = 0; k < 2; ++k) {
            const std::int16_t* e = &excitation_[kG729Past + kG729Subframe * k];
            Subframe r;
            if (annexA_) {
                inverse(w.quantised[k], present(k), r.data());
                synthesise(w.numerator[k], r.data(), &weighted_[kLagPast + kG729Subframe * k],
                           weightedMemory_);
                for (std::size_t n = 0; n < kG729Subframe; ++n)
                    r[n] = limited(r[n] - e[n]);
            } else {
                std::array<std::int16_t, kG729Order + kG729Subframe> error;
                std::ranges::copy(errorMemory_, error.begin());
                synthesise(w.quantised[k], e, r.data(), synthesisMemory_);
                for (std::size_t n = 0; n < kG729Subframe; ++n)
                    error[kG729Order + n] = limited(present(k)[n] - r[n]);
                inverse(w.numerator[k], &error[kG729Order], r.data());
                std::copy(error.end() - kG729Order, error.end(), errorMemory_.begin());
            }
            synthesise(w.denominator[k], r.data(), r.data(), targetMemory_);
        }
        sharp_ = 3277;
        return sends != 0;
    }

    ZspG729BVadState vad_;
    ZspG729BDtxState dtx_;
    std::array<std::int32_t, 6> highPass_;
    std::array<std::int32_t, 4> taming_;
    std::array<std::int16_t, kWindow> speech_; // pre-processed
    std::array<std::int16_t, kLagPast + kG729Frame> weighted_;
    std::array<std::int16_t, kG729Past + kG729Frame> excitation_;
    std::array<std::int16_t, 4 * kG729Order> lsfMemory_;
    Taps lpc_; // the last stable filter
    Memory reflection_;
    G729Lsp lsp_, quantised_, sidLsp_; // of the last frame; of the last descriptor
    Memory weightedMemory_, targetMemory_, synthesisMemory_, errorMemory_;
    std::array<std::int16_t, 4> pastGains_;
    std::array<std::int16_t, 3> weighting_;
    std::int16_t sharp_, extra_, seed_;
    bool annexA_, inSpeech_;
};

} // namespace zsp::voice
