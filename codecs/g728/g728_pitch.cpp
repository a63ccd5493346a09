// The pitch search of the ITU-T G.728 post-filter and the coefficients of its long-term part:
// blocks 82 to 84. The search runs over a decimated residual and then around what it found there.

#include "codecs/g728/g728_blocks.hpp"
#include "codecs/g728/g728_tables.hpp"
#include "core/entries.hpp"

namespace zsp::g728 {

namespace {

Wide correlation(std::span<const Word> x, int lag, std::size_t count) noexcept
{
    const auto shift = static_cast<std::size_t>(lag);
    Wide sum = 0;
    for (std::size_t i = 0; i < count; ++i)
        sum += Wide{x[i]} * x[i + shift];
    return sum;
}

Wide energy(std::span<const Word> x) noexcept
{
    Wide sum = 0;
    for (const Word v : x)
        sum += Wide{v} * v;
    return sum;
}

struct Peak {
    int lag;
    Wide value;
};

/// The largest of the correlations over lags first..last, the first of equal ones.
Peak bestLag(std::span<const Word> x, int first, int last, std::size_t count) noexcept
{
    Peak best{first, correlation(x, first, count)};
    for (int lag = first + 1; lag <= last; ++lag) {
        const Wide value = correlation(x, lag, count);
        if (value > best.value) best = {lag, value};
    }
    return best;
}

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

} // namespace

int searchPitchScalar(In<kPast> residual, Out<kDecimated> decimated, Out<3> lowpass,
                      int old) noexcept
{
    decimate(residual, decimated, lowpass);
    const int coarse = 4 * bestLag(decimated, 5, 35, 25).lag;
    const Peak fine = bestLag(residual, std::max(kLeastPitch, coarse - 3),
                              std::min(kMostPitch, coarse + 3), kSpan);
    if (old + kAround >= fine.lag) return fine.lag;

    // A pitch much longer than before may be its multiple: is the correlation around the old one
    // nearly as strong?
    const Peak near = bestLag(residual, std::max(kLeastPitch, old - kAround), old + kAround, kSpan);
    const auto energyAt = [&](int lag) {
        return Wide{sat32(energy(residual.subspan(static_cast<std::size_t>(lag), kSpan)))};
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

LongTerm longTermCoefsScalar(In<kPast> past, int pitch) noexcept
{
    const Wide before = energy(past.subspan(static_cast<std::size_t>(pitch), kSpan));
    const Wide both = correlation(past, pitch, kSpan);
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

} // namespace zsp::g728

namespace zsp::entry {

using namespace g728;

ZspStatus zspsPitchSearch_G728_16s(const std::int16_t* src, std::int16_t* decimated,
                                   std::int16_t* lowpass, std::int16_t* pitch)
{
    if (!src || !decimated || !lowpass || !pitch) return zspStsNullPtrErr;
    if (*pitch < kLeastPitch || *pitch > kMostPitch) return zspStsCodecRangeErr;

    *pitch = static_cast<Word>(searchPitchScalar(
        In<kPast>(src, kPast), Out<kDecimated>(decimated, kDecimated), Out<3>(lowpass, 3), *pitch));
    return zspStsNoErr;
}

ZspStatus zspsLongTermPostFilterCoefs_G728_16s(const std::int16_t* src, std::int32_t pitch,
                                               std::int16_t* dst)
{
    if (!src || !dst) return zspStsNullPtrErr;
    if (pitch < kLeastPitch || pitch > kMostPitch) return zspStsCodecRangeErr;

    const LongTerm c = longTermCoefsScalar(In<kPast>(src, kPast), pitch);
    dst[0] = c.gain;
    dst[1] = c.tap;
    dst[2] = c.measured_Q14;
    return zspStsNoErr;
}

} // namespace zsp::entry
