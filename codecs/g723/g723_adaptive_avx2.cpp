// The adaptive codebook search of G.723.1 without the saturation of each step, where no step would
// saturate, and eight gain vectors at a time.

#include "codecs/g723/g723_fast.hpp"
#include "codecs/g723/g723_searches.hpp"
#include "codecs/g723/tables/g723_gain170_tables.hpp"
#include "codecs/g723/tables/g723_gain85_tables.hpp"

#include <cstring>

namespace zsp::g723 {

namespace {

/// A filtered tap, four zeros behind it, and its exact energy.
struct Tap {
    alignas(32) std::array<Word, kPaddedSubframe> words{};
    std::int64_t energy;
};

/// residual * response, rounded. False where a step could saturate.
bool convolve(const Word* residual, const Trailed& backwards, std::int64_t energy,
              std::array<Word, kPaddedSubframe>& out) noexcept
{
    const In<kSubframe> x(residual, kSubframe);
    if (!staysSmall(exactEnergy<kSubframe>(residual), energy)) return false;
    alignas(32) std::array<Long, kPaddedSubframe> sums;
    slide(Padded(x), backwards, sums.data());
    for (std::size_t i = 0; i < kSubframe; ++i)
        out[i] = fx::round_fx(2 * sums[kSubframe - 1 - i]);
    return true;
}

/// The response backwards, so that sliding sums are a convolution.
Trailed backwardsOf(In<kSubframe> response) noexcept
{
    std::array<Word, kSubframe> turned;
    std::ranges::reverse_copy(response, turned.begin());
    return Trailed(turned);
}

/// Each earlier tap from the one behind it: one place later, and what its own word gives.
void earlierTap(Word residual, const Padded& response, const Tap& behind, Tap& tap) noexcept
{
    std::array<Word, 1 + kPaddedSubframe> moved{};
    std::copy_n(behind.words.begin(), kSubframe, moved.begin() + 1);
    const __m256i factor = _mm256_set1_epi16(residual);
    for (std::size_t v = 0; v < kPaddedSubframe; v += 16)
        avx2::store(&tap.words[v],
                    _mm256_adds_epi16(avx2::load(&moved[v]),
                                      _mm256_mulhrs_epi16(factor, avx2::load(response.words + v))));
    tap.words[0] = fx::mult_r(residual, 8192);
    std::fill(tap.words.begin() + kSubframe, tap.words.end(), Word{0});
}

/// All taps of a lag. False where a step could saturate, or a product is one that vpmulhrsw lacks.
bool filterTaps(In<kSubframe + 4> residual, In<kSubframe> response, const Trailed& backwards,
                std::int64_t energy, std::array<Tap, 5>& taps) noexcept
{
    if (!convolve(&residual[4], backwards, energy, taps[4].words)) return false;
    const Padded padded(response);
    for (std::size_t m = 4; m-- > 0;) {
        if (residual[m] == fx::kMin16) return false;
        earlierTap(residual[m], padded, taps[m + 1], taps[m]);
    }
    for (Tap& tap : taps)
        tap.energy = exactEnergy<kPaddedSubframe>(tap.words.data());
    return true;
}

Long sum64Words(const Word* x, const Word* y) noexcept
{
    return plainDot<kPaddedSubframe>(x, y);
}

/// The twenty correlations of a lag. False where a sum could saturate on its way.
bool correlate(const Padded& target, std::int64_t targetEnergy, const std::array<Tap, 5>& taps,
               Long* corr) noexcept
{
    for (const Tap& tap : taps)
        if (!staysSmall(tap.energy, std::max(targetEnergy, tap.energy))) return false;
    for (const Tap& tap : taps)
        *corr++ = 2 * sum64Words(target.words, tap.words.data());
    for (const Tap& tap : taps)
        *corr++ = static_cast<Long>(2 * tap.energy);
    for (std::size_t m = 1; m < 5; ++m)
        for (std::size_t n = 0; n < m; ++n)
            *corr++ = fx::l_shl(sum64Words(taps[m].words.data(), taps[n].words.data()), 2);
    return true;
}

} // namespace

std::size_t adaptiveCorrelationsAvx2(In<kSubframe> target, In<kSubframe> response, In<kPast> past,
                                     int firstLag, std::size_t count,
                                     AdaptiveCorrelations& words) noexcept
{
    std::array<Long, kLagCandidates * kGainWords> longs{};
    const Trailed backwards = backwardsOf(response);
    const Padded padded(target);
    const std::int64_t energy = exactEnergy<kSubframe>(response.data());
    const std::int64_t targetEnergy = exactEnergy<kSubframe>(target.data());
    for (std::size_t k = 0; k < count; ++k) {
        std::array<Word, kSubframe + 4> residual;
        pastPeriod(past, firstLag + static_cast<int>(k), residual);
        std::array<Tap, 5> taps;
        if (!filterTaps(residual, response, backwards, energy, taps) ||
            !correlate(padded, targetEnergy, taps, &longs[kGainWords * k]))
            return adaptiveCorrelationsScalar(target, response, past, firstLag, count, words);
    }
    const std::size_t total = count * kGainWords;
    const int shift = fx::norm_l(largest(std::span<const Long>(longs)));
    for (std::size_t i = 0; i < total; ++i)
        words[i] = fx::round_fx(longs[i] * (1 << shift));
    return total;
}

namespace {

/// A book in blocks of eight vectors: ten times the eight pairs of neighbouring words.
template <std::size_t count>
constexpr auto inBlocks(const std::array<Word, count * kGainWords>& book) noexcept
{
    std::array<Word, (count + 7) / 8 * 8 * kGainWords> blocks{};
    for (std::size_t i = 0; i < count; ++i)
        for (std::size_t j = 0; j < kGainWords; ++j)
            blocks[i / 8 * 8 * kGainWords + j / 2 * 16 + i % 8 * 2 + j % 2] =
                book[i * kGainWords + j];
    return blocks;
}

alignas(32) constexpr auto kBlocks85 = inBlocks<85>(kGain85);
alignas(32) constexpr auto kBlocks170 = inBlocks<170>(kGain170);

/// The largest sum of the magnitudes in the first or the second half of a vector.
template <std::size_t size>
constexpr int largestHalf(const std::array<Word, size>& book, std::size_t half) noexcept
{
    int most = 0;
    for (std::size_t i = half * kGainWords / 2; i < size; i += kGainWords) {
        int sum = 0;
        for (std::size_t j = 0; j < kGainWords / 2; ++j)
            sum += book[i + j] < 0 ? -book[i + j] : book[i + j];
        most = std::max(most, sum);
    }
    return most;
}

// Products with words of the first half stay in 32 bits; those of the second half as long as the
// first half leaves room.
constexpr int kSecondHalf = std::max(largestHalf(kGain85, 1), largestHalf(kGain170, 1));
static_assert(largestHalf(kGain85, 0) < 65536 && largestHalf(kGain170, 0) < 65536 &&
              kSecondHalf < 65536);

} // namespace

void searchGainsAvx2(const Word* corr, bool smallBook, std::size_t bound, std::size_t candidate,
                     GainChoice& best) noexcept
{
    std::array<std::int32_t, kGainWords / 2> pairs;
    std::memcpy(pairs.data(), corr, sizeof pairs);
    const Word* block = smallBook ? kBlocks85.data() : kBlocks170.data();
    const __m256i lanes = _mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7);
    __m256i most = _mm256_set1_epi32(best.measure), where = _mm256_set1_epi32(-1),
            half = _mm256_setzero_si256();
    for (std::size_t i = 0; i < bound; i += 8) {
        __m256i sum = _mm256_setzero_si256();
        for (std::size_t j = 0; j < pairs.size(); ++j, block += 16) {
            if (j == pairs.size() / 2) half = _mm256_max_epu32(half, _mm256_abs_epi32(sum));
            sum = _mm256_add_epi32(
                sum, _mm256_madd_epi16(_mm256_set1_epi32(pairs[j]), avx2::load(block)));
        }
        const __m256i index = _mm256_add_epi32(lanes, _mm256_set1_epi32(static_cast<int>(i)));
        const __m256i inside =
            _mm256_cmpgt_epi32(_mm256_set1_epi32(static_cast<int>(bound)), index);
        const __m256i larger = _mm256_and_si256(_mm256_cmpgt_epi32(sum, most), inside);
        most = _mm256_blendv_epi8(most, sum, larger);
        where = _mm256_blendv_epi8(where, index, larger);
    }
    const Long second = kSecondHalf * (1 + largest(std::span<const Word>(corr, kGainWords)));
    if (avx2::max32(half) > fx::kMax32 - second)
        return searchGainsScalar(corr, smallBook, bound, candidate, best);
    const Long measure = avx2::max32(most);
    if (measure <= best.measure) return;
    // The first of equals: the smallest index among the lanes with the largest sum.
    const __m256i isBest = _mm256_cmpeq_epi32(most, _mm256_set1_epi32(measure));
    const Long index =
        avx2::min32(_mm256_blendv_epi8(_mm256_set1_epi32(fx::kMax32), where, isBest));
    best = {measure, static_cast<std::size_t>(index), candidate};
}

void subtractAdaptiveAvx2(In<kSubframe> vector, In<kSubframe> response,
                          Out<kSubframe> target) noexcept
{
    // With half of the target, below 2^30, no step leaves 32 bits.
    const std::int64_t energy = exactEnergy<kSubframe>(vector.data());
    if (!staysSmall(4 * energy, exactEnergy<kSubframe>(response.data())))
        return subtractAdaptiveScalar(vector, response, target);
    alignas(32) std::array<Long, kPaddedSubframe> sums;
    slide(Padded(vector), backwardsOf(response), sums.data());
    for (std::size_t i = 0; i < kSubframe; ++i) {
        const Long rest = target[i] * 32768 - 2 * sums[kSubframe - 1 - i];
        target[i] = fx::round_fx(fx::l_shl(rest, 1));
    }
}

} // namespace zsp::g723
