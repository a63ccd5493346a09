// What the filters of ITU-T G.728 have in common in AVX2: the sums of one vector, its five samples
// side by side in order of time, the oldest in the first lane.
//
// A lane multiplies two neighbouring words by two others. One of the two pairs is the same in all
// lanes, the other moves by a word from lane to lane and comes from eight words by a shuffle.
#pragma once

#include "codecs/g728/g728_lanes.hpp"

namespace zsp::g728 {

/// Bytes of a shuffle that gives lane i the words first + i * step and the one behind it of eight;
/// zeros for words that are none of them, and in the other three lanes.
struct Pairing {
    alignas(32) std::array<Word, 16> bytes;
};
consteval Pairing pairing(int first, int step, bool isSingle = false)
{
    Pairing p{};
    for (int n = 0; n < 16; ++n) {
        const int word = first + n / 2 * step + n % 2;
        const bool isZero =
            n / 2 >= static_cast<int>(kVector) || word < 0 || word > 7 || (isSingle && n % 2 == 1);
        p.bytes[static_cast<std::size_t>(n)] =
            static_cast<Word>(isZero ? -1 : 2 * word | (2 * word + 1) << 8);
    }
    return p;
}

inline __m256i paired(__m128i words, const Pairing& p) noexcept
{
    return _mm256_shuffle_epi8(_mm256_broadcastsi128_si256(words), avx2::load(p.bytes.data()));
}

/// Fifteen words, the newest first, from the second, the fourth, the sixth and the eighth on.
struct Fifteen {
    __m128i at1, at3, at5, at7;
};
inline Fifteen fifteen(In<15> words) noexcept
{
    return {avx2::load8(&words[1]), avx2::load8(&words[3]), avx2::load8(&words[5]),
            avx2::load8(&words[7])};
}
/// Five new words and the ten before them.
inline Fifteen fifteen(In<kVector> fresh, In<kShort> before) noexcept
{
    const __m128i end = _mm_setr_epi16(0, 0, 0, fresh[0], fresh[1], fresh[2], fresh[3], fresh[4]);
    const __m128i start = avx2::load8(before.data());
    return {_mm_alignr_epi8(start, end, 8), _mm_alignr_epi8(start, end, 12), start,
            avx2::load8(&before[2])};
}

/// Adds the sums of ten coefficients and the words before each sample.
inline void addTenTaps(Sums& sums, In<kShort> a, const Fifteen& words) noexcept
{
    static constexpr Pairing kFirst = pairing(4, -1), kLast = pairing(6, -1);
    sums.add(_mm256_madd_epi16(pairAt(a.data()), paired(words.at1, kFirst)));
    sums.add(_mm256_madd_epi16(pairAt(&a[2]), paired(words.at3, kFirst)));
    sums.add(_mm256_madd_epi16(pairAt(&a[4]), paired(words.at5, kFirst)));
    sums.add(_mm256_madd_epi16(pairAt(&a[6]), paired(words.at7, kFirst)));
    sums.add(_mm256_madd_epi16(pairAt(&a[8]), paired(words.at7, kLast)));
}

/// Subtracts what ten results before the vector give through ten coefficients.
inline void subtractFeedback(Sums& sums, In<kShort> a, In<kShort> before) noexcept
{
    static constexpr Pairing k0 = pairing(0, 1), k2 = pairing(2, 1), k4 = pairing(4, 1),
                             k6 = pairing(6, 1);
    const __m128i first = avx2::load8(a.data()), last = avx2::load8(&a[2]);
    sums.subtract(_mm256_madd_epi16(pairAt(before.data()), paired(first, k0)));
    sums.subtract(_mm256_madd_epi16(pairAt(&before[2]), paired(first, k2)));
    sums.subtract(_mm256_madd_epi16(pairAt(&before[4]), paired(last, k2)));
    sums.subtract(_mm256_madd_epi16(pairAt(&before[6]), paired(last, k4)));
    sums.subtract(_mm256_madd_epi16(pairAt(&before[8]), paired(last, k6)));
}

/// Takes from the sums, in Q14, what results within the vector give; these results.
inline std::array<Word, kVector> closeLoop(In<kShort> a, std::span<Wide> sums) noexcept
{
    std::array<Word, kVector> y;
    for (std::size_t i = 0; i < kVector; ++i) {
        for (std::size_t j = i; j-- > 0;)
            sums[i] -= Wide{a[j]} * y[i - 1 - j];
        y[i] = sat16(sums[i] >> 14);
    }
    return y;
}

/// Puts the results, the newest last, before the others.
inline void pushResults(std::span<Word> memory, const std::array<Word, kVector>& y) noexcept
{
    push(memory, std::array<Word, kVector>{y[4], y[3], y[2], y[1], y[0]});
}

} // namespace zsp::g728
