// The blocks of the G.729 encoder, and what coders by linear prediction share.

#include "codecs/g729/coder/g729_matrix.hpp"
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
        {ZSP_DESCRIBED(zspsLPCToLSP_G729_16s),
         {in(11), in(10), out(10).orIn({1})},
         {nulls()},
         [](const Word* lpc, const Word* previous, Word* lsp) {
             g729::lpcToLspScalar(spanOf<kTaps>(lpc), spanOf<kOrder>(previous),
                                  spanOf<kOrder>(lsp));
         }},
        {ZSP_DESCRIBED(zspsLPCToLSP_G729A_16s),
         {in(11), in(10), out(10).orIn({1})},
         {nulls()},
         [](const Word* lpc, const Word* previous, Word* lsp) {
             g729::lpcToLspAScalar(spanOf<kTaps>(lpc), spanOf<kOrder>(previous),
                                   spanOf<kOrder>(lsp));
         }},
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
         {nulls(), outside(3, zspStsSizeErr)},
         [](const Word* a, const Word* x, Word* y, Long len) {
             celp::residual(spanOf<kTaps>(a), x, {y, size(len)});
         }},
    };
}

/// Keeps exponents in their range, but for one call in eight.
void makeExponents(const Call&, std::span<std::byte> bytes)
{
    const auto x = elements<Word>(bytes);
    if ((x[0] & 7) != 7)
        for (Word& v : x)
            v = static_cast<Word>(v % 101);
}

bool areBeyond(const Call& c)
{
    const Word* x = c.data<Word>(1);
    return std::any_of(x, x + 5, [](Word v) { return v < -100 || v > 100; });
}

void makeExtra(const Call&, std::span<std::byte> bytes)
{
    Word& extra = elements<Word>(bytes)[0];
    if ((extra & 7) != 7) extra = static_cast<Word>((extra & 0x7fff) % 106);
}

/// A range of more than ten lags.
Check wide(std::size_t low)
{
    return when(
        [low](const Call& c) {
            const auto width = c.number(low + 1) - c.number(low);
            return width < 0 || width > 9;
        },
        zspStsCodecRangeErr);
}

Check outOfRange(std::size_t argument)
{
    return outside(argument, zspStsCodecRangeErr);
}

std::vector<Description> encoderBlocks()
{
    return {
        {ZSP_DESCRIBED(zspsLSPQuant_G729_16s),
         {in(10), inOut(40), out(10).orIn({0}), out(2)},
         {nulls()}},
        {ZSP_DESCRIBED(zspsPerceptualWeighting_G729_16s),
         {in(10), in(10), in(2), out(2), out(2), inOut(3)},
         {nulls()}},
        {ZSP_DESCRIBED(zspsImpulseResponse_G729_16s), {in(11), in(11), in(11), out(40)}, {nulls()}},
        {ZSP_DESCRIBED(zspsOpenLoopPitchSearch_G729_16s),
         {in(80).after(143), out(1)},
         {nulls()},
         [](const Word* src, Word* lag) {
             *lag = static_cast<Word>(g729::openLoopLagScalar(spanOf<g729::kOpenLoop>(src - 143)));
         }},
        {ZSP_DESCRIBED(zspsOpenLoopPitchSearch_G729A_16s),
         {in(80).after(143), out(1)},
         {nulls()},
         [](const Word* src, Word* lag) {
             *lag = static_cast<Word>(g729::openLoopLagAScalar(spanOf<g729::kOpenLoop>(src - 143)));
         }},
        {ZSP_DESCRIBED(zspsConvPartial_G729_16s),
         {in(40), in(40), out(40)},
         {nulls()},
         [](const Word* x, const Word* h, Word* y) {
             g729::convolveScalar(spanOf<40>(x), spanOf<40>(h), spanOf<40>(y));
         }},
        {ZSP_DESCRIBED(zspsAdaptiveCodebookSearch_G729_16s),
         {in(40), in(40), number(20, 143), number(20, 143), number(0, 1), inOut(194), out(1),
          out(1)},
         {nulls(), outOfRange(2), outOfRange(3), wide(2), outOfRange(4)},
         [](const Word* target, const Word* h, Long low, Long high, Long subframe, Word* e,
            Word* lag, Word* fraction) {
             const g729::Lag found = g729::adaptiveSearchScalar(
                 spanOf<40>(target), spanOf<40>(h), low, high, subframe == 0, spanOf<194>(e));
             *lag = found.whole;
             *fraction = found.thirds;
         }},
        {ZSP_DESCRIBED(zspsAdaptiveCodebookSearch_G729A_16s),
         {in(40), number(20, 143), number(20, 143), number(0, 1), inOut(194), out(1), out(1)},
         {nulls(), outOfRange(1), outOfRange(2), wide(1), outOfRange(3)},
         [](const Word* corr, Long low, Long high, Long subframe, Word* e, Word* lag,
            Word* fraction) {
             const g729::Lag found = g729::adaptiveSearchAScalar(spanOf<40>(corr), low, high,
                                                                 subframe == 0, spanOf<194>(e));
             *lag = found.whole;
             *fraction = found.thirds;
         }},
        {ZSP_DESCRIBED(zspsAdaptiveCodebookGain_G729_16s),
         {in(40), in(40), out(4), out(1)},
         {nulls()}},
        {ZSP_DESCRIBED(zspsTamingTest_G729_32s),
         {in(4), number(18, 144), number(-1, 1), out(1)},
         {nulls(), outOfRange(1), outOfRange(2)}},
        {ZSP_DESCRIBED(zspsTamingUpdate_G729_32s_I),
         {anyWord(), number(18, 144), inOut(4)},
         {nulls(), outOfRange(1)}},
        {ZSP_DESCRIBED(zspsToeplizMatrix_G729_16s),
         {in(40), out(616)},
         {nulls()},
         [](const Word* h, Word* matrix) {
             g729::toeplizMatrixScalar(spanOf<40>(h), spanOf<616>(matrix));
         }},
        {ZSP_DESCRIBED(zspsFixedCodebookSearch_G729_16s),
         {in(40), in(616), in(40), number(0, 1), inOut(1).fitted(makeExtra), out(1), out(1),
          out(40)},
         {nulls(), outOfRange(3),
          whenContent(
              [](const Call& c) {
                  const Word extra = *c.data<Word>(4);
                  return c.number(3) == 1 && (extra < 0 || extra > 105);
              },
              zspStsRangeErr)},
         [](const Word* corr, const Word* matrix, const Word* h, Long subframe, Word* extra,
            Word* positions, Word* signs, Word* filtered) {
             const g729::FixedCode code = g729::fixedSearchScalar(
                 spanOf<40>(corr), spanOf<616>(matrix), subframe == 0, *extra);
             *positions = code.positions;
             *signs = code.signs;
             g729::filterPulses(code, spanOf<40>(h), spanOf<40>(filtered));
         }},
        {ZSP_DESCRIBED(zspsFixedCodebookSearch_G729A_16s),
         {in(40), in(616), in(40), out(1), out(1), out(40)},
         {nulls()},
         [](const Word* corr, const Word* matrix, const Word* h, Word* positions, Word* signs,
            Word* filtered) {
             const g729::FixedCode code =
                 g729::fixedSearchAScalar(spanOf<40>(corr), spanOf<616>(matrix));
             *positions = code.positions;
             *signs = code.signs;
             g729::filterPulses(code, spanOf<40>(h), spanOf<40>(filtered));
         }},
        {ZSP_DESCRIBED(zspsGainCorrelation_G729_16s),
         {in(4), in(40), in(40), in(40), out(5), out(5)},
         {nulls()}},
        {ZSP_DESCRIBED(zspsGainQuant_G729_16s),
         {in(5), in(5).fitted(makeExponents), number(kMin, kMax), in(40), inOut(4), out(1), out(1),
          out(1)},
         {nulls(), whenContent(areBeyond, zspStsRangeErr)}},
    };
}

std::vector<Description> sharedBlocks()
{
    return {
        {ZSP_DESCRIBED(zspsAutoCorr_16s32s),
         {in(arg(1)), length(), out(arg(3)), length(60)},
         {nulls(), outside(1, zspStsSizeErr), outside(3, zspStsSizeErr)}},
        {ZSP_DESCRIBED(zspsAutoCorr_NormE_NR_16s),
         {in(arg(1)), length(), out(arg(3)), length(60), out(1)},
         {nulls(), outside(1, zspStsSizeErr), outside(3, zspStsSizeErr)}},
        {ZSP_DESCRIBED(zspsCrossCorr_NR_16s32s),
         {in(arg(2)), in(arg(2)), length(), out(arg(4)), length(60)},
         {nulls(), outside(2, zspStsSizeErr), outside(4, zspStsSizeErr)}},
        {ZSP_DESCRIBED(zspsCrossCorr_NR_16s),
         {in(arg(2)), in(arg(2)), length(), out(arg(4)), length(60)},
         {nulls(), outside(2, zspStsSizeErr), outside(4, zspStsSizeErr)}},
        {ZSP_DESCRIBED(zspsCrossCorr_NR_16s_Sfs),
         {in(arg(2)), in(arg(2)), length(), out(arg(4)), length(60), number(0, kMax).upTo(64)},
         {nulls(), outside(2, zspStsSizeErr), outside(4, zspStsSizeErr),
          outside(5, zspStsScaleRangeErr)}},
        {ZSP_DESCRIBED(zspsConvPartial_NR_16s),
         {in(arg(3)), in(arg(3)), out(arg(3)), length()},
         {nulls(), outside(3, zspStsSizeErr)}},
        {ZSP_DESCRIBED(zspsDotProdAutoScale_16s32s_Sfs),
         {in(arg(2)), in(arg(2)), length(), out(1), out(1)},
         {nulls(), outside(2, zspStsSizeErr)}},
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
        {.name = "g729-encoder", .exports = encoderBlocks()},
        {.name = "celp", .exports = sharedBlocks()},
    };
}

const Described kDescribed(describe);

} // namespace

} // namespace zsp::fuzz
