// The perceptual weighting filter of ITU-T G.728 and the target of its search: blocks 4, 10,
// 11, 16.
//
//   W(z) = (1 + sum(zero[i] z^-i)) / (1 + sum(pole[i] z^-i)), i = 1..10

#include "codecs/g728/g728_blocks.hpp"
#include "codecs/g728/g728_filter_avx2.hpp"
#include "core/entries.hpp"

namespace zsp::g728 {

void weightScalar(In<kShort> zero, In<kShort> pole, In<15> src, Out<kShort> memory) noexcept
{
    for (std::size_t p = kVector; p-- > 0;) {
        Wide t = Wide{src[p]} * 16384;
        for (std::size_t k = 0; k < kShort; ++k)
            t += Wide{zero[k]} * src[p + 1 + k] - Wide{pole[k]} * memory[k];
        push(memory, sat16(t >> 14));
    }
}

void weightAvx2(In<kShort> zero, In<kShort> pole, In<15> src, Out<kShort> memory) noexcept
{
    if (hasLeast(zero) || hasLeast(pole)) return weightScalar(zero, pole, src, memory);
    Sums sums;
    addTenTaps(sums, zero, fifteen(src));
    subtractFeedback(sums, pole, memory);
    auto t = sums.byLane();
    for (std::size_t i = 0; i < kVector; ++i)
        t[i] += Wide{src[kVector - 1 - i]} * 16384;
    pushResults(memory, closeLoop(pole, t));
}

void weightZeroState(In<kShort> zero, In<kShort> pole, In<kVector> response, int q,
                     Out<kShort> memory) noexcept
{
    std::array<Word, kVector> weighted{};
    for (std::size_t i = 0; i < kVector; ++i) {
        const std::size_t p = kVector - 1 - i;
        Wide d = Wide{response[p]} * 16384;
        for (std::size_t k = 0; k < i; ++k)
            d += Wide{zero[k]} * response[p + 1 + k] - Wide{pole[k]} * weighted[p + 1 + k];
        weighted[p] = sat16(d >> 14);
        memory[p] = sat16(shifted(weighted[p], std::max(q - 2, -32)) + memory[p]); // to Q2
    }
}

Vector target(In<kVector> weighted, In<kVector> zeroInput, Scalar gain) noexcept
{
    const Scalar inverse = divide({16384, 14}, gain);
    Vector v;
    for (std::size_t i = 0; i < kVector; ++i)
        v.m[i] = sat16((Wide{inverse.m} * sat16(weighted[i] - zeroInput[i])) >> 15);
    v.q = 2 + inverse.q - 15;
    v.q += normalise(v.m, 16);
    return v;
}

} // namespace zsp::g728

namespace zsp::entry {

using namespace g728;

ZspStatus zspsWeightingFilter_G728_16s(const std::int16_t* zero, const std::int16_t* pole,
                                       const std::int16_t* src, std::int16_t* memory)
{
    if (!zero || !pole || !src || !memory) return zspStsNullPtrErr;

    weightAvx2(In<kShort>(zero, kShort), In<kShort>(pole, kShort), In<15>(src, 15),
               Out<kShort>(memory, kShort));
    return zspStsNoErr;
}

ZspStatus zspsWeightingFilterUpdate_G728_16s(const std::int16_t* zero, const std::int16_t* pole,
                                             const std::int16_t* src, std::int32_t q,
                                             std::int16_t* memory)
{
    if (!zero || !pole || !src || !memory) return zspStsNullPtrErr;
    if (!hasQ(q)) return zspStsScaleRangeErr;

    weightZeroState(In<kShort>(zero, kShort), In<kShort>(pole, kShort), In<kVector>(src, kVector),
                    q, Out<kShort>(memory, kShort));
    return zspStsNoErr;
}

ZspStatus zspsTargetNormalize_G728_16s(const std::int16_t* weighted, const std::int16_t* zeroInput,
                                       const std::int16_t* gain, std::int16_t* dst)
{
    if (!weighted || !zeroInput || !gain || !dst) return zspStsNullPtrErr;
    if (!hasQ(gain[1])) return zspStsScaleRangeErr;
    if (gain[0] < 1) return zspStsRangeErr;

    storeVector(
        target(In<kVector>(weighted, kVector), In<kVector>(zeroInput, kVector), scalarAt(gain)),
        dst);
    return zspStsNoErr;
}

} // namespace zsp::entry
