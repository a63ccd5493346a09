// The open-loop pitch of ITU-T G.723.1, clause 2.9: for each half of a frame the lag from 18 to 142
// with the largest squared correlation over energy, where a longer lag must beat a much shorter one
// by 1.25 dB.

#include "codecs/g723/g723.hpp"
#include "codecs/g723/g723_fast.hpp"
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

constexpr std::size_t kLags = 142 - kLowestLag + 1;

/// As openLoopLag(), eight correlations at a time; 0 where a step could saturate.
Word openLoopLagAvx2(const Word* x) noexcept
{
    const std::int64_t own = exactEnergy<kHalf>(x);
    std::int64_t power = exactEnergy<kHalf>(x - 17);
    if (own >= 1 << 30 || power >= 1 << 30) return 0;
    std::array<Long, kLags + 7> powers;
    for (std::size_t k = 0; k < kLags; ++k) {
        const int i = kLowestLag + static_cast<int>(k);
        const std::int32_t leaving = x[static_cast<int>(kHalf) - i], coming = *(x - i);
        power += coming * coming - leaving * leaving;
        if (power >= 1 << 30) return 0;
        powers[k] = static_cast<Long>(2 * power);
    }
    alignas(32) std::array<Long, kLags + 7> cross;
    for (std::size_t k = 0; k < kLags; k += 8) {
        __m256i sums[8];
        for (std::size_t i = 0; i < 8; ++i) {
            const std::size_t lag = kLowestLag + std::min(k + i, kLags - 1);
            sums[i] = pairSums<kHalf>(x, x - lag);
        }
        avx2::store(&cross[k], sumEach(sums));
    }
    Quality best;
    int lag = kLowestLag;
    for (std::size_t k = 0; k < kLags; ++k) {
        if (cross[k] <= 0) continue;
        const Quality now = qualityOf(2 * cross[k], powers[k]);
        const int i = kLowestLag + static_cast<int>(k);
        if (!isBetter(now, best, i - lag)) continue;
        best = now;
        lag = i;
    }
    return static_cast<Word>(lag);
}

} // namespace

Word openLoopLagOf(const Word* x, bool fast) noexcept
{
    const Word lag = fast ? openLoopLagAvx2(x) : Word{0};
    return lag != 0 ? lag : openLoopLag(x);
}

void openLoopSearch(In<kPast + kFrame> weighted, Out<kPast + kFrame> normalised,
                    Out<2> lags) noexcept
{
    std::ranges::copy(weighted, normalised.begin());
    normalise(normalised);
    for (std::size_t half = 0; half < 2; ++half)
        lags[half] = openLoopLagOf(&normalised[kPast + kHalf * half], true);
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
