// The decoder of ITU-T G.729: speech frames of ten octets, silence descriptors of two, frames that
// were not sent and lost ones. Streams of the main body and of Annex A are the same; what is done
// to hide losses and to filter the output differs.
#pragma once

#include "voice/codec/g729/g729_parts.hpp"
#include "zspsc/g729/annexb.h"
#include "zspsc/g729/decoder.h"
#include "zspsc/g729/filters.h"
#include "zspsc/g729/lp.h"
#include "zspsc/g729/postfilter.h"

#include <algorithm>
#include <bit>
#include <span>

namespace zsp::voice {

enum class G729Arrival { received, untransmitted, lost };

/// A plain record.
template <typename Probe = NoProbe>
class G729Decoder {
  public:
    void start(bool annexA) noexcept
    {
        *this = G729Decoder{};
        annexA_ = annexA;
        pastGains_.fill(-14336);
        for (std::size_t k = 0; k < 4; ++k)
            std::ranges::copy(kG729LsfReset, &lsfMemory_[kG729Order * k]);
        lsf_ = kG729LsfReset;
        lsp_ = kG729LspReset;
        sidLsp_ = kG729SidLspReset;
        postGain_ = annexA ? 4096 : 16384;
        constexpr std::array<std::int16_t, 6> kHighPass = {8192, 15836, -7667, 7699, -15398, 7699};
        zspsHighPassFilterInit_G729(kHighPass.data(), highPass_.data());
    }

    /// `bytes` holds a frame of ten or two octets where one was received.
    void decode(G729Arrival arrival, std::span<const std::uint8_t> bytes, bool hasPostFilter,
                std::span<std::int16_t, kG729Frame> samples) noexcept
    {
        Probe::show("frame", std::int16_t{0});
        const bool bad = arrival == G729Arrival::lost;
        Probe::show("bad_frame", static_cast<std::int16_t>(bad));
        Work w{};
        if (arrival == G729Arrival::received)
            zspsUnpackFrame_G729_8u16s(bytes.data(), static_cast<std::int32_t>(bytes.size()),
                                       w.fields.data());
        // Lost frames go on with what was there.
        const bool isSpeech =
            bad ? inSpeech_ : arrival == G729Arrival::received && bytes.size() == kG729Bytes;
        w.bad = bad;
        if (isSpeech)
            speech(w);
        else
            pause(w, arrival == G729Arrival::received);
        inSpeech_ = isSpeech;
        if (!bad) keepEnergy();
        std::copy(excitation_.begin() + kG729Frame, excitation_.end(), excitation_.begin());

        Probe::show("synthesis", std::span(w.speech).template last<kG729Frame>());
        filterOutput(w, isSpeech, hasPostFilter, samples);
    }

  private:
    using Filter = std::array<std::int16_t, 11>;
    using Subframe = std::array<std::int16_t, kG729Subframe>;

    /// A frame on its way.
    struct Work {
        std::array<std::int16_t, 11> fields;
        bool bad;
        std::array<Filter, 2> lpc;
        std::array<std::int16_t, 2> lags;
        std::array<std::int16_t, kG729Order + kG729Frame> speech; // with the past in front
    };

    /// Filters of both sub-frames, on the way from the last pairs to these.
    void takePairs(Work& w, const G729Lsp& next) noexcept
    {
        G729Lsp between;
        zspsLSPInterpolate_G729_16s(lsp_.data(), next.data(), between.data());
        zspsLSPToLPC_G729_16s(between.data(), w.lpc[0].data());
        zspsLSPToLPC_G729_16s(next.data(), w.lpc[1].data());
        lsp_ = next;
        Probe::show("lsp_quantised", lsp_);
        std::array<std::int16_t, 22> both;
        std::ranges::copy(w.lpc[0], both.begin());
        std::ranges::copy(w.lpc[1], both.begin() + 11);
        Probe::show("lpc_quantised", both);
    }

    void synthesise(Work& w, std::size_t i) noexcept
    {
        zspsSynthesis_G729_16s(w.lpc[i].data(), static_cast<std::int32_t>(i), excitation_.data(),
                               &w.speech[kG729Order + kG729Subframe * i], synthesis_.data());
    }

    void speech(Work& w) noexcept
    {
        seed_ = kG729NoiseSeed;
        std::ranges::copy(synthesis_, w.speech.begin());
        if (w.bad) {
            zspsLSFDecodeErased_G729_16s(predictor_, lsf_.data(), lsfMemory_.data());
        } else {
            predictor_ = w.fields[0] >> 7;
            zspsLSFDecode_G729_16s(predictor_, w.fields[0] & 127, w.fields[1] >> 5,
                                   w.fields[1] & 31, lsfMemory_.data(), lsf_.data());
        }
        G729Lsp next;
        zspsLSFToLSP_G729_16s(lsf_.data(), next.data());
        takePairs(w, next);
        for (std::size_t i = 0; i < 2; ++i) {
            speechSubframe(w, i);
            synthesise(w, i);
        }
    }

    void decodeLag(Work& w, std::size_t i, std::int16_t& fraction) noexcept
    {
        const std::int32_t index = w.fields[i == 0 ? 2 : 7];
        const bool damaged = i == 0 && g729Parity(index) != w.fields[3];
        if (w.bad || damaged) {
            w.lags[i] = lastLag_;
            fraction = 0;
            lastLag_ = static_cast<std::int16_t>(std::min(lastLag_ + 1, 143));
        } else {
            zspsDecodePitchLag_G729_16s(index, static_cast<std::int32_t>(i), w.lags[0], &w.lags[i],
                                        &fraction);
            lastLag_ = w.lags[i];
        }
    }

    void speechSubframe(Work& w, std::size_t i) noexcept
    {
        std::int16_t* all = &excitation_[kG729Subframe * i];
        std::int16_t* e = all + kG729Past;
        std::int16_t fraction = 0;
        decodeLag(w, i, fraction);
        const std::int16_t lag = w.lags[i];
        Probe::show("subframe", static_cast<std::int16_t>(i));
        Probe::show("lag", lag);
        Probe::show("lag_fraction", fraction);
        zspsDecodeAdaptiveVector_G729_16s_I(lag, fraction, all);
        Probe::show("adaptive_vector", std::span(e, kG729Subframe));

        std::int32_t positions = w.fields[i == 0 ? 4 : 8], signs = w.fields[i == 0 ? 5 : 9];
        if (w.bad) {
            positions = g729Random(lossSeed_) & 8191;
            signs = g729Random(lossSeed_) & 15;
        }
        Subframe code;
        zspsFixedCodebookDecode_G729_16s(positions, signs, code.data());
        zspsHarmonicSharpening_G729_16s_I(lag, sharp_, code.data());
        Probe::show("fixed_vector", code);
        if (w.bad)
            zspsGainDecodeErased_G729_16s_I(pastGains_.data(), &pitchGain_, &codeGain_);
        else
            zspsGainDecode_G729_16s(w.fields[i == 0 ? 6 : 10], code.data(), pastGains_.data(),
                                    &pitchGain_, &codeGain_);
        Probe::show("pitch_gain", pitchGain_);
        Probe::show("code_gain", codeGain_);
        sharp_ = std::clamp<std::int16_t>(pitchGain_, 3277, 13017);

        // In the main body what is left of a lost frame is either voiced or not.
        const bool onlyOne = w.bad && !annexA_;
        zspsExcitation_G729_16s_I(onlyOne && !voiced_ ? std::int16_t{0} : pitchGain_,
                                  onlyOne && voiced_ ? std::int16_t{0} : codeGain_, code.data(), e);
    }

    /// A frame without speech; `described` tells whether it brings a descriptor.
    void pause(Work& w, bool described) noexcept
    {
        std::ranges::copy(synthesis_, w.speech.begin());
        if (described) {
            G729Lsf lsf;
            zspsSIDLSFDecode_G729B_16s(w.fields[0], w.fields[1], w.fields[2], lsfMemory_.data(),
                                       lsf.data());
            zspsLSFToLSP_G729_16s(lsf.data(), sidLsp_.data());
            zspsSIDGainDecode_G729B_16s(w.fields[3], &sidGain_);
        } else if (inSpeech_) { // the descriptor is missing
            std::int16_t index = 0;
            zspsSIDGainQuant_G729B_16s(&energy_, &energyShift_, 0, &index);
            zspsSIDGainDecode_G729B_16s(index, &sidGain_);
        }
        zspsComfortNoiseGain_G729B_16s(sidGain_, inSpeech_, &noiseGain_);
        Probe::show("sid_gain", sidGain_);
        Probe::show("cng_gain", noiseGain_);
        for (std::size_t i = 0; i < 2; ++i) {
            std::int16_t lag = 0, gain = 0;
            zspsComfortNoise_G729B_16s_I(noiseGain_, &seed_, &excitation_[kG729Subframe * i], &lag,
                                         &gain);
            Probe::show("cng_lag", lag);
            Probe::show("cng_pitch_gain", gain);
        }
        takePairs(w, G729Lsp{sidLsp_});
        for (std::size_t i = 0; i < 2; ++i)
            synthesise(w, i);
        w.lags.fill(lastLag_);
        sharp_ = 3277;
    }

    /// Of the excitation, should a descriptor be missing after it.
    void keepEnergy() noexcept
    {
        std::int64_t sum = 0;
        for (const std::int16_t x : std::span(excitation_).template last<kG729Frame>())
            sum += std::int64_t{2} * x * x;
        const auto all = static_cast<std::uint32_t>(std::min<std::int64_t>(sum, 0x7fffffff));
        const int shift = all == 0 ? 0 : std::countl_zero(all) - 1;
        energy_ = static_cast<std::int16_t>(
            std::min<std::int64_t>((std::int64_t{all} << shift) + 0x8000, 0x7fffffff) >> 16);
        energyShift_ = static_cast<std::int16_t>(16 - shift);
    }

    void filterOutput(Work& w, bool isSpeech, bool hasPostFilter,
                      std::span<std::int16_t, kG729Frame> samples) noexcept
    {
        voiced_ = false;
        for (std::size_t i = 0; i < 2; ++i) {
            const std::int16_t* s = &w.speech[kG729Order + kG729Subframe * i];
            std::int16_t* out = &samples[kG729Subframe * i];
            Filter zeros, poles;
            zspsWeightLPC_G729_16s(w.lpc[i].data(), 18022, zeros.data());
            zspsWeightLPC_G729_16s(w.lpc[i].data(), 22938, poles.data());
            Probe::show("postfilter_numerator", zeros);
            Probe::show("postfilter_denominator", poles);
            std::int16_t* r = &residual_[kG729PostPast];
            zspsResidualFilter_G729_16s(zeros.data(), s, r, kG729Subframe);
            Probe::show("postfilter_residual", std::span(r, kG729Subframe));
            if (annexA_)
                annexAPostFilter(zeros, poles, s, isSpeech, w.lags[i], out);
            else
                mainPostFilter(zeros, poles, s, isSpeech, w.lags[0], out);
            std::copy(residual_.begin() + kG729Subframe, residual_.end(), residual_.begin());
        }
        if (!hasPostFilter) std::copy_n(&w.speech[kG729Order], kG729Frame, samples.begin());
        Probe::show("postfiltered", samples);
        zspsHighPassFilter_G729_16s_ISfs(samples.data(), kG729Frame, 13, highPass_.data());
        Probe::show("output", samples);
    }

    void mainPostFilter(const Filter& zeros, const Filter& poles, const std::int16_t* s,
                        bool isSpeech, std::int16_t lag, std::int16_t* out) noexcept
    {
        Subframe v;
        std::int16_t delay = 0, reflection = 0;
        if (isSpeech)
            zspsLongTermPostFilter_G729_16s(lag, residual_.data(), v.data(), &delay);
        else
            std::copy_n(&residual_[kG729PostPast], kG729Subframe, v.begin());
        voiced_ = voiced_ || delay != 0;
        Probe::show("postfilter_delay", delay);
        Probe::show("long_term_postfiltered", v);
        std::array<std::int16_t, kG729Subframe + 1> filtered;
        zspsShortTermPostFilter_G729_16s(zeros.data(), poles.data(), v.data(), filtered.data(),
                                         postMemory_.data(), &reflection);
        Probe::show("postfilter_parcor", reflection);
        Probe::show("short_term_postfiltered", std::span(filtered).template last<kG729Subframe>());
        zspsTiltCompensation_G729_16s(reflection, filtered.data(), out);
        Probe::show("tilt_filtered", std::span(out, kG729Subframe));
        zspsGainControl_G729_16s_I(s, out, &postGain_);
        Probe::show("agc_gain", postGain_);
    }

    void annexAPostFilter(const Filter& zeros, const Filter& poles, const std::int16_t* s,
                          bool isSpeech, std::int16_t lag, std::int16_t* out) noexcept
    {
        Subframe v;
        if (isSpeech)
            zspsLongTermPostFilter_G729A_16s(lag, &residual_[kG729PostPast - 143], v.data());
        else
            std::copy_n(&residual_[kG729PostPast], kG729Subframe, v.begin());
        Probe::show("long_term_postfiltered", v);
        zspsTiltCompensation_G729A_16s_I(zeros.data(), poles.data(), v.data(), &lastUntilted_);
        zspsShortTermPostFilter_G729A_16s(poles.data(), v.data(), out, postMemory_.data());
        Probe::show("short_term_postfiltered", std::span(out, kG729Subframe));
        zspsGainControl_G729A_16s_I(s, out, &postGain_);
        if (postGain_ != 0) Probe::show("agc_gain", postGain_);
    }

    std::array<std::int16_t, kG729Past + kG729Frame> excitation_{};
    std::array<std::int16_t, kG729PostPast + kG729Subframe> residual_{};
    std::array<std::int16_t, 4 * kG729Order> lsfMemory_{};
    std::array<std::int16_t, kG729Order> synthesis_{}, postMemory_{};
    alignas(8) std::array<std::byte, 24> highPass_{};
    G729Lsp lsp_{}, sidLsp_{};
    G729Lsf lsf_{}; // of the last good speech frame
    std::array<std::int16_t, 4> pastGains_{};
    std::int32_t predictor_ = 0;
    std::int16_t sharp_ = 3277, lastLag_ = 60, pitchGain_ = 0, codeGain_ = 0;
    std::int16_t lossSeed_ = 21845, seed_ = kG729NoiseSeed;
    std::int16_t energy_ = 0, energyShift_ = 1; // of the last good frame's excitation
    std::int16_t sidGain_ = 2, noiseGain_ = 0;
    std::int16_t postGain_ = 0, lastUntilted_ = 0;
    bool annexA_ = false, inSpeech_ = true;
    bool voiced_ = true; // as the last frame's post-filter found
};

} // namespace zsp::voice
