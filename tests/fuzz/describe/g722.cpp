// Filters, encoder and decoder of G.722.

#include "codecs/g722/g722_adpcm.hpp"
#include "codecs/g722/g722_qmf.hpp"
#include "core/state.hpp"
#include "tests/fuzz/describe.hpp"

namespace zsp::fuzz {

namespace {

/// Checks of a block of pairs, whose length is even.
std::vector<Check> pairChecks()
{
    return {nulls(), when([](const Call& c) { return c.number(2) < 1 || c.number(2) % 2 != 0; },
                          zspStsSizeErr)};
}

std::vector<Family> describe()
{
    return {
        {.name = "g722-filters",
         .exports = {sizeOf<144>(ZSP_DESCRIBED(zspsSBADPCMEncodeStateSize_G722_16s)),
                     sizeOf<144>(ZSP_DESCRIBED(zspsSBADPCMDecodeStateSize_G722_16s)),
                     {ZSP_DESCRIBED(zspsQMFEncode_G722_16s),
                      {in(arg(2)), out(arg(2)).orIn({0}), length(300).multipleOf(2), inOut(24)},
                      pairChecks(),
                      [](const Word* src, Word* dst, Long len, Word* line) {
                          g722::analyseScalar({src, size(len)}, {dst, size(len)},
                                              g722::DelayLine{line, 24});
                      }},
                     {ZSP_DESCRIBED(zspsQMFDecode_G722_16s),
                      {in(arg(2)), out(arg(2)).orIn({0}), length(300).multipleOf(2), inOut(24)},
                      pairChecks(),
                      [](const Word* src, Word* dst, Long len, Word* line) {
                          g722::synthesiseScalar({src, size(len)}, {dst, size(len)},
                                                 g722::DelayLine{line, 24});
                      }},
                     {ZSP_DESCRIBED(zspsSBADPCMEncodeInit_G722_16s), {scratch(144)}, {nulls()}},
                     {ZSP_DESCRIBED(zspsSBADPCMDecodeInit_G722_16s), {scratch(144)}, {nulls()}}}},
        {.name = "g722-encoder",
         .exports = {{ZSP_DESCRIBED(zspsSBADPCMEncode_G722_16s),
                      {in(arg(2)), out(arg(2)).orIn({0}), length(300).multipleOf(2), state()},
                      pairChecks(),
                      [](const Word* src, Word* dst, Long len, void* state) {
                          g722::encodeScalar({src, size(len)}, {dst, size(len)},
                                             *alignedState<g722::State>(state));
                      }}},
         .draw = noSetUp,
         .bytes = 144,
         .init = [](const SetUp&, void* state) { zspsSBADPCMEncodeInit_G722_16s(state); },
         .alignment = 16},
        {.name = "g722-decoder",
         .exports = {{ZSP_DESCRIBED(zspsSBADPCMDecode_G722_16s),
                      {in(arg(2)), out(arg(2)).orIn({0}), length(300).multipleOf(2),
                       oneOf({1, 2, 3, 0, -1, 32767}), state()},
                      pairChecks(),
                      [](const Word* src, Word* dst, Long len, Word mode, void* state) {
                          g722::decodeScalar({src, size(len)}, {dst, size(len)}, mode,
                                             *alignedState<g722::State>(state));
                      }},
                     {ZSP_DESCRIBED(zspsSBADPCMDecodeStateUpdate_G722_16s),
                      {in(2), anyWord(), number(kMin, kMax), state()},
                      {nulls()}}},
         .draw = noSetUp,
         .bytes = 144,
         .init = [](const SetUp&, void* state) { zspsSBADPCMDecodeInit_G722_16s(state); },
         .alignment = 16},
    };
}

const Described kDescribed(describe);

} // namespace

} // namespace zsp::fuzz
