// Adaptive and fixed vectors of ITU-T G.723.1 as a decoder makes them, clauses 2.14 to 2.17; an
// encoder makes the same.

#include "codecs/g723/g723.hpp"
#include "codecs/g723/g723_searches.hpp"
#include "codecs/g723/tables/g723_gain170_tables.hpp"
#include "codecs/g723/tables/g723_gain85_tables.hpp"
#include "core/entries.hpp"
#include "core/state.hpp"

#include <array>
#include <cassert>
#include <cstdlib>

namespace zsp::g723 {

const Word* gainVector(bool smallBook, std::size_t index) noexcept
{
    return (smallBook ? kGain85.data() : kGain170.data()) + index * kGainWords;
}

void pastPeriod(In<kPast> past, int lag, Out<kSubframe + 4> residual) noexcept
{
    assert(17 <= lag && lag <= kHighestLag);
    const std::size_t start = kPast - static_cast<std::size_t>(lag);
    residual[0] = past[start - 2];
    residual[1] = past[start - 1];
    for (std::size_t i = 2, from = start; i < residual.size(); ++i) {
        residual[i] = past[from];
        if (++from == kPast) from = start;
    }
}

void filterPeriodScalar(In<kSubframe + 4> residual, const Word* taps_Q14,
                        Out<kSubframe> dst) noexcept
{
    for (std::size_t i = 0; i < kSubframe; ++i)
        dst[i] = fx::round_fx(fx::l_shl(dot(residual.subspan(i, 5), taps_Q14), 1));
}

void filterPeriodFast(In<kSubframe + 4> residual, const Word* taps_Q14, Out<kSubframe> dst) noexcept
{
    std::int32_t reach = 0;
    for (std::size_t j = 0; j < 5; ++j)
        reach += std::abs(int{taps_Q14[j]});
    // No sum of five doubled products leaves 32 bits, nor does its rounding.
    if (std::int64_t{2} * reach * (largest(residual) + 1) > fx::kMax32 - 0x8000)
        return filterPeriodScalar(residual, taps_Q14, dst);
    std::array<std::int32_t, kSubframe> sums;
    for (std::size_t i = 0; i < kSubframe; ++i)
        sums[i] = residual[i] * taps_Q14[0] + residual[i + 1] * taps_Q14[1] +
                  residual[i + 2] * taps_Q14[2] + residual[i + 3] * taps_Q14[3] +
                  residual[i + 4] * taps_Q14[4];
    for (std::size_t i = 0; i < kSubframe; ++i)
        dst[i] = static_cast<Word>(std::clamp((sums[i] + 0x2000) >> 14, -32768, 32767));
}

void adaptiveVector(const ZspG723Frame& f, std::size_t subframe, In<kPast> past,
                    Out<kSubframe> dst) noexcept
{
    std::array<Word, kSubframe + 4> residual;
    pastPeriod(past, lagOf(f, subframe), residual);
    filterPeriodFast(residual,
                     gainVector(usesSmallBook(f.type, f.lag[subframe / 2]),
                                static_cast<std::size_t>(f.acbGain[subframe])),
                     dst);
}

void repeatPulses(Out<kSubframe> x, std::size_t period) noexcept
{
    std::array<Word, kSubframe> once;
    std::ranges::copy(x, once.begin());
    for (std::size_t t = period; t < kSubframe; t += period)
        for (std::size_t i = t; i < kSubframe; ++i)
            x[i] = fx::add(x[i], once[i - t]);
}

Sharpening sharpeningOf(const ZspG723Frame& f, std::size_t subframe) noexcept
{
    const auto gain = static_cast<std::size_t>(f.acbGain[subframe]);
    return {lagOf(f, subframe) + kSharpeningOffset[gain], kSharpeningGain[gain]};
}

void sharpen(Out<kSubframe> x, const Sharpening& s) noexcept
{
    if (s.lag >= 58) return;
    for (auto i = static_cast<std::size_t>(s.lag); i < kSubframe; ++i)
        x[i] = fx::add(x[i], fx::mult(x[i - static_cast<std::size_t>(s.lag)], s.gain_Q15));
}

namespace {

/// Pulses at 6.3 kbit/s, whose positions are numbered as combinations. False for no such number.
bool placePulses(const ZspG723Frame& f, std::size_t subframe, Word gain,
                 Out<kSubframe> dst) noexcept
{
    std::int32_t code = f.position[subframe];
    if (code >= kMaxPosition[subframe]) return false;

    const auto grid = static_cast<std::size_t>(f.grid[subframe]);
    std::size_t j = 6 - static_cast<std::size_t>(kPulseCount[subframe]);
    for (std::size_t i = 0; i < 30 && j < 6; ++i) {
        code -= kCombinatorial[j][i];
        if (code >= 0) continue;
        code += kCombinatorial[j][i];
        ++j;
        const bool negative = (f.signs[subframe] >> (6 - j) & 1) != 0;
        dst[grid + 2 * i] = negative ? static_cast<Word>(-gain) : gain;
    }
    return true;
}

/// Four pulses at 5.3 kbit/s, one a track.
void placeTrackPulses(const ZspG723Frame& f, std::size_t subframe, Word gain,
                      Out<kSubframe> dst) noexcept
{
    for (std::size_t m = 0; m < 4; ++m) {
        const auto place = static_cast<std::size_t>(f.position[subframe] >> 3 * m & 7);
        const std::size_t at = 8 * place + static_cast<std::size_t>(f.grid[subframe]) + 2 * m;
        const bool positive = (f.signs[subframe] >> m & 1) != 0;
        if (at < kSubframe) dst[at] = positive ? gain : static_cast<Word>(-gain);
    }
}

} // namespace

bool fixedFits(const ZspG723Frame& f, std::size_t i) noexcept
{
    const bool high = f.type == zspG723Rate63;
    return (high || f.type == zspG723Rate53) && adaptiveFits(f, i) && f.fcbGain[i] >= 0 &&
           f.fcbGain[i] < 24 && (f.train[i] | 1) == 1 && (f.grid[i] | 1) == 1 &&
           f.position[i] >= 0 && (high || f.position[i] < 4096) && f.signs[i] >= 0 &&
           f.signs[i] < 1 << (high ? kPulseCount[i] : 4);
}

void fixedVector(const ZspG723Frame& f, std::size_t subframe, Out<kSubframe> dst) noexcept
{
    const Word gain = kFixedGain[static_cast<std::size_t>(f.fcbGain[subframe])];
    std::ranges::fill(dst, Word{0});
    if (f.type == zspG723Rate63) {
        if (placePulses(f, subframe, gain, dst) && f.train[subframe] != 0)
            repeatPulses(dst, static_cast<std::size_t>(f.lag[subframe / 2]));
    } else {
        placeTrackPulses(f, subframe, gain, dst);
        sharpen(dst, sharpeningOf(f, subframe));
    }
}

void excitation(In<kSubframe> fixed, In<kSubframe> adaptive, Out<kSubframe> dst) noexcept
{
    for (std::size_t i = 0; i < kSubframe; ++i)
        dst[i] = fx::add(fx::shl(fixed[i], 1), adaptive[i]);
}

} // namespace zsp::g723

namespace zsp::entry {

ZspStatus zspsExcitation_G723_16s(const std::int16_t* fixed, const std::int16_t* adaptive,
                                  std::int16_t* dst)
{
    if (!fixed || !adaptive || !dst) return zspStsNullPtrErr;

    g723::excitation(spanOf<60>(fixed), spanOf<60>(adaptive), spanOf<60>(dst));
    return zspStsNoErr;
}

ZspStatus zspsDecodeAdaptiveVector_G723_16s(const ZspG723Frame* frame, std::int32_t subframe,
                                            const std::int16_t* past, std::int16_t* dst)
{
    if (!frame || !past || !dst) return zspStsNullPtrErr;
    if (subframe < 0 || subframe > 3) return zspStsCodecRangeErr;
    const auto i = static_cast<std::size_t>(subframe);
    const auto f = readRecord<ZspG723Frame>(frame);
    if (!g723::adaptiveFits(f, i)) return zspStsCodecRangeErr;

    g723::adaptiveVector(f, i, spanOf<145>(past), spanOf<60>(dst));
    return zspStsNoErr;
}

ZspStatus zspsDecodeFixedVector_G723_16s(const ZspG723Frame* frame, std::int32_t subframe,
                                         std::int16_t* dst)
{
    if (!frame || !dst) return zspStsNullPtrErr;
    if (subframe < 0 || subframe > 3) return zspStsCodecRangeErr;
    const auto i = static_cast<std::size_t>(subframe);
    const auto f = readRecord<ZspG723Frame>(frame);
    if (!g723::fixedFits(f, i)) return zspStsCodecRangeErr;

    g723::fixedVector(f, i, spanOf<60>(dst));
    return zspStsNoErr;
}

} // namespace zsp::entry
