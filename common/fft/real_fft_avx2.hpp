// The real FFT of N points by a complex FFT of M = N/2 points, in AVX2: the step between the two.
//
// Even samples are the real and odd samples the imaginary parts of the complex transform Z; then
//
//   bins[k] = (Z[k] + conj Z[M-k]) / 2 + h[k] (Z[k] - conj Z[M-k]),   h[k] = -i/2 e^(-2 pi i k / N)
//
// splits Z into the spectra of the even and of the odd samples and puts those of all samples
// together. Backwards the same formula with conj h, bins and Z exchanged, merges them into half
// of Z.
//
// With real and imaginary parts exchanged on the way in and out, the complex transform is the
// inverse one.
#pragma once

#include "common/fft/complex_vectors.hpp"
#include "common/fft/real_fft.hpp"

#include <array>
#include <cstddef>

namespace zsp::common {

// The transforms by range of orders; `time` and `bins` as realFftForward() and realFftInverse()
// have them.

/// Orders of at most this one are products with a matrix.
inline constexpr int kMaxMatrixOrder = 4;

/// Orders of at most this one need no work area.
inline constexpr int kMaxRegisterOrder = 6;

/// Floats in a row of a matrix of so many outputs.
constexpr std::size_t paddedTo8(std::size_t outputs) noexcept
{
    return (outputs + 7) & ~std::size_t{7};
}

void forwardShort(const RealFftPlan& plan, const float* time, float* bins) noexcept;
void inverseShort(const RealFftPlan& plan, const float* bins, float* time) noexcept;

void forward32(const RealFftPlan& plan, const float* time, float* bins) noexcept;
void inverse32(const RealFftPlan& plan, const float* bins, float* time) noexcept;
void forward64(const RealFftPlan& plan, const float* time, float* bins) noexcept;
void inverse64(const RealFftPlan& plan, const float* bins, float* time) noexcept;

void forwardLong(const RealFftPlan& plan, const float* time, float* bins, float* work) noexcept;
void inverseLong(const RealFftPlan& plan, const float* bins, float* time, float* work) noexcept;

// The step between the real and the complex transform

inline __m256 reversed(__m256 v) noexcept
{
    return _mm256_permutevar8x32_ps(v, _mm256_setr_epi32(7, 6, 5, 4, 3, 2, 1, 0));
}

/// a/2 + conj b/2 + h (a - conj b): eight values of one spectrum from those of the other, where b
/// are the values at M-k and h the twiddle factors.
inline Complex8 split(Complex8 a, Complex8 b, Complex8 h) noexcept
{
    const __m256 half = _mm256_set1_ps(0.5F);
    const Complex8 difference = {_mm256_sub_ps(a.re, b.re), _mm256_add_ps(a.im, b.im)};
    const Complex8 q = difference * h;
    return {_mm256_fmadd_ps(_mm256_add_ps(a.re, b.re), half, q.re),
            _mm256_fmadd_ps(_mm256_sub_ps(a.im, b.im), half, q.im)};
}

/// The points M-k of a transform whose rows are in registers, for the points k of row r.
template <std::size_t R>
inline Complex8 mirrored(const std::array<Complex8, R>& z, std::size_t r) noexcept
{
    const auto turn = [](__m256 v) { // 0 7 6 5 4 3 2 1
        return _mm256_permutevar8x32_ps(v, _mm256_setr_epi32(0, 7, 6, 5, 4, 3, 2, 1));
    };
    const Complex8 first = z[(R - r) % R], others = z[R - 1 - r];
    return {_mm256_blend_ps(turn(others.re), first.re, 1),
            _mm256_blend_ps(turn(others.im), first.im, 1)};
}

template <std::size_t R>
inline void splitRows(const std::array<Complex8, R>& z, const float* twiddles, float* bins) noexcept
{
    for (std::size_t r = 0; r < R; ++r)
        storeComplex(&bins[16 * r], split(z[r], mirrored(z, r), loadRow(&twiddles[16 * r])));
    // Z[0] = Z[M]: the two spectra's first points, both real
    const __m128 re = _mm256_castps256_ps128(z[0].re), im = _mm256_castps256_ps128(z[0].im);
    bins[1] = 0;
    bins[16 * R] = _mm_cvtss_f32(_mm_sub_ss(re, im));
    bins[16 * R + 1] = 0;
}

/// Row r of Z from the bins, halved, in split order and with its parts exchanged.
inline Complex8 mergedRow(const float* bins, const float* twiddles, std::size_t half,
                          std::size_t r) noexcept
{
    Complex8 a = loadSplit(&bins[16 * r]);
    Complex8 b = loadSplitReversed(&bins[2 * (half - 8 * r - 7)]);
    if (r == 0) { // the imaginary parts of the first and the last bin do not count
        a.im = _mm256_blend_ps(a.im, _mm256_setzero_ps(), 1);
        b.im = _mm256_blend_ps(b.im, _mm256_setzero_ps(), 1);
    }
    return swapped(split(a, b, loadRow(&twiddles[16 * r])));
}

/// Points n .. n+7 of an inverse transform, whose parts are still exchanged.
inline void storeTime(float* time, std::size_t n, Complex8 v, __m256 scale) noexcept
{
    storeComplex(&time[2 * n], {_mm256_mul_ps(v.im, scale), _mm256_mul_ps(v.re, scale)});
}

} // namespace zsp::common
