// Decoding of ITU-T G.723.1 with Annex A, clause 3, and its concealment of lost frames.
#pragma once

#include "voice/codec/g723/g723_side.hpp"

#include <algorithm>

namespace zsp::voice {

/// A plain record.
template <typename Probe = NoProbe>
class G723Decoder {
  public:
    void start() noexcept
    {
        *this = G723Decoder{};
        lsp_ = kG723LspMean;
        noise_.start();
        gainControl_ = 4096;
    }

    /// Without bytes a frame has been lost or, if not `isLost`, was not sent.
    void decode(std::span<const std::uint8_t> bytes, bool isLost, bool hasPostFilter,
                std::span<std::int16_t, kG723Frame> samples) noexcept
    {
        ZspG723Frame frame{};
        frame.type = zspG723Untransmitted;
        if (!bytes.empty() && !isLost)
            isLost = zspsUnpackFrame_G723_8u(bytes.data(), static_cast<std::int32_t>(bytes.size()),
                                             &frame) != zspStsNoErr;
        if (isLost && inPause_) frame.type = zspG723Untransmitted; // the noise goes on

        G723Excitation source;
        G723Filters filters;
        if (isLost && !inPause_) {
            lostSpeech(source, filters);
        } else if (frame.type == zspG723Rate63 || frame.type == zspG723Rate53) {
            speech(frame, hasPostFilter, source, filters);
            inPause_ = false;
        } else {
            pause(frame, source, filters);
            inPause_ = true;
        }
        if (!inPause_) noise_.seed = kG723NoiseSeed;
        Probe::show("quantised_lpc", filters);
        Probe::show("excitation_memory", excitation_);
        Probe::show("erasure_count", lost_);
        Probe::show("random_seed_concealment", concealmentSeed_);
        Probe::show("random_seed", noise_.seed);
        Probe::show("postfiltered_excitation", source);
        for (std::size_t i = 0; i < 4; ++i)
            synthesise(&filters[10 * i], &source[kG723Subframe * i], hasPostFilter,
                       samples.subspan(kG723Subframe * i).template first<kG723Subframe>());
        Probe::show("out", samples);
    }

  private:
    void speech(const ZspG723Frame& frame, bool hasPostFilter, G723Excitation& out,
                G723Filters& filters) noexcept
    {
        lost_ = 0;
        zspsLSPDequant_G723_16s(frame.lspIndex, 0, lsp_.data(), noise_.lsp.data());
        take(noise_.lsp, filters); // which also a pause goes on with until its first descriptor

        std::array<std::int16_t, kG723Past + kG723Frame> all;
        std::ranges::copy(excitation_, all.begin());
        for (std::int32_t i = 0; i < 4; ++i) {
            std::int16_t* past = all.data() + kG723Subframe * static_cast<std::size_t>(i);
            std::array<std::int16_t, kG723Subframe> fixed, adaptive;
            zspsDecodeFixedVector_G723_16s(&frame, i, fixed.data());
            zspsDecodeAdaptiveVector_G723_16s(&frame, i, past, adaptive.data());
            zspsExcitation_G723_16s(fixed.data(), adaptive.data(), past + kG723Past);
        }
        const auto fresh = std::span(all).template last<kG723Frame>();
        Probe::show("excitation", fresh);
        zspsConcealAnalysis_G723_16s(&frame, all.data(), &concealmentLag_, &concealmentGain_,
                                     &noiseEnergy_, &noiseShift_);
        Probe::show("interpolation_index", concealmentLag_);
        Probe::show("interpolation_gain", concealmentGain_);
        if (hasPostFilter)
            zspsPitchPostFilter_G723_16s(&frame, all.data(), out.data());
        else
            std::ranges::copy(fresh, out.begin());
        std::copy(all.end() - kG723Past, all.end(), excitation_.begin());
    }

    void lostSpeech(G723Excitation& out, G723Filters& filters) noexcept
    {
        lost_ = std::min(lost_ + 1, 3);
        G723Lsp next;
        zspsLSPDequant_G723_16s(0, 1, lsp_.data(), next.data());
        take(next, filters);
        concealmentGain_ = static_cast<std::int16_t>((concealmentGain_ * 3 + 2) >> 2);
        zspsConcealExcitation_G723_16s(concealmentLag_, concealmentGain_, lost_, &concealmentSeed_,
                                       excitation_.data(), out.data());
    }

    void pause(const ZspG723Frame& frame, G723Excitation& out, G723Filters& filters) noexcept
    {
        if (frame.type == zspG723Sid) {
            zspsSIDGainDequant_G723_16s(frame.sidGain, &noise_.sidGain);
            zspsLSPDequant_G723_16s(frame.lspIndex, 0, lsp_.data(), noise_.lsp.data());
        } else if (!inPause_) { // the descriptor is missing
            std::int16_t index = 0;
            zspsSIDGainQuant_G723_16s(&noiseEnergy_, &noiseShift_, 0, &index);
            zspsSIDGainDequant_G723_16s(index, &noise_.sidGain);
        }
        noise_.follow(!inPause_);
        ZspG723Frame drawn = frame;
        zspsComfortNoiseExcitation_G723_16s(noise_.gain, &noise_.seed, excitation_.data(), &drawn,
                                            out.data());
        take(noise_.lsp, filters);
    }

    /// Goes over to the next line spectral pairs.
    void take(const G723Lsp& next, G723Filters& filters) noexcept
    {
        zspsLSPInterpolateToLPC_G723_16s(lsp_.data(), next.data(), filters.data());
        lsp_ = next;
    }

    void synthesise(const std::int16_t* lpc, const std::int16_t* source, bool hasPostFilter,
                    std::span<std::int16_t, kG723Subframe> part) noexcept
    {
        zspsSynthesisFilter_G723_16s(lpc, source, part.data(), synthesis_.data());
        Probe::show("synthesis", part);
        if (!hasPostFilter) {
            for (std::int16_t& x : part)
                x = static_cast<std::int16_t>(std::clamp(x * 2, -32768, 32767));
            return;
        }
        std::int32_t energy = 0;
        zspsFormantPostFilter_G723_16s(lpc, part.data(), part.data(), &energy, postFilter_.data());
        Probe::show("formant_postfilter", part);
        Probe::show("synthesis_energy", energy);
        zspsGainControl_G723_16s_I(part.data(), energy, &gainControl_);
        Probe::show("agc_gain", gainControl_);
    }

    G723Lsp lsp_;
    G723Past excitation_;
    std::array<std::int16_t, 10> synthesis_;
    std::array<std::int16_t, 21> postFilter_;
    std::int16_t gainControl_;
    G723Noise noise_;
    std::int16_t noiseEnergy_, noiseShift_; // of the last good frame, should no descriptor come
    std::int16_t concealmentLag_, concealmentGain_, concealmentSeed_;
    std::int32_t lost_; // frames in a row, 3 at most
    bool inPause_;
};

} // namespace zsp::voice
