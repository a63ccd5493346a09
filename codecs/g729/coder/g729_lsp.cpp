// Line spectral pairs of ITU-T G.729: from a filter by its two polynomials' roots on the unit
// circle (clauses 3.2.3 and A.3.2.3), back to a filter (clause 3.2.6) and from frequencies.

#include "codecs/g729/coder/g729_coder.hpp"
#include "codecs/g729/g729_tables.hpp"
#include "codecs/g729/tables/g729_lp_tables.hpp"
#include "core/entries.hpp"

#include <algorithm>
#include <array>

namespace zsp::g729 {

namespace {

using fx::l_extract;
using fx::SplitLong;

/// Sum and difference polynomials without their known roots, Q11 or Q10, and how to evaluate them.
struct Polynomials {
    std::array<std::array<Word, 6>, 2> f;
    Word one;  // in their format
    int shift; // of a value's last step
};

/// False when a coefficient saturates.
bool makePolynomials(In<kTaps> a, Word one, Polynomials& p) noexcept
{
    const auto half = static_cast<Word>(one * 8);
    bool fits = true;
    const auto take = [&fits](std::int32_t x) {
        fits = fits && x == fx::sat16(x);
        return fx::sat16(x);
    };
    p.one = one;
    p.shift = one == 2048 ? 6 : 7;
    auto& [sum, difference] = p.f;
    sum[0] = difference[0] = one;
    for (std::size_t i = 0; i < 5; ++i) {
        const Long own = fx::l_mult(a[i + 1], half);
        sum[i + 1] = take(fx::extract_h(fx::l_mac(own, a[10 - i], half)) - sum[i]);
        difference[i + 1] = take(fx::extract_h(fx::l_msu(own, a[10 - i], half)) + difference[i]);
    }
    return fits;
}

/// Chebps: a series of Chebyshev polynomials at x, Q14.
Word valueAt(Word x, const std::array<Word, 6>& f, const Polynomials& p) noexcept
{
    SplitLong b2 = {static_cast<Word>(p.one / 8), 0};
    SplitLong b1 = l_extract(fx::l_mac(fx::l_mult(x, static_cast<Word>(p.one / 4)), f[1], 4096));
    const auto less = [](Long t, SplitLong b) {
        return fx::l_msu(fx::l_mac(t, b.hi, fx::kMin16), b.lo, 1);
    };
    for (std::size_t i = 2; i < 5; ++i) {
        const Long t = less(fx::l_shl(fx::mpy_32_16(b1, x), 1), b2);
        b2 = b1;
        b1 = l_extract(fx::l_mac(t, f[i], 4096));
    }
    const Long t = fx::l_mac(less(fx::mpy_32_16(b1, x), b2), f[5], 2048);
    return fx::extract_h(fx::l_shl(t, p.shift));
}

/// valueAt() with products of 31 bits in one piece. Where a sum leaves 31 bits, which nothing but
/// strange filters makes it do, the definition decides.
inline Word fastValueAt(Word x, const std::array<Word, 6>& f, const Polynomials& p) noexcept
{
    std::uint64_t wide = 0;
    const auto looked = [&wide](std::int64_t v) {
        wide |= static_cast<std::uint64_t>(v + (1 << 30)) >> 31;
        return v;
    };
    const auto times = [x](std::int64_t b) { return ((b >> 1) * x) >> 15; };
    std::int64_t b2 = p.one / 8 * 65536;
    std::int64_t b1 = looked(std::int64_t{x} * (p.one / 2) + f[1] * 8192);
    for (std::size_t i = 2; i < 5; ++i) {
        const std::int64_t t = looked(looked(4 * times(b1)) - (b2 & ~1) + f[i] * 8192);
        b2 = b1;
        b1 = t;
    }
    const std::int64_t t = looked(2 * times(b1) - (b2 & ~1) + f[5] * 4096);
    if (wide != 0) return valueAt(x, f, p);
    return fx::extract_h(fx::sat32(t * (std::int64_t{1} << p.shift)));
}

bool opposed(Word a, Word b) noexcept
{
    return fx::l_mult(a, b) <= 0;
}

using Value = Word (*)(Word, const std::array<Word, 6>&, const Polynomials&) noexcept;

template <Value value>
bool findRoots(In<kTaps> lpc_Q12, std::span<const Word> grid, int halvings, In<kOrder> previous,
               Out<kOrder> lsp_Q15) noexcept
{
    Polynomials p;
    if (!makePolynomials(lpc_Q12, 2048, p)) makePolynomials(lpc_Q12, 1024, p);
    std::array<Word, kOrder> roots;
    std::size_t found = 0;
    Word xLow = grid[0];
    Word yLow = value(xLow, p.f[0], p);
    for (std::size_t j = 1; j < grid.size() && found < kOrder; ++j) {
        Word xHigh = xLow, yHigh = yLow;
        const auto* f = &p.f[found % 2];
        xLow = grid[j];
        yLow = value(xLow, *f, p);
        if (!opposed(yLow, yHigh)) continue;

        for (int i = 0; i < halvings; ++i) {
            const Word xMid = fx::add(static_cast<Word>(xLow >> 1), static_cast<Word>(xHigh >> 1));
            const Word yMid = value(xMid, *f, p);
            if (opposed(yLow, yMid)) {
                yHigh = yMid;
                xHigh = xMid;
            } else {
                yLow = yMid;
                xLow = xMid;
            }
        }
        const Word width = fx::sub(xHigh, xLow);
        const Word rise = fx::sub(yHigh, yLow);
        Word root = xLow;
        if (rise != 0) {
            const Word size = fx::abs_s(rise);
            const int e = fx::norm_s(size);
            const Word inverse = fx::div_s(16383, fx::shl(size, e));
            Word slope = fx::extract_l(fx::l_shr(fx::l_mult(width, inverse), 20 - e));
            if (rise < 0) slope = fx::negate(slope);
            root = fx::sub(xLow, fx::extract_l(fx::l_mult(yLow, slope) >> 11));
        }
        roots[found++] = root;
        xLow = root;
        yLow = value(xLow, p.f[found % 2], p);
    }
    const bool all = found == kOrder;
    if (all)
        std::ranges::copy(roots, lsp_Q15.begin());
    else
        std::ranges::copy(previous, lsp_Q15.begin());
    return all;
}

/// Get_lsp_pol: the product of 1 - 2 lsp z + z^2 over every other pair, Q24.
std::array<Long, 6> product(const Word* lsp_Q15) noexcept
{
    std::array<Long, 6> f{};
    f[0] = fx::l_mult(4096, 2048);
    f[1] = fx::l_msu(0, lsp_Q15[0], 512);
    for (std::size_t i = 2; i < f.size(); ++i) {
        const Word q = lsp_Q15[2 * (i - 1)];
        f[i] = f[i - 2];
        for (std::size_t k = i; k > 1; --k) {
            const Long t = fx::l_shl(fx::mpy_32_16(f[k - 1], q), 1);
            f[k] = fx::l_sub(fx::l_add(f[k], f[k - 2]), t);
        }
        f[1] = fx::l_msu(f[1], q, 512);
    }
    return f;
}

} // namespace

bool lpcToLspScalar(In<kTaps> lpc_Q12, In<kOrder> previous, Out<kOrder> lsp_Q15) noexcept
{
    return findRoots<valueAt>(lpc_Q12, kRootGrid60, 4, previous, lsp_Q15);
}

bool lpcToLspAScalar(In<kTaps> lpc_Q12, In<kOrder> previous, Out<kOrder> lsp_Q15) noexcept
{
    return findRoots<valueAt>(lpc_Q12, kRootGrid50, 2, previous, lsp_Q15);
}

bool lpcToLsp(In<kTaps> lpc_Q12, In<kOrder> previous, Out<kOrder> lsp_Q15) noexcept
{
    return findRoots<fastValueAt>(lpc_Q12, kRootGrid60, 4, previous, lsp_Q15);
}

bool lpcToLspA(In<kTaps> lpc_Q12, In<kOrder> previous, Out<kOrder> lsp_Q15) noexcept
{
    return findRoots<fastValueAt>(lpc_Q12, kRootGrid50, 2, previous, lsp_Q15);
}

void lspToLpc(In<kOrder> lsp_Q15, Out<kTaps> lpc_Q12) noexcept
{
    std::array<Long, 6> f = product(lsp_Q15.data()), g = product(lsp_Q15.data() + 1);
    for (std::size_t i = 5; i > 0; --i) {
        f[i] = fx::l_add(f[i], f[i - 1]);
        g[i] = fx::l_sub(g[i], g[i - 1]);
    }
    lpc_Q12[0] = 4096;
    for (std::size_t i = 1; i <= 5; ++i) {
        lpc_Q12[i] = fx::extract_l(fx::l_shr_r(fx::l_add(f[i], g[i]), 13));
        lpc_Q12[11 - i] = fx::extract_l(fx::l_shr_r(fx::l_sub(f[i], g[i]), 13));
    }
}

void interpolateLsp(In<kOrder> previous, In<kOrder> lsp, Out<kOrder> between) noexcept
{
    for (std::size_t i = 0; i < kOrder; ++i)
        between[i] = fx::add(static_cast<Word>(lsp[i] >> 1), static_cast<Word>(previous[i] >> 1));
}

void lsfToLsp(In<kOrder> lsf_Q13, Out<kOrder> lsp_Q15) noexcept
{
    for (std::size_t i = 0; i < kOrder; ++i) {
        const Word f = fx::mult(lsf_Q13[i], 20861);
        const auto k = static_cast<std::size_t>(std::clamp(f >> 8, 0, 63));
        const auto rest = static_cast<Word>(f & 255);
        const Word fall = fx::extract_l(fx::l_mult(kCosineSlope[k], rest) >> 13);
        lsp_Q15[i] = fx::add(kCosine[k], fall);
    }
}

} // namespace zsp::g729

namespace zsp::entry {

ZspStatus zspsLPCToLSP_G729_16s(const std::int16_t* lpc, const std::int16_t* previous,
                                std::int16_t* lsp)
{
    if (!lpc || !previous || !lsp) return zspStsNullPtrErr;

    g729::lpcToLsp(spanOf<g729::kTaps>(lpc), spanOf<g729::kOrder>(previous),
                   spanOf<g729::kOrder>(lsp));
    return zspStsNoErr;
}

ZspStatus zspsLPCToLSP_G729A_16s(const std::int16_t* lpc, const std::int16_t* previous,
                                 std::int16_t* lsp)
{
    if (!lpc || !previous || !lsp) return zspStsNullPtrErr;

    g729::lpcToLspA(spanOf<g729::kTaps>(lpc), spanOf<g729::kOrder>(previous),
                    spanOf<g729::kOrder>(lsp));
    return zspStsNoErr;
}

ZspStatus zspsLSPToLPC_G729_16s(const std::int16_t* lsp, std::int16_t* lpc)
{
    if (!lsp || !lpc) return zspStsNullPtrErr;

    g729::lspToLpc(spanOf<g729::kOrder>(lsp), spanOf<g729::kTaps>(lpc));
    return zspStsNoErr;
}

ZspStatus zspsLSPInterpolate_G729_16s(const std::int16_t* previous, const std::int16_t* lsp,
                                      std::int16_t* dst)
{
    if (!previous || !lsp || !dst) return zspStsNullPtrErr;

    g729::interpolateLsp(spanOf<g729::kOrder>(previous), spanOf<g729::kOrder>(lsp),
                         spanOf<g729::kOrder>(dst));
    return zspStsNoErr;
}

ZspStatus zspsLSFToLSP_G729_16s(const std::int16_t* src, std::int16_t* dst)
{
    if (!src || !dst) return zspStsNullPtrErr;
    if (*std::min_element(src, src + g729::kOrder) < 0) return zspStsNegativeValueErr;

    g729::lsfToLsp(spanOf<g729::kOrder>(src), spanOf<g729::kOrder>(dst));
    return zspStsNoErr;
}

} // namespace zsp::entry
