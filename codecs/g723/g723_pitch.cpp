// The open-loop pitch of ITU-T G.723.1, clause 2.9: for each half of a frame the lag from 18 to 142
// with the largest squared correlation over energy, where a longer lag must beat a much shorter one
// by 1.25 dB.

#include "codecs/g723/g723.hpp"
#include "core/entries.hpp"

#include <array>

namespace zsp::g723 {

namespace {

constexpr std::size_t kHalf = 120;

/// A squared correlation over an energy, as exponent and words.
struct Quality {
    int exponent = 30;
    Word square = 16384, energy = fx::kMax16;
};

Quality qualityOf(Long cross, Long power) noexcept
{
    const int n = fx::norm_l(cross);
    const Word upper = fx::round_fx(fx::l_shl(cross, n));
    const Long square = fx::l_mult(upper, upper);
    const int n2 = fx::norm_l(square), n3 = fx::norm_l(power);
    Quality q{2 * n + n2 - n3, fx::extract_h(fx::l_shl(square, n2)),
              fx::round_fx(fx::l_shl(power, n3))};
    if (q.square >= q.energy) {
        --q.exponent;
        q.square = static_cast<Word>(q.square >> 1);
    }
    return q;
}

/// Whether a lag takes the place of a shorter one, `distance` away.
bool isBetter(const Quality& now, const Quality& best, int distance) noexcept
{
    if (now.exponent > best.exponent) return false;
    if (now.exponent + 1 < best.exponent) return true;
    const bool halved = now.exponent + 1 == best.exponent;
    const auto square = static_cast<Word>(halved ? best.square >> 1 : best.square);
    const Long product = fx::l_mult(now.square, best.energy);
    if (fx::l_msu(product, now.energy, square) <= 0) return false;
    if (distance < kLowestLag) return true;
    const Long lowered = fx::l_mac(fx::l_negate(product >> 2), now.square, best.energy);
    return fx::l_msu(lowered, now.energy, square) > 0;
}

/// `x` is a half of a frame with 145 samples before it.
Word openLoopLag(const Word* x) noexcept
{
    Long power = energy({x - 17, kHalf});
    Quality best;
    int lag = kLowestLag;
    for (int i = kLowestLag; i <= 142; ++i) {
        const Word leaving = x[static_cast<int>(kHalf) - i], coming = *(x - i);
        power = fx::l_mac(fx::l_msu(power, leaving, leaving), coming, coming);
        const Long cross = dot({x, kHalf}, x - i);
        if (cross <= 0) continue;
        const Quality now = qualityOf(cross, power);
        if (!isBetter(now, best, i - lag)) continue;
        best = now;
        lag = i;
    }
    return static_cast<Word>(lag);
}

} // namespace

void openLoopSearch(In<kPast + kFrame> weighted, Out<kPast + kFrame> normalised,
                    Out<2> lags) noexcept
{
    std::ranges::copy(weighted, normalised.begin());
    normalise(normalised);
    for (std::size_t half = 0; half < 2; ++half)
        lags[half] = openLoopLag(&normalised[kPast + kHalf * half]);
}

} // namespace zsp::g723

namespace zsp::entry {

ZspStatus zspsOpenLoopPitchSearch_G723_16s(const std::int16_t* src, std::int16_t* normalised,
                                           std::int16_t* lags)
{
    if (!src || !normalised || !lags) return zspStsNullPtrErr;

    g723::openLoopSearch(spanOf<385>(src), spanOf<385>(normalised), spanOf<2>(lags));
    return zspStsNoErr;
}

} // namespace zsp::entry
