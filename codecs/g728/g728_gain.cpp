// The log-gain predictor of ITU-T G.728 and what its gain scales: blocks 39 to 42, 46 to 48,
// 19, 21.
//
//   predicted  G = -sum(predictor[i] * logGain[i]), the gain is 10^((G + 32 dB) / 20)
//   excitation gain * kGain[index & 7] * kShape[index >> 3]

#include "codecs/g728/g728_blocks.hpp"
#include "codecs/g728/g728_tables.hpp"
#include "core/entries.hpp"

namespace zsp::g728 {

Word predictLogGain(In<kShort> predictor, In<kShort> logGain, Word most) noexcept
{
    Wide sum = 0;
    for (std::size_t i = 0; i < kShort; ++i)
        sum -= Wide{predictor[i]} * logGain[i];
    return static_cast<Word>(std::clamp<Long>(sat32(sum) >> 14, -16384, most));
}

Scalar linearGain(Word logGain_Q9) noexcept
{
    const Wide level = Wide{logGain_Q9} + 16384;
    const Wide octaves_Q15 = 10 * level + rh(2 * 20649 * level); // log2(10) / 20 in another format
    const Wide whole = octaves_Q15 >> 15;
    const Wide part = octaves_Q15 - whole * 32768;
    const auto& c = kExpCoefficients;
    Wide p = rh(2 * c[4] * part + c[3] * Wide{65536});
    p = rh(2 * p * part + c[2] * Wide{65536});
    p = rh(2 * p * part + c[1] * Wide{65536});
    p = rh(p * part + c[0] * Wide{65536});
    return {static_cast<Word>(p), static_cast<int>(14 - whole)};
}

Word nextLogGain(Word predicted_Q9, int index) noexcept
{
    const auto gain = static_cast<std::size_t>(index & 7);
    const auto shape = static_cast<std::size_t>(index >> 3);
    const Long sum = predicted_Q9 * 128 + kGainDb[gain] * 32 + kShapeDb[shape] * 32;
    return sat16(std::max(sum >> 7, -16384));
}

Vector scaleCodevector(int index, Scalar gain) noexcept
{
    const auto ig = static_cast<std::size_t>(index & 7);
    const auto first = kShape.begin() + (index >> 3) * static_cast<int>(kVector);
    const Word e = rh(shifted(Wide{gain.m} * kGain[ig], -kGainShift[ig]));
    Vector v;
    std::copy_n(first, kVector, v.m.begin());
    v.q = gain.q + 13 + kGainShift[ig] - 16 + 11 - 16 + normalise(v.m, 16);
    for (Word& x : v.m)
        x = rh(Wide{e} * x);
    return v;
}

} // namespace zsp::g728

namespace zsp::entry {

using namespace g728;

ZspStatus zspsLogGainPredict_G728_16s(const std::int16_t* predictor, const std::int16_t* logGain,
                                      std::int16_t most, std::int16_t* predicted,
                                      std::int16_t* gain)
{
    if (!predictor || !logGain || !predicted || !gain) return zspStsNullPtrErr;
    if (most < -16384 || most > 14336) return zspStsRangeErr;

    const auto level =
        predictLogGain(In<kShort>(predictor, kShort), In<kShort>(logGain, kShort), most);
    *predicted = level;
    storeScalar(linearGain(level), gain);
    return zspStsNoErr;
}

ZspStatus zspsLogGainUpdate_G728_16s(std::int16_t predicted, std::int32_t index, std::int16_t* dst)
{
    if (!dst) return zspStsNullPtrErr;
    if (index < 0 || index > 1023) return zspStsCodecRangeErr;

    *dst = nextLogGain(predicted, index);
    return zspStsNoErr;
}

ZspStatus zspsCodevectorScale_G728_16s(std::int32_t index, const std::int16_t* gain,
                                       std::int16_t* dst)
{
    if (!gain || !dst) return zspStsNullPtrErr;
    if (!hasQ(gain[1])) return zspStsScaleRangeErr;
    if (index < 0 || index > 1023) return zspStsCodecRangeErr;

    storeVector(scaleCodevector(index, scalarAt(gain)), dst);
    return zspStsNoErr;
}

} // namespace zsp::entry
