// Encoding after ITU-T G.723.1 with Annex A, clause 2.
#pragma once

#include "voice/codec/g723/g723_side.hpp"
#include "zspsc/g723/encoder.h"
#include "zspsc/g723/search.h"

#include <algorithm>
#include <bit>

namespace zsp::voice {

struct G723Options {
    ZspG723Type rate = zspG723Rate63; // or zspG723Rate53
    bool hasHighPass = true;
    bool hasDtx = false;
};

/// What has become of a frame.
struct G723Coded {
    std::int32_t type; ///< a ZspG723Type
    bool isFirstOfPause;
    std::size_t bytes;
};

/// A plain record.
template <typename Probe = NoProbe>
class G723Encoder {
  public:
    void start() noexcept
    {
        *this = G723Encoder{};
        zspsVADInit_G723(&vad_);
        zspsSIDInit_G723(&sid_);
        taming_.fill(4);
        lsp_ = kG723LspMean;
        noise_.start();
    }

    /// A frame that is not sent is an octet here.
    G723Coded encode(std::span<const std::int16_t, kG723Frame> samples, const G723Options& options,
                     std::span<std::uint8_t, kG723FrameBytes> bytes) noexcept
    {
        Probe::show("in", samples);
        Work w;
        w.frame = {};
        w.frame.type = options.rate;
        filterInput(w, samples, options.hasHighPass);
        analyse(w);
        std::int16_t active = 1;
        if (options.hasDtx) zspsVAD_G723_16s(&w.input[120], sines_ >> 15, &vad_, &active);
        Probe::show("vad", active);
        weight(w);
        if (active != 0)
            encodeSpeech(w);
        else
            encodePause(w);

        G723Coded coded{};
        coded.isFirstOfPause = active == 0 && !inPause_;
        inPause_ = active == 0;
        std::int32_t length = 0;
        zspsPackFrame_G723_8u(&w.frame, bytes.data(), &length);
        coded.type = w.frame.type;
        coded.bytes = static_cast<std::size_t>(length);
        Probe::show("frame", std::span(bytes).first(coded.bytes));
        return coded;
    }

  private:
    /// A frame on its way.
    struct Work {
        std::array<std::int16_t, 120 + kG723Frame> input; // with the history in front
        G723Filters lpc, quantised;
        std::array<std::int16_t, 80> coefs;
        std::array<std::int16_t, kG723Past + kG723Frame> weighted, normalised;
        std::array<std::int16_t, kG723Frame> target;
        std::array<std::int16_t, 4> harmonicLag, harmonicGain;
        G723Lsp lsp;
        ZspG723Frame frame;
    };

    void filterInput(Work& w, std::span<const std::int16_t, kG723Frame> samples,
                     bool hasHighPass) noexcept
    {
        std::int16_t* fresh = std::ranges::copy(history_, w.input.begin()).out;
        if (hasHighPass)
            zspsHighPassFilter_G723_16s(samples.data(), fresh, kG723Frame, highPass_.data());
        else
            std::ranges::transform(
                samples, fresh, [](std::int16_t x) { return static_cast<std::int16_t>(x >> 1); });
        Probe::show("hp", std::span(w.input).template last<kG723Frame>());
        std::copy(w.input.end() - 120, w.input.end(), history_.begin());
    }

    /// Prediction, line spectral pairs, and whether the input is a sine.
    void analyse(Work& w) noexcept
    {
        std::array<std::int16_t, 44> corr;
        std::array<std::int16_t, 4> shifts;
        for (std::size_t k = 0; k < 4; ++k) {
            std::int16_t error = 0, reflection = 0;
            zspsAutoCorr_G723_16s(&w.input[kG723Subframe * k], &corr[11 * k], &shifts[k]);
            Probe::show("acf", std::span(corr).subspan(11 * k, 11));
            Probe::show("acf_shift", shifts[k]);
            zspsLevinsonDurbin_G723_16s(&corr[11 * k], &w.lpc[10 * k], &error, &reflection);
            Probe::show("lpc", std::span(w.lpc).subspan(10 * k, 10));
            Probe::show("second_reflection", reflection);
            sines_ = static_cast<std::uint16_t>(sines_ << 1 | (reflection > 31130 ? 1 : 0));
        }
        sines_ &= 0x7fff;
        if (std::popcount(sines_) >= 14) sines_ |= 0x8000;
        Probe::show("sine_detector", static_cast<std::int16_t>(sines_));
        zspsLPCToLSP_G723_16s(&w.lpc[30], lsp_.data(), w.lsp.data());
        Probe::show("lsp", w.lsp);
        zspsSIDUpdate_G723_16s(corr.data(), shifts.data(), &sid_);
    }

    /// Weighted speech and the open-loop pitch.
    void weight(Work& w) noexcept
    {
        std::int16_t* to = std::ranges::copy(weighted_, w.weighted.begin()).out;
        for (std::size_t k = 0; k < 4; ++k) {
            zspsWeightingCoefs_G723_16s(&w.lpc[10 * k], &w.coefs[20 * k]);
            zspsPerceptualWeighting_G723_16s(&w.coefs[20 * k], &w.input[60 + kG723Subframe * k],
                                             to + kG723Subframe * k, weighting_.data());
        }
        Probe::show("perceptual_lpc", w.coefs);
        Probe::show("weighted", std::span(w.weighted).template last<kG723Frame>());
        std::copy(w.weighted.end() - kG723Past, w.weighted.end(), weighted_.begin());
        zspsOpenLoopPitchSearch_G723_16s(w.weighted.data(), w.normalised.data(), w.frame.lag);
        Probe::show("open_loop_lag", std::span(w.frame.lag));
        vad_.lags[2] = w.frame.lag[0];
        vad_.lags[3] = w.frame.lag[1];
    }

    void encodeSpeech(Work& w) noexcept
    {
        for (std::size_t i = 0; i < 4; ++i) {
            const std::size_t at = kG723Past + kG723Subframe * i;
            zspsHarmonicSearch_G723_16s(&w.normalised[at], w.frame.lag[i / 2], &w.harmonicLag[i],
                                        &w.harmonicGain[i]);
            Probe::show("harmonic_lag", w.harmonicLag[i]);
            Probe::show("harmonic_gain", w.harmonicGain[i]);
            zspsHarmonicFilter_G723_16s(&w.weighted[at], w.harmonicLag[i], w.harmonicGain[i],
                                        &w.target[kG723Subframe * i]);
        }
        Probe::show("harmonic_weighted", w.target);
        zspsLSPQuant_G723_16s32s(w.lsp.data(), lsp_.data(), &w.frame.lspIndex);
        Probe::show("lsp_index", w.frame.lspIndex);
        G723Lsp next;
        zspsLSPDequant_G723_16s(w.frame.lspIndex, 0, lsp_.data(), next.data());
        Probe::show("quantised_lsp", next);
        take(next, w.quantised);
        std::int16_t budget = 120;
        for (std::size_t i = 0; i < 4; ++i)
            encodeSubframe(w, i, budget);
        noise_.seed = kG723NoiseSeed;
    }

    void encodeSubframe(Work& w, std::size_t i, std::int16_t& budget) noexcept
    {
        const auto number = static_cast<std::int32_t>(i);
        const std::int16_t* lpc = &w.quantised[10 * i];
        const std::int16_t* coefs = &w.coefs[20 * i];
        const std::int16_t lag = w.harmonicLag[i], gain = w.harmonicGain[i];
        const auto target = std::span(w.target).subspan(kG723Subframe * i, kG723Subframe);
        std::array<std::int16_t, kG723Subframe> response, adaptive, fixed;
        zspsImpulseResponse_G723_16s(lpc, coefs, lag, gain, response.data());
        Probe::show("impulse_response", response);
        zspsRingingSubtract_G723_16s_I(lpc, coefs, lag, gain, ringing_.data(), target.data());
        Probe::show("target", target);

        zspsAdaptiveCodebookSearch_G723_16s(target.data(), response.data(), excitation_.data(),
                                            taming_.data(), sines_ >> 15, number, &w.frame);
        Probe::show("lag_offset", w.frame.lagOffset[i]);
        Probe::show("acb_gain_index", w.frame.acbGain[i]);
        zspsDecodeAdaptiveVector_G723_16s(&w.frame, number, excitation_.data(), adaptive.data());
        Probe::show("adaptive_vector", adaptive);
        zspsAdaptiveSubtract_G723_16s_I(adaptive.data(), response.data(), target.data());
        Probe::show("target_fixed", target);

        searchFixed(w, i, target.data(), response.data(), budget);
        zspsDecodeFixedVector_G723_16s(&w.frame, number, fixed.data());
        Probe::show("fixed_vector", fixed);
        zspsExcitation_G723_16s(fixed.data(), adaptive.data(), fixed.data());
        Probe::show("excitation", fixed);
        std::copy(excitation_.begin() + kG723Subframe, excitation_.end(), excitation_.begin());
        std::ranges::copy(fixed, excitation_.end() - kG723Subframe);
        zspsTamingUpdate_G723_32s_I(&w.frame, number, taming_.data());
        Probe::show("taming_errors", taming_);
        zspsRingingUpdate_G723_16s(lpc, coefs, fixed.data(), ringing_.data());
    }

    static void searchFixed(Work& w, std::size_t i, const std::int16_t* target,
                            const std::int16_t* response, std::int16_t& budget) noexcept
    {
        const auto number = static_cast<std::int32_t>(i);
        if (w.frame.type == zspG723Rate63) {
            zspsMPMLQSearch_G723_16s(target, response, number, &w.frame);
        } else {
            std::array<std::int16_t, kG723Subframe> sharpened, filtered;
            std::array<std::int16_t, 416> corr;
            zspsACELPCorrelations_G723_16s(&w.frame, number, response, sharpened.data(),
                                           corr.data());
            zspsACELPSearch_G723_16s(target, sharpened.data(), corr.data(), number, &budget,
                                     &w.frame, filtered.data());
            zspsACELPGainQuant_G723_16s(target, filtered.data(), &w.frame.fcbGain[i]);
        }
        Probe::show("fcb_gain_index", w.frame.fcbGain[i]);
        Probe::show("pulse_positions", w.frame.position[i]);
        Probe::show("pulse_signs", w.frame.signs[i]);
    }

    void encodePause(Work& w) noexcept
    {
        zspsSIDEncode_G723_16s(!inPause_, vad_.adaptation == 0, lsp_.data(), vad_.noiseLpc,
                               noise_.lsp.data(), &w.frame, &sid_);
        Probe::show("sid_lsp", noise_.lsp);
        if (w.frame.type == zspG723Sid)
            zspsSIDGainDequant_G723_16s(w.frame.sidGain, &noise_.sidGain);
        noise_.follow(!inPause_);
        std::array<std::int16_t, kG723Frame> drawn;
        zspsComfortNoiseExcitation_G723_16s(noise_.gain, &noise_.seed, excitation_.data(), &w.frame,
                                            drawn.data());
        Probe::show("cng_excitation", drawn);
        take(noise_.lsp, w.quantised);
        for (std::size_t i = 0; i < 4; ++i) {
            zspsTamingUpdate_G723_32s_I(&w.frame, static_cast<std::int32_t>(i), taming_.data());
            zspsRingingUpdate_G723_16s(&w.quantised[10 * i], &w.coefs[20 * i],
                                       &drawn[kG723Subframe * i], ringing_.data());
        }
    }

    /// Goes over to the next line spectral pairs.
    void take(const G723Lsp& next, G723Filters& filters) noexcept
    {
        zspsLSPInterpolateToLPC_G723_16s(lsp_.data(), next.data(), filters.data());
        Probe::show("quantised_lpc", filters);
        lsp_ = next;
    }

    ZspG723VadState vad_;
    ZspG723SidState sid_;
    std::array<std::int32_t, 2> highPass_;
    std::array<std::int32_t, 5> taming_;
    std::array<std::int16_t, 120> history_; // samples in front of the newest frame
    std::array<std::int16_t, 20> weighting_;
    std::array<std::int16_t, 165> ringing_;
    G723Past weighted_, excitation_;
    G723Lsp lsp_;
    G723Noise noise_;
    std::uint16_t sines_; // the last 15 sub-frames, and on top whether that is a sine
    bool inPause_;
};

} // namespace zsp::voice
