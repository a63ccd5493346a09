// The excitation of a decoder of ITU-T G.723.1 behind its codebooks: the pitch post-filter of
// clause 3.6 and what stands in for a lost frame, clause 3.10.

#include "codecs/g723/g723.hpp"
#include "codecs/g723/g723_fast.hpp"
#include "core/entries.hpp"
#include "core/state.hpp"

#include <array>
#include <cassert>

namespace zsp::g723 {

namespace {

/// A match of a segment with an earlier or a later one.
struct Match {
    std::int32_t index = 0; // 0: none
    Long cross = 0;
};

/// The lag around `lag` with the largest correlation above 0, the first one of equals.
Match bestLag(const Word* x, std::size_t length, int lag, int sign, int reach) noexcept
{
    Match best;
    for (int t = lag - 3; t <= lag + 3; ++t) {
        if (t > reach) break;
        const Long cross = dot({x, length}, x + sign * t);
        if (cross > best.cross) best = {sign * t, cross};
    }
    return best;
}

/// As bestLag(), for vectors whose sums of `length` products stay below 2^30.
template <std::size_t length>
Match bestLagAvx2(const Word* x, int lag, int sign, int reach) noexcept
{
    const int last = std::min(lag + 3, reach);
    __m256i sums[8];
    for (int i = 0; i < 8; ++i) {
        const int t = lag - 3 + i;
        sums[i] = i < 7 && t <= last ? pairSums<length>(x, x + sign * t) : _mm256_setzero_si256();
    }
    alignas(32) std::array<Long, 8> cross;
    avx2::store(cross.data(), sumEach(sums));
    Match best;
    for (int i = 0; i < 7; ++i)
        if (2 * cross[static_cast<std::size_t>(i)] > best.cross)
            best = {sign * (lag - 3 + i), 2 * cross[static_cast<std::size_t>(i)]};
    return best;
}

} // namespace

PitchPostFilter pitchPostFilterOf(In<kPast + kFrame> normalised, Word pairLag, std::size_t subframe,
                                  Word weight) noexcept
{
    const Word* x = &normalised[kPast + kSubframe * subframe];
    const int lag = std::min<int>(pairLag, 142);
    const int later = static_cast<int>(kFrame - kSubframe * (subframe + 1));
    // 60 products of 13 bits.
    const Match backward = bestLagAvx2<kSubframe>(x, lag, -1, kPast);
    const Match forward = bestLagAvx2<kSubframe>(x, lag, 1, later);
    PitchPostFilter none{0, 0, fx::kMax16};
    if (backward.index == 0 && forward.index == 0) return none;

    const auto energyAt = [x](const Match& m) {
        const Word* y = x + m.index;
        return m.index == 0 ? 0 : 2 * plainDot<kSubframe>(y, y);
    };
    const std::array<Long, 5> longs = {2 * plainDot<kSubframe>(x, x), backward.cross,
                                       energyAt(backward), forward.cross, energyAt(forward)};
    const int shift = fx::norm_l(*std::ranges::max_element(longs));
    std::array<Word, 5> words{};
    for (std::size_t i = 0; i < words.size(); ++i)
        words[i] = fx::extract_h(fx::l_shl(longs[i], shift));
    const auto [own, crossBack, energyBack, crossAhead, energyAhead] = words;

    const bool back =
        forward.index == 0 ||
        (backward.index != 0 && fx::l_mult(fx::mult_r(crossBack, crossBack), energyAhead) >
                                    fx::l_mult(fx::mult_r(crossAhead, crossAhead), energyBack));
    const Word cross = back ? crossBack : crossAhead, other = back ? energyBack : energyAhead;
    PitchPostFilter found{back ? backward.index : forward.index, 0, fx::kMax16};
    if (fx::l_mult(cross, cross) <= fx::l_mult(own, other) >> 2) return found;

    const Word gain = cross >= other ? weight : fx::mult(fx::div_s(cross, other), weight);
    const Long half = fx::l_deposit_h(own) >> 1;
    const Long both =
        fx::l_add(fx::l_mac(half, cross, gain), fx::l_mult(other, fx::mult(gain, gain)) >> 1);
    const Word after = fx::round_fx(both);
    const Word ratio = half >= fx::l_deposit_h(after) ? fx::kMax16 : div_l(half, after);
    found.scale = sqrt_l(fx::l_deposit_h(ratio));
    found.gain = fx::mult(gain, found.scale);
    return found;
}

void pitchPostFilter(In<kPast + kFrame> excitation, const ZspG723Frame& f, Out<kFrame> dst) noexcept
{
    std::array<Word, kPast + kFrame> normalised;
    std::ranges::copy(excitation, normalised.begin());
    normalise(normalised);
    const Word weight = kPitchPostFilterWeight[static_cast<std::size_t>(f.type)];
    for (std::size_t i = 0; i < 4; ++i) {
        const PitchPostFilter p = pitchPostFilterOf(normalised, f.lag[i / 2], i, weight);
        const Word* x = &excitation[kPast + kSubframe * i];
        // |scale| < 2^15 and |gain| < 2^14: without its doubling the sum stays in 32 bits, and only
        // the rounded word saturates.
        for (std::size_t k = 0; k < kSubframe; ++k) {
            const std::int32_t sum = x[k] * p.scale + *(x + k + p.index) * p.gain;
            dst[kSubframe * i + k] =
                static_cast<Word>(std::clamp((sum + 0x4000) >> 15, -32768, 32767));
        }
    }
}

Concealment concealAnalysis(In<kPast + kFrame> excitation, Word lastLag) noexcept
{
    constexpr std::size_t kLength = 120;
    std::array<Word, kPast + kFrame> normalised;
    std::ranges::copy(excitation, normalised.begin());
    const int shift = normalise(normalised);
    const Word* x = &normalised[kPast + kFrame - kLength];
    const int lag = std::min<int>(lastLag, 142);
    // Where the whole signal's energy is small, every sum is.
    const std::int64_t all = exactEnergy<kPast + kFrame>(normalised.data());
    const bool small = all < 1 << 30;
    Match best =
        small ? bestLagAvx2<kLength>(x, lag, -1, kPast) : bestLag(x, kLength, lag, -1, kPast);
    if (best.index == 0) best.index = -lag;
    Concealment c{0, fx::round_fx(energy({x, kLength})), static_cast<Word>(shift)};
    const Word cross = fx::round_fx(best.cross);
    if (cross <= 0) return c;
    const Word other = fx::round_fx(energy({x + best.index, kLength}));
    if (fx::l_msu(fx::l_mult(other, c.energy) >> 3, cross, cross) < 0)
        c.lag = static_cast<Word>(-best.index);
    return c;
}

void concealExcitation(Word lag, Word gain, int count, Word& seed, Out<kPast> past,
                       Out<kFrame> dst) noexcept
{
    assert(1 <= count && count <= 3 && 0 <= lag && lag <= static_cast<Word>(kPast));
    if (count == 3) {
        std::ranges::fill(dst, Word{0});
        std::ranges::fill(past, Word{0});
    } else if (lag != 0) {
        const std::size_t start = kPast - static_cast<std::size_t>(lag);
        for (std::size_t i = 0; i < kFrame; ++i)
            dst[i] = fx::mult(past[start + i % static_cast<std::size_t>(lag)], 24576);
        std::ranges::copy(dst.last<kPast>(), past.begin());
    } else {
        for (Word& x : dst)
            x = fx::mult(gain, random(seed));
        std::ranges::fill(past, Word{0});
    }
}

} // namespace zsp::g723

namespace zsp::entry {

ZspStatus zspsPitchPostFilter_G723_16s(const ZspG723Frame* frame, const std::int16_t* src,
                                       std::int16_t* dst)
{
    if (!frame || !src || !dst) return zspStsNullPtrErr;
    const auto f = readRecord<ZspG723Frame>(frame);
    if (f.type != zspG723Rate63 && f.type != zspG723Rate53) return zspStsCodecRangeErr;
    for (const std::int16_t lag : f.lag)
        if (lag < g723::kLowestLag || lag > g723::kHighestLag) return zspStsCodecRangeErr;

    g723::pitchPostFilter(spanOf<385>(src), f, spanOf<240>(dst));
    return zspStsNoErr;
}

ZspStatus zspsConcealAnalysis_G723_16s(const ZspG723Frame* frame, const std::int16_t* src,
                                       std::int16_t* lag, std::int16_t* gain, std::int16_t* energy,
                                       std::int16_t* shift)
{
    if (!frame || !src || !lag || !gain || !energy || !shift) return zspStsNullPtrErr;
    const auto f = readRecord<ZspG723Frame>(frame);
    if (f.lag[1] < g723::kLowestLag || f.lag[1] > g723::kHighestLag) return zspStsCodecRangeErr;
    for (std::size_t i = 2; i < 4; ++i)
        if (f.fcbGain[i] < 0 || f.fcbGain[i] > 23) return zspStsCodecRangeErr;

    const g723::Concealment c = g723::concealAnalysis(spanOf<385>(src), f.lag[1]);
    *lag = c.lag;
    *gain = g723::kFixedGain[static_cast<std::size_t>((f.fcbGain[2] + f.fcbGain[3]) >> 1)];
    *energy = c.energy;
    *shift = c.shift;
    return zspStsNoErr;
}

ZspStatus zspsConcealExcitation_G723_16s(std::int16_t lag, std::int16_t gain, std::int32_t count,
                                         std::int16_t* seed, std::int16_t* past, std::int16_t* dst)
{
    if (!seed || !past || !dst) return zspStsNullPtrErr;
    if (lag < 0 || lag > 145 || count < 1 || count > 3) return zspStsCodecRangeErr;

    g723::concealExcitation(lag, gain, count, *seed, spanOf<145>(past), spanOf<240>(dst));
    return zspStsNoErr;
}

} // namespace zsp::entry
