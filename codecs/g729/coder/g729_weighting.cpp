// The filters of ITU-T G.729 that are made from the prediction filter: widened ones for weighting
// (clauses 3.3 and A.3.3) and the inverse filter.

#include "codecs/g729/coder/g729_coder.hpp"
#include "core/entries.hpp"

#include <algorithm>
#include <array>

namespace zsp::g729 {

void weightA(In<kTaps> lpc_Q12, Out<kTaps> weighted_Q12, Out<kTaps> lowPass_Q12) noexcept
{
    celp::weight(lpc_Q12, 24576, weighted_Q12);
    lowPass_Q12[0] = 4096;
    for (std::size_t i = 1; i < kTaps; ++i)
        lowPass_Q12[i] = fx::sub(weighted_Q12[i], fx::mult(weighted_Q12[i - 1], 22938));
}

} // namespace zsp::g729

namespace zsp::entry {

ZspStatus zspsWeightLPC_G729_16s(const std::int16_t* lpc, std::int16_t gamma, std::int16_t* dst)
{
    if (!lpc || !dst) return zspStsNullPtrErr;

    celp::weight(spanOf<g729::kTaps>(lpc), gamma, spanOf<g729::kTaps>(dst));
    return zspStsNoErr;
}

ZspStatus zspsWeightLPC_G729A_16s(const std::int16_t* lpc, std::int16_t* weighted,
                                  std::int16_t* lowPass)
{
    if (!lpc || !weighted || !lowPass) return zspStsNullPtrErr;

    g729::weightA(spanOf<g729::kTaps>(lpc), spanOf<g729::kTaps>(weighted),
                  spanOf<g729::kTaps>(lowPass));
    return zspStsNoErr;
}

ZspStatus zspsResidualFilter_G729_16s(const std::int16_t* lpc, const std::int16_t* src,
                                      std::int16_t* dst, std::int32_t len)
{
    if (!lpc || !src || !dst) return zspStsNullPtrErr;
    if (len < 1) return zspStsSizeErr;

    celp::residual(spanOf<g729::kTaps>(lpc), src, {dst, static_cast<std::size_t>(len)});
    return zspStsNoErr;
}

} // namespace zsp::entry
