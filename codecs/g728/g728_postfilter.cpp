// The adaptive post-filter of ITU-T G.728, blocks 71 to 77, 81 and 85: pitch, spectrum and tilt,
// and then the level that the speech had before.

#include "codecs/g728/g728_blocks.hpp"
#include "codecs/g728/g728_filter_avx2.hpp"
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

void inverseFilterAvx2(In<kShort> a_Q13, In<kVector> src, Out<kShort> memory,
                       Out<kVector> dst) noexcept
{
    if (hasLeast(a_Q13)) return inverseFilterScalar(a_Q13, src, memory, dst);
    std::array<Word, kVector> x;
    std::copy(src.begin(), src.end(), x.begin());
    Sums sums;
    addTenTaps(sums, a_Q13, fifteen(x, memory));
    const auto t = sums.byLane();
    for (std::size_t i = 0; i < kVector; ++i)
        dst[kVector - 1 - i] = rh(4 * (t[i] + x[kVector - 1 - i] * Wide{8192}));
    push(memory, x);
}

bool shortTermCoefs(const Predictor& p, Out<kShort> inverse_Q13, ShortTerm& coefs) noexcept
{
    for (std::size_t i = 0; i < kShort; ++i)
        inverse_Q13[i] = rh(shifted(p.a[i], p.q - 29));
    if (!expandBandwidthAvx2(p.a, p.q, kPostPole, coefs.pole)) return false;
    expandBandwidthAvx2(p.a, p.q, kPostZero, coefs.zero); // less wide: has room as well
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

/// Samples as the long-term part sees them, Q0.
void pushWhole(In<kVector> src, Out<kPast> past) noexcept
{
    std::array<Word, kVector> whole;
    for (std::size_t i = 0; i < kVector; ++i)
        whole[i] = static_cast<Word>(src[i] >> 2);
    push(past, whole);
}

} // namespace

void postFilterScalar(In<kVector> src, Out<kPast> past, int pitch, const LongTerm& longTerm,
                      const ShortTerm& shortTerm, PostMemory& memory, Out<kVector> dst) noexcept
{
    pushWhole(src, past);
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

void postFilterAvx2(In<kVector> src, Out<kPast> past, int pitch, const LongTerm& longTerm,
                    const ShortTerm& shortTerm, PostMemory& memory, Out<kVector> dst) noexcept
{
    if (hasLeast(shortTerm.zero) || hasLeast(shortTerm.pole))
        return postFilterScalar(src, past, pitch, longTerm, shortTerm, memory, dst);
    pushWhole(src, past);
    std::array<Wide, kVector> pitched;
    std::array<Word, kVector> behindPitch;
    for (std::size_t p = 0; p < kVector; ++p) {
        pitched[p] = Wide{longTerm.gain} * src[p] +
                     Wide{longTerm.tap} * past[static_cast<std::size_t>(pitch) + p];
        behindPitch[p] = rh(4 * pitched[p]);
    }
    Sums sums;
    addTenTaps(sums, shortTerm.zero, fifteen(behindPitch, memory.zero));
    subtractFeedback(sums, shortTerm.pole, memory.pole);
    auto t = sums.byLane();
    for (std::size_t i = 0; i < kVector; ++i)
        t[i] += pitched[kVector - 1 - i];
    const auto y = closeLoop(shortTerm.pole, t);
    for (std::size_t i = 0; i < kVector; ++i) {
        const Word before = i > 0 ? y[i - 1] : memory.pole[0];
        dst[kVector - 1 - i] = sat16((t[i] + Wide{shortTerm.tilt} * before) >> 14);
    }
    push(memory.zero, behindPitch);
    pushResults(memory.pole, y);
    followLevel(src, memory.level, dst);
}

} // namespace zsp::g728

namespace zsp::entry {

using namespace g728;

ZspStatus zspsInverseFilter_G728_16s(const std::int16_t* lpc, const std::int16_t* src,
                                     std::int16_t* memory, std::int16_t* dst)
{
    if (!lpc || !src || !memory || !dst) return zspStsNullPtrErr;

    inverseFilterAvx2(In<kShort>(lpc, kShort), In<kVector>(src, kVector),
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
    postFilterAvx2(samples, Out<kPast>(past, kPast), pitch, readRecord<LongTerm>(longTerm),
                   readRecord<ShortTerm>(shortTerm), *m, Out<kVector>(dst, kVector));
    return zspStsNoErr;
}

} // namespace zsp::entry
