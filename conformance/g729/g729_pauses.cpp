// G.729 Annex B in an encoder: the activity decision of every frame, and every silence descriptor.
// Of the encoder there is what these two need: linear prediction, and from the stream what its
// speech frames leave in memories that speech and pauses share.

#include "conformance/families.hpp"
#include "voice/codec/g729/g729_parts.hpp"
#include "zspsc/g729/annexb.h"
#include "zspsc/g729/decoder.h"
#include "zspsc/g729/filters.h"
#include "zspsc/g729/lp.h"

#include <algorithm>
#include <array>

namespace zsp::conformance {

namespace {

using namespace voice;

class Pauses {
  public:
    explicit Pauses(bool annexA) : annexA_(annexA)
    {
        constexpr std::array<std::int16_t, 6> kHighPass = {4096, 7807, -3733, 1899, -3798, 1899};
        require(zspsHighPassFilterInit_G729(kHighPass.data(), highPass_.data()), "the filter");
        require(zspsVADInit_G729B_16s(&vad_), "VADInit");
        require(zspsDTXInit_G729B_16s(&dtx_), "DTXInit");
        for (std::size_t i = 0; i < lsfMemory_.size(); ++i)
            lsfMemory_[i] = kG729LsfReset[i % kG729Order];
    }

    /// Faults where the frame of the stream is not what the blocks say of the samples.
    void frame(const std::int16_t* samples, std::span<const std::uint8_t> sent)
    {
        std::copy(window_.begin() + kG729Frame, window_.end(), window_.begin());
        std::int16_t* fresh = window_.data() + window_.size() - kG729Frame;
        std::copy_n(samples, kG729Frame, fresh);
        require(zspsHighPassFilter_G729_16s_ISfs(fresh, kG729Frame, 12, highPass_.data()),
                "HighPassFilter");
        const bool active = decide();
        if (active != (sent.size() == kG729Bytes)) throw Fault("the other decision");
        if (active)
            followSpeech(sent);
        else
            pause(sent);
        afterSpeech_ = active;
    }

  private:
    bool decide()
    {
        std::array<std::int32_t, 13> corr;
        std::int16_t exponent = 0, error = 0, active = -1;
        G729Lsp next, lsf;
        require(zspsAutoCorr_G729_16s32s(window_.data(), corr.data(), &exponent), "AutoCorr");
        auto windowed = corr;
        require(zspsLagWindow_G729_32s_I(windowed.data()), "LagWindow");
        const ZspStatus found = zspsLevinsonDurbin_G729_32s16s(windowed.data(), lpc_.data(),
                                                               reflection_.data(), &error);
        if (found != zspStsOverflow) require(found, "LevinsonDurbin");
        require((annexA_ ? zspsLPCToLSP_G729A_16s : zspsLPCToLSP_G729_16s)(lpc_.data(), lsp_.data(),
                                                                           next.data()),
                "LPCToLSP");
        require(zspsLSPToLSF_Norm_G729_16s(next.data(), lsf.data()), "LSPToLSF");
        require(zspsVAD_G729B_16s(window_.data(), windowed.data(), exponent, lsf.data(),
                                  reflection_[1], &vad_, &active),
                "VAD");
        require(zspsDTXUpdate_G729B_32s16s(corr.data(), exponent, active, &dtx_), "DTXUpdate");
        if (!annexA_ || active != 0) lsp_ = next;
        return active != 0;
    }

    void followSpeech(std::span<const std::uint8_t> sent)
    {
        std::array<std::int16_t, 11> fields;
        G729Lsf lsf;
        require(zspsUnpackFrame_G729_8u16s(sent.data(), kG729Bytes, fields.data()), "UnpackFrame");
        require(zspsLSFDecode_G729_16s(fields[0] >> 7, fields[0] & 127, fields[1] >> 5,
                                       fields[1] & 31, lsfMemory_.data(), lsf.data()),
                "LSFDecode");
        require(zspsLSFToLSP_G729_16s(lsf.data(), quantised_.data()), "LSFToLSP");
    }

    void pause(std::span<const std::uint8_t> sent)
    {
        std::array<std::int16_t, 4> fields{};
        std::int32_t sends = -1;
        require(zspsDTXEncode_G729B_16s(annexA_, afterSpeech_, quantised_.data(), lpc_.data(),
                                        reflection_.data(), lsfMemory_.data(), sidLsp_.data(),
                                        fields.data(), &sends, &dtx_),
                "DTXEncode");
        if ((sends != 0) != !sent.empty()) throw Fault("a descriptor too many or too few");
        quantised_ = sidLsp_;
        if (sends == 0) return;
        std::array<std::uint8_t, kG729SidBytes> bytes;
        require(zspsPackFrame_G729_16s8u(fields.data(), bytes.data(), kG729SidBytes), "PackFrame");
        requireEqual(bytes, sent, "a descriptor");
    }

    bool annexA_, afterSpeech_ = true;
    std::array<std::byte, 24> highPass_{};
    std::array<std::int16_t, 240> window_{};
    std::array<std::int16_t, 11> lpc_ = {4096};
    std::array<std::int16_t, kG729Order> reflection_{};
    G729Lsp lsp_ = kG729LspReset, quantised_ = kG729LspReset, sidLsp_{};
    std::array<std::int16_t, 4 * kG729Order> lsfMemory_{};
    ZspG729BVadState vad_{};
    ZspG729BDtxState dtx_{};
};

void checkPauses(const Vectors& vectors, const std::string& signal, bool annexA)
{
    const Words samples = vectors.words("g729codec/" + signal + ".pcm");
    const std::string name = signal + (annexA ? ".adtx.g729f" : ".mdtx.g729f");
    const auto stream = vectors.read<std::uint8_t>("g729codec/" + name);
    Pauses pauses(annexA);
    std::size_t at = 7;
    for (std::size_t n = 0; n < recordsOf(samples.size(), kG729Frame, signal); ++n) {
        const std::size_t length = at < stream.size() ? stream[at] : 0;
        if (at + 1 + length > stream.size()) throw Fault(name + " is too short");
        try {
            pauses.frame(&samples[n * kG729Frame], std::span(stream).subspan(at + 1, length));
        } catch (const Fault& fault) {
            throw Fault(name + ", frame " + std::to_string(n) + ": " + fault.what());
        }
        at += 1 + length;
    }
    if (at != stream.size()) throw Fault(name + " is too long");
}

} // namespace

void checkG729Pauses(const Vectors& vectors, Checks& checks)
{
    for (const std::string signal :
         {"extremes", "rare_filters", "silence_steps", "speech_noise", "vad_edges"})
        for (const bool annexA : {false, true})
            checks.add("pauses of " + signal + (annexA ? ", Annex A" : ", main body"),
                       [&, annexA] { checkPauses(vectors, signal, annexA); });
}

} // namespace zsp::conformance
