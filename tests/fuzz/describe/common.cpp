// Products, correlations and scaling.

#include "common/correlation/correlation.hpp"
#include "common/correlation/lag_search.hpp"
#include "common/filter/preemphasis.hpp"
#include "common/math/inv_sqrt.hpp"
#include "common/scaling/mul_nr.hpp"
#include "tests/fuzz/describe.hpp"

#include <algorithm>
#include <cstdlib>

namespace zsp::fuzz {

namespace {

using namespace common;

/// The sum of the squares exceeds what can be normalised.
bool tooLoud(const Call& c)
{
    std::int64_t energy = 0;
    for (std::int64_t i = 0; i < c.number(1); ++i)
        energy += c.data<Word>(0)[i] * c.data<Word>(0)[i];
    return energy > (1 << 30) - 1;
}

/// dst[i] = shl(src[i], norm - scale), straight from the formula.
void autoScale(const Word* src, Word* dst, Long len, Long* scale)
{
    int largest = 0;
    for (Long i = 0; i < len; ++i)
        largest = std::max(largest, std::min(std::abs(int{src[i]}), 32767));
    int norm = 0;
    while (largest != 0 && (largest << (norm + 1)) < 32768)
        ++norm;
    const int shift = norm - *scale;
    for (Long i = 0; i < len; ++i)
        dst[i] =
            static_cast<Word>(shift >= 0 ? src[i] * (1 << shift) : src[i] >> std::min(-shift, 15));
    *scale = shift;
}

bool isNegative(const Long* number)
{
    return *number < 0;
}

template <typename T, typename Corr, Scan scan>
void searchPast(const T* src, Long len, Long lagMin, Long lagMax, Corr* maxCorr, Long* bestLag)
{
    const auto best = lagMaxScalar(std::span(src, size(len)),
                                   std::span(src - lagMax, size(len + lagMax - lagMin)), scan);
    *maxCorr = best.corr;
    *bestLag = lagMax - static_cast<Long>(best.offset);
}

template <typename T, typename Corr>
Description pastSearch(std::string name, ZspStatus (*f)(const T*, Long, Long, Long, Corr*, Long*),
                       void (*definition)(const T*, Long, Long, Long, Corr*, Long*))
{
    return {std::move(name),
            f,
            {in(arg(1)).after(arg(3)), length(), number(0, kMax).upTo(60),
             number(0, kMax).upTo(200), out(1), out(1)},
            {nulls(), outside(1, zspStsSizeErr), outside(2, zspStsRangeErr),
             when([](const Call& c) { return c.number(3) < c.number(2); }, zspStsRangeErr)},
            definition};
}

std::vector<Family> describe()
{
    const Argument scale = inOut(1).fitted([](const Call&, std::span<std::byte> bytes) {
        for (Long& value : elements<Long>(bytes))
            if (value % 4 != 0) value &= 31;
    });
    return {
        {.name = "products",
         .exports = {{ZSP_DESCRIBED(zspsMul_NR_16s_Sfs),
                      {in(arg(3)), in(arg(3)), out(arg(3)).orIn({0, 1}), length(),
                       number(0, kMax).upTo(40)},
                      {nulls(), outside(3, zspStsSizeErr), outside(4, zspStsScaleRangeErr)},
                      [](const Word* a, const Word* b, Word* dst, Long len, Long shift) {
                          mulNrScalar({a, size(len)}, {b, size(len)}, {dst, size(len)}, shift);
                      }},
                     {ZSP_DESCRIBED(zspsMul_NR_16s_ISfs),
                      {in(arg(2)), inOut(arg(2)).orIn({0}), length(), number(0, kMax).upTo(40)},
                      {nulls(), outside(2, zspStsSizeErr), outside(3, zspStsScaleRangeErr)},
                      [](const Word* a, Word* b, Long len, Long shift) {
                          mulNrScalar({a, size(len)}, {b, size(len)}, {b, size(len)}, shift);
                      }}}},
        {.name = "correlation",
         .exports =
             {{ZSP_DESCRIBED(zspsAutoCorr_NormE_16s32s),
               {in(arg(1)), length(), out(arg(3)), length(40), out(1)},
               {nulls(), outside(1, zspStsSizeErr), outside(3, zspStsSizeErr),
                whenContent(tooLoud, zspStsOverflow)},
               [](const Word* src, Long len, Long* dst, Long lags, Long* norm) {
                   autoCorrNormEScalar({src, size(len)}, {dst, size(lags)}, *norm);
               }},
              {ZSP_DESCRIBED(zspsCrossCorr_16s32s_Sfs),
               {in(arg(2)), in(arg(2)), length(), out(arg(4)), length(60),
                number(0, kMax).upTo(70)},
               {nulls(), outside(2, zspStsSizeErr), outside(4, zspStsSizeErr),
                outside(5, zspStsScaleRangeErr)},
               [](const Word* a, const Word* b, Long len, Long* dst, Long lags, Long shift) {
                   crossCorrScalar({a, size(len)}, {b, size(len)}, {dst, size(lags)}, shift);
               }},
              {ZSP_DESCRIBED(zspsCrossCorr_NormM_16s),
               {in(arg(2)), in(arg(2)), length(100), out(arg(2))},
               {nulls(), outside(2, zspStsSizeErr)},
               [](const Word* a, const Word* b, Long len, Word* dst) {
                   crossCorrNormMScalar({a, size(len)}, {b, size(len)}, {dst, size(len)});
               }},
              {ZSP_DESCRIBED(zspsConvPartial_16s_Sfs),
               {in(arg(3)), in(arg(3)), out(arg(3)), length(100), number(0, kMax).upTo(70)},
               {nulls(), outside(4, zspStsBadArgErr), outside(3, zspStsSizeErr)},
               [](const Word* a, const Word* b, Word* dst, Long len, Long shift) {
                   convPartialScalar({a, size(len)}, {b, size(len)}, {dst, size(len)}, shift);
               }},
              {ZSP_DESCRIBED(zspsCrossCorrLagMax_16s),
               {in(arg(2)), in({[](const Call& c) { return c.number(2) + c.number(3); }}), length(),
                number(0, kMax).upTo(150), out(1), out(1)},
               {nulls(), outside(2, zspStsSizeErr), outside(3, zspStsRangeErr)},
               [](const Word* a, const Word* b, Long len, Long lagMax, Long* maxCorr,
                  Long* bestLag) {
                   const auto best =
                       lagMaxScalar(In16{a, size(len)}, In16{b, size(len + lagMax)}, Scan::down);
                   *maxCorr = best.corr;
                   *bestLag = static_cast<Long>(best.offset);
               }},
              pastSearch(ZSP_DESCRIBED(zspsAutoCorrLagMax_Fwd_16s),
                         searchPast<Word, Long, Scan::down>),
              pastSearch(ZSP_DESCRIBED(zspsAutoCorrLagMax_Inv_16s),
                         searchPast<Word, Long, Scan::up>),
              pastSearch(ZSP_DESCRIBED(zspsAutoCorrLagMax_32f),
                         searchPast<float, float, Scan::down>)}},
        {.name = "scaling",
         .exports = {{ZSP_DESCRIBED(zspsAutoScale_16s),
                      {in(arg(2)), out(arg(2)).orIn({0}), length(), scale},
                      {nulls(), outside(2, zspStsSizeErr),
                       whenContent([](const Call& c) { return isNegative(c.data<Long>(3)); },
                                   zspStsScaleRangeErr)},
                      autoScale},
                     {ZSP_DESCRIBED(zspsAutoScale_16s_I),
                      {inOut(arg(1)), length(), scale},
                      {nulls(), outside(1, zspStsSizeErr),
                       whenContent([](const Call& c) { return isNegative(c.data<Long>(2)); },
                                   zspStsScaleRangeErr)},
                      [](Word* x, Long len, Long* by) { autoScale(x, x, len, by); }},
                     {ZSP_DESCRIBED(zspsInvSqrt_32s_I),
                      {inOut(arg(1)), length()},
                      {nulls(), outside(1, zspStsSizeErr)},
                      [](Long* x, Long len) {
                          invSqrtScalar({x, size(len)});
                      }},
                     {ZSP_DESCRIBED(zspsPreemphasize_32f_I),
                      {real(-1, 1), inOut(arg(2)), length(), inOut(1)},
                      {nulls(), outside(2, zspStsSizeErr)},
                      [](float factor, float* x, Long len, float* memory) {
                          const float last = x[len - 1];
                          preemphasizeScalar(factor, {x, size(len)}, *memory);
                          *memory = last;
                      }}}},
    };
}

const Described kDescribed(describe);

} // namespace

} // namespace zsp::fuzz
