// The open-loop lag of ITU-T G.729: the lag at which 80 samples of weighted speech resemble their
// past most, in three ranges of which shorter lags are preferred (clauses 3.4 and A.3.4).

#include "codecs/g729/coder/g729_searches.hpp"
#include "common/math/inv_sqrt.hpp"
#include "core/avx2.hpp"
#include "core/entries.hpp"

#include <algorithm>
#include <array>
#include <cstdlib>

namespace zsp::g729 {

namespace {

/// Brings the speech to where sums of products rarely saturate; every `step`-th sample is looked
/// at. A sum of squares overflows when the exact one does.
void scale(OpenLoopSpeech speech, std::size_t step, std::array<Word, kOpenLoop>& dst) noexcept
{
    std::int64_t energy = 0;
    for (std::size_t i = 0; i < speech.size(); i += step)
        energy += 2 * std::int64_t{speech[i]} * speech[i];
    const bool isLoud = energy > fx::kMax32, isQuiet = energy < 1 << 20;
    for (std::size_t i = 0; i < speech.size(); ++i)
        dst[i] = isLoud    ? static_cast<Word>(speech[i] >> 3)
                 : isQuiet ? fx::sat16(speech[i] * 8)
                           : speech[i];
}

struct Definition {
    std::array<Word, kOpenLoop> speech;
    std::size_t step;

    Definition(OpenLoopSpeech words, std::size_t every) noexcept : step(every)
    {
        scale(words, every, speech);
    }

    Long sum(std::size_t a, std::size_t b, Long first) const noexcept
    {
        Long total = first;
        for (std::size_t n = 0; n < kFrame; n += step)
            total = fx::l_mac(total, speech[a + n], speech[b + n]);
        return total;
    }
    Long correlation(int lag) const noexcept
    {
        return sum(kHighestSearched, kHighestSearched - static_cast<std::size_t>(lag), 0);
    }
    Long energy(int lag, Long first) const noexcept
    {
        const std::size_t at = kHighestSearched - static_cast<std::size_t>(lag);
        return sum(at, at, first);
    }
};

struct Peak {
    int lag;
    Word height; // normalised correlation
};

template <typename Sums>
Word heightOf(const Sums& sums, Long corr, int lag, Long first) noexcept
{
    const Long root = common::invSqrt(sums.energy(lag, first));
    return fx::extract_l(celp::mpy_32(fx::l_extract(corr), fx::l_extract(root)));
}

/// The longest lag first; of equal ones the shortest is taken.
template <typename Sums>
Peak downwards(const Sums& sums, int from, int to) noexcept
{
    Long best = fx::kMin32;
    int lag = from;
    for (int t = from; t >= to; --t)
        if (const Long c = sums.correlation(t); c >= best) {
            best = c;
            lag = t;
        }
    return {lag, heightOf(sums, best, lag, 0)};
}

template <typename Sums>
int searchMain(const Sums& sums) noexcept
{
    Peak best = downwards(sums, 143, 80);
    for (const Peak shorter : {downwards(sums, 79, 40), downwards(sums, 39, 20)})
        if (fx::mult(best.height, 27853) < shorter.height) best = shorter;
    return best.lag;
}

template <typename Sums>
Peak upwards(const Sums& sums, int from, int to, int step) noexcept
{
    Long best = fx::kMin32;
    int lag = from;
    const auto attempt = [&](int t) {
        if (const Long c = sums.correlation(t); c > best) {
            best = c;
            lag = t;
        }
    };
    for (int t = from; t <= to; t += step)
        attempt(t);
    if (step == 2) { // both neighbours of the best even lag
        const int even = lag;
        attempt(even + 1);
        attempt(even - 1);
    }
    return {lag, heightOf(sums, best, lag, 1)};
}

/// Raises the shorter lag's height where the longer one is about twice or three times as long.
void favour(Peak& shorter, const Peak& longer, Word raise) noexcept
{
    const int twice = 2 * shorter.lag - longer.lag;
    if (std::abs(twice) < 5) shorter.height = fx::add(shorter.height, raise);
    if (std::abs(twice + shorter.lag) < 7) shorter.height = fx::add(shorter.height, raise);
}

template <typename Sums>
int searchA(const Sums& sums) noexcept
{
    Peak low = upwards(sums, 20, 39, 1), middle = upwards(sums, 40, 79, 1);
    const Peak high = upwards(sums, 80, 142, 2);
    favour(middle, high, static_cast<Word>(high.height >> 2));
    favour(low, middle, fx::mult(middle.height, 6554));
    if (low.height < middle.height) low = middle;
    if (low.height < high.height) low.lag = high.lag;
    return low.lag;
}

} // namespace

int openLoopLagScalar(OpenLoopSpeech speech) noexcept
{
    return searchMain(Definition(speech, 1));
}

int openLoopLagAScalar(OpenLoopSpeech speech) noexcept
{
    return searchA(Definition(speech, 2));
}

namespace {

/// Eight sums of eight lanes each.
__m256i sumEach(const __m256i* v) noexcept
{
    const __m256i a =
        _mm256_hadd_epi32(_mm256_hadd_epi32(v[0], v[1]), _mm256_hadd_epi32(v[2], v[3]));
    const __m256i b =
        _mm256_hadd_epi32(_mm256_hadd_epi32(v[4], v[5]), _mm256_hadd_epi32(v[6], v[7]));
    return _mm256_add_epi32(_mm256_permute2x128_si256(a, b, 0x20),
                            _mm256_permute2x128_si256(a, b, 0x31));
}

/// Doubled sums of products of `n` words, a multiple of 16, from `x` on with those from each of
/// `count` places on, of which some more are read and written.
template <std::size_t n>
void slide(const Word* x, const Word* from, std::size_t count, Long* sums) noexcept
{
    __m256i v[8];
    for (std::size_t k = 0; k < count; k += 8) {
        for (std::size_t i = 0; i < 8; ++i) {
            v[i] = _mm256_setzero_si256();
            for (std::size_t j = 0; j < n; j += 16)
                v[i] = _mm256_add_epi32(
                    v[i], _mm256_madd_epi16(avx2::load(x + j), avx2::load(from + k + i + j)));
        }
        avx2::store(sums + k, _mm256_slli_epi32(sumEach(v), 1));
    }
}

/// By Cauchy and Schwarz no sum of products of samples, nor a part of that sum, is larger than the
/// energy that both kinds have in common as a bound: all samples, or where every second one is
/// taken, those at even and those at odd places. When that fits 31 bits nothing saturates.
bool isQuiet(const std::array<Word, kOpenLoop>& speech, std::size_t step) noexcept
{
    std::int64_t even = 0, odd = 0;
    for (std::size_t i = 0; i + 1 < speech.size(); i += 2) {
        even += std::int32_t{speech[i]} * speech[i];
        odd += std::int32_t{speech[i + 1]} * speech[i + 1];
    }
    even += std::int32_t{speech.back()} * speech.back();
    return (step == 1 ? even + odd : std::max(even, odd)) < 1 << 30;
}

/// All samples and lags.
struct FastMain {
    alignas(32) std::array<Word, kOpenLoop + 17> speech{};
    alignas(32) std::array<Long, 128> sums; // from lag 143 downwards

    explicit FastMain(const std::array<Word, kOpenLoop>& words) noexcept
    {
        std::ranges::copy(words, speech.begin());
        slide<kFrame>(&speech[kHighestSearched], speech.data(), 124, sums.data());
    }
    Long correlation(int lag) const noexcept
    {
        return sums[kHighestSearched - static_cast<std::size_t>(lag)];
    }
    Long energy(int lag, Long first) const noexcept
    {
        const Word* x = &speech[kHighestSearched - static_cast<std::size_t>(lag)];
        __m256i v = _mm256_setzero_si256();
        for (std::size_t j = 0; j < kFrame; j += 16)
            v = _mm256_add_epi32(v, _mm256_madd_epi16(avx2::load(x + j), avx2::load(x + j)));
        return first + 2 * avx2::sum32(v);
    }
};

/// Every second sample. The samples that even and odd lags meet stand in two rows.
struct FastA {
    static constexpr std::size_t kHalf = kFrame / 2, kRow = 128;
    alignas(32) std::array<Word, 48> now{}; // eight zeros behind it
    alignas(32) std::array<std::array<Word, kRow>, 2> past{};
    alignas(32) std::array<std::array<Long, 64>, 2> sums;

    explicit FastA(const std::array<Word, kOpenLoop>& words) noexcept
    {
        for (std::size_t n = 0; n < kHalf; ++n)
            now[n] = words[kHighestSearched + 2 * n];
        for (std::size_t i = 0; i < kOpenLoop; ++i)
            past[(i + 1) % 2][i / 2] = words[i]; // the lag is even where the place is odd
        slide<48>(now.data(), past[0].data(), 62, sums[0].data()); // 142 to 20
        slide<48>(now.data(), &past[1][32], 30, &sums[1][32]);     // 79 to 21
    }
    static std::size_t row(int lag) noexcept { return static_cast<std::size_t>(lag % 2); }
    static std::size_t at(int lag) noexcept
    {
        return (kHighestSearched - static_cast<std::size_t>(lag)) / 2;
    }
    Long correlation(int lag) const noexcept
    {
        if (lag % 2 == 0 || lag < 80) return sums[row(lag)][at(lag)];
        return 2 * dot(now.data(), &past[1][at(lag)]);
    }
    Long energy(int lag, Long first) const noexcept
    {
        alignas(32) std::array<Word, 48> x{};
        std::copy_n(&past[row(lag)][at(lag)], kHalf, x.begin());
        return first + 2 * dot(x.data(), x.data());
    }
    static Long dot(const Word* x, const Word* y) noexcept
    {
        __m256i v = _mm256_setzero_si256();
        for (std::size_t j = 0; j < 48; j += 16)
            v = _mm256_add_epi32(v, _mm256_madd_epi16(avx2::load(x + j), avx2::load(y + j)));
        return avx2::sum32(v);
    }
};

} // namespace

int openLoopLagAvx2(OpenLoopSpeech speech) noexcept
{
    std::array<Word, kOpenLoop> scaled;
    scale(speech, 1, scaled);
    return isQuiet(scaled, 1) ? searchMain(FastMain(scaled)) : openLoopLagScalar(speech);
}

int openLoopLagAAvx2(OpenLoopSpeech speech) noexcept
{
    std::array<Word, kOpenLoop> scaled;
    scale(speech, 2, scaled);
    return isQuiet(scaled, 2) ? searchA(FastA(scaled)) : openLoopLagAScalar(speech);
}

} // namespace zsp::g729

namespace zsp::entry {

ZspStatus zspsOpenLoopPitchSearch_G729_16s(const std::int16_t* src, std::int16_t* lag)
{
    if (!src || !lag) return zspStsNullPtrErr;

    *lag = static_cast<std::int16_t>(
        g729::openLoopLagAvx2(spanOf<g729::kOpenLoop>(src - g729::kHighestSearched)));
    return zspStsNoErr;
}

ZspStatus zspsOpenLoopPitchSearch_G729A_16s(const std::int16_t* src, std::int16_t* lag)
{
    if (!src || !lag) return zspStsNullPtrErr;

    *lag = static_cast<std::int16_t>(
        g729::openLoopLagAAvx2(spanOf<g729::kOpenLoop>(src - g729::kHighestSearched)));
    return zspStsNoErr;
}

} // namespace zsp::entry
