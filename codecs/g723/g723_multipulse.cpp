// The fixed codebook at 6.3 kbit/s of ITU-T G.723.1, clause 2.15: five or six pulses of one size on
// the even or the odd places, alone or as trains with the pitch. For each grid and each of four
// sizes pulses are placed one after the other where the remaining correlation is largest.

#include "codecs/g723/g723.hpp"
#include "codecs/g723/g723_fast.hpp"
#include "codecs/g723/g723_searches.hpp"
#include "core/entries.hpp"
#include "core/state.hpp"

#include <bit>
#include <cassert>

namespace zsp::g723 {

PulseProblem pulseProblemScalar(In<kSubframe> target, In<kSubframe> response, std::size_t count,
                                std::size_t period) noexcept
{
    PulseProblem p{.target = {}, .response = {}, .corr = {}, .cross = {}, .count = count};
    std::ranges::copy(target, p.target.begin());
    std::ranges::copy(response, p.response.begin());
    repeatPulses(p.response, period);

    std::array<Word, kSubframe> halves{};
    for (std::size_t i = 0; i < kSubframe; ++i)
        halves[i] = static_cast<Word>(p.response[i] >> 1);
    const Long own = energy(halves);
    const int shift = fx::norm_l(own);
    p.corr[0] = fx::round_fx(fx::l_shl(own, shift));
    for (std::size_t i = 1; i < kSubframe; ++i)
        p.corr[i] =
            fx::round_fx(fx::l_shl(dot(std::span(halves).subspan(i), halves.data()), shift));
    for (std::size_t i = 0; i < kSubframe; ++i)
        p.cross[i] = fx::l_shl(dot(target.subspan(i), p.response.data()), shift - 4);
    return p;
}

PulseStart pulseStart(const PulseProblem& p, std::size_t grid) noexcept
{
    PulseStart start{.place = grid, .gain = 22};
    Long most = 0;
    for (std::size_t i = grid; i < kSubframe; i += 2) {
        const Long size = fx::l_abs(p.cross[i]);
        if (size < most) continue;
        most = size; // the last of equals
        start.place = i;
    }
    Long best = 1 << 30;
    for (std::size_t i = 22; i >= 2; --i) {
        const Long distance = fx::l_abs(fx::l_sub(fx::l_mult(kFixedGain[i], p.corr[0]), most));
        if (distance >= best) continue;
        best = distance;
        start.gain = i;
    }
    return start;
}

Pulses placePulsesScalar(const PulseProblem& p, std::size_t first, Word amplitude) noexcept
{
    Pulses pulses{};
    std::array<Long, kSubframe> left = p.cross;
    std::array<bool, kSubframe> taken{};
    const auto put = [&](std::size_t i, std::size_t place) {
        pulses.places[i] = static_cast<Word>(place);
        pulses.amplitudes[i] = left[place] >= 0 ? amplitude : static_cast<Word>(-amplitude);
        taken[place] = true;
    };
    put(0, first);
    for (std::size_t n = 1; n < p.count; ++n) {
        const auto last = static_cast<std::size_t>(pulses.places[n - 1]);
        const Word size = pulses.amplitudes[n - 1];
        Long most = -1;
        std::size_t chosen = 0;
        for (std::size_t l = first % 2; l < kSubframe; l += 2) {
            if (taken[l]) continue;
            left[l] = fx::l_msu(left[l], size, p.corr[l > last ? l - last : last - l]);
            const Long found = fx::l_abs(left[l]);
            if (found <= most) continue;
            most = found; // the first of equals
            chosen = l;
        }
        put(n, chosen);
    }
    return pulses;
}

Long pulseMeasureScalar(const PulseProblem& p, const Pulses& pulses) noexcept
{
    std::array<Word, kSubframe> vector{};
    for (std::size_t i = 0; i < p.count; ++i)
        vector[static_cast<std::size_t>(pulses.places[i])] = pulses.amplitudes[i];
    Long measure = 0;
    for (std::size_t l = 0; l < kSubframe; ++l) {
        Long sum = 0;
        for (std::size_t j = 0; j <= l; ++j)
            sum = fx::l_mac(sum, vector[j], p.response[l - j]);
        const Word y = fx::extract_h(fx::l_shl(sum, 2));
        measure = fx::l_mac(measure, p.target[l], y);
        measure = fx::l_sub(measure, fx::l_mult(y, y) >> 1);
    }
    return measure;
}

// The fast forms: correlations as sliding sums, and the 30 places of a grid in four vectors.

PulseProblem pulseProblemAvx2(In<kSubframe> target, In<kSubframe> response, std::size_t count,
                              std::size_t period) noexcept
{
    PulseProblem p{.target = {}, .response = {}, .corr = {}, .cross = {}, .count = count};
    std::ranges::copy(target, p.target.begin());
    std::ranges::copy(response, p.response.begin());
    repeatPulses(p.response, period);
    std::array<Word, kSubframe> halves;
    for (std::size_t i = 0; i < kSubframe; ++i)
        halves[i] = static_cast<Word>(p.response[i] >> 1);
    const std::int64_t own = exactEnergy<kSubframe>(halves.data());
    if (!staysSmall(own, own) || !staysSmall(exactEnergy<kSubframe>(target.data()),
                                             exactEnergy<kSubframe>(p.response.data())))
        return pulseProblemScalar(target, response, count, period);

    alignas(32) std::array<Long, kPaddedSubframe> sums;
    slide(Padded(halves), Trailed(halves), sums.data());
    const int shift = fx::norm_l(2 * sums[0]);
    for (std::size_t i = 0; i < kSubframe; ++i)
        p.corr[i] = fx::round_fx(2 * sums[i] * (1 << shift));
    slide(Padded(p.response), Trailed(target), sums.data());
    for (std::size_t i = 0; i < kSubframe; ++i)
        p.cross[i] = fx::l_shl(2 * sums[i], shift - 4);
    return p;
}

PulseTrials::PulseTrials(const PulseProblem& problem) noexcept
    : p_(problem), targetEnergy_(exactEnergy<kSubframe>(problem.target.data())),
      largestResponse_(largest(std::span<const Word>(problem.response)))
{
    std::ranges::copy(p_.response, delayed_.begin() + 64);
    for (std::size_t i = 0; i < kSubframe; ++i)
        cross_[i % 2][i / 2] = p_.cross[i];
    for (std::size_t i = 0; i < 30; ++i)
        distance_[32 + i] = distance_[32 - i] = p_.corr[2 * i];
}

Pulses PulseTrials::place(std::size_t first, Word amplitude) const noexcept
{
    Pulses pulses{};
    const std::size_t grid = first % 2;
    const __m256i most32 = _mm256_set1_epi32(fx::kMax32), none = _mm256_set1_epi32(-1);
    alignas(32) std::array<Long, 32> left = cross_[grid];
    std::uint32_t free = 0x3fffffff; // places of the grid
    std::size_t place = first / 2;
    for (std::size_t n = 0;; ++n) {
        pulses.places[n] = static_cast<Word>(2 * place + grid);
        pulses.amplitudes[n] = left[place] >= 0 ? amplitude : static_cast<Word>(-amplitude);
        free &= ~(1U << place);
        if (n + 1 == p_.count) return pulses;

        // |2 size corr| < 2^30, but what is left may be anything: saturate.
        const __m256i twice = _mm256_set1_epi32(2 * pulses.amplitudes[n]);
        __m256i sizes[4];
        for (std::size_t v = 0; v < 4; ++v) {
            const __m256i was = avx2::load(&left[8 * v]);
            const __m256i part =
                _mm256_mullo_epi32(twice, avx2::load(distance_.data() + 32 - place + 8 * v));
            const __m256i now = _mm256_sub_epi32(was, part);
            const __m256i over =
                _mm256_and_si256(_mm256_xor_si256(was, part), _mm256_xor_si256(was, now));
            const __m256i end = _mm256_xor_si256(_mm256_srai_epi32(was, 31), most32);
            const __m256i next = _mm256_castps_si256(_mm256_blendv_ps(
                _mm256_castsi256_ps(now), _mm256_castsi256_ps(end), _mm256_castsi256_ps(over)));
            avx2::store(&left[8 * v], next);
            // Taken places keep any value: they are not looked at again.
            const __m256i bits = _mm256_setr_epi32(1, 2, 4, 8, 16, 32, 64, 128);
            const __m256i isFree = _mm256_cmpeq_epi32(
                _mm256_and_si256(_mm256_set1_epi32(static_cast<int>(free >> 8 * v)), bits), bits);
            const __m256i size = _mm256_min_epu32(_mm256_abs_epi32(next), most32);
            sizes[v] = _mm256_blendv_epi8(none, size, isFree);
        }
        const Long most = avx2::max32(_mm256_max_epi32(_mm256_max_epi32(sizes[0], sizes[1]),
                                                       _mm256_max_epi32(sizes[2], sizes[3])));
        std::uint32_t equal = 0;
        for (std::size_t v = 0; v < 4; ++v) {
            const __m256i same = _mm256_cmpeq_epi32(sizes[v], _mm256_set1_epi32(most));
            equal |= static_cast<std::uint32_t>(_mm256_movemask_ps(_mm256_castsi256_ps(same)))
                     << 8 * v;
        }
        place = static_cast<std::size_t>(std::countr_zero(equal)); // the first of equals
    }
}

Long PulseTrials::measure(const Pulses& pulses) const noexcept
{
    const int size = std::abs(int{pulses.amplitudes[0]});
    if (std::int64_t{2} * size * largestResponse_ * static_cast<int>(p_.count) > fx::kMax32)
        return pulseMeasureScalar(p_, pulses);

    __m256i y[4];
    for (std::size_t v = 0; v < 4; ++v) {
        __m256i low = _mm256_setzero_si256(), high = low;
        for (std::size_t i = 0; i < 6; i += 2) { // pulses in pairs; the last may have no size
            const auto at = [&](std::size_t k) {
                return avx2::load(delayed_.data() + 64 + 16 * v -
                                  static_cast<std::size_t>(pulses.places[k]));
            };
            const __m256i one = at(i), two = at(i + 1);
            const __m256i sizes = _mm256_set1_epi32(
                static_cast<int>(static_cast<std::uint32_t>(pulses.amplitudes[i + 1]) << 16 |
                                 (static_cast<std::uint32_t>(pulses.amplitudes[i]) & 0xffff)));
            low = _mm256_add_epi32(low, _mm256_madd_epi16(_mm256_unpacklo_epi16(one, two), sizes));
            high =
                _mm256_add_epi32(high, _mm256_madd_epi16(_mm256_unpackhi_epi16(one, two), sizes));
        }
        // The upper word of the doubled sum << 2.
        y[v] = _mm256_packs_epi32(_mm256_srai_epi32(low, 13), _mm256_srai_epi32(high, 13));
    }
    y[3] = _mm256_insert_epi64(y[3], 0, 3); // 60 results

    alignas(32) std::array<Word, kPaddedSubframe> words;
    for (std::size_t v = 0; v < 4; ++v)
        avx2::store(&words[16 * v], y[v]);
    const std::int64_t energy = exactEnergy<kSubframe>(words.data());
    if (targetEnergy_ + 2 * energy > fx::kMax32) return pulseMeasureScalar(p_, pulses);
    return 2 * plainDot<kSubframe>(p_.target.data(), words.data()) - static_cast<Long>(energy);
}

namespace {

/// The best pulses so far.
struct Choice {
    Long measure = -(1 << 30);
    std::size_t grid = 0, gain = 0;
    bool train = false;
    Pulses pulses{};
};

void tryPulses(const PulseProblem& p, bool train, Choice& best) noexcept
{
    const PulseTrials trials(p);
    for (std::size_t grid = 0; grid < 2; ++grid) {
        const PulseStart start = pulseStart(p, grid);
        for (std::size_t gain = start.gain - 2; gain <= start.gain + 1; ++gain) {
            const Pulses pulses = trials.place(start.place, kFixedGain[gain]);
            const Long measure = trials.measure(pulses);
            if (measure > best.measure) best = {measure, grid, gain, train, pulses};
        }
    }
}

} // namespace

void multiPulseSearch(In<kSubframe> target, In<kSubframe> response, std::size_t subframe,
                      ZspG723Frame& f) noexcept
{
    const auto count = static_cast<std::size_t>(kPulseCount[subframe]);
    const auto lag = static_cast<std::size_t>(f.lag[subframe / 2]);
    Choice best;
    tryPulses(pulseProblemAvx2(target, response, count, kSubframe), false, best);
    if (lag < 58) tryPulses(pulseProblemAvx2(target, response, count, lag), true, best);

    std::array<Word, kSubframe> vector{};
    for (std::size_t i = 0; i < count; ++i)
        vector[static_cast<std::size_t>(best.pulses.places[i])] = best.pulses.amplitudes[i];
    std::int32_t code = 0, signs = 0;
    std::size_t j = 6 - count;
    for (std::size_t i = 0; i < 30 && j < 6; ++i) {
        const Word pulse = vector[best.grid + 2 * i];
        if (pulse == 0) {
            code += kCombinatorial[j][i];
            continue;
        }
        signs = 2 * signs + (pulse < 0 ? 1 : 0);
        ++j;
    }
    f.position[subframe] = code;
    f.signs[subframe] = static_cast<Word>(signs);
    f.grid[subframe] = static_cast<Word>(best.grid);
    f.fcbGain[subframe] = static_cast<Word>(best.gain);
    f.train[subframe] = best.train ? 1 : 0;
}

} // namespace zsp::g723

namespace zsp::entry {

ZspStatus zspsMPMLQSearch_G723_16s(const std::int16_t* target, const std::int16_t* response,
                                   std::int32_t subframe, ZspG723Frame* frame)
{
    if (!target || !response || !frame) return zspStsNullPtrErr;
    if (subframe < 0 || subframe > 3) return zspStsCodecRangeErr;
    const auto i = static_cast<std::size_t>(subframe);
    auto f = readRecord<ZspG723Frame>(frame);
    if (f.lag[i / 2] < g723::kLowestLag || f.lag[i / 2] > 141) return zspStsCodecRangeErr;

    g723::multiPulseSearch(spanOf<60>(target), spanOf<60>(response), i, f);
    placeRecord(frame, f);
    return zspStsNoErr;
}

} // namespace zsp::entry
