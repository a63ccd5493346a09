// The pitch search of the ITU-T G.728 post-filter and the coefficients of its long-term part:
// blocks 82 to 84. The search runs over a decimated residual and then around what it found there.

#include "codecs/g728/g728_blocks.hpp"
#include "codecs/g728/g728_lanes.hpp"
#include "codecs/g728/g728_tables.hpp"
#include "core/entries.hpp"

namespace zsp::g728 {

namespace {

Wide products(const Word* x, const Word* y, std::size_t count) noexcept
{
    Wide sum = 0;
    for (std::size_t i = 0; i < count; ++i)
        sum += Wide{x[i]} * y[i];
    return sum;
}

/// Of words of which none is -32768.
Wide productsAvx2(const Word* x, const Word* y, std::size_t count) noexcept
{
    Sums sums;
    std::size_t i = 0;
    for (; i + 16 <= count; i += 16)
        sums.add(_mm256_madd_epi16(avx2::load(x + i), avx2::load(y + i)));
    return sums.total() + products(x + i, y + i, count - i);
}

using Products = Wide (*)(const Word*, const Word*, std::size_t) noexcept;

struct Peak {
    int lag;
    Wide value;
};

/// The largest of the correlations over lags first..last, the first of equal ones.
template <Products sum>
Peak bestLag(std::span<const Word> x, int first, int last, std::size_t count) noexcept
{
    Peak best{first, sum(x.data(), &x[static_cast<std::size_t>(first)], count)};
    for (int lag = first + 1; lag <= last; ++lag) {
        const Wide value = sum(x.data(), &x[static_cast<std::size_t>(lag)], count);
        if (value > best.value) best = {lag, value};
    }
    return best;
}

/// Lags of the decimated search and samples of its correlation.
constexpr int kFirstCoarse = 5, kLastCoarse = 35;
constexpr std::size_t kCoarseSpan = 25;

/// Samples of a correlation, and how far a lag is sought around another.
constexpr int kAround = 6;
constexpr std::size_t kSpan = 100;

/// Filters the twenty newest samples of the residual and keeps every fourth.
void decimate(In<kPast> residual, Out<kDecimated> decimated, Out<3> lowpass) noexcept
{
    for (std::size_t i = 20; i-- > 0;) {
        Wide t = 0;
        for (std::size_t j = 0; j < kLowpassB.size(); ++j)
            t += Wide{kLowpassB[j]} * residual[i + j];
        t >>= 6;
        for (std::size_t j = 0; j < kLowpassA.size(); ++j)
            t -= Wide{kLowpassA[j]} * lowpass[j];
        push(lowpass, rh(sat32(8 * t)));
        if (i % 4 == 0) push(decimated, lowpass[0]);
    }
}

/// The same with the part that is no recursion first.
void decimateFast(In<kPast> residual, Out<kDecimated> decimated, Out<3> lowpass) noexcept
{
    std::array<Long, 20> fresh;
    const auto& b = kLowpassB; // all of it times 32768 fits 32 bits
    for (std::size_t i = 0; i < fresh.size(); ++i)
        fresh[i] = (b[0] * residual[i] + b[1] * residual[i + 1] + b[2] * residual[i + 2] +
                    b[3] * residual[i + 3]) >>
                   6;
    std::array<Word, 5> kept;
    Word y1 = lowpass[0], y2 = lowpass[1], y3 = lowpass[2];
    const auto& a = kLowpassA;
    for (std::size_t i = fresh.size(); i-- > 0;) {
        const Word y = rh(8 * (fresh[i] - Wide{a[2]} * y3 - Wide{a[1]} * y2 - Wide{a[0]} * y1));
        y3 = y2;
        y2 = y1;
        y1 = y;
        if (i % 4 == 0) kept[i / 4] = y;
    }
    push(decimated, kept);
    lowpass[0] = y1;
    lowpass[1] = y2;
    lowpass[2] = y3;
}

/// bestLag() of the decimated search, eight lags side by side. No word is -32768.
int coarseLag(In<kDecimated> decimated) noexcept
{
    constexpr int kLanes = 8;
    std::array<Word, 65> words{};
    std::copy(decimated.begin(), decimated.end(), words.begin());
    const auto pairs = neighbours(words);
    Peak best{kFirstCoarse, INT64_MIN};
    for (int lag = kFirstCoarse; lag <= kLastCoarse; lag += kLanes) {
        const std::int32_t* const behind = &pairs[static_cast<std::size_t>(lag)];
        Sums sums;
        for (std::size_t n = 0; n + 1 < kCoarseSpan; n += 2)
            sums.add(_mm256_madd_epi16(_mm256_set1_epi32(pairs[n]), avx2::load(behind + n)));
        constexpr std::size_t kLast = kCoarseSpan - 1;
        sums.add(_mm256_madd_epi16(_mm256_set1_epi32(pairs[kLast] & 0xffff),
                                   avx2::load(behind + kLast)));
        const auto values = sums.byLane();
        for (int l = 0; l < kLanes && lag + l <= kLastCoarse; ++l)
            if (const Wide value = values[static_cast<std::size_t>(l)]; value > best.value)
                best = {lag + l, value};
    }
    return best.lag;
}

/// The pitch around four times the coarse lag, or around the old pitch.
template <Products sum>
int refine(In<kPast> residual, int coarse, int old) noexcept
{
    const Peak fine = bestLag<sum>(residual, std::max(kLeastPitch, 4 * coarse - 3),
                                   std::min(kMostPitch, 4 * coarse + 3), kSpan);
    if (old + kAround >= fine.lag) return fine.lag;

    // A pitch much longer than before may be its multiple: is the correlation around the old one
    // nearly as strong?
    const Peak near =
        bestLag<sum>(residual, std::max(kLeastPitch, old - kAround), old + kAround, kSpan);
    const auto energyAt = [&](int lag) {
        const Word* const x = &residual[static_cast<std::size_t>(lag)];
        return Wide{sat32(sum(x, x, kSpan))};
    };
    const Wide fineEnergy = energyAt(fine.lag), nearEnergy = energyAt(near.lag);
    const int n = nrm(std::max(fineEnergy, nearEnergy), 32);
    const auto scaled = [n](Wide x) { return shifted(x, -n) >> 16; };
    const Wide finePart = scaled(std::clamp<Wide>(fine.value, 0, fineEnergy));
    const Wide nearPart = scaled(std::clamp<Wide>(near.value, 0, nearEnergy));
    const bool isMultiple =
        nearPart * scaled(fineEnergy) > ((finePart * scaled(nearEnergy)) >> 16) * 26214;
    return isMultiple ? near.lag : fine.lag;
}

template <Products sum>
LongTerm longTermCoefs(In<kPast> past, int pitch) noexcept
{
    const Word* const earlier = &past[static_cast<std::size_t>(pitch)];
    const Wide before = sum(earlier, earlier, kSpan);
    const Wide both = sum(past.data(), earlier, kSpan);
    LongTerm c{};
    if (before > 0 && both >= before) {
        c.measured_Q14 = 16384;
    } else if (before > 0 && both > 0) {
        const int n0 = nrm(before, 32), n1 = nrm(both, 32);
        const Scalar ratio = divide({rh(shifted(both, -n1)), n1}, {rh(shifted(before, -n0)), n0});
        c.measured_Q14 = static_cast<Word>(shifted(ratio.m, ratio.q - 14));
    }
    const Long used = c.measured_Q14 < 9830 ? 0 : c.measured_Q14; // below 0.6: not voiced
    const Long weighted = 9830 * used;
    const Scalar gain = divide({16384, 14}, {static_cast<Word>((weighted >> 16) + 16384), 14});
    c.tap = sat16(shifted(Wide{gain.m} * (weighted >> 14), gain.q));
    c.gain = sat16(shifted(gain.m, gain.q - 14));
    return c;
}

} // namespace

int searchPitchScalar(In<kPast> residual, Out<kDecimated> decimated, Out<3> lowpass,
                      int old) noexcept
{
    decimate(residual, decimated, lowpass);
    const int coarse = bestLag<products>(decimated, kFirstCoarse, kLastCoarse, kCoarseSpan).lag;
    return refine<products>(residual, coarse, old);
}

int searchPitchAvx2(In<kPast> residual, Out<kDecimated> decimated, Out<3> lowpass, int old) noexcept
{
    if (hasLeast(residual)) return searchPitchScalar(residual, decimated, lowpass, old);
    decimateFast(residual, decimated, lowpass);
    const int coarse =
        hasLeast(decimated)
            ? bestLag<products>(decimated, kFirstCoarse, kLastCoarse, kCoarseSpan).lag
            : coarseLag(decimated);
    return refine<productsAvx2>(residual, coarse, old);
}

LongTerm longTermCoefsScalar(In<kPast> past, int pitch) noexcept
{
    return longTermCoefs<products>(past, pitch);
}

LongTerm longTermCoefsAvx2(In<kPast> past, int pitch) noexcept
{
    return hasLeast(past) ? longTermCoefsScalar(past, pitch)
                          : longTermCoefs<productsAvx2>(past, pitch);
}

} // namespace zsp::g728

namespace zsp::entry {

using namespace g728;

ZspStatus zspsPitchSearch_G728_16s(const std::int16_t* src, std::int16_t* decimated,
                                   std::int16_t* lowpass, std::int16_t* pitch)
{
    if (!src || !decimated || !lowpass || !pitch) return zspStsNullPtrErr;
    if (*pitch < kLeastPitch || *pitch > kMostPitch) return zspStsCodecRangeErr;

    *pitch = static_cast<Word>(searchPitchAvx2(
        In<kPast>(src, kPast), Out<kDecimated>(decimated, kDecimated), Out<3>(lowpass, 3), *pitch));
    return zspStsNoErr;
}

ZspStatus zspsLongTermPostFilterCoefs_G728_16s(const std::int16_t* src, std::int32_t pitch,
                                               std::int16_t* dst)
{
    if (!src || !dst) return zspStsNullPtrErr;
    if (pitch < kLeastPitch || pitch > kMostPitch) return zspStsCodecRangeErr;

    const LongTerm c = longTermCoefsAvx2(In<kPast>(src, kPast), pitch);
    dst[0] = c.gain;
    dst[1] = c.tap;
    dst[2] = c.measured_Q14;
    return zspStsNoErr;
}

} // namespace zsp::entry
