// Both echo-path filters of a sub-band canceller, with what steers them, in one pass over the taps.
//
//   err[k]           = y[k] - sum over t of w[t][k] x[t][k]      for both sets of taps w
//   inputPower[k]    = sum over t of |x[t][k]|^2
//   residualPower[k] = sum over t of p[t][k] |x[t][k]|^2
//
// Each of the sums over t is made of real sums, one per pair of parts, in the order of t.

#include "ec/subband_filter.hpp"

#include "core/avx2.hpp"
#include "core/entries.hpp"

#include <cmath>

namespace zsp::ec {

namespace {

/// The four sums of products of parts that make a sum of complex products w x.
struct ProductSums {
    float rr = 0, ri = 0, ir = 0, ii = 0; // part of w, part of x

    void add(Zsp32fc w, Zsp32fc x) noexcept
    {
        rr = std::fma(w.re, x.re, rr);
        ri = std::fma(w.re, x.im, ri);
        ir = std::fma(w.im, x.re, ir);
        ii = std::fma(w.im, x.im, ii);
    }

    Zsp32fc errorOf(Zsp32fc y) const noexcept { return {y.re - (rr - ii), y.im - (ir + ri)}; }
};

} // namespace

void filterScalar(const FilterRows& rows, std::span<const Zsp32fc> src, const FilterResults& out,
                  std::size_t first) noexcept
{
    for (std::size_t k = first; k < src.size(); ++k) {
        ProductSums adapt, fixed;
        Zsp32fc power{}, residual{};
        for (std::size_t t = 0; t < rows.history.size(); ++t) {
            const Zsp32fc x = rows.history[t][k];
            const float variance = rows.coefVariance[t][k];
            adapt.add(rows.adaptCoefs[t][k], x);
            fixed.add(rows.fixedCoefs[t][k], x);
            const Zsp32fc square = {x.re * x.re, x.im * x.im};
            power.re += square.re;
            power.im += square.im;
            residual.re = std::fma(variance, square.re, residual.re);
            residual.im = std::fma(variance, square.im, residual.im);
        }
        out.adaptErr[k] = adapt.errorOf(src[k]);
        out.fixedErr[k] = fixed.errorOf(src[k]);
        out.inputPower[k] = power.re + power.im;
        out.residualPower[k] = residual.re + residual.im;
    }
}

namespace {

// Four bins a vector, as they lie: [re im re im ...]. A tap times (xr, xr) and times (xi, xi) gives
// the sums (rr, ir) and (ri, ii), which need no shuffle of taps inside the loop.
struct BinSums {
    __m256 adaptRe = _mm256_setzero_ps(), adaptIm = adaptRe, fixedRe = adaptRe, fixedIm = adaptRe,
           power = adaptRe, residual = adaptRe;

    void add(const FilterRows& rows, std::size_t t, std::size_t k) noexcept
    {
        const __m256 x = avx2::load(&rows.history[t][k].re);
        const __m256 re = _mm256_moveldup_ps(x), im = _mm256_movehdup_ps(x);
        const __m256 adapt = avx2::load(&rows.adaptCoefs[t][k].re);
        const __m256 fixed = avx2::load(&rows.fixedCoefs[t][k].re);
        adaptRe = _mm256_fmadd_ps(adapt, re, adaptRe);
        adaptIm = _mm256_fmadd_ps(adapt, im, adaptIm);
        fixedRe = _mm256_fmadd_ps(fixed, re, fixedRe);
        fixedIm = _mm256_fmadd_ps(fixed, im, fixedIm);
        const __m256 square = _mm256_mul_ps(x, x);
        power = _mm256_add_ps(power, square);
        // [p0 p0 p1 p1 | p2 p2 p3 p3]
        const __m256 variance = _mm256_permutevar_ps(
            _mm256_broadcast_ps(reinterpret_cast<const __m128*>(&rows.coefVariance[t][k])),
            _mm256_setr_epi32(0, 0, 1, 1, 2, 2, 3, 3));
        residual = _mm256_fmadd_ps(variance, square, residual);
    }

    static __m256 swap(__m256 v) noexcept { return _mm256_permute_ps(v, 0xb1); }

    static void error(const Zsp32fc& y, __m256 reSums, __m256 imSums, Zsp32fc& out) noexcept
    {
        const __m256 echo = _mm256_addsub_ps(reSums, swap(imSums)); // (rr - ii, ir + ri)
        avx2::store(&out.re, _mm256_sub_ps(avx2::load(&y.re), echo));
    }

    /// The sums of both parts of each bin.
    static void total(__m256 parts, float* out) noexcept
    {
        const __m256 sums = _mm256_hadd_ps(parts, parts); // [s0 s1 s0 s1 | s2 s3 s2 s3]
        _mm_storeu_ps(out,
                      _mm_movelh_ps(_mm256_castps256_ps128(sums), _mm256_extractf128_ps(sums, 1)));
    }

    void store(const Zsp32fc& y, const FilterResults& out, std::size_t k) const noexcept
    {
        error(y, adaptRe, adaptIm, out.adaptErr[k]);
        error(y, fixedRe, fixedIm, out.fixedErr[k]);
        total(power, &out.inputPower[k]);
        total(residual, &out.residualPower[k]);
    }
};

} // namespace

void filterAvx2(const FilterRows& rows, std::span<const Zsp32fc> src,
                const FilterResults& out) noexcept
{
    std::size_t k = 0;
    for (; k + 4 <= src.size(); k += 4) {
        BinSums sums;
        for (std::size_t t = 0; t < rows.history.size(); ++t)
            sums.add(rows, t, k);
        sums.store(src[k], out, k);
    }
    filterScalar(rows, src, out, k);
}

} // namespace zsp::ec

namespace zsp::entry {

ZspStatus zspsSubbandFilter_EC_32fc(const Zsp32fc* src, const Zsp32fc* const* inputHistory,
                                    const Zsp32fc* const* adaptCoefs,
                                    const Zsp32fc* const* fixedCoefs,
                                    const float* const* coefVariance, Zsp32fc* adaptErr,
                                    Zsp32fc* fixedErr, float* inputPower, float* residualPower,
                                    std::int32_t numBands, std::int32_t numTaps)
{
    if (!src || !inputHistory || !adaptCoefs || !fixedCoefs || !coefVariance)
        return zspStsNullPtrErr;
    if (!adaptErr || !fixedErr || !inputPower || !residualPower) return zspStsNullPtrErr;
    if (numBands < 1) return zspStsSizeErr;
    if (numTaps < 1 || numTaps > ec::kMaxFilterTaps) return zspStsFIRLenErr;

    ec::filterAvx2({.history = {inputHistory, static_cast<std::size_t>(numTaps)},
                    .adaptCoefs = adaptCoefs,
                    .fixedCoefs = fixedCoefs,
                    .coefVariance = coefVariance},
                   {src, static_cast<std::size_t>(numBands)},
                   {adaptErr, fixedErr, inputPower, residualPower});
    return zspStsNoErr;
}

} // namespace zsp::entry
