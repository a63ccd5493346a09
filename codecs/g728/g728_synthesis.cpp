// The synthesis filter of ITU-T G.728 in two halves, blocks 9 and 22: what it gives by itself, from
// what it gave before, and what an excitation adds.

#include "codecs/g728/g728_blocks.hpp"
#include "core/entries.hpp"

namespace zsp::g728 {

Vector zeroInputScalar(In<kLong> a, In<kLong> history, In<kShort> q) noexcept
{
    const Word least = *std::min_element(q.begin(), q.end());
    Vector s;
    for (std::size_t i = 0; i < kVector; ++i) {
        const std::size_t p = kVector - 1 - i;
        Wide t = 0;
        for (std::size_t j = 0; j < i; ++j)
            t -= Wide{a[j]} * s.m[p + 1 + j];
        for (std::size_t k = 0; k < kShort; ++k) { // each vector's sum is rounded by itself
            const std::size_t taps = k + 1 < kShort ? kVector : kVector - i;
            Wide sum = 0;
            for (std::size_t c = 0; c < taps; ++c)
                sum -= Wide{a[i + 5 * k + c]} * history[5 * k + c];
            const int shift = q[k] - least;
            if (k + 1 < kShort)
                t += sum >> (shift > 30 ? 63 : shift);
            else if (shift < 30) // and the last vector is left out where it is small
                t += sum >> shift;
        }
        s.m[p] = sat16(t >> 14);
    }
    s.q = least + normalise(s.m, 15);
    return s;
}

void zeroState(In<4> a, Vector& excitation, Out<kVector> response) noexcept
{
    for (std::size_t i = 0; i < kVector;) {
        const std::size_t p = kVector - 1 - i;
        Wide d = Wide{excitation.m[p]} * 16384;
        for (std::size_t k = 0; k < i; ++k)
            d -= Wide{a[k]} * response[p + 1 + k];
        if (d > 268435455 || d < -268435456) { // no 15 bits: once more with half of it
            for (Word& x : excitation.m)
                x = static_cast<Word>(x >> 1);
            --excitation.q;
            i = 0;
            continue;
        }
        response[p] = static_cast<Word>(d >> 14);
        ++i;
    }
}

void addResponses(In<kVector> zeroState, int q, Vector& s) noexcept
{
    const int above = s.q - q;
    const int sShift = std::max(above, 0), zShift = std::max(-above, 0);
    s.q -= sShift;
    // The signal has 12 bits and sign before the point.
    const Wide limit = s.q < 0 ? 4095 >> std::min(-s.q, 31) : Wide{4095} << std::min(s.q, 31);
    const Wide high = std::min<Wide>(limit, 32767), low = limit > 32767 ? -32768 : -limit;
    for (std::size_t i = 0; i < kVector; ++i)
        s.m[i] = static_cast<Word>(
            std::clamp(shifted(s.m[i], sShift) + shifted(zeroState[i], zShift), low, high));
    s.q += normalise(s.m, 14);
}

} // namespace zsp::g728

namespace zsp::entry {

using namespace g728;

ZspStatus zspsSyntesisFilterZeroInput_G728_16s(const std::int16_t* lpc, const std::int16_t* src,
                                               const std::int16_t* srcQ, std::int16_t* dst)
{
    if (!lpc || !src || !srcQ || !dst) return zspStsNullPtrErr;
    if (!std::all_of(srcQ, srcQ + kShort, hasQ)) return zspStsScaleRangeErr;

    storeVector(
        zeroInputScalar(In<kLong>(lpc, kLong), In<kLong>(src, kLong), In<kShort>(srcQ, kShort)),
        dst);
    return zspStsNoErr;
}

ZspStatus zspsSynthesisFilterZeroState_G728_16s(const std::int16_t* lpc, std::int16_t* srcDst,
                                                std::int16_t* dst)
{
    if (!lpc || !srcDst || !dst) return zspStsNullPtrErr;
    if (!hasQ(srcDst[kVector])) return zspStsScaleRangeErr;

    Vector excitation = vectorAt(srcDst);
    zeroState(In<4>(lpc, 4), excitation, Out<kVector>(dst, kVector));
    storeVector(excitation, srcDst);
    return zspStsNoErr;
}

ZspStatus zspsSynthesisFilterUpdate_G728_16s(const std::int16_t* src, std::int32_t q,
                                             std::int16_t* srcDst)
{
    if (!src || !srcDst) return zspStsNullPtrErr;
    if (!hasQ(q) || !hasQ(srcDst[kVector])) return zspStsScaleRangeErr;

    Vector s = vectorAt(srcDst);
    addResponses(In<kVector>(src, kVector), q, s);
    storeVector(s, srcDst);
    return zspStsNoErr;
}

} // namespace zsp::entry
