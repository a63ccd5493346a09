// The fast forms of the fixed codebook of ITU-T G.729: eight places of a track side by side.
//
// Whether one set of pulses is better than another is exact: q1 r2 > q2 r1 for squares q and
// positive energies r. That is an order, so of eight sets only those have to be looked at that are
// better than the best before them; without positive energies all are looked at, one after the
// other.

#include "codecs/g729/coder/g729_fixed_avx2.hpp"

#include <algorithm>
#include <array>
#include <bit>

namespace zsp::g729 {

namespace {

/// The best square and energy, and who hears of each that is better.
struct Best {
    Word square, energy;

    /// `squares` and `energies` of eight in lanes of 32 bits, which hold words.
    template <typename Take>
    void look(__m256i squares, __m256i energies, const Take& take) noexcept
    {
        const __m256i zero = _mm256_setzero_si256();
        const __m256i mine = _mm256_mullo_epi32(squares, _mm256_set1_epi32(energy));
        const __m256i yours = _mm256_mullo_epi32(energies, _mm256_set1_epi32(square));
        auto lanes = static_cast<unsigned>(
            _mm256_movemask_ps(_mm256_castsi256_ps(_mm256_cmpgt_epi32(mine, yours))));
        const auto positive = static_cast<unsigned>(
            _mm256_movemask_ps(_mm256_castsi256_ps(_mm256_cmpgt_epi32(energies, zero))));
        if (energy <= 0 || positive != 255) lanes = 255;
        if (lanes == 0) return;
        alignas(32) std::array<std::int32_t, 8> q, r;
        avx2::store(q.data(), squares);
        avx2::store(r.data(), energies);
        for (; lanes != 0; lanes &= lanes - 1) {
            const auto i = static_cast<std::size_t>(std::countr_zero(lanes));
            if (q[i] * energy <= square * r[i]) continue;
            square = static_cast<Word>(q[i]);
            energy = static_cast<Word>(r[i]);
            take(i);
        }
    }
};

/// Squares of eight sums that are not negative.
__m256i squaresOf(__m128i sums) noexcept
{
    return _mm256_cvtepi16_epi32(mult8(sums, sums));
}

__m256i times(__m256i x, int shift) noexcept
{
    return _mm256_slli_epi32(x, shift);
}

FixedCode codeOf(const FastMatrix& m, const std::array<std::size_t, 4>& at,
                 std::size_t lastTrack) noexcept
{
    int signs = 0;
    for (std::size_t k = 0; k < 4; ++k)
        signs |= m.isPositive(k == 3 ? lastTrack : k, at[k]) ? 1 << k : 0;
    return {static_cast<Word>(at[0] + 8 * at[1] + 64 * at[2] + 512 * (2 * at[3] + lastTrack - 3)),
            static_cast<Word>(signs)};
}

} // namespace

FixedCode fixedSearchAvx2(In<kSubframe> correlation, In<kMatrix> matrix, bool isFirst,
                          Word& extra) noexcept
{
    const FastMatrix m(correlation, matrix, Signs::main);
    Word most = 0;
    Long total = 0;
    for (std::size_t track = 0; track < 3; ++track) {
        const Word* d = &m.d[kPlaces * track];
        most = fx::add(most, *std::max_element(d, d + kPlaces));
        for (std::size_t i = 0; i < kPlaces; ++i)
            total += 2 * d[i];
    }
    const Word threshold = fixedThreshold(most, total);
    if (isFirst) extra = 30;
    int time = 75 + extra;
    Best best{0, fx::kMax16};
    std::array<std::size_t, 4> found = {0, 0, 0, 0};
    std::size_t lastTrack = 3;
    const __m256i energies3 = times(m.energies(3), 1), energies4 = times(m.energies(4), 1);
    for (std::size_t i0 = 0; i0 < kPlaces && time > 0; ++i0) {
        for (std::size_t i1 = 0; i1 < kPlaces && time > 0; ++i1) {
            const Word p1 = fx::add(m.d[i0], m.d[kPlaces + i1]);
            alignas(16) std::array<Word, kPlaces> p2;
            avx2::store8(p2.data(), m.reach(p1, 2));
            const __m128i above =
                _mm_cmpgt_epi16(avx2::load8(p2.data()), _mm_set1_epi16(threshold));
            auto lanes =
                static_cast<unsigned>(_mm_movemask_epi8(_mm_packs_epi16(above, above))) & 255;
            if (lanes == 0) continue;
            const Long a1 = 2 * (m.energy(0, i0) + m.energy(1, i1)) + 4 * m.cross(0, i0, 1, i1);
            const __m256i with0 = _mm256_add_epi32(m.crosses(0, i0, 3), m.crosses(1, i1, 3));
            const __m256i with1 = _mm256_add_epi32(m.crosses(0, i0, 4), m.crosses(1, i1, 4));
            for (; lanes != 0 && time > 0; lanes &= lanes - 1) {
                const auto i2 = static_cast<std::size_t>(std::countr_zero(lanes));
                const Long a2 =
                    a1 + 2 * m.energy(2, i2) + 4 * (m.cross(0, i0, 2, i2) + m.cross(1, i1, 2, i2));
                const auto attempt = [&](std::size_t track, __m256i energies, __m256i crosses) {
                    const __m256i all =
                        times(_mm256_add_epi32(crosses, m.crosses(2, i2, track)), 2);
                    const __m256i a3 =
                        _mm256_add_epi32(_mm256_set1_epi32(a2), _mm256_add_epi32(energies, all));
                    best.look(squaresOf(m.reach(p2[i2], track)), _mm256_srai_epi32(a3, 5),
                              [&](std::size_t i3) {
                                  found = {i0, i1, i2, i3};
                                  lastTrack = track;
                              });
                };
                attempt(3, energies3, with0);
                attempt(4, energies4, with1);
                --time;
            }
        }
    }
    extra = static_cast<Word>(time);
    return codeOf(m, found, lastTrack);
}

namespace {

/// Places of a pair of pulses and what they reach.
struct PulsePair {
    std::size_t first, second;
    Word sum;
};

} // namespace

FixedCode fixedSearchAAvx2(In<kSubframe> correlation, In<kMatrix> matrix) noexcept
{
    const FastMatrix m(correlation, matrix, Signs::annexA);
    Best all{-1, 1};
    std::array<std::size_t, 4> found = {0, 0, 0, 0};
    std::size_t lastTrack = 3;
    bool isOdd = false; // a pair for which nothing passed: only the definition knows its pulses

    // Two pulses on `tracks` 0 (two places of it) and 1, then two on 2 and 3.
    const auto search = [&](const std::array<std::size_t, 4>& tracks,
                            const std::array<std::size_t, 4>& order, std::size_t x) {
        Best best{-1, 1};
        PulsePair a{}, b{};
        bool hasFirst = false, hasSecond = false;
        std::size_t skipped = kPlaces;
        const __m256i two = _mm256_set1_epi32(2);
        for (int attempt = 0; attempt < 2; ++attempt) {
            std::size_t at = 0;
            Word most = -1;
            for (std::size_t i = 0; i < kPlaces; ++i)
                if (const Word d = m.d[kPlaces * tracks[0] + i]; i != skipped && d > most) {
                    most = d;
                    at = i;
                }
            skipped = at;
            const __m128i p2 = m.reach(most, tracks[1]);
            const __m256i r = _mm256_srai_epi32(
                _mm256_add_epi32(
                    _mm256_add_epi32(times(m.crosses(tracks[0], at, tracks[1]), 1), two),
                    _mm256_add_epi32(m.energies(tracks[1]),
                                     _mm256_set1_epi32(m.energy(tracks[0], at)))),
                2);
            alignas(16) std::array<Word, kPlaces> sums;
            avx2::store8(sums.data(), p2);
            best.look(squaresOf(p2), r, [&](std::size_t i) {
                a = {at, i, sums[i]};
                hasFirst = true;
            });
        }
        if (!hasFirst) {
            isOdd = true;
            return;
        }
        const __m256i r03 = _mm256_add_epi32(m.crosses(tracks[0], a.first, tracks[3]),
                                             m.crosses(tracks[1], a.second, tracks[3]));
        const __m256i v = _mm256_srai_epi32(
            _mm256_add_epi32(_mm256_add_epi32(times(r03, 1), m.energies(tracks[3])),
                             _mm256_set1_epi32(4)),
            3);
        const __m256i eightV = _mm256_add_epi32(times(v, 3), _mm256_set1_epi32(8));
        const Long a0 = 4 * best.energy;
        best = {-1, 1};
        for (std::size_t i = 0; i < kPlaces; ++i) {
            const Word p1 = fx::add(a.sum, m.d[kPlaces * tracks[2] + i]);
            const Long a1 = a0 +
                            2 * (m.cross(tracks[0], a.first, tracks[2], i) +
                                 m.cross(tracks[1], a.second, tracks[2], i)) +
                            m.energy(tracks[2], i);
            const __m256i r = _mm256_srai_epi32(
                _mm256_add_epi32(
                    _mm256_add_epi32(times(m.crosses(tracks[2], i, tracks[3]), 1), eightV),
                    _mm256_set1_epi32(a1)),
                4);
            best.look(squaresOf(m.reach(p1, tracks[3])), r, [&](std::size_t j) {
                b = {i, j, 0};
                hasSecond = true;
            });
        }
        if (!hasSecond) {
            isOdd = true;
            return;
        }
        if (all.energy * best.square <= all.square * best.energy) return;
        all = best;
        found[order[0]] = a.first;
        found[order[1]] = a.second;
        found[order[2]] = b.first;
        found[order[3]] = b.second;
        lastTrack = x;
    };
    for (const std::size_t x : {std::size_t{3}, std::size_t{4}}) {
        search({2, x, 0, 1}, {2, 3, 0, 1}, x);
        search({x, 0, 1, 2}, {3, 0, 1, 2}, x);
    }
    if (isOdd) return fixedSearchAScalar(correlation, matrix);
    return codeOf(m, found, lastTrack);
}

} // namespace zsp::g729
