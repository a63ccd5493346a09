// Voice activity detection and comfort noise of GSM-AMR and AMR-WB, and the level control.

#include "alc/alc_g169.hpp"
#include "alc/alc_g169_rule.hpp"
#include "codecs/amrwb/amrwb_isf.hpp"
#include "codecs/amrwb/amrwb_vad.hpp"
#include "codecs/gsmamr/gsmamr_vad1.hpp"
#include "codecs/gsmamr/gsmamr_vad2.hpp"
#include "codecs/gsmamr/gsmamr_vad2_fft.hpp"
#include "core/state.hpp"
#include "tests/fuzz/describe.hpp"

#include <algorithm>
#include <cmath>

namespace zsp::fuzz {

namespace {

using Word = std::int16_t;
using Long = std::int32_t;

SetUp noSetUp(Choices&)
{
    return {};
}

/// An index into the history, which is not checked.
void fitIndex(const Call&, std::span<std::byte> bytes)
{
    for (Word& index : elements<Word>(bytes))
        index &= 7;
}

Vad1State freshVad1()
{
    Vad1State s{};
    std::fill(std::begin(s.old_level), std::end(s.old_level), Word{150});
    std::fill(std::begin(s.ave_level), std::end(s.ave_level), Word{150});
    std::fill(std::begin(s.bckr_est), std::end(s.bckr_est), Word{150});
    s.corr_hp_fast = 13106;
    return s;
}

/// A gain or a level in decibels: any that is not negative, though very large ones overflow.
Argument decibels()
{
    return real(0, 60).with([](Argument& a) { a.high = HUGE_VAL; });
}

} // namespace

std::vector<Family> gsmamr()
{
    const auto dtxBuffer =
        std::vector<Argument>{in(160), in(10), inOut(1).fitted(fitIndex), inOut(80), inOut(8)};
    return {
        {.name = "gsmamr-blocks",
         .exports =
             {{ZSP_DESCRIBED(zspsEncDTXHandler_GSMAMR_16s),
               {inOut(1), inOut(1), inOut(1), out(1), anyWord()},
               {nulls()}},
              {ZSP_DESCRIBED(zspsEncDTXBuffer_GSMAMR_16s), dtxBuffer, {nulls()}},
              {ZSP_DESCRIBED(zspsDecDTXBuffer_GSMAMR_16s), dtxBuffer, {nulls()}},
              {ZSP_DESCRIBED(zspsPreemphasize_GSMAMR_16s),
               {anyWord(), in(arg(3)), out(arg(3)).orIn({1}), length(), inOut(1)},
               {nulls(), outside(3, zspStsSizeErr)},
               [](Word factor, const Word* src, Word* dst, Long len, Word* memory) {
                   gsmamr::preEmphasiseScalar(factor, {src, size(len)}, {dst, size(len)}, *memory);
               }},
              {ZSP_DESCRIBED(zspsFFTFwd_RToPerm_GSMAMR_16s_I),
               {inOut(128)},
               {nulls()},
               [](Word* x) {
                   gsmamr::fftScalar(gsmamr::FftBlock{x, 128});
               }}}},
        {.name = "gsmamr-vad1",
         .exports = {{ZSP_DESCRIBED(zspsVAD1_GSMAMR_16s),
                      {in(200), state(), out(1), number(kMin, kMax), anyWord()},
                      {nulls()},
                      [](const Word* src, Vad1State* state, Word* flag, Long tone, Word corr) {
                          InPlace<Vad1State> s(state);
                          *flag = gsmamr::vad1Scalar(gsmamr::Vad1Source{src, 200}, *s,
                                                     static_cast<Word>(tone), corr);
                      }}},
         .draw = noSetUp,
         .bytes = sizeof(Vad1State),
         .init = [](const SetUp&, void* state) { placeRecord(state, freshVad1()); },
         .touch =
             [](Choices& choices, void* state) {
                 InPlace<Vad1State> s(state);
                 s->pitch = static_cast<Word>(choices.bits<std::uint16_t>() & 0x7fff);
             }},
        {.name = "gsmamr-vad2",
         .exports = {{ZSP_DESCRIBED(zspsVAD2_GSMAMR_16s),
                      {in(160), state(), out(1), number(kMin, kMax)},
                      {nulls()},
                      [](const Word* src, Vad2State* state, Word* flag, Long ltp) {
                          InPlace<Vad2State> s(state);
                          *flag = gsmamr::vad2Scalar(gsmamr::Vad2Frame{src, 160}, *s, ltp != 0);
                      }}},
         .draw = noSetUp,
         .bytes = sizeof(Vad2State),
         .init = [](const SetUp&, void* state) { placeRecord(state, Vad2State{}); }},
    };
}

std::vector<Family> amrwb()
{
    return {
        {.name = "amrwb-blocks",
         .exports = {{ZSP_DESCRIBED(zspsISFToISP_AMRWB_16s),
                      {in(arg(2)), out(arg(2)).orIn({0}), length(100)},
                      {nulls(), outside(2, zspStsSizeErr)},
                      [](const Word* isf, Word* isp, Long len) {
                          amrwb::isfToIspScalar({isf, size(len)}, {isp, size(len)});
                      }},
                     {ZSP_DESCRIBED(zspsISPToISF_Norm_AMRWB_16s),
                      {in(arg(2)), out(arg(2)).orIn({0}), length(100)},
                      {nulls(), outside(2, zspStsSizeErr)},
                      [](const Word* isp, Word* isf, Long len) {
                          amrwb::ispToIsfScalar({isp, size(len)}, {isf, size(len)});
                      }},
                     {ZSP_DESCRIBED(zspsISFQuantDTX_AMRWB_16s),
                      {in(16), out(16).orIn({0}), out(5)},
                      {nulls()},
                      [](const Word* isf, Word* quantised, Word* indices) {
                          const auto found = amrwb::quantiseNoiseScalar(amrwb::InIsf{isf, 16});
                          std::copy(found.begin(), found.end(), indices);
                          amrwb::decodeNoise(found, amrwb::OutIsf{quantised, 16});
                      }},
                     {ZSP_DESCRIBED(zspsISFQuantDecodeDTX_AMRWB_16s), {in(5), out(16)}, {nulls()}},
                     {ZSP_DESCRIBED(zspsVADInit_AMRWB_16s), {inOut(1)}, {nulls()}}}},
        {.name = "amrwb-vad",
         .exports = {{ZSP_DESCRIBED(zspsVAD_AMRWB_16s),
                      {in(256), state(), inOut(1), out(1)},
                      {nulls()},
                      [](const Word* frame, VadWbState* state, Word* tone, Word* flag) {
                          InPlace<VadWbState> s(state);
                          *flag = amrwb::vadScalar(amrwb::VadFrame{frame, 256}, *s, *tone);
                      }},
                     {ZSP_DESCRIBED(zspsVADGetEnergyLevel_AMRWB_16s),
                      {state(), out(12)},
                      {nulls()},
                      [](const VadWbState* state, Word* levels) {
                          std::copy_n(readRecord<VadWbState>(state).energy_level, 12, levels);
                      }}},
         .draw = noSetUp,
         .bytes = sizeof(VadWbState),
         .init =
             [](const SetUp&, void* state) {
                 placeRecord(state, VadWbState{});
                 zspsVADInit_AMRWB_16s(static_cast<VadWbState*>(state));
             }},
    };
}

std::vector<Family> alc()
{
    return {
        {.name = "alc",
         .exports = {{ZSP_DESCRIBED(zspsALC_G169_16s),
                      {in(arg(2)), out(arg(2)).orIn({0}), length().multipleOf(8), state()},
                      {nulls(),
                       when([](const Call& c) { return c.number(2) < 8 || c.number(2) % 8 != 0; },
                            zspStsRangeErr)},
                      [](const Word* src, Word* dst, Long len, ZspAlcState_G169* state) {
                          InPlace<alc::State> s(state);
                          for (Long i = 0; i < len; i += 8) {
                              alc::update(*s, alc::measureScalar(alc::InBlock{src + i, 8}));
                              alc::amplifyScalar(alc::InBlock{src + i, 8}, s->gain,
                                                 alc::OutBlock{dst + i, 8});
                          }
                      }},
                     {ZSP_DESCRIBED(zspsALCInit_G169_16s),
                      {state()},
                      {nulls()},
                      [](ZspAlcState_G169* state) { placeRecord(state, alc::initialState()); }},
                     {ZSP_DESCRIBED(zspsALCSetGain_G169_16s),
                      {decibels(), state()},
                      {nulls(), outside(0, zspStsRangeErr)}},
                     {ZSP_DESCRIBED(zspsALCSetLevel_G169_16s),
                      {decibels(), decibels(), state()},
                      {nulls(), outside(0, zspStsRangeErr), outside(1, zspStsRangeErr)}}},
         .draw = noSetUp,
         .bytes = sizeof(ZspAlcState_G169),
         .init = [](const SetUp&,
                    void* state) { zspsALCInit_G169_16s(static_cast<ZspAlcState_G169*>(state)); }},
    };
}

} // namespace zsp::fuzz
