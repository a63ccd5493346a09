// The blocks of the G.729 decoder, its post-filters and Annex B.

#include "codecs/g729/annexb/g729_annexb.hpp"
#include "tests/fuzz/describe.hpp"

namespace zsp::fuzz {

namespace {

const auto kRange = [](std::size_t i) { return outside(i, zspStsCodecRangeErr); };

Argument lag()
{
    return number(18, 144);
}

/// Makes fields fit their bits, but for one frame in eight.
void fitFields(const Call& c, std::span<std::byte> bytes)
{
    constexpr Word kSpeech[] = {255, 1023, 255, 1, 8191, 15, 127, 31, 8191, 15, 127};
    constexpr Word kSid[] = {1, 31, 15, 31};
    const auto x = elements<Word>(bytes);
    if ((x[0] & 0x7000) == 0) return;
    for (std::size_t i = 0; i < x.size(); ++i)
        x[i] = static_cast<Word>(x[i] & (c.number(2) == 2 && i < 4 ? kSid[i] : kSpeech[i]));
}

bool isUnfit(const Call& c)
{
    const auto bytes = size(c.number(2));
    return !g729::fieldsFit({c.data<Word>(0), bytes == 2 ? size(4) : size(11)}, bytes);
}

std::vector<Description> decoderBlocks()
{
    return {
        {ZSP_DESCRIBED(zspsPackFrame_G729_16s8u),
         {in(11).fitted(fitFields), scratch(10), oneOf({10, 2})},
         {nulls(), outside(2, zspStsSizeErr), whenContent(isUnfit, zspStsCodecRangeErr)}},
        {ZSP_DESCRIBED(zspsUnpackFrame_G729_8u16s),
         {in(10), oneOf({10, 2}), out(11)},
         {nulls(), outside(1, zspStsSizeErr)}},
        {ZSP_DESCRIBED(zspsLSFDecode_G729_16s),
         {number(0, 1), number(0, 127), number(0, 31), number(0, 31), inOut(40), out(10)},
         {nulls(), kRange(0), kRange(1), kRange(2), kRange(3)}},
        {ZSP_DESCRIBED(zspsLSFDecodeErased_G729_16s),
         {number(0, 1), in(10), inOut(40)},
         {nulls(), kRange(0)}},
        {ZSP_DESCRIBED(zspsDecodePitchLag_G729_16s),
         {number(0, 31), number(0, 1), lag(), out(1), out(1)},
         {nulls(), outside(1, zspStsRangeErr),
          when(
              [](const Call& c) {
                  return c.number(0) < 0 || c.number(0) > (c.number(1) == 0 ? 255 : 31);
              },
              zspStsCodecRangeErr),
          when(
              [](const Call& c) {
                  return c.number(1) == 1 && (c.number(2) < 18 || c.number(2) > 144);
              },
              zspStsCodecRangeErr)}},
        {ZSP_DESCRIBED(zspsDecodeAdaptiveVector_G729_16s_I),
         {lag(), number(-1, 1), inOut(194)},
         {nulls(), kRange(0), kRange(1)},
         [](Long whole, Long fraction, Word* x) {
             g729::adaptiveVectorScalar(static_cast<Word>(whole), static_cast<Word>(fraction),
                                        spanOf<194>(x));
         }},
        {ZSP_DESCRIBED(zspsFixedCodebookDecode_G729_16s),
         {number(0, 8191), number(0, 15), out(40)},
         {nulls(), kRange(0), kRange(1)}},
        {ZSP_DESCRIBED(zspsHarmonicSharpening_G729_16s_I),
         {lag(), anyWord(), inOut(40)},
         {nulls(), kRange(0)}},
        {ZSP_DESCRIBED(zspsGainDecode_G729_16s),
         {number(0, 127), in(40), inOut(4), out(1), out(1)},
         {nulls(), kRange(0)}},
        {ZSP_DESCRIBED(zspsGainDecodeErased_G729_16s_I), {inOut(4), inOut(1), inOut(1)}, {nulls()}},
        {ZSP_DESCRIBED(zspsExcitation_G729_16s_I),
         {number(0, 32767), number(0, 32767), in(40), inOut(40)},
         {nulls(), outside(0, zspStsRangeErr), outside(1, zspStsRangeErr)},
         [](Word pitch, Word fixed, const Word* code, Word* x) {
             g729::excitationScalar(pitch, fixed, spanOf<40>(code), spanOf<40>(x));
         }},
        {ZSP_DESCRIBED(zspsSynthesis_G729_16s),
         {in(11), number(0, 1), inOut(234), out(40), inOut(10)},
         {nulls(), outside(1, zspStsRangeErr)}},
    };
}

std::vector<Description> postFilterBlocks()
{
    return {
        {ZSP_DESCRIBED(zspsLongTermPostFilter_G729_16s),
         {lag(), in(192), out(40), out(1)},
         {nulls(), kRange(0)}},
        {ZSP_DESCRIBED(zspsShortTermPostFilter_G729_16s),
         {in(11), in(11), in(40), out(41), inOut(10), out(1)},
         {nulls()}},
        {ZSP_DESCRIBED(zspsTiltCompensation_G729_16s), {anyWord(), in(41), out(40)}, {nulls()}},
        {ZSP_DESCRIBED(zspsGainControl_G729_16s_I), {in(40), inOut(40), inOut(1)}, {nulls()}},
        {ZSP_DESCRIBED(zspsLongTermPostFilter_G729A_16s),
         {lag(), in(183), out(40)},
         {nulls(), kRange(0)}},
        {ZSP_DESCRIBED(zspsTiltCompensation_G729A_16s_I),
         {in(11), in(11), inOut(40), inOut(1)},
         {nulls()}},
        {ZSP_DESCRIBED(zspsShortTermPostFilter_G729A_16s),
         {in(11), in(40), out(40).orIn({1}), inOut(10)},
         {nulls()}},
        {ZSP_DESCRIBED(zspsGainControl_G729A_16s_I), {in(40), inOut(40), inOut(1)}, {nulls()}},
    };
}

std::vector<Description> noiseBlocks()
{
    return {
        sizeOf<sizeof(ZspG729BVadState)>(ZSP_DESCRIBED(zspsVADGetSize_G729B_16s)),
        {ZSP_DESCRIBED(zspsVADInit_G729B_16s), {inOut(1)}, {nulls()}},
        {ZSP_DESCRIBED(zspsDTXInit_G729B_16s), {inOut(1)}, {nulls()}},
        {ZSP_DESCRIBED(zspsSIDLSFQuant_G729B_16s),
         {in(10), inOut(40), out(10).orIn({0}), out(3)},
         {nulls()}},
        {ZSP_DESCRIBED(zspsSIDLSFDecode_G729B_16s),
         {number(0, 1), number(0, 31), number(0, 15), inOut(40), out(10)},
         {nulls(), kRange(0), kRange(1), kRange(2)}},
        {ZSP_DESCRIBED(zspsSIDGainQuant_G729B_16s),
         {in(2), in(2), number(0, 2), out(1)},
         {nulls(), outside(2, zspStsSizeErr)}},
        {ZSP_DESCRIBED(zspsSIDGainDecode_G729B_16s), {number(0, 31), out(1)}, {nulls(), kRange(0)}},
        {ZSP_DESCRIBED(zspsComfortNoiseGain_G729B_16s),
         {number(0, 32767), number(kMin, kMax), inOut(1)},
         {nulls(), outside(0, zspStsRangeErr)}},
        {ZSP_DESCRIBED(zspsComfortNoise_G729B_16s_I),
         {number(0, 32767), inOut(1), inOut(194), out(1), out(1)},
         {nulls(), outside(0, zspStsRangeErr)}},
    };
}

std::vector<Family> describe()
{
    return {
        {.name = "g729-decoder", .exports = decoderBlocks()},
        {.name = "g729-postfilter", .exports = postFilterBlocks()},
        {.name = "g729b-noise", .exports = noiseBlocks()},
        {.name = "g729b-vad",
         .exports = {{ZSP_DESCRIBED(zspsVAD_G729B_16s),
                      {in(240), in(13), number(-32, 31), in(10), anyWord(), state(), out(1)},
                      {nulls(), outside(2, zspStsRangeErr)}}},
         .draw = noSetUp,
         .bytes = sizeof(ZspG729BVadState),
         .init = [](const SetUp&,
                    void* state) { zspsVADInit_G729B_16s(static_cast<ZspG729BVadState*>(state)); }},
        {.name = "g729b-dtx",
         .exports = {{ZSP_DESCRIBED(zspsDTXUpdate_G729B_32s16s),
                      {in(11), number(-32, 31), number(kMin, kMax), state()},
                      {nulls(), outside(1, zspStsRangeErr)}},
                     {ZSP_DESCRIBED(zspsDTXEncode_G729B_16s),
                      {number(kMin, kMax), number(kMin, kMax), in(10), inOut(11), inOut(10),
                       inOut(40), inOut(10), inOut(4), out(1), state()},
                      {nulls()}}},
         .draw = noSetUp,
         .bytes = sizeof(ZspG729BDtxState),
         .init = [](const SetUp&,
                    void* state) { zspsDTXInit_G729B_16s(static_cast<ZspG729BDtxState*>(state)); }},
    };
}

const Described kDescribed(describe);

} // namespace

} // namespace zsp::fuzz
