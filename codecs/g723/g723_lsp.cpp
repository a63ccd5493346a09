// Line spectral pairs of ITU-T G.723.1, clauses 2.5 to 2.7: from and to prediction coefficients,
// predictive quantisation in three bands of 256 vectors.

#include "codecs/g723/g723.hpp"
#include "codecs/g723/tables/g723_lsp_tables.hpp"
#include "core/entries.hpp"

#include <array>

namespace zsp::g723 {

namespace {

struct Band {
    const Word* book;
    std::size_t first, count;
    int shift; // of its index
};

constexpr std::array<Band, 3> kBands = {{
    {kLspBook0.data(), 0, 3, 16},
    {kLspBook1.data(), 3, 3, 8},
    {kLspBook2.data(), 6, 4, 0},
}};

/// P and Q, without their roots at -1 and 1: even and odd elements, the highest power first.
using Polynomials = std::array<Word, 12>;

Polynomials symmetricPolynomials(In<kOrder> lpc_Q13) noexcept
{
    std::array<Word, kOrder> c{};
    for (std::size_t i = 0; i < kOrder; ++i)
        c[i] = fx::mult_r(lpc_Q13[i], kBandwidthExpansion[i]);
    std::array<Long, 12> p{};
    p[0] = p[1] = 1 << 25;
    for (std::size_t i = 0; i < 5; ++i) {
        const Long u = fx::l_deposit_h(c[i]) >> 4, w = fx::l_deposit_h(c[9 - i]) >> 4;
        p[2 * i + 2] = fx::l_sub(fx::l_sub(fx::l_negate(p[2 * i]), u), w);
        p[2 * i + 3] = fx::l_add(fx::l_sub(p[2 * i + 1], u), w);
    }
    p[10] >>= 1; // the middle one counts once, the others twice
    p[11] >>= 1;
    const int shift = fx::norm_l(largest(p));
    Polynomials q{};
    for (std::size_t i = 0; i < q.size(); ++i)
        q[i] = fx::round_fx(fx::l_shl(p[i], shift));
    return q;
}

/// The value of P (which = 0) or Q (1) at a frequency of i/512 turns.
Long valueAt(const Polynomials& q, std::size_t i, std::size_t which) noexcept
{
    Long sum = 0;
    for (std::size_t j = 0; j < 6; ++j)
        sum = fx::l_mac(sum, q[10 - 2 * j + which], kCosine[i * j % 512]);
    return sum;
}

} // namespace

void lpcToLsp(In<kOrder> lpc_Q13, In<kOrder> previous, Out<kOrder> lsp) noexcept
{
    const Polynomials q = symmetricPolynomials(lpc_Q13);
    std::array<Word, kOrder> found{};
    std::size_t count = 0, which = 0;
    Long before = valueAt(q, 0, 0);
    for (std::size_t i = 1; i < 256 && count < kOrder; ++i) {
        Long now = valueAt(q, i, which);
        if ((now < 0) != (before < 0)) {
            const Long sum = fx::l_add(fx::l_abs(now), fx::l_abs(before));
            const int shift = fx::norm_l(sum);
            const Word part = div_l(fx::l_shl(fx::l_abs(before), shift) >> 8,
                                    fx::extract_h(fx::l_shl(sum, shift)));
            found[count++] = fx::add(part, static_cast<Word>((i - 1) << 7));
            which = 1 - which; // the roots of P and Q alternate
            now = valueAt(q, i, which);
        }
        before = now;
    }
    if (count == kOrder)
        std::ranges::copy(found, lsp.begin());
    else
        std::copy_n(previous.begin(), kOrder, lsp.begin());
}

namespace {

/// 32 over the distance to the nearest neighbour, normalised.
std::array<Word, kOrder> lspWeights(In<kOrder> lsp) noexcept
{
    std::array<Word, kOrder> w{};
    for (std::size_t i = 0; i < kOrder; ++i) {
        const Word below = i > 0 ? fx::sub(lsp[i], lsp[i - 1]) : fx::kMax16;
        const Word above = i < kOrder - 1 ? fx::sub(lsp[i + 1], lsp[i]) : fx::kMax16;
        const Word distance = std::min(below, above);
        w[i] = distance > 32 ? fx::div_s(32, distance) : fx::kMax16;
    }
    const int shift = fx::norm_s(largest(w));
    for (Word& x : w)
        x = fx::shl(x, shift);
    return w;
}

} // namespace

Long lspQuant(In<kOrder> lsp, In<kOrder> previous) noexcept
{
    const std::array<Word, kOrder> weights = lspWeights(lsp);
    std::array<Word, kOrder> residual{};
    for (std::size_t i = 0; i < kOrder; ++i)
        residual[i] = fx::sub(fx::sub(lsp[i], kLspMean[i]),
                              fx::mult_r(fx::sub(previous[i], kLspMean[i]), 12288));
    Long index = 0;
    for (const Band& band : kBands) {
        Long best = -1, chosen = 0;
        for (Long v = 0; v < 256; ++v) {
            const Word* vector = band.book + static_cast<std::size_t>(v) * band.count;
            std::array<Word, 4> weighted{};
            Long sum = 0;
            for (std::size_t j = 0; j < band.count; ++j) {
                weighted[j] = fx::mult_r(weights[band.first + j], vector[j]);
                sum = fx::l_mac(sum, residual[band.first + j], weighted[j]);
            }
            sum = fx::l_shl(sum, 1);
            for (std::size_t j = 0; j < band.count; ++j)
                sum = fx::l_msu(sum, vector[j], weighted[j]);
            if (sum > best) {
                best = sum;
                chosen = v;
            }
        }
        index |= chosen << band.shift;
    }
    return index;
}

namespace {

/// Moves neighbours apart that are nearer than `distance`, ten rounds at most; false when that was
/// not enough.
bool separate(Out<kOrder> lsp, Word distance) noexcept
{
    for (int round = 0; round < 10; ++round) {
        lsp[0] = std::max<Word>(lsp[0], 0x180);
        lsp[9] = std::min<Word>(lsp[9], 0x7e00);
        for (std::size_t j = 1; j < kOrder; ++j) {
            const Word lack = fx::sub(fx::add(distance, lsp[j - 1]), lsp[j]);
            if (lack <= 0) continue;
            const auto half = static_cast<Word>(lack >> 1);
            lsp[j - 1] = fx::sub(lsp[j - 1], half);
            lsp[j] = fx::add(lsp[j], half);
        }
        bool apart = true;
        for (std::size_t j = 1; j < kOrder; ++j)
            apart = apart && fx::sub(fx::sub(fx::add(lsp[j - 1], distance), 4), lsp[j]) <= 0;
        if (apart) return true;
    }
    return false;
}

} // namespace

void lspDequant(Long index, bool erased, In<kOrder> previous, Out<kOrder> lsp) noexcept
{
    std::array<Word, kOrder> last{};
    std::ranges::copy(previous, last.begin());
    const Long used = erased ? 0 : index;
    for (const Band& band : kBands) {
        const Word* vector =
            band.book + static_cast<std::size_t>(used >> band.shift & 255) * band.count;
        std::copy_n(vector, band.count, lsp.begin() + static_cast<std::ptrdiff_t>(band.first));
    }
    const Word prediction = erased ? 23552 : 12288; // Q15
    for (std::size_t j = 0; j < kOrder; ++j) {
        const Word predicted = fx::mult_r(fx::sub(last[j], kLspMean[j]), prediction);
        lsp[j] = fx::add(fx::add(lsp[j], predicted), kLspMean[j]);
    }
    if (!separate(lsp, erased ? 512 : 256)) std::ranges::copy(last, lsp.begin());
}

namespace {

/// The coefficients of P or Q from their five roots, given as cosines: `x[0], x[2], ..`. Q28 at the
/// start, halved with each further root.
std::array<Long, 6> expand(const Word* x) noexcept
{
    std::array<Long, 6> p{};
    p[0] = 1 << 28;
    p[1] = fx::l_mac(fx::l_mult(x[0], 8192), x[2], 8192);
    p[2] = fx::l_add(fx::l_mult(x[0], x[2]) >> 1, 1 << 29);
    for (std::size_t i = 2; i < 5; ++i) {
        const Word y = x[2 * i];
        p[i + 1] = fx::l_add(mls(p[i], y), p[i - 1]);
        for (std::size_t j = i; j >= 2; --j)
            p[j] = fx::l_add(fx::l_add(mls(p[j - 1], y), p[j] >> 1), p[j - 2] >> 1);
        p[0] >>= 1;
        p[1] = fx::l_add(fx::l_deposit_h(y) >> i, p[1]) >> 1;
    }
    return p;
}

void lspToLpc(const std::array<Word, kOrder>& lsp, Word* lpc_Q13) noexcept
{
    std::array<Word, kOrder> cosines{};
    for (std::size_t i = 0; i < kOrder; ++i) {
        // A frequency below 0, as only wild data gives, would be looked up in front of the table.
        const auto n = static_cast<std::size_t>(lsp[i] >> 7 & 511);
        const Word slope = fx::sub(kCosine[n + 1], kCosine[n]);
        const Long value = fx::l_mac(fx::l_deposit_h(kCosine[n]), slope,
                                     static_cast<Word>(((lsp[i] & 127) << 8) + 128));
        cosines[i] = fx::negate(fx::round_fx(fx::l_shl(value, 1)));
    }
    const std::array<Long, 6> p = expand(cosines.data()), q = expand(cosines.data() + 1);
    for (std::size_t i = 0; i < 5; ++i) {
        const Long sum = fx::l_add(p[i], p[i + 1]);
        const Long even = fx::l_add(fx::l_sub(sum, q[i]), q[i + 1]);
        const Long odd = fx::l_sub(fx::l_add(sum, q[i]), q[i + 1]);
        lpc_Q13[i] = fx::negate(fx::round_fx(fx::l_shl(even, 3)));
        lpc_Q13[9 - i] = fx::negate(fx::round_fx(fx::l_shl(odd, 3)));
    }
}

} // namespace

void interpolateToLpc(In<kOrder> previous, In<kOrder> lsp, Out<40> lpc_Q13) noexcept
{
    for (std::size_t i = 0; i < 4; ++i) {
        const auto part = static_cast<Word>(-8192 * static_cast<int>(i + 1)); // Q15, negative
        std::array<Word, kOrder> between{};
        for (std::size_t j = 0; j < kOrder; ++j) {
            const Long rest = fx::l_mac(fx::l_deposit_h(previous[j]), part, previous[j]);
            between[j] = fx::round_fx(fx::l_msu(rest, part, lsp[j]));
        }
        lspToLpc(between, &lpc_Q13[kOrder * i]);
    }
}

} // namespace zsp::g723

namespace zsp::entry {

ZspStatus zspsLPCToLSP_G723_16s(const std::int16_t* lpc, const std::int16_t* previous,
                                std::int16_t* lsp)
{
    if (!lpc || !previous || !lsp) return zspStsNullPtrErr;

    g723::lpcToLsp(spanOf<10>(lpc), spanOf<10>(previous), spanOf<10>(lsp));
    return zspStsNoErr;
}

ZspStatus zspsLSPQuant_G723_16s32s(const std::int16_t* lsp, const std::int16_t* previous,
                                   std::int32_t* index)
{
    if (!lsp || !previous || !index) return zspStsNullPtrErr;

    *index = g723::lspQuant(spanOf<10>(lsp), spanOf<10>(previous));
    return zspStsNoErr;
}

ZspStatus zspsLSPDequant_G723_16s(std::int32_t index, std::int32_t erased,
                                  const std::int16_t* previous, std::int16_t* lsp)
{
    if (!previous || !lsp) return zspStsNullPtrErr;
    if (index < 0 || index > 0xffffff || erased < 0 || erased > 1) return zspStsCodecRangeErr;

    g723::lspDequant(index, erased != 0, spanOf<10>(previous), spanOf<10>(lsp));
    return zspStsNoErr;
}

ZspStatus zspsLSPInterpolateToLPC_G723_16s(const std::int16_t* previous, const std::int16_t* lsp,
                                           std::int16_t* lpc)
{
    if (!previous || !lsp || !lpc) return zspStsNullPtrErr;

    g723::interpolateToLpc(spanOf<10>(previous), spanOf<10>(lsp), spanOf<40>(lpc));
    return zspStsNoErr;
}

} // namespace zsp::entry
