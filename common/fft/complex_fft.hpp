// Complex FFTs of M points in AVX2 registers, the inner part of the real ones.
//
// Long transforms work on rows of eight: point n = 8 r + c stands in lane c of row r. All columns
// are transformed at once, multiplied by e^(-2 pi i c k / M), k the row after that, and the rows
// are transformed eight at a time after a transposition.
//
// Taking eight complex numbers apart into real and imaginary parts leaves them in the lane order
// 0 1 4 5 2 3 6 7, here called split order. Rows are in split order until they are transformed;
// tables and the row transform allow for that.
#pragma once

#include "core/avx2.hpp"

#include <array>
#include <cstddef>
#include <numbers>
#include <utility>

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

// The complex transform of 8 R points, R = 8 and more

/// Transforms of all columns: R rows from `load(r)` into the one of x and y that is returned, in
/// natural order (Stockham's).
template <typename Load>
float* transformColumns(std::size_t rows, const float* roots, Load load, float* x,
                        float* y) noexcept
{
    const auto pass = [&](std::size_t n, std::size_t stride, auto from, float* to) {
        for (std::size_t p = 0; p < n / 4; ++p) {
            // e^(-2 pi i p j / n) for j = 1 .. 3
            const auto root = [&](std::size_t j) {
                const float* w = &roots[2 * p * j * stride];
                return Complex8{_mm256_broadcast_ss(w), _mm256_broadcast_ss(w + 1)};
            };
            const Complex8 w1 = root(1), w2 = root(2), w3 = root(3);
            for (std::size_t q = 0; q < stride; ++q) {
                const std::size_t r = q + stride * p, quarter = stride * n / 4;
                Complex8 a = from(r), b = from(r + quarter), c = from(r + 2 * quarter),
                         d = from(r + 3 * quarter);
                radix4(a, b, c, d);
                float* out = &to[16 * (q + stride * 4 * p)];
                storeRow(out, a);
                storeRow(out + 16 * stride, b * w1);
                storeRow(out + 32 * stride, c * w2);
                storeRow(out + 48 * stride, d * w3);
            }
        }
    };
    pass(rows, 1, load, x);
    std::size_t n = rows / 4, stride = 4;
    for (; n >= 4; n /= 4, stride *= 4) {
        pass(
            n, stride, [x](std::size_t r) { return loadRow(&x[16 * r]); }, y);
        std::swap(x, y);
    }
    if (n == 2) {
        for (std::size_t q = 0; q < stride; ++q) {
            const Complex8 a = loadRow(&x[16 * q]), b = loadRow(&x[16 * (q + stride)]);
            storeRow(&y[16 * q], a + b);
            storeRow(&y[16 * (q + stride)], a - b);
        }
        std::swap(x, y);
    }
    return x;
}

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

/// Transform of eight points given in split order, into natural order.
inline void radix8(std::array<Complex8, 8>& v) noexcept
{
    Complex8 e0 = v[0], e1 = v[4], e2 = v[2], e3 = v[6]; // points 0 2 4 6
    Complex8 o0 = v[1], o1 = v[5], o2 = v[3], o3 = v[7]; // points 1 3 5 7
    radix4(e0, e1, e2, e3);
    radix4(o0, o1, o2, o3);
    const __m256 s = _mm256_set1_ps(std::numbers::sqrt2_v<float> / 2);
    o1 = {_mm256_mul_ps(s, _mm256_add_ps(o1.re, o1.im)),
          _mm256_mul_ps(s, _mm256_sub_ps(o1.im, o1.re))}; // e^(-i pi/4)
    const __m256 minusS = _mm256_set1_ps(-std::numbers::sqrt2_v<float> / 2);
    o3 = {_mm256_mul_ps(s, _mm256_sub_ps(o3.im, o3.re)),
          _mm256_mul_ps(minusS, _mm256_add_ps(o3.re, o3.im))}; // e^(-3 i pi/4)
    v = {e0 + o0, e1 + o1, minusI(e2, o2), e3 + o3, e0 - o0, e1 - o1, plusI(e2, o2), e3 - o3};
}

/// Transforms of the rows. `store(k, v)` takes points k .. k+7 of the whole transform.
template <typename Store>
void transformRows(std::size_t rows, const float* x, const float* lanes, Store store) noexcept
{
    for (std::size_t r = 0; r < rows; r += 8) {
        __m256 re[8], im[8];
        for (std::size_t i = 0; i < 8; ++i) {
            const std::size_t at = 16 * (r + i);
            const Complex8 turned = loadRow(&x[at]) * loadRow(&lanes[at]);
            re[i] = turned.re;
            im[i] = turned.im;
        }
        transpose8(re);
        transpose8(im);
        std::array<Complex8, 8> v;
        for (std::size_t i = 0; i < 8; ++i)
            v[i] = {re[i], im[i]};
        radix8(v);
        for (std::size_t i = 0; i < 8; ++i)
            store(r + rows * i, v[i]);
    }
}

// The complex transform of 32 points: four rows, which are also the vectors after transposition

inline void transpose4(__m256 (&v)[4]) noexcept // in each 128-bit half
{
    const __m256 a = _mm256_unpacklo_ps(v[0], v[1]), b = _mm256_unpackhi_ps(v[0], v[1]);
    const __m256 c = _mm256_unpacklo_ps(v[2], v[3]), d = _mm256_unpackhi_ps(v[2], v[3]);
    v[0] = _mm256_shuffle_ps(a, c, 0x44);
    v[1] = _mm256_shuffle_ps(a, c, 0xee);
    v[2] = _mm256_shuffle_ps(b, d, 0x44);
    v[3] = _mm256_shuffle_ps(b, d, 0xee);
}

/// Rows in split order, into points in natural order.
inline void transform32(std::array<Complex8, 4>& z, const float* lanes) noexcept
{
    radix4(z[0], z[1], z[2], z[3]);
    for (std::size_t k = 1; k < 4; ++k)
        z[k] = z[k] * loadRow(&lanes[16 * k]);

    // Columns 0 and 2, 1 and 3, 4 and 6, 5 and 7 in the halves of a vector, k in a half's lanes
    __m256 re[4] = {z[0].re, z[1].re, z[2].re, z[3].re};
    __m256 im[4] = {z[0].im, z[1].im, z[2].im, z[3].im};
    transpose4(re);
    transpose4(im);
    const Complex8 c02 = {re[0], im[0]}, c13 = {re[1], im[1]};
    const Complex8 c46 = {re[2], im[2]}, c57 = {re[3], im[3]};

    // Transforms of eight columns by bits of the column number: 4, then 2 with the bit that the
    // first gave in the halves, then 1.
    const auto acrossHalves = [](Complex8 even, Complex8 odd, Complex8& sum, Complex8& difference) {
        const __m256 sign = _mm256_setr_ps(1, 1, 1, 1, -1, -1, -1, -1);
        const Complex8 low = {_mm256_permute2f128_ps(even.re, odd.re, 0x20),
                              _mm256_permute2f128_ps(even.im, odd.im, 0x20)};
        // -i times the upper half of `odd`; the sign of its imaginary part comes with the sum
        const Complex8 high = {_mm256_permute2f128_ps(even.re, odd.im, 0x31),
                               _mm256_permute2f128_ps(even.im, odd.re, 0x31)};
        sum = {_mm256_add_ps(low.re, high.re), _mm256_fmadd_ps(high.im, sign, low.im)};
        difference = {_mm256_sub_ps(low.re, high.re), _mm256_fnmadd_ps(high.im, sign, low.im)};
    };
    Complex8 even0, even2, odd0, odd2; // columns 0 2 4 6 and 1 3 5 7
    acrossHalves(c02 + c46, c02 - c46, even0, even2);
    acrossHalves(c13 + c57, c13 - c57, odd0, odd2);

    constexpr float s = std::numbers::sqrt2_v<float> / 2; // e^(-i pi j/4), j = 0 1 and 2 3
    odd0 = odd0 * Complex8{_mm256_setr_ps(1, 1, 1, 1, s, s, s, s),
                           _mm256_setr_ps(0, 0, 0, 0, -s, -s, -s, -s)};
    odd2 = odd2 * Complex8{_mm256_setr_ps(0, 0, 0, 0, -s, -s, -s, -s),
                           _mm256_setr_ps(-1, -1, -1, -1, -s, -s, -s, -s)};
    z = {even0 + odd0, even2 + odd2, even0 - odd0, even2 - odd2};
}

// The complex transform of 16 points: a square of four

/// Both in natural order.
inline void transform16(std::array<Complex4, 4>& z, const float* factors) noexcept
{
    radix4(z[0], z[1], z[2], z[3]);
    for (std::size_t k = 1; k < 4; ++k) {
        const float* w = &factors[8 * k];
        z[k] = z[k] * Complex4{_mm_loadu_ps(w), _mm_loadu_ps(w + 4)};
    }
    _MM_TRANSPOSE4_PS(z[0].re, z[1].re, z[2].re, z[3].re);
    _MM_TRANSPOSE4_PS(z[0].im, z[1].im, z[2].im, z[3].im);
    radix4(z[0], z[1], z[2], z[3]);
}

} // namespace zsp::common
