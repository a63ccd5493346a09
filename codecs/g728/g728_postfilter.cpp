// The adaptive post-filter of ITU-T G.728, blocks 71 to 77, 81 and 85: pitch, spectrum and tilt,
// and then the level that the speech had before.

#include "codecs/g728/g728_blocks.hpp"
#include "codecs/g728/g728_tables.hpp"
#include "core/entries.hpp"
#include "core/state.hpp"

#include <cstring>

namespace zsp::g728 {

void inverseFilterScalar(In<kShort> a_Q13, In<kVector> src, Out<kShort> memory,
                         Out<kVector> dst) noexcept
{
    for (std::size_t p = kVector; p-- > 0;) {
        Wide sum = src[p] * Wide{8192};
        for (std::size_t j = 0; j < kShort; ++j)
            sum += Wide{memory[j]} * a_Q13[j];
        push(memory, src[p]);
        dst[p] = rh(sat32(4 * sum));
    }
}

bool shortTermCoefs(const Predictor& p, Out<kShort> inverse_Q13, ShortTerm& coefs) noexcept
{
    for (std::size_t i = 0; i < kShort; ++i)
        inverse_Q13[i] = rh(shifted(p.a[i], p.q - 29));
    if (!expandBandwidth(p.a, p.q, kPostPole, coefs.pole)) return false;
    expandBandwidth(p.a, p.q, kPostZero, coefs.zero); // less wide: has room as well
    coefs.tilt = rh(p.reflection * Wide{4915});
    return true;
}

namespace {

/// Brings the level of `dst` to that of `src`, sample by sample nearer.
void followLevel(In<kVector> src, Word& level, Out<kVector> dst) noexcept
{
    Long before = 0, after = 0;
    for (std::size_t i = 0; i < kVector; ++i) {
        before += std::abs(src[i]);
        after += std::abs(dst[i]);
    }
    Scalar ratio{16384, 14};
    if (after > 4) {
        const int n0 = nrm(before, 32), n1 = nrm(after, 32);
        ratio = divide({rh(shifted(before, -n0)), n0}, {rh(shifted(after, -n1)), n1});
    }
    const int shift = ratio.q - 7;
    const Wide wanted = shift > 30 ? 0 : sat32(shifted(Wide{20972} * ratio.m, shift));
    for (std::size_t p = kVector; p-- > 0;) {
        level = rh(sat32(4 * (wanted + 16220 * Wide{level})));
        dst[p] = sat16(2 * rh(sat32(4 * Wide{level} * dst[p])));
    }
}

} // namespace

void postFilterScalar(In<kVector> src, Out<kPast> past, int pitch, const LongTerm& longTerm,
                      const ShortTerm& shortTerm, PostMemory& memory, Out<kVector> dst) noexcept
{
    std::array<Word, kVector> whole; // Q0
    for (std::size_t i = 0; i < kVector; ++i)
        whole[i] = static_cast<Word>(src[i] >> 2);
    push(past, whole);
    for (std::size_t p = kVector; p-- > 0;) {
        const Wide pitched = Wide{longTerm.gain} * src[p] +
                             Wide{longTerm.tap} * past[static_cast<std::size_t>(pitch) + p];
        Wide sum = pitched;
        for (std::size_t j = 0; j < kShort; ++j)
            sum +=
                Wide{shortTerm.zero[j]} * memory.zero[j] - Wide{shortTerm.pole[j]} * memory.pole[j];
        push(memory.zero, rh(sat32(4 * pitched)));
        push(memory.pole, sat16(sum >> 14));
        dst[p] = sat16((sum + Wide{shortTerm.tilt} * memory.pole[1]) >> 14);
    }
    followLevel(src, memory.level, dst);
}

} // namespace zsp::g728

namespace zsp::entry {

using namespace g728;

ZspStatus zspsInverseFilter_G728_16s(const std::int16_t* lpc, const std::int16_t* src,
                                     std::int16_t* memory, std::int16_t* dst)
{
    if (!lpc || !src || !memory || !dst) return zspStsNullPtrErr;

    inverseFilterScalar(In<kShort>(lpc, kShort), In<kVector>(src, kVector),
                        Out<kShort>(memory, kShort), Out<kVector>(dst, kVector));
    return zspStsNoErr;
}

ZspStatus zspsShortTermPostFilterCoefs_G728_16s(const std::int16_t* lpc, std::int32_t q,
                                                std::int16_t reflection, std::int16_t* inverse,
                                                std::int16_t* dst, std::int32_t* ok)
{
    if (!lpc || !inverse || !dst || !ok) return zspStsNullPtrErr;
    if (q < 13 || q > 15) return zspStsScaleRangeErr;

    Predictor p{.q = q, .reflection = reflection};
    std::copy_n(lpc, kShort, p.a.begin());
    ShortTerm c;
    *ok = shortTermCoefs(p, Out<kShort>(inverse, kShort), c);
    if (*ok) std::memcpy(dst, &c, sizeof c);
    return zspStsNoErr;
}

ZspStatus zspsPostFilter_G728_16s(const std::int16_t* src, std::int16_t* past, std::int32_t pitch,
                                  const std::int16_t* longTerm, const std::int16_t* shortTerm,
                                  std::int16_t* memory, std::int16_t* dst)
{
    if (!src || !past || !longTerm || !shortTerm || !memory || !dst) return zspStsNullPtrErr;
    if (pitch < kLeastPitch || pitch > kMostPitch) return zspStsCodecRangeErr;

    std::array<Word, kVector> samples;
    std::copy_n(src, kVector, samples.begin());
    InPlace<PostMemory> m(memory);
    postFilterScalar(samples, Out<kPast>(past, kPast), pitch, readRecord<LongTerm>(longTerm),
                     readRecord<ShortTerm>(shortTerm), *m, Out<kVector>(dst, kVector));
    return zspStsNoErr;
}

} // namespace zsp::entry
