// Voice activity detection and spectral frequencies of AMR-WB.

#include "codecs/amrwb/amrwb_isf.hpp"
#include "codecs/amrwb/amrwb_vad.hpp"
#include "core/state.hpp"
#include "tests/fuzz/describe.hpp"

#include <algorithm>

namespace zsp::fuzz {

namespace {

std::vector<Family> describe()
{
    return {
        {.name = "amrwb-blocks",
         .exports = {sizeOf<24>(ZSP_DESCRIBED(zspsAdaptiveCodebookDecodeGetSize_AMRWB_16s)),
                     sizeOf<172>(ZSP_DESCRIBED(zspsVADGetSize_AMRWB_16s)),
                     {ZSP_DESCRIBED(zspsISFToISP_AMRWB_16s),
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

const Described kDescribed(describe);

} // namespace

} // namespace zsp::fuzz
