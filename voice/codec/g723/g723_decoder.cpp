// Decoding of ITU-T G.723.1 with Annex A, clause 3, and its concealment of lost frames.

#include "voice/codec/g723/g723_state.hpp"

#include <algorithm>

namespace zsp::voice {

std::size_t G723Decoder::size(const Codec& /*codec*/) noexcept
{
    return sizeof(G723Decoder);
}

void G723Decoder::start(const Codec& /*codec*/, const Settings& /*settings*/) noexcept
{
    *this = {};
    lsp = kG723LspMean;
    noise.start();
    gainControl = 4096;
}

/// Goes over to the next line spectral pairs.
void G723Decoder::take(const G723Lsp& next, Filters& filters) noexcept
{
    zspsLSPInterpolateToLPC_G723_16s(lsp.data(), next.data(), filters.data());
    lsp = next;
}

void G723Decoder::speech(const ZspG723Frame& frame, bool postFilters, Excitation& out,
                         Filters& filters) noexcept
{
    lost = 0;
    zspsLSPDequant_G723_16s(frame.lspIndex, 0, lsp.data(), noise.lsp.data());
    take(noise.lsp, filters); // which also a pause goes on with until its first descriptor

    std::array<std::int16_t, kG723Past + kG723Frame> all;
    std::ranges::copy(excitation, all.begin());
    for (std::int32_t i = 0; i < 4; ++i) {
        std::int16_t* past = all.data() + kG723Subframe * static_cast<std::size_t>(i);
        std::array<std::int16_t, kG723Subframe> fixed, adaptive;
        zspsDecodeFixedVector_G723_16s(&frame, i, fixed.data());
        zspsDecodeAdaptiveVector_G723_16s(&frame, i, past, adaptive.data());
        zspsExcitation_G723_16s(fixed.data(), adaptive.data(), past + kG723Past);
    }
    zspsConcealAnalysis_G723_16s(&frame, all.data(), &concealmentLag, &concealmentGain,
                                 &noiseEnergy, &noiseShift);
    if (postFilters)
        zspsPitchPostFilter_G723_16s(&frame, all.data(), out.data());
    else
        std::copy(all.begin() + kG723Past, all.end(), out.begin());
    std::copy(all.end() - kG723Past, all.end(), excitation.begin());
}

void G723Decoder::lostSpeech(Excitation& out, Filters& filters) noexcept
{
    lost = std::min(lost + 1, 3);
    G723Lsp next;
    zspsLSPDequant_G723_16s(0, 1, lsp.data(), next.data());
    take(next, filters);
    concealmentGain = static_cast<std::int16_t>((concealmentGain * 3 + 2) >> 2);
    zspsConcealExcitation_G723_16s(concealmentLag, concealmentGain, lost, &concealmentSeed,
                                   excitation.data(), out.data());
}

void G723Decoder::pause(const ZspG723Frame& frame, Excitation& out, Filters& filters) noexcept
{
    if (frame.type == zspG723Sid) {
        zspsSIDGainDequant_G723_16s(frame.sidGain, &noise.sidGain);
        zspsLSPDequant_G723_16s(frame.lspIndex, 0, lsp.data(), noise.lsp.data());
    } else if (!inPause) { // the descriptor is missing
        std::int16_t index = 0;
        zspsSIDGainQuant_G723_16s(&noiseEnergy, &noiseShift, 0, &index);
        zspsSIDGainDequant_G723_16s(index, &noise.sidGain);
    }
    noise.follow(!inPause);
    ZspG723Frame drawn = frame;
    zspsComfortNoiseExcitation_G723_16s(noise.gain, &noise.seed, excitation.data(), &drawn,
                                        out.data());
    take(noise.lsp, filters);
}

void G723Decoder::decode(const Codec& /*codec*/, const Settings& settings, ZspvFrameKind kind,
                         In8 bytes, Out16 samples) noexcept
{
    ZspG723Frame frame{};
    frame.type = zspG723Untransmitted;
    const bool damaged = kind == zspvFrameSpeechDamaged || kind == zspvFrameSidDamaged;
    bool erased = damaged || kind == zspvFrameLost;
    if (!bytes.empty() && !erased)
        erased = zspsUnpackFrame_G723_8u(bytes.data(), countOf(bytes), &frame) != zspStsNoErr;
    if (erased && inPause) frame.type = zspG723Untransmitted; // the noise goes on

    const bool postFilters = settings.params.noPostFilter == 0;
    Excitation source;
    Filters filters;
    if (erased && !inPause) {
        lostSpeech(source, filters);
    } else if (frame.type == zspG723Rate63 || frame.type == zspG723Rate53) {
        speech(frame, postFilters, source, filters);
        inPause = false;
    } else {
        pause(frame, source, filters);
        inPause = true;
    }
    if (!inPause) noise.seed = kG723NoiseSeed;

    for (std::size_t i = 0; i < 4; ++i) {
        const std::int16_t* lpc = &filters[10 * i];
        std::int16_t* part = &samples[kG723Subframe * i];
        zspsSynthesisFilter_G723_16s(lpc, &source[kG723Subframe * i], part, synthesis.data());
        if (!postFilters) {
            for (std::size_t k = 0; k < kG723Subframe; ++k)
                part[k] = static_cast<std::int16_t>(std::clamp(part[k] * 2, -32768, 32767));
            continue;
        }
        std::int32_t energy = 0;
        zspsFormantPostFilter_G723_16s(lpc, part, part, &energy, postFilter.data());
        zspsGainControl_G723_16s_I(part, energy, &gainControl);
    }
}

} // namespace zsp::voice
