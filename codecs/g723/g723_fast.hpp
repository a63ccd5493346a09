// What the fast forms of G.723.1 share: sums of products without the saturation of each step, and
// what tells that no step would have saturated.
//
// By Cauchy and Schwarz no partial sum of x[i] y[i] is larger than the root of the product of both
// energies. So where that product is below 2^60 twice the sum stays in 32 bits on the whole way.
#pragma once

#include "codecs/g723/g723_arithmetic.hpp"
#include "core/avx2.hpp"

#include <array>
#include <cstdlib>

namespace zsp::g723 {

/// Whether partial sums of products of vectors with these energies stay below 2^30.
constexpr bool staysSmall(std::int64_t energyX, std::int64_t energyY) noexcept
{
    return ((energyX >> 8) + 1) <= (std::int64_t{1} << 44) / ((energyY >> 8) + 1);
}

/// Energies are below 2^38: 60 to 180 words.
static_assert(staysSmall((1 << 30) - 256, (1 << 30) - 256) && !staysSmall(1LL << 30, 1LL << 30));

/// Sixteen products, summed in pairs; of `n` words, from any address, none behind the last.
template <std::size_t n>
__m256i pairSums(const Word* x, const Word* y) noexcept
{
    static_assert(n % 4 == 0);
    __m256i sum = _mm256_setzero_si256();
    std::size_t i = 0;
    for (; i + 16 <= n; i += 16)
        sum = _mm256_add_epi32(sum, _mm256_madd_epi16(avx2::load(x + i), avx2::load(y + i)));
    if constexpr (n % 16 >= 8)
        sum =
            _mm256_add_epi32(sum, _mm256_zextsi128_si256(_mm_madd_epi16(
                                      avx2::load8(x + n / 16 * 16), avx2::load8(y + n / 16 * 16))));
    if constexpr (n % 8 == 4) {
        const auto four = [](const Word* p) {
            return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p));
        };
        sum = _mm256_add_epi32(
            sum, _mm256_zextsi128_si256(_mm_madd_epi16(four(x + n - 4), four(y + n - 4))));
    }
    return sum;
}

/// sum of x[i] y[i], not doubled, wrapping.
template <std::size_t n>
Long plainDot(const Word* x, const Word* y) noexcept
{
    return avx2::sum32(pairSums<n>(x, y));
}

/// The exact energy.
template <std::size_t n>
std::int64_t exactEnergy(const Word* x) noexcept
{
    std::int64_t total = 0;
    __m256i sum = _mm256_setzero_si256();
    const auto take = [&sum](__m256i squares) { // pairs of squares: up to 2^31, unsigned
        const __m256i upper = _mm256_srli_epi64(squares, 32);
        const __m256i lower = _mm256_and_si256(squares, _mm256_set1_epi64x(0xffffffff));
        sum = _mm256_add_epi64(sum, _mm256_add_epi64(upper, lower));
    };
    std::size_t i = 0;
    for (; i + 16 <= n; i += 16) {
        const __m256i v = avx2::load(x + i);
        take(_mm256_madd_epi16(v, v));
    }
    for (; i < n; ++i)
        total += std::int64_t{x[i]} * x[i];
    return total + avx2::sum64(sum);
}

/// Eight sums of eight lanes each.
inline __m256i sumEach(const __m256i* v) noexcept
{
    const __m256i a =
        _mm256_hadd_epi32(_mm256_hadd_epi32(v[0], v[1]), _mm256_hadd_epi32(v[2], v[3]));
    const __m256i b =
        _mm256_hadd_epi32(_mm256_hadd_epi32(v[4], v[5]), _mm256_hadd_epi32(v[6], v[7]));
    return _mm256_add_epi32(_mm256_permute2x128_si256(a, b, 0x20),
                            _mm256_permute2x128_si256(a, b, 0x31));
}

inline constexpr std::size_t kPaddedSubframe = 64;

/// A sub-frame with four zeros behind it.
struct alignas(32) Padded {
    Word words[kPaddedSubframe];

    explicit Padded(In<kSubframe> x) noexcept
    {
        std::ranges::copy(x, words);
        std::fill(words + kSubframe, words + kPaddedSubframe, Word{0});
    }
};

/// A sub-frame with 68 zeros behind it, for sums over what is left of it.
struct alignas(32) Trailed {
    Word words[2 * kPaddedSubframe];

    template <typename Range>
    explicit Trailed(const Range& x) noexcept
    {
        std::copy(x.begin(), x.end(), words);
        std::fill(words + kSubframe, words + 2 * kPaddedSubframe, Word{0});
    }
};

/// sums[k] = sum over j of x[j] y[j + k], for k = 0 to 63, not doubled, wrapping.
inline void slide(const Padded& x, const Trailed& y, Long* sums) noexcept
{
    const __m256i x0 = avx2::load(x.words), x1 = avx2::load(x.words + 16);
    const __m256i x2 = avx2::load(x.words + 32), x3 = avx2::load(x.words + 48);
    for (std::size_t k = 0; k < kPaddedSubframe; k += 8) {
        __m256i v[8];
        for (std::size_t i = 0; i < 8; ++i) {
            const Word* p = y.words + k + i;
            v[i] = _mm256_add_epi32(_mm256_add_epi32(_mm256_madd_epi16(x0, avx2::load(p)),
                                                     _mm256_madd_epi16(x1, avx2::load(p + 16))),
                                    _mm256_add_epi32(_mm256_madd_epi16(x2, avx2::load(p + 32)),
                                                     _mm256_madd_epi16(x3, avx2::load(p + 48))));
        }
        avx2::store(sums + k, sumEach(v));
    }
}

/// A signal of a filter over a sub-frame, the last ten words before it in front.
struct Signal {
    std::array<std::int32_t, kOrder + kSubframe> words;

    /// From and to memories that have the newest word first.
    void begin(const Word* memory) noexcept
    {
        for (std::size_t i = 0; i < kOrder; ++i)
            words[kOrder - 1 - i] = memory[i];
    }
    void end(Word* memory) const noexcept
    {
        for (std::size_t i = 0; i < kOrder; ++i)
            memory[i] = static_cast<Word>(words[words.size() - 1 - i]);
    }
    std::int32_t& operator[](std::size_t i) noexcept { return words[kOrder + i]; }

    std::int32_t largest() const noexcept
    {
        std::int32_t most = 0;
        for (const std::int32_t x : words)
            most = std::max(most, std::abs(x));
        return most;
    }
};

/// Ten coefficients. Sums with them wrap; their reach tells whether they have.
struct Taps {
    std::array<std::uint32_t, kOrder> words;
    std::int64_t sum = 0; // of the magnitudes

    explicit Taps(In<kOrder> a) noexcept
    {
        for (std::size_t j = 0; j < kOrder; ++j) {
            words[j] = static_cast<std::uint32_t>(a[j]);
            sum += std::abs(int{a[j]});
        }
    }
    /// Twice the sum of a[j] x[i - 1 - j]
    std::uint32_t over(const Signal& x, std::size_t i) const noexcept
    {
        const std::int32_t* past = &x.words[i];
        std::uint32_t older = 0;
        for (std::size_t j = 1; j < kOrder; ++j)
            older += words[j] * static_cast<std::uint32_t>(past[kOrder - 1 - j]);
        return 2 * (older + words[0] * static_cast<std::uint32_t>(past[kOrder - 1]));
    }
    /// The largest that the doubled sum can be, also on its way.
    std::int64_t reach(const Signal& x) const noexcept { return 2 * sum * x.largest(); }
};

/// sums[i] plus or minus what the taps make of a signal that is known already.
template <int sign>
void addTaps(std::array<std::uint32_t, kSubframe>& sums, const Taps& taps, const Signal& x) noexcept
{
    for (std::size_t j = 0; j < kOrder; ++j) {
        const std::uint32_t twice = 2 * static_cast<std::uint32_t>(sign) * taps.words[j];
        for (std::size_t i = 0; i < kSubframe; ++i)
            sums[i] += twice * static_cast<std::uint32_t>(x.words[i + kOrder - 1 - j]);
    }
}

/// The largest sum that can be rounded without leaving 32 bits.
inline constexpr std::int64_t kReach = fx::kMax32 - 0x8000;

/// A filter's sum to its output: four times it, rounded to a word.
constexpr std::int32_t outputOf(std::uint32_t sum) noexcept
{
    return std::clamp(static_cast<std::int32_t>(sum + 0x2000) >> 14, -32768, 32767);
}

/// A filter with zeros and poles over a sub-frame.
struct ZerosAndPoles {
    Signal x, y;
    std::array<std::uint32_t, kSubframe> sums; // Q14 of what comes out

    /// False where a step could saturate. `memory` holds ten inputs and ten outputs.
    bool run(In<kOrder> zeros, In<kOrder> poles, In<kSubframe> src, const Word* memory) noexcept
    {
        const Taps against(zeros), back(poles);
        x.begin(memory);
        y.begin(memory + kOrder);
        for (std::size_t i = 0; i < kSubframe; ++i)
            x[i] = src[i];
        for (std::size_t i = 0; i < kSubframe; ++i)
            sums[i] = static_cast<std::uint32_t>(src[i] * 16384);
        addTaps<-1>(sums, against, x);
        for (std::size_t i = 0; i < kSubframe; ++i) {
            sums[i] += back.over(y, i);
            y[i] = outputOf(sums[i]);
        }
        return (1 << 29) + against.reach(x) + back.reach(y) <= kReach;
    }
    void keep(Word* memory) const noexcept
    {
        x.end(memory);
        y.end(memory + kOrder);
    }
};

} // namespace zsp::g723
