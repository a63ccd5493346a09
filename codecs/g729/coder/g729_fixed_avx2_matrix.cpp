// The fast form of the matrix of the fixed codebook of ITU-T G.729: all distances at once, the
// places of the matrix gathered from the partial sums.

#include "codecs/g729/coder/g729_matrix.hpp"
#include "core/avx2.hpp"

#include <algorithm>
#include <array>

namespace zsp::g729 {

namespace {

/// Where phi of a place of the matrix stands in the table of partial sums, 40 in a row.
constexpr auto kWhere = [] {
    std::array<std::int32_t, kMatrix> where{};
    std::size_t at = 0;
    const auto put = [&](std::size_t i, std::size_t j) {
        const std::size_t high = std::max(i, j), low = std::min(i, j);
        where[at++] = static_cast<std::int32_t>(kSubframe * (kSubframe - 1 - high) + high - low);
    };
    for (std::size_t track = 0; track < kTracks; ++track)
        for (std::size_t i = 0; i < kPlaces; ++i)
            put(place(track, i), place(track, i));
    for (const auto& [a, b] : kTrackPairs)
        for (std::size_t i = 0; i < kPlaces; ++i)
            for (std::size_t j = 0; j < kPlaces; ++j)
                put(place(a, i), place(b, j));
    return where;
}();

} // namespace

void toeplizMatrixAvx2(In<kSubframe> response, Out<kMatrix> matrix) noexcept
{
    alignas(32) std::array<Word, 2 * kSubframe> h{}; // zeros behind it
    std::array<Word, kSubframe> scaled;
    scaleResponse(response, scaled);
    std::int64_t energy = 0;
    for (const Word x : scaled)
        energy += std::int64_t{x} * x;
    // No sum, nor a part of it, is larger than the energy.
    if (energy >= 1 << 30) return toeplizMatrixScalar(response, matrix);
    std::ranges::copy(scaled, h.begin());

    // Row k: sums over h[0..k] h[d..k+d] for d = 0 to 39 - k at least.
    alignas(32) std::array<Long, kSubframe * kSubframe> sums;
    __m256i row[5] = {};
    for (std::size_t k = 0; k < kSubframe; ++k) {
        const __m256i x = _mm256_set1_epi32(h[k] & 0xffff);
        for (std::size_t d = 0; 8 * d < kSubframe - k; ++d) {
            const __m256i y = _mm256_cvtepi16_epi32(avx2::load8(&h[k + 8 * d]));
            row[d] = _mm256_add_epi32(row[d], _mm256_madd_epi16(x, y));
            avx2::store(&sums[kSubframe * k + 8 * d], row[d]);
        }
    }
    const auto eight = [&](std::size_t at) {
        return _mm256_srai_epi32(_mm256_i32gather_epi32(sums.data(), avx2::load(&kWhere[at]), 4),
                                 15);
    };
    std::size_t at = 0;
    for (; at + 16 <= kMatrix; at += 16)
        avx2::store(&matrix[at], avx2::packInOrder(eight(at), eight(at + 8)));
    const __m256i rest = avx2::packInOrder(eight(at), eight(at));
    avx2::store8(&matrix[at], _mm256_castsi256_si128(rest));
    static_assert(kMatrix % 16 == 8);
}

} // namespace zsp::g729
