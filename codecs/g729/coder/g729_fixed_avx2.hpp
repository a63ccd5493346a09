// The matrix of the fixed codebook of ITU-T G.729 with the signs of the pulses taken in, eight
// words at a time.
#pragma once

#include "codecs/g729/coder/g729_matrix.hpp"
#include "core/avx2.hpp"

#include <algorithm>
#include <array>

namespace zsp::g729 {

inline constexpr std::size_t kEnergies = kTracks * kPlaces;

inline __m128i mult8(__m128i a, __m128i b) noexcept
{
    return _mm_or_si128(_mm_slli_epi16(_mm_mulhi_epi16(a, b), 1),
                        _mm_srli_epi16(_mm_mullo_epi16(a, b), 15));
}

/// SignedMatrix with its words made eight at a time, and the correlation by tracks.
struct FastMatrix {
    alignas(32) std::array<Word, kSubframe> d; // eight for each track
    alignas(32) std::array<Word, kMatrix> words;
    std::array<Word, kSubframe> sign; // likewise

    FastMatrix(In<kSubframe> correlation, In<kMatrix> matrix, Signs rounding) noexcept
    {
        for (std::size_t track = 0; track < kTracks; ++track)
            for (std::size_t i = 0; i < kPlaces; ++i) {
                const Word c = correlation[place(track, i)];
                sign[kPlaces * track + i] = c >= 0 ? Word{0} : Word{-1};
                d[kPlaces * track + i] = c >= 0 ? c : fx::negate(c);
            }
        std::copy_n(matrix.begin(), kEnergies, words.begin());
        const auto all = [](int x) { return _mm_set1_epi16(static_cast<short>(x)); };
        const __m128i bothPlus = all(rounding == Signs::main ? 32766 : 32767);
        std::size_t at = kEnergies;
        for (const auto& [a, b] : kTrackPairs) {
            const __m128i signs = avx2::load8(&sign[kPlaces * b]);
            for (std::size_t i = 0; i < kPlaces; ++i, at += kPlaces) {
                const __m128i m = avx2::load8(&matrix[at]);
                const __m128i own = all(sign[kPlaces * a + i]);
                const __m128i differ = _mm_xor_si128(signs, own);
                const __m128i same = mult8(m, _mm_blendv_epi8(bothPlus, all(32767), own));
                const __m128i opposed = rounding == Signs::main
                                            ? mult8(m, all(-32767))
                                            : _mm_subs_epi16(_mm_setzero_si128(), m);
                avx2::store8(&words[at], _mm_blendv_epi8(same, opposed, differ));
            }
        }
    }

    /// Eight words in lanes of 32 bits.
    static __m256i wide(const Word* x) noexcept { return _mm256_cvtepi16_epi32(avx2::load8(x)); }
    __m256i energies(std::size_t track) const noexcept { return wide(&words[kPlaces * track]); }
    Word energy(std::size_t track, std::size_t i) const noexcept
    {
        return words[kPlaces * track + i];
    }
    const Word* block(std::size_t a, std::size_t b) const noexcept
    {
        return &words[kEnergies + 64 * kPairOf[a][b]];
    }
    Word cross(std::size_t a, std::size_t i, std::size_t b, std::size_t j) const noexcept
    {
        return a < b ? block(a, b)[kPlaces * i + j] : block(a, b)[kPlaces * j + i];
    }
    /// Of place i of track a with all places of track b.
    __m256i crosses(std::size_t a, std::size_t i, std::size_t b) const noexcept
    {
        const Word* m = block(a, b);
        if (a < b) return wide(m + kPlaces * i);
        return _mm256_setr_epi32(m[i], m[8 + i], m[16 + i], m[24 + i], m[32 + i], m[40 + i],
                                 m[48 + i], m[56 + i]);
    }
    /// Saturated sums of what some pulses reach and one more on a track.
    __m128i reach(Word sum, std::size_t track) const noexcept
    {
        return _mm_adds_epi16(_mm_set1_epi16(sum), avx2::load8(&d[kPlaces * track]));
    }
    bool isPositive(std::size_t track, std::size_t i) const noexcept
    {
        return sign[kPlaces * track + i] == 0;
    }
};

} // namespace zsp::g729
