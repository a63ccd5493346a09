// Vectors of complex numbers for the transforms in AVX2 registers: arithmetic, loads and stores,
// transpositions, and the transform of four points.
//
// Taking eight complex numbers apart into real and imaginary parts leaves them in the lane order
// 0 1 4 5 2 3 6 7, here called split order.
#pragma once

#include "core/avx2.hpp"

#include <cstddef>

namespace zsp::common {

struct Complex8 {
    __m256 re, im;
};

struct Complex4 {
    __m128 re, im;
};

// Adds, subtracts and multiplies either width.

inline Complex8 operator+(Complex8 a, Complex8 b) noexcept
{
    return {_mm256_add_ps(a.re, b.re), _mm256_add_ps(a.im, b.im)};
}

inline Complex8 operator-(Complex8 a, Complex8 b) noexcept
{
    return {_mm256_sub_ps(a.re, b.re), _mm256_sub_ps(a.im, b.im)};
}

inline Complex8 operator*(Complex8 a, Complex8 b) noexcept
{
    return {_mm256_fmsub_ps(a.re, b.re, _mm256_mul_ps(a.im, b.im)),
            _mm256_fmadd_ps(a.re, b.im, _mm256_mul_ps(a.im, b.re))};
}

inline Complex4 operator+(Complex4 a, Complex4 b) noexcept
{
    return {_mm_add_ps(a.re, b.re), _mm_add_ps(a.im, b.im)};
}

inline Complex4 operator-(Complex4 a, Complex4 b) noexcept
{
    return {_mm_sub_ps(a.re, b.re), _mm_sub_ps(a.im, b.im)};
}

inline Complex4 operator*(Complex4 a, Complex4 b) noexcept
{
    return {_mm_fmsub_ps(a.re, b.re, _mm_mul_ps(a.im, b.im)),
            _mm_fmadd_ps(a.re, b.im, _mm_mul_ps(a.im, b.re))};
}

/// a + i b
inline Complex8 plusI(Complex8 a, Complex8 b) noexcept
{
    return {_mm256_sub_ps(a.re, b.im), _mm256_add_ps(a.im, b.re)};
}

/// a - i b
inline Complex8 minusI(Complex8 a, Complex8 b) noexcept
{
    return {_mm256_add_ps(a.re, b.im), _mm256_sub_ps(a.im, b.re)};
}

inline Complex4 plusI(Complex4 a, Complex4 b) noexcept
{
    return {_mm_sub_ps(a.re, b.im), _mm_add_ps(a.im, b.re)};
}

inline Complex4 minusI(Complex4 a, Complex4 b) noexcept
{
    return {_mm_add_ps(a.re, b.im), _mm_sub_ps(a.im, b.re)};
}

inline Complex8 swapped(Complex8 a) noexcept
{
    return {a.im, a.re};
}

/// Transform of four points in place, in natural order.
template <typename Complex>
inline void radix4(Complex& a, Complex& b, Complex& c, Complex& d) noexcept
{
    const Complex sumAc = a + c, difAc = a - c, sumBd = b + d, difBd = b - d;
    a = sumAc + sumBd;
    b = minusI(difAc, difBd);
    c = sumAc - sumBd;
    d = plusI(difAc, difBd);
}

// Loads and stores. A row is eight real parts and eight imaginary parts.

inline Complex8 loadRow(const float* p) noexcept
{
    return {avx2::load(p), avx2::load(p + 8)};
}

inline void storeRow(float* p, Complex8 v) noexcept
{
    avx2::store(p, v.re);
    avx2::store(p + 8, v.im);
}

/// Eight complex numbers, into split order.
inline Complex8 loadSplit(const float* p) noexcept
{
    const __m256 low = avx2::load(p), high = avx2::load(p + 8);
    return {_mm256_shuffle_ps(low, high, 0x88), _mm256_shuffle_ps(low, high, 0xdd)};
}

/// Eight complex numbers read backwards, into split order.
inline Complex8 loadSplitReversed(const float* p) noexcept
{
    const __m256 low = avx2::load(p), high = avx2::load(p + 8);
    const __m256 first = _mm256_permute2f128_ps(high, high, 1); // 6 7 4 5
    const __m256 second = _mm256_permute2f128_ps(low, low, 1);  // 2 3 0 1
    return {_mm256_shuffle_ps(first, second, 0x22), _mm256_shuffle_ps(first, second, 0x77)};
}

/// Eight complex numbers from natural order.
inline void storeComplex(float* p, Complex8 v) noexcept
{
    const __m256 low = _mm256_unpacklo_ps(v.re, v.im);  // 0 1 4 5
    const __m256 high = _mm256_unpackhi_ps(v.re, v.im); // 2 3 6 7
    avx2::store(p, _mm256_permute2f128_ps(low, high, 0x20));
    avx2::store(p + 8, _mm256_permute2f128_ps(low, high, 0x31));
}

// Transpositions

inline void transpose8(__m256 (&v)[8]) noexcept
{
    __m256 pairs[8], quads[8];
    for (std::size_t i = 0; i < 8; i += 2) {
        pairs[i] = _mm256_unpacklo_ps(v[i], v[i + 1]);
        pairs[i + 1] = _mm256_unpackhi_ps(v[i], v[i + 1]);
    }
    for (std::size_t i = 0; i < 8; i += 4)
        for (std::size_t j = 0; j < 2; ++j) {
            quads[i + 2 * j] = _mm256_shuffle_ps(pairs[i + j], pairs[i + j + 2], 0x44);
            quads[i + 2 * j + 1] = _mm256_shuffle_ps(pairs[i + j], pairs[i + j + 2], 0xee);
        }
    for (std::size_t i = 0; i < 4; ++i) {
        v[i] = _mm256_permute2f128_ps(quads[i], quads[i + 4], 0x20);
        v[i + 4] = _mm256_permute2f128_ps(quads[i], quads[i + 4], 0x31);
    }
}

/// In each 128-bit half.
inline void transpose4(__m256 (&v)[4]) noexcept
{
    const __m256 a = _mm256_unpacklo_ps(v[0], v[1]), b = _mm256_unpackhi_ps(v[0], v[1]);
    const __m256 c = _mm256_unpacklo_ps(v[2], v[3]), d = _mm256_unpackhi_ps(v[2], v[3]);
    v[0] = _mm256_shuffle_ps(a, c, 0x44);
    v[1] = _mm256_shuffle_ps(a, c, 0xee);
    v[2] = _mm256_shuffle_ps(b, d, 0x44);
    v[3] = _mm256_shuffle_ps(b, d, 0xee);
}

} // namespace zsp::common
