// The filter and conversions of G.729.

#include "codecs/g729/g729_highpass.hpp"
#include "core/state.hpp"
#include "tests/fuzz/describe.hpp"

#include <algorithm>

namespace zsp::fuzz {

namespace {

/// What is left of one block when it is coded in two: one call equals several on its parts.
Long firstPart(Long len)
{
    return len / 3 / 2 * 2;
}

std::vector<Family> describe()
{
    return {
        {.name = "g729",
         .exports = {sizeOf<24>(ZSP_DESCRIBED(zspsHighPassFilterSize_G729)),
                     {ZSP_DESCRIBED(zspsHighPassFilterInit_G729),
                      {in(6), out(24)},
                      {nulls()},
                      [](const Word* coeffs, void* state) {
                          g729::HighPassState fresh;
                          std::copy_n(coeffs, 6, fresh.coeffs.begin());
                          placeRecord(state, fresh);
                      }},
                     {ZSP_DESCRIBED(zspsLSPToLSF_G729_16s), {in(10), out(10).orIn({0})}, {nulls()}},
                     {ZSP_DESCRIBED(zspsLSPToLSF_Norm_G729_16s),
                      {in(10), out(10).orIn({0})},
                      {nulls()}}}},
        {.name = "g729-highpass",
         .exports = {{ZSP_DESCRIBED(zspsHighPassFilter_G729_16s_ISfs),
                      {inOut(arg(1)), length(), oneOf({12, 13}), state()},
                      {nulls(), outside(1, zspStsSizeErr), outside(2, zspStsScaleRangeErr)},
                      [](Word* x, Long len, Long scaleFactor, void* state) {
                          const Long first = firstPart(len);
                          if (first > 0)
                              zspsHighPassFilter_G729_16s_ISfs(x, first, scaleFactor, state);
                          zspsHighPassFilter_G729_16s_ISfs(x + first, len - first, scaleFactor,
                                                           state);
                      }}},
         .draw =
             [](Choices& choices) {
                 SetUp coeffs = choices.below(2) ? SetUp{4096, 7807, -3733, 1899, -3798, 1899}
                                                 : SetUp{8192, 15836, -7667, 7699, -15398, 7699};
                 if (choices.oneIn(4))
                     for (auto& c : coeffs)
                         c = static_cast<Word>(choices.bits<std::uint16_t>());
                 return coeffs;
             },
         .bytes = 24,
         .init =
             [](const SetUp& s, void* state) {
                 const std::vector<Word> coeffs(s.begin(), s.end());
                 zspsHighPassFilterInit_G729(coeffs.data(), state);
             }},
    };
}

const Described kDescribed(describe);

} // namespace

} // namespace zsp::fuzz
