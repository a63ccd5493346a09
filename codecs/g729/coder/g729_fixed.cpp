// The fixed codebook of ITU-T G.729, clauses 3.8 and A.3.8: four pulses on tracks of eight places,
// of which the last has two. Matrix of the response's correlations, and the searches by definition.

#include "codecs/g729/coder/g729_matrix.hpp"
#include "core/entries.hpp"

#include <algorithm>
#include <array>

namespace zsp::g729 {

void toeplizMatrixScalar(In<kSubframe> response, Out<kMatrix> matrix) noexcept
{
    std::array<Word, kSubframe> h;
    scaleResponse(response, h);
    const auto sum = [&h](std::size_t i, std::size_t j) {
        const std::size_t low = std::min(i, j), high = std::max(i, j);
        return fx::extract_h(celp::dot(std::span(h).first(kSubframe - high), &h[high - low]));
    };
    Word* dst = matrix.data();
    for (std::size_t track = 0; track < kTracks; ++track)
        for (std::size_t i = 0; i < kPlaces; ++i)
            *dst++ = sum(place(track, i), place(track, i));
    for (const auto& [a, b] : kTrackPairs)
        for (std::size_t i = 0; i < kPlaces; ++i)
            for (std::size_t j = 0; j < kPlaces; ++j)
                *dst++ = sum(place(a, i), place(b, j));
}

namespace {

struct Found {
    std::array<std::size_t, 4> pulses = {0, 1, 2, 3};
    Word square, energy;

    bool better(Word q, Word r) const noexcept
    {
        return fx::l_msu(fx::l_mult(q, energy), square, r) > 0;
    }
};

} // namespace

Word fixedThreshold(Word most, Long total) noexcept
{
    const Word mean = fx::extract_l(total >> 4);
    return fx::add(fx::mult(fx::sub(most, mean), 13107), mean);
}

// Four nested loops: the last only where what three pulses reach promises enough, and only so many
// times.
FixedCode fixedSearchScalar(In<kSubframe> correlation, In<kMatrix> matrix, bool isFirst,
                            Word& extra) noexcept
{
    const SignedMatrix m(correlation, matrix, Signs::main);
    Word most = 0;
    Long total = 0;
    for (std::size_t track = 0; track < 3; ++track) {
        Word largest = 0;
        for (std::size_t i = 0; i < kPlaces; ++i) {
            largest = std::max(largest, m.d[place(track, i)]);
            total = fx::l_mac(total, m.d[place(track, i)], 1);
        }
        most = fx::add(most, largest);
    }
    const Word threshold = fixedThreshold(most, total);
    if (isFirst) extra = 30;
    int time = 75 + extra;
    Found best{.square = 0, .energy = fx::kMax16};
    for (std::size_t i0 = 0; i0 < 40 && time > 0; i0 += 5) {
        for (std::size_t i1 = 1; i1 < 40 && time > 0; i1 += 5) {
            const Word p1 = fx::add(m.d[i0], m.d[i1]);
            Long a1 = fx::l_mac(fx::l_mult(m.energy(i0), 1), m.energy(i1), 1);
            a1 = fx::l_mac(a1, m.cross(i0, i1), 2);
            for (std::size_t i2 = 2; i2 < 40 && time > 0; i2 += 5) {
                const Word p2 = fx::add(p1, m.d[i2]);
                if (p2 <= threshold) continue;
                Long a2 = fx::l_mac(a1, m.energy(i2), 1);
                a2 = fx::l_mac(fx::l_mac(a2, m.cross(i0, i2), 2), m.cross(i1, i2), 2);
                for (const std::size_t track : {std::size_t{3}, std::size_t{4}}) {
                    for (std::size_t i3 = track; i3 < 40; i3 += 5) {
                        const Word p3 = fx::add(p2, m.d[i3]);
                        Long a3 = fx::l_mac(a2, m.energy(i3), 1);
                        a3 = fx::l_mac(fx::l_mac(a3, m.cross(i0, i3), 2), m.cross(i1, i3), 2);
                        a3 = fx::l_mac(a3, m.cross(i2, i3), 2);
                        const Word r = fx::extract_l(a3 >> 5);
                        const Word q = fx::mult(p3, p3);
                        if (!best.better(q, r)) continue;
                        best = {{i0, i1, i2, i3}, q, r};
                    }
                }
                --time;
            }
        }
    }
    extra = static_cast<Word>(time);
    return m.codeOf(best.pulses);
}

namespace {

/// The pulses that a search has found, which stay where nothing passes, and what they reach.
struct Pair {
    std::size_t first, second;
    Word sum;
};

/// Annex A: two pulses on tracks `first` (two places of it) and `second`, then two on the others.
void searchDepthFirst(const SignedMatrix& m, std::array<std::size_t, 4> tracks,
                      std::array<std::size_t, 4> order, Found& best, Pair& pair) noexcept
{
    Word square = -1, energy = 1;
    std::size_t skipped = kSubframe;
    for (int attempt = 0; attempt < 2; ++attempt) {
        std::size_t at = kSubframe;
        Word most = -1;
        for (std::size_t i = tracks[0]; i < kSubframe; i += 5)
            if (i != skipped && m.d[i] > most) {
                most = m.d[i];
                at = i;
            }
        skipped = at;
        const Word p1 = m.d[at];
        const Long a1 = fx::l_mult(m.energy(at), 8192);
        for (std::size_t i = tracks[1]; i < kSubframe; i += 5) {
            const Word p2 = fx::add(p1, m.d[i]);
            const Long a2 = fx::l_mac(fx::l_mac(a1, m.cross(at, i), 16384), m.energy(i), 8192);
            const Word q = fx::mult(p2, p2), r = fx::round_fx(a2);
            if (fx::l_msu(fx::l_mult(energy, q), square, r) <= 0) continue;
            square = q;
            energy = r;
            pair = {at, i, p2};
        }
    }

    const auto [i0, i1, p0] = pair;
    const Long a0 = fx::l_mult(energy, 8192);
    square = -1;
    energy = 1;
    std::array<Word, kSubframe> v;
    for (std::size_t i3 = tracks[3]; i3 < kSubframe; i3 += 5)
        v[i3] = fx::round_fx(
            fx::l_mac(fx::l_mac(fx::l_mult(m.cross(i0, i3), 8192), m.cross(i1, i3), 8192),
                      m.energy(i3), 4096));
    for (std::size_t i = tracks[2]; i < kSubframe; i += 5) {
        const Word p1 = fx::add(p0, m.d[i]);
        Long a1 = fx::l_mac(fx::l_mac(a0, m.cross(i0, i), 4096), m.cross(i1, i), 4096);
        a1 = fx::l_mac(a1, m.energy(i), 2048);
        for (std::size_t j = tracks[3]; j < kSubframe; j += 5) {
            const Word p2 = fx::add(p1, m.d[j]);
            const Long a2 = fx::l_mac(fx::l_mac(a1, m.cross(i, j), 4096), v[j], 16384);
            const Word q = fx::mult(p2, p2), r = fx::round_fx(a2);
            if (fx::l_msu(fx::l_mult(energy, q), square, r) <= 0) continue;
            square = q;
            energy = r;
            pair.first = i;
            pair.second = j;
        }
    }
    if (fx::l_msu(fx::l_mult(best.energy, square), best.square, energy) <= 0) return;
    best.square = square;
    best.energy = energy;
    const std::array<std::size_t, 4> found = {i0, i1, pair.first, pair.second};
    for (std::size_t k = 0; k < 4; ++k)
        best.pulses[order[k]] = found[k];
}

} // namespace

FixedCode fixedSearchAScalar(In<kSubframe> correlation, In<kMatrix> matrix) noexcept
{
    const SignedMatrix m(correlation, matrix, Signs::annexA);
    Found best{.square = -1, .energy = 1};
    Pair pair{};
    for (const std::size_t x : {std::size_t{3}, std::size_t{4}}) {
        searchDepthFirst(m, {2, x, 0, 1}, {2, 3, 0, 1}, best, pair);
        searchDepthFirst(m, {x, 0, 1, 2}, {3, 0, 1, 2}, best, pair);
    }
    return m.codeOf(best.pulses);
}

void filterPulses(const FixedCode& code, In<kSubframe> response, Out<kSubframe> dst) noexcept
{
    std::ranges::fill(dst, Word{0});
    for (const auto& [at, positive] : pulsesOf(code.positions, code.signs)) {
        const auto tail = dst.subspan(at);
        const std::int32_t sign = positive ? 1 : -1;
        for (std::size_t n = 0; n < tail.size(); ++n)
            tail[n] = static_cast<Word>(std::clamp(tail[n] + sign * response[n], -32768, 32767));
    }
}

} // namespace zsp::g729

namespace zsp::entry {

ZspStatus zspsToeplizMatrix_G729_16s(const std::int16_t* response, std::int16_t* dst)
{
    if (!response || !dst) return zspStsNullPtrErr;

    g729::toeplizMatrixAvx2(spanOf<g729::kSubframe>(response), spanOf<g729::kMatrix>(dst));
    return zspStsNoErr;
}

ZspStatus zspsFixedCodebookSearch_G729_16s(const std::int16_t* corr, const std::int16_t* matrix,
                                           const std::int16_t* response, std::int32_t subframe,
                                           std::int16_t* extra, std::int16_t* positions,
                                           std::int16_t* signs, std::int16_t* filtered)
{
    if (!corr || !matrix || !response || !extra || !positions || !signs || !filtered)
        return zspStsNullPtrErr;
    if (subframe != 0 && subframe != 1) return zspStsCodecRangeErr;
    if (subframe == 1 && (*extra < 0 || *extra > 105)) return zspStsRangeErr;

    const g729::FixedCode code = g729::fixedSearchAvx2(
        spanOf<g729::kSubframe>(corr), spanOf<g729::kMatrix>(matrix), subframe == 0, *extra);
    *positions = code.positions;
    *signs = code.signs;
    g729::filterPulses(code, spanOf<g729::kSubframe>(response), spanOf<g729::kSubframe>(filtered));
    return zspStsNoErr;
}

ZspStatus zspsFixedCodebookSearch_G729A_16s(const std::int16_t* corr, const std::int16_t* matrix,
                                            const std::int16_t* response, std::int16_t* positions,
                                            std::int16_t* signs, std::int16_t* filtered)
{
    if (!corr || !matrix || !response || !positions || !signs || !filtered) return zspStsNullPtrErr;

    const g729::FixedCode code =
        g729::fixedSearchAAvx2(spanOf<g729::kSubframe>(corr), spanOf<g729::kMatrix>(matrix));
    *positions = code.positions;
    *signs = code.signs;
    g729::filterPulses(code, spanOf<g729::kSubframe>(response), spanOf<g729::kSubframe>(filtered));
    return zspStsNoErr;
}

} // namespace zsp::entry
