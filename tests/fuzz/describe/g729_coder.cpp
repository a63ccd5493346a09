// The blocks of the G.729 encoder, and what coders by linear prediction share.

#include "codecs/g729/coder/g729_coder.hpp"
#include "tests/fuzz/describe.hpp"

#include <algorithm>

namespace zsp::fuzz {

namespace {

using celp::kOrder;
using celp::kTaps;

/// Makes the first of some sums normalised, but for one in eight.
void normaliseFirst(const Call&, std::span<std::byte> bytes)
{
    const auto corr = elements<Long>(bytes);
    if ((corr[0] & 7) != 7) corr[0] = (corr[0] & 0x3fffffff) | 0x40000000;
    if ((corr[0] & 3) == 0) // else hardly a filter is stable
        for (Long& c : corr.subspan(1))
            c >>= 3;
}

bool isUnstable(const Call& c)
{
    g729::Prediction p;
    return !g729::levinsonDurbin(spanOf<kTaps>(c.data<Long>(0)), p);
}

bool isQuiet(const Call& c)
{
    return c.data<Long>(0)[0] < 1 << 30;
}

bool isBelowZero(const Call& c)
{
    return *std::min_element(c.data<Word>(0), c.data<Word>(0) + kOrder) < 0;
}

void makePositive(const Call&, std::span<std::byte> bytes)
{
    const auto x = elements<Word>(bytes);
    if ((x[0] & 7) != 7)
        for (Word& v : x)
            v &= 0x7fff;
}

std::vector<Description> lpBlocks()
{
    return {
        {ZSP_DESCRIBED(zspsAutoCorr_G729_16s32s),
         {in(240), out(13), out(1)},
         {nulls()},
         [](const Word* x, Long* corr, Word* exponent) {
             g729::autoCorrScalar(spanOf<240>(x), spanOf<13>(corr), *exponent);
         }},
        {ZSP_DESCRIBED(zspsLagWindow_G729_32s_I), {inOut(13)}, {nulls()}},
        {ZSP_DESCRIBED(zspsLevinsonDurbin_G729_32s16s),
         {in(11).fitted(normaliseFirst), out(11), out(10), out(1)},
         {nulls(), whenContent(isQuiet, zspStsRangeErr), whenContent(isUnstable, zspStsOverflow)}},
        {ZSP_DESCRIBED(zspsLPCToLSP_G729_16s), {in(11), in(10), out(10).orIn({1})}, {nulls()}},
        {ZSP_DESCRIBED(zspsLPCToLSP_G729A_16s), {in(11), in(10), out(10).orIn({1})}, {nulls()}},
        {ZSP_DESCRIBED(zspsLSPToLPC_G729_16s), {in(10), out(11)}, {nulls()}},
        {ZSP_DESCRIBED(zspsLSPInterpolate_G729_16s),
         {in(10), in(10), out(10).orIn({0, 1})},
         {nulls()}},
        {ZSP_DESCRIBED(zspsLSFToLSP_G729_16s),
         {in(10).fitted(makePositive), out(10).orIn({0})},
         {nulls(), whenContent(isBelowZero, zspStsNegativeValueErr)}},
        {ZSP_DESCRIBED(zspsWeightLPC_G729_16s), {in(11), anyWord(), out(11).orIn({0})}, {nulls()}},
        {ZSP_DESCRIBED(zspsWeightLPC_G729A_16s), {in(11), out(11).orIn({0}), out(11)}, {nulls()}},
        {ZSP_DESCRIBED(zspsResidualFilter_G729_16s),
         {in(11), in(arg(3)).after(10), out(arg(3)), length()},
         {nulls(), outside(3, zspStsSizeErr)}},
    };
}

std::vector<Description> sharedBlocks()
{
    return {
        {ZSP_DESCRIBED(zspsSynthesisFilter_NR_16s_Sfs),
         {in(11), in(arg(3)), out(arg(3)).orIn({1}), length(), inOut(10), number(0, 15)},
         {nulls(), outside(3, zspStsSizeErr), outside(5, zspStsScaleRangeErr)},
         [](const Word* a, const Word* x, Word* y, Long len, Word* memory, Long scale) {
             celp::synthesisScalar(spanOf<kTaps>(a), {x, size(len)}, y, spanOf<kOrder>(memory),
                                   15 - scale);
         }},
        {ZSP_DESCRIBED(zspsInterpolateC_NR_16s),
         {in(arg(5)), anyWord(), in(arg(5)), anyWord(), out(arg(5)).orIn({0, 2}), length(),
          number(0, 31), number(0, 31)},
         {nulls(), outside(5, zspStsSizeErr), outside(6, zspStsScaleRangeErr),
          outside(7, zspStsScaleRangeErr)}},
    };
}

std::vector<Family> describe()
{
    return {
        {.name = "g729-lp", .exports = lpBlocks()},
        {.name = "celp", .exports = sharedBlocks()},
    };
}

const Described kDescribed(describe);

} // namespace

} // namespace zsp::fuzz
