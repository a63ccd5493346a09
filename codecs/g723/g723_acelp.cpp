// The fixed codebook at 5.3 kbit/s of ITU-T G.723.1, clause 2.16: four pulses, one on each of four
// tracks of eight places, all on even or all on odd places. Three are tried in nested loops, the
// fourth only where their correlation passes a threshold.

#include "codecs/g723/g723.hpp"
#include "codecs/g723/g723_searches.hpp"
#include "core/entries.hpp"
#include "core/state.hpp"

#include <array>

namespace zsp::g723 {

namespace {

constexpr std::size_t kPlaces = 8;  // of a track
constexpr std::size_t kPadded = 64; // tracks 2 and 3 end beyond the sub-frame
constexpr std::size_t kPairBase = 4 * kPlaces;

using Correlated = std::array<Word, kPadded>;

constexpr std::size_t placeOf(std::size_t track, std::size_t k) noexcept
{
    return kPlaces * k + 2 * track;
}

/// Where the pair of tracks a < b begins among the correlations.
constexpr std::size_t pairAt(std::size_t a, std::size_t b) noexcept
{
    constexpr std::array<std::size_t, 3> kFirst = {0, 3, 5};
    return kPairBase + (kFirst[a] + b - a - 1) * kPlaces * kPlaces;
}

} // namespace

void acelpCorrelations(In<kSubframe> response, const ZspG723Frame& f, std::size_t subframe,
                       Out<kSubframe> sharpened, Out<kCorrelations> corr) noexcept
{
    for (std::size_t i = 0; i < kSubframe; ++i)
        sharpened[i] = static_cast<Word>(response[i] >> 1);
    sharpen(sharpened, sharpeningOf(f, subframe));

    std::array<Word, kSubframe> scaled;
    const Long own = energy(sharpened);
    const int up = fx::norm_l(own) >> 1;
    for (std::size_t i = 0; i < kSubframe; ++i)
        scaled[i] = fx::extract_h(own) > 32000 ? static_cast<Word>(sharpened[i] >> 1)
                                               : fx::shl(sharpened[i], up);

    // R(i, j) for one distance after the other, each sum one product longer than the last.
    std::array<std::array<Word, kPadded>, kPadded> matrix{};
    for (std::size_t distance = 0; distance < kSubframe; distance += 2) {
        Long sum = 0;
        for (std::size_t n = 0; n + distance < kSubframe; ++n) {
            sum = fx::l_mac(sum, scaled[n], scaled[n + distance]);
            const std::size_t later = kSubframe - 1 - n;
            matrix[later - distance][later] = matrix[later][later - distance] = fx::extract_h(sum);
        }
    }
    for (std::size_t track = 0; track < 4; ++track)
        for (std::size_t k = 0; k < kPlaces; ++k)
            corr[kPlaces * track + k] = matrix[placeOf(track, k)][placeOf(track, k)];
    for (std::size_t a = 0; a < 4; ++a)
        for (std::size_t b = a + 1; b < 4; ++b)
            for (std::size_t k = 0; k < kPlaces * kPlaces; ++k)
                corr[pairAt(a, b) + k] = matrix[placeOf(a, k / kPlaces)][placeOf(b, k % kPlaces)];
}

namespace {

/// The target backwards through the response, to 13 bits.
Correlated backward(In<kSubframe> target, In<kSubframe> sharpened) noexcept
{
    std::array<Long, kSubframe> sums{};
    for (std::size_t i = 0; i < kSubframe; ++i)
        sums[i] = dot(target.subspan(i), sharpened.data());
    const int shift = std::min(16, fx::norm_l(largest(sums)));
    Correlated d{};
    for (std::size_t i = 0; i < kSubframe; ++i)
        d[i] = fx::extract_l(sums[i] >> (18 - shift));
    return d;
}

/// Gives neighbours a common sign and makes their sum positive; the signs.
std::array<Word, kPadded / 2> takeSigns(Correlated& d) noexcept
{
    std::array<Word, kPadded / 2> signs{};
    for (std::size_t m = 0; m < signs.size(); ++m) {
        const bool positive = fx::add(d[2 * m], d[2 * m + 1]) >= 0;
        signs[m] = positive ? Word{1} : Word{-1};
        d[2 * m] = static_cast<Word>(signs[m] * d[2 * m]);
        d[2 * m + 1] = static_cast<Word>(signs[m] * d[2 * m + 1]);
    }
    return signs;
}

/// Half way from the mean to what the best three pulses of a grid could reach.
Word thresholdOf(const Correlated& d, std::size_t grid) noexcept
{
    Word most = 0;
    Long sum = 0;
    for (std::size_t track = 0; track < 3; ++track) {
        Word best = fx::kMin16;
        for (std::size_t k = 0; k < kPlaces; ++k) {
            const Word value = d[placeOf(track, k) + grid];
            best = std::max(best, value);
            sum = fx::l_mac(sum, value, 1);
        }
        most = fx::add(most, best);
    }
    const Word mean = fx::extract_l(sum >> 4);
    return fx::add(fx::mult(fx::sub(most, mean), 16384), mean);
}

/// The best places so far, as numbers on their tracks.
struct Best {
    Word square = 0, energy = fx::kMax16;
    std::array<std::size_t, 4> k{};
    std::size_t grid = 0;
};

/// Tries all places of the fourth pulse.
void tryFourth(const Correlated& d, const Word* corr, const std::array<std::size_t, 3>& k,
               Word three, Long energy, std::size_t grid, Best& best) noexcept
{
    for (std::size_t i = 0; i < kPlaces; ++i) {
        const Word all = fx::add(three, d[placeOf(3, i) + grid]);
        Long sum = fx::l_mac(energy, corr[3 * kPlaces + i], 1);
        for (std::size_t track = 0; track < 3; ++track)
            sum = fx::l_mac(sum, corr[pairAt(track, 3) + kPlaces * k[track] + i], 2);
        const Word alpha = fx::extract_l(sum >> 5);
        const Word square = fx::mult(all, all);
        if (fx::l_mult(square, best.energy) <= fx::l_mult(best.square, alpha)) continue;
        best = {square, alpha, {k[0], k[1], k[2], i}, grid};
    }
}

Best searchTracks(const Correlated& d, const Word* corr, Word& budget) noexcept
{
    const Word threshold = std::max(thresholdOf(d, 0), thresholdOf(d, 1));
    Word left = fx::add(budget, 120);
    Best best;
    std::array<std::size_t, 3> k{};
    const auto pair = [&](std::size_t a, std::size_t b) {
        return corr[pairAt(a, b) + kPlaces * k[a] + k[b]];
    };
    for (k[0] = 0; k[0] < kPlaces && left > 0; ++k[0]) {
        for (k[1] = 0; k[1] < kPlaces && left > 0; ++k[1]) {
            for (k[2] = 0; k[2] < kPlaces && left > 0; ++k[2]) {
                const auto sumOf = [&](std::size_t grid) {
                    return fx::add(fx::add(d[placeOf(0, k[0]) + grid], d[placeOf(1, k[1]) + grid]),
                                   d[placeOf(2, k[2]) + grid]);
                };
                const Word even = sumOf(0), odd = sumOf(1);
                const std::size_t grid = odd > even ? 1 : 0;
                const Word three = std::max(even, odd);
                if (three <= threshold) continue;
                Long sum = fx::l_mult(corr[k[0]], 1);
                sum = fx::l_mac(sum, corr[kPlaces + k[1]], 1);
                sum = fx::l_mac(sum, pair(0, 1), 2);
                sum = fx::l_mac(sum, corr[2 * kPlaces + k[2]], 1);
                sum = fx::l_mac(sum, pair(0, 2), 2);
                sum = fx::l_mac(sum, pair(1, 2), 2);
                tryFourth(d, corr, k, three, sum, grid, best);
                --left;
            }
        }
    }
    budget = left;
    return best;
}

} // namespace

void acelpSearch(In<kSubframe> target, In<kSubframe> sharpened, In<kCorrelations> corr,
                 std::size_t subframe, Word& budget, ZspG723Frame& f,
                 Out<kSubframe> filtered) noexcept
{
    Correlated d = backward(target, sharpened);
    const std::array<Word, kPadded / 2> signs = takeSigns(d);
    std::array<Word, kCorrelations> signedCorr;
    std::ranges::copy(corr, signedCorr.begin());
    for (std::size_t a = 0; a < 4; ++a)
        for (std::size_t b = a + 1; b < 4; ++b)
            for (std::size_t k = 0; k < kPlaces * kPlaces; ++k) {
                Word& r = signedCorr[pairAt(a, b) + k];
                const bool equal =
                    signs[placeOf(a, k / kPlaces) / 2] == signs[placeOf(b, k % kPlaces) / 2];
                if (!equal) r = fx::negate(r);
            }
    const Best best = searchTracks(d, signedCorr.data(), budget);

    std::ranges::fill(filtered, Word{0});
    f.grid[subframe] = static_cast<Word>(best.grid);
    f.position[subframe] = 0;
    f.signs[subframe] = 0;
    for (std::size_t m = 0; m < 4; ++m) {
        const std::size_t even = placeOf(m, best.k[m]), place = even + best.grid;
        const bool positive = signs[even / 2] > 0;
        f.position[subframe] |= static_cast<std::int32_t>(best.k[m]) << 3 * m;
        if (positive) f.signs[subframe] = static_cast<Word>(f.signs[subframe] | 1 << m);
        for (std::size_t i = place; i < kSubframe; ++i)
            filtered[i] = positive ? fx::add(filtered[i], sharpened[i - place])
                                   : fx::sub(filtered[i], sharpened[i - place]);
    }
}

Word acelpGain(In<kSubframe> target, In<kSubframe> filtered) noexcept
{
    std::array<Word, kSubframe> y;
    for (std::size_t i = 0; i < kSubframe; ++i)
        y[i] = static_cast<Word>(filtered[i] >> 3);
    const Long cross = dot(target, y.data()), own = energy(y);
    const int shift = fx::norm_l(cross), ownShift = fx::norm_l(own);
    const Word u = fx::extract_h(fx::l_shl(cross, shift));
    if (u <= 0) return 0;
    const Word v = fx::extract_h(fx::l_shl(own, ownShift));
    const Word gain = fx::shr(fx::div_s(static_cast<Word>(u >> 1), v), shift + 5 - ownShift);
    std::size_t best = 0;
    for (std::size_t i = 1; i < kFixedGain.size(); ++i)
        if (fx::abs_s(fx::sub(gain, kFixedGain[i])) < fx::abs_s(fx::sub(gain, kFixedGain[best])))
            best = i;
    return static_cast<Word>(best);
}

} // namespace zsp::g723

namespace zsp::entry {

ZspStatus zspsACELPCorrelations_G723_16s(const ZspG723Frame* frame, std::int32_t subframe,
                                         const std::int16_t* response, std::int16_t* sharpened,
                                         std::int16_t* corr)
{
    if (!frame || !response || !sharpened || !corr) return zspStsNullPtrErr;
    if (subframe < 0 || subframe > 3) return zspStsCodecRangeErr;
    const auto i = static_cast<std::size_t>(subframe);
    const auto f = readRecord<ZspG723Frame>(frame);
    if (f.type != zspG723Rate53 || !g723::adaptiveFits(f, i)) return zspStsCodecRangeErr;

    g723::acelpCorrelations(spanOf<60>(response), f, i, spanOf<60>(sharpened), spanOf<416>(corr));
    return zspStsNoErr;
}

ZspStatus zspsACELPSearch_G723_16s(const std::int16_t* target, const std::int16_t* sharpened,
                                   const std::int16_t* corr, std::int32_t subframe,
                                   std::int16_t* budget, ZspG723Frame* frame,
                                   std::int16_t* filtered)
{
    if (!target || !sharpened || !corr || !budget || !frame || !filtered) return zspStsNullPtrErr;
    if (subframe < 0 || subframe > 3) return zspStsCodecRangeErr;
    if (*budget < 0) return zspStsRangeErr;

    InPlace<ZspG723Frame> f(frame);
    g723::acelpSearch(spanOf<60>(target), spanOf<60>(sharpened), spanOf<416>(corr),
                      static_cast<std::size_t>(subframe), *budget, *f, spanOf<60>(filtered));
    return zspStsNoErr;
}

ZspStatus zspsACELPGainQuant_G723_16s(const std::int16_t* target, const std::int16_t* filtered,
                                      std::int16_t* index)
{
    if (!target || !filtered || !index) return zspStsNullPtrErr;

    *index = g723::acelpGain(spanOf<60>(target), spanOf<60>(filtered));
    return zspStsNoErr;
}

} // namespace zsp::entry
