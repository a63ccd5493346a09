// The adaptive codebook search of ITU-T G.723.1, clause 2.14: lag and a vector of five gains,
// chosen together by weighing correlations and energies with the 20 words of each gain vector; and
// the taming that keeps a decoder's excitation from running away after a lost frame.

#include "codecs/g723/g723.hpp"
#include "codecs/g723/g723_searches.hpp"
#include "core/entries.hpp"
#include "core/state.hpp"

#include <array>

namespace zsp::g723 {

namespace {

/// The filtered vectors of the five taps.
using Filtered = std::array<std::array<Word, kSubframe>, 5>;

void filterTaps(In<kSubframe + 4> residual, In<kSubframe> response, Filtered& taps) noexcept
{
    for (std::size_t i = 0; i < kSubframe; ++i) {
        Long sum = 0;
        for (std::size_t j = 0; j <= i; ++j)
            sum = fx::l_mac(sum, residual[4 + j], response[i - j]);
        taps[4][i] = fx::round_fx(sum);
    }
    for (std::size_t m = 4; m-- > 0;) { // each of the earlier taps, from the one after it
        taps[m][0] = fx::mult_r(residual[m], 8192);
        for (std::size_t j = 1; j < kSubframe; ++j)
            taps[m][j] = fx::round_fx(
                fx::l_mac(fx::l_deposit_h(taps[m + 1][j - 1]), residual[m], response[j]));
    }
}

/// Sum of half the doubled products.
Long halvedDot(In<kSubframe> x, In<kSubframe> y) noexcept
{
    Long sum = 0;
    for (std::size_t j = 0; j < kSubframe; ++j)
        sum = fx::l_add(sum, fx::l_mult(x[j], y[j]) >> 1);
    return sum;
}

void correlate(In<kSubframe> target, const Filtered& taps, Long* corr) noexcept
{
    for (std::size_t m = 0; m < 5; ++m)
        *corr++ = fx::l_shl(halvedDot(target, taps[m]), 1);
    for (std::size_t m = 0; m < 5; ++m)
        *corr++ = energy(taps[m]);
    for (std::size_t m = 1; m < 5; ++m)
        for (std::size_t n = 0; n < m; ++n)
            *corr++ = fx::l_shl(halvedDot(taps[m], taps[n]), 2);
}

} // namespace

std::size_t adaptiveCorrelationsScalar(In<kSubframe> target, In<kSubframe> response, In<kPast> past,
                                       int firstLag, std::size_t count,
                                       AdaptiveCorrelations& words) noexcept
{
    std::array<Long, kLagCandidates * kGainWords> longs{};
    const std::size_t total = count * kGainWords;
    for (std::size_t k = 0; k < count; ++k) {
        std::array<Word, kSubframe + 4> residual;
        pastPeriod(past, firstLag + static_cast<int>(k), residual);
        Filtered taps;
        filterTaps(residual, response, taps);
        correlate(target, taps, &longs[kGainWords * k]);
    }
    const int shift = fx::norm_l(largest(std::span<const Long>(longs)));
    for (std::size_t i = 0; i < total; ++i)
        words[i] = fx::round_fx(fx::l_shl(longs[i], shift));
    return total;
}

void searchGainsScalar(const Word* corr, bool smallBook, std::size_t bound, std::size_t candidate,
                       GainChoice& best) noexcept
{
    for (std::size_t i = 0; i < bound; ++i) {
        const Word* v = gainVector(smallBook, i);
        Long sum = 0;
        for (std::size_t j = 0; j < kGainWords; ++j)
            sum = fx::l_add(sum, fx::l_mult(corr[j], v[j]) >> 1);
        if (sum > best.measure) best = {sum, i, candidate};
    }
}

namespace {

/// Rounds down (lag - 1) / 30, as the reference does.
std::size_t segmentOf(int lag) noexcept
{
    return static_cast<std::size_t>(fx::mult(static_cast<Word>(lag), 1092));
}

} // namespace

Word tamingRoom(std::span<const Long, 5> errors, bool sine, int firstLag, int lastLag) noexcept
{
    const std::size_t first = segmentOf(std::max(1, firstLag - 61)), last = segmentOf(lastLag + 2);
    Long most = -1;
    for (std::size_t i = first; i <= last; ++i)
        if (fx::l_sub(errors[i], most) > 0) most = errors[i];
    const Long over = fx::l_sub(most, 1 << 30);
    if (over > 0 || sine) return 0;
    return fx::extract_l(fx::l_negate(over) >> 23);
}

void updateTaming(const ZspG723Frame& f, std::size_t subframe, std::span<Long, 5> errors) noexcept
{
    const auto gain = static_cast<std::size_t>(f.acbGain[subframe]);
    const Word growth =
        usesSmallBook(f.type, f.lag[subframe / 2]) ? kTaming85[gain] : kTaming170[gain];
    const auto grown = [&](std::size_t n) {
        return fx::l_add(4, fx::l_shl(mls(errors[n], growth), 2));
    };
    const int lag = lagOf(f, subframe);
    Long first = 0, second = 0;
    if (lag <= 30) {
        first = second = grown(0);
    } else {
        const std::size_t z = segmentOf(lag);
        if (30 * (static_cast<int>(z) + 1) == lag) {
            first = grown(z - 1);
            second = grown(z);
        } else if (z == 1) {
            first = second = std::max(grown(0), grown(1));
        } else {
            first = std::max(grown(z - 2), grown(z - 1));
            second = std::max(grown(z - 1), grown(z));
        }
    }
    errors[4] = errors[2];
    errors[3] = errors[1];
    errors[2] = errors[0];
    errors[0] = first;
    errors[1] = second;
}

void adaptiveSearch(In<kSubframe> target, In<kSubframe> response, In<kPast> past,
                    std::span<const Long, 5> errors, bool sine, std::size_t subframe,
                    ZspG723Frame& f) noexcept
{
    const bool even = subframe % 2 == 0;
    Word& pairLag = f.lag[subframe / 2];
    if (even) pairLag = std::clamp<Word>(pairLag, 19, 140);
    const int firstLag = pairLag - 1;
    const std::size_t count = even ? 3 : 4;

    AdaptiveCorrelations corr;
    adaptiveCorrelationsAvx2(target, response, past, firstLag, count, corr);
    const std::size_t room = static_cast<std::size_t>(
        tamingRoom(errors, sine, firstLag, firstLag + static_cast<int>(count) - 1));
    const std::size_t boundSmall = std::min<std::size_t>(85, 51 + 4 * room);
    const std::size_t boundLarge = std::min<std::size_t>(170, 93 + 8 * room);

    GainChoice best;
    for (std::size_t k = 0; k < count; ++k) {
        const auto lag = static_cast<Word>(even ? firstLag + static_cast<int>(k) : pairLag);
        const bool small = usesSmallBook(f.type, lag);
        searchGainsAvx2(&corr[kGainWords * k], small, small ? boundSmall : boundLarge, k, best);
    }
    f.acbGain[subframe] = static_cast<Word>(best.index);
    if (even) pairLag = static_cast<Word>(firstLag + static_cast<int>(best.candidate));
    f.lagOffset[subframe] = even ? Word{1} : static_cast<Word>(best.candidate);
}

void subtractAdaptiveScalar(In<kSubframe> vector, In<kSubframe> response,
                            Out<kSubframe> target) noexcept
{
    for (std::size_t i = 0; i < kSubframe; ++i) {
        Long sum = fx::l_deposit_h(target[i]) >> 1;
        for (std::size_t j = 0; j <= i; ++j)
            sum = fx::l_msu(sum, vector[j], response[i - j]);
        target[i] = fx::round_fx(fx::l_shl(sum, 1));
    }
}

} // namespace zsp::g723

namespace zsp::entry {

namespace {

bool isSubframe(std::int32_t subframe) noexcept
{
    return subframe >= 0 && subframe <= 3;
}

} // namespace

ZspStatus zspsAdaptiveCodebookSearch_G723_16s(const std::int16_t* target,
                                              const std::int16_t* response,
                                              const std::int16_t* past, const std::int32_t* errors,
                                              std::int32_t sine, std::int32_t subframe,
                                              ZspG723Frame* frame)
{
    if (!target || !response || !past || !errors || !frame) return zspStsNullPtrErr;
    if (!isSubframe(subframe)) return zspStsCodecRangeErr;
    const auto i = static_cast<std::size_t>(subframe);
    auto f = readRecord<ZspG723Frame>(frame);
    if (f.type != zspG723Rate63 && f.type != zspG723Rate53) return zspStsCodecRangeErr;
    const int highest = i % 2 == 0 ? 142 : 141;
    if (f.lag[i / 2] < g723::kLowestLag || f.lag[i / 2] > highest) return zspStsCodecRangeErr;

    g723::adaptiveSearch(spanOf<60>(target), spanOf<60>(response), spanOf<145>(past),
                         spanOf<5>(errors), sine != 0, i, f);
    placeRecord(frame, f);
    return zspStsNoErr;
}

ZspStatus zspsAdaptiveSubtract_G723_16s_I(const std::int16_t* vector, const std::int16_t* response,
                                          std::int16_t* target)
{
    if (!vector || !response || !target) return zspStsNullPtrErr;

    g723::subtractAdaptiveAvx2(spanOf<60>(vector), spanOf<60>(response), spanOf<60>(target));
    return zspStsNoErr;
}

ZspStatus zspsTamingUpdate_G723_32s_I(const ZspG723Frame* frame, std::int32_t subframe,
                                      std::int32_t* errors)
{
    if (!frame || !errors) return zspStsNullPtrErr;
    if (!isSubframe(subframe)) return zspStsCodecRangeErr;
    const auto i = static_cast<std::size_t>(subframe);
    const auto f = readRecord<ZspG723Frame>(frame);
    if (!g723::adaptiveFits(f, i)) return zspStsCodecRangeErr;

    g723::updateTaming(f, i, spanOf<5>(errors));
    return zspStsNoErr;
}

} // namespace zsp::entry
