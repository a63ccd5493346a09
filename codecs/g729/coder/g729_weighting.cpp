// The filters of ITU-T G.729 that are made from the prediction filter: widened ones for weighting
// (clauses 3.3 and A.3.3) and the inverse filter.

#include "codecs/g729/coder/g729_searches.hpp"
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

void impulseResponse(In<kTaps> numerator_Q12, In<kTaps> denominator_Q12, In<kTaps> lpc_Q12,
                     Out<kSubframe> dst) noexcept
{
    std::array<Word, kSubframe> x{};
    std::array<Word, kOrder> first{}, second{};
    std::ranges::copy(numerator_Q12, x.begin());
    celp::synthesis(lpc_Q12, x, x.data(), first);
    celp::synthesis(denominator_Q12, x, dst.data(), second);
}

namespace {

/// A log area ratio of a reflection coefficient, Q11, in four straight lines.
Word ratioOf(Word reflection_Q15) noexcept
{
    struct Line {
        Word upTo, slope;
        Long offset;
    };
    constexpr Line kLines[] = {
        {1815, 4567, 3271557}, {1944, 11776, 16357786}, {fx::kMax16, 27443, 46808433}};
    const auto c = static_cast<Word>(fx::abs_s(reflection_Q15) >> 4);
    Word ratio = c;
    if (c > 1299) {
        const Line& line = c <= kLines[0].upTo   ? kLines[0]
                           : c <= kLines[1].upTo ? kLines[1]
                                                 : kLines[2];
        const Long product = fx::l_mult(static_cast<Word>(c >> 1), line.slope);
        ratio = fx::extract_l(fx::l_sub(product, line.offset) >> 11);
    }
    return reflection_Q15 < 0 ? fx::negate(ratio) : ratio;
}

/// Where two frequencies are close, the spectrum has a sharp peak.
Word gammaOf(In<kOrder> lsf_Q15) noexcept
{
    Word least = fx::kMax16;
    for (std::size_t i = 0; i + 1 < kOrder; ++i)
        least = std::min(least, fx::sub(fx::shl(lsf_Q15[i + 1], 1), fx::shl(lsf_Q15[i], 1)));
    const Word gamma = fx::shl(fx::sub(1024, fx::mult(19302, least)), 5);
    return std::clamp<Word>(gamma, 13107, 22938);
}

} // namespace

void weightingFactors(In<kOrder> between, In<kOrder> lsf_Q15, In<2> reflection_Q15,
                      Out<2> gamma1_Q15, Out<2> gamma2_Q15, WeightingMemory& memory) noexcept
{
    std::array<std::array<Word, 2>, 2> ratios; // of the subframes
    for (std::size_t i = 0; i < 2; ++i) {
        ratios[1][i] = ratioOf(reflection_Q15[i]);
        ratios[0][i] = fx::shr(fx::add(ratios[1][i], memory.ratios[i]), 1);
    }
    memory.ratios = ratios[1];
    for (std::size_t k = 0; k < 2; ++k) {
        const auto [first, second] = ratios[k];
        if (memory.isFlat) {
            if (first < -3562 && second > 1336) memory.isFlat = 0;
        } else if (first > -3116 || second < 890)
            memory.isFlat = 1;
        gamma1_Q15[k] = memory.isFlat ? 30802 : 32113;
        gamma2_Q15[k] = memory.isFlat ? Word{19661} : gammaOf(k == 0 ? between : lsf_Q15);
    }
}

} // namespace zsp::g729

namespace zsp::entry {

ZspStatus zspsPerceptualWeighting_G729_16s(const std::int16_t* between, const std::int16_t* lsf,
                                           const std::int16_t* reflection, std::int16_t* gamma1,
                                           std::int16_t* gamma2, std::int16_t* memory)
{
    if (!between || !lsf || !reflection || !gamma1 || !gamma2 || !memory) return zspStsNullPtrErr;

    g729::WeightingMemory m = {{memory[0], memory[1]}, memory[2]};
    g729::weightingFactors(spanOf<g729::kOrder>(between), spanOf<g729::kOrder>(lsf),
                           spanOf<2>(reflection), spanOf<2>(gamma1), spanOf<2>(gamma2), m);
    memory[0] = m.ratios[0];
    memory[1] = m.ratios[1];
    memory[2] = m.isFlat;
    return zspStsNoErr;
}

ZspStatus zspsImpulseResponse_G729_16s(const std::int16_t* numerator,
                                       const std::int16_t* denominator, const std::int16_t* lpc,
                                       std::int16_t* dst)
{
    if (!numerator || !denominator || !lpc || !dst) return zspStsNullPtrErr;

    g729::impulseResponse(spanOf<g729::kTaps>(numerator), spanOf<g729::kTaps>(denominator),
                          spanOf<g729::kTaps>(lpc), spanOf<g729::kSubframe>(dst));
    return zspStsNoErr;
}

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

    celp::residualAvx2(spanOf<g729::kTaps>(lpc), src, {dst, static_cast<std::size_t>(len)});
    return zspStsNoErr;
}

} // namespace zsp::entry
