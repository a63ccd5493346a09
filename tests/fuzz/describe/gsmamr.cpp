// Voice activity detection, comfort noise and small blocks of GSM-AMR.

#include "codecs/gsmamr/gsmamr_vad1.hpp"
#include "codecs/gsmamr/gsmamr_vad2.hpp"
#include "codecs/gsmamr/gsmamr_vad2_fft.hpp"
#include "core/state.hpp"
#include "tests/fuzz/describe.hpp"

#include <algorithm>

namespace zsp::fuzz {

namespace {

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

std::vector<Family> describe()
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

const Described kDescribed(describe);

} // namespace

} // namespace zsp::fuzz
