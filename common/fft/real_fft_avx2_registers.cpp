// Real FFT of 32 and 64 points in AVX2, which stay in registers.

#include "common/fft/real_fft_avx2.hpp"
#include "core/avx2.hpp"

#include <array>
#include <cstddef>
#include <numbers>

namespace zsp::common {

namespace {

// The complex transform of 16 points: a square of four

/// Both in natural order.
inline void transform16(std::array<Complex4, 4>& z, const float* twiddles) noexcept
{
    radix4(z[0], z[1], z[2], z[3]);
    for (std::size_t k = 1; k < 4; ++k) {
        const float* w = &twiddles[8 * k];
        z[k] = z[k] * Complex4{_mm_loadu_ps(w), _mm_loadu_ps(w + 4)};
    }
    _MM_TRANSPOSE4_PS(z[0].re, z[1].re, z[2].re, z[3].re);
    _MM_TRANSPOSE4_PS(z[0].im, z[1].im, z[2].im, z[3].im);
    radix4(z[0], z[1], z[2], z[3]);
}

// The complex transform of 32 points: four rows, which are also the vectors after transposition

/// Rows in split order, into points in natural order.
inline void transform32(std::array<Complex8, 4>& z, const float* twiddles) noexcept
{
    radix4(z[0], z[1], z[2], z[3]);
    for (std::size_t k = 1; k < 4; ++k)
        z[k] = z[k] * loadRow(&twiddles[16 * k]);

    // Columns 0 and 2, 1 and 3, 4 and 6, 5 and 7 in the halves of a vector, k in a half's twiddles
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

} // namespace

void forward32(const RealFftPlan& plan, const float* time, float* bins) noexcept
{
    std::array<Complex4, 4> z;
    for (std::size_t r = 0; r < 4; ++r) {
        const __m128 low = _mm_loadu_ps(&time[8 * r]), high = _mm_loadu_ps(&time[8 * r + 4]);
        z[r] = {_mm_shuffle_ps(low, high, 0x88), _mm_shuffle_ps(low, high, 0xdd)};
    }
    transform16(z, plan.rowTwiddles);
    const std::array<Complex8, 2> rows = {
        Complex8{_mm256_set_m128(z[1].re, z[0].re), _mm256_set_m128(z[1].im, z[0].im)},
        Complex8{_mm256_set_m128(z[3].re, z[2].re), _mm256_set_m128(z[3].im, z[2].im)}};
    splitRows(rows, plan.forwardTable, bins);
}

void inverse32(const RealFftPlan& plan, const float* bins, float* time) noexcept
{
    std::array<Complex4, 4> z;
    for (std::size_t r = 0; r < 2; ++r) {
        const Complex8 row = mergedRow(bins, plan.inverseTable, 16, r);
        const __m256 re = avx2::swapMiddle(row.re), im = avx2::swapMiddle(row.im);
        z[2 * r] = {_mm256_castps256_ps128(re), _mm256_castps256_ps128(im)};
        z[2 * r + 1] = {_mm256_extractf128_ps(re, 1), _mm256_extractf128_ps(im, 1)};
    }
    transform16(z, plan.rowTwiddles);
    const __m128 scale = _mm_set1_ps(1.0F / 16);
    for (std::size_t r = 0; r < 4; ++r) {
        const __m128 even = _mm_mul_ps(z[r].im, scale), odd = _mm_mul_ps(z[r].re, scale);
        _mm_storeu_ps(&time[8 * r], _mm_unpacklo_ps(even, odd));
        _mm_storeu_ps(&time[8 * r + 4], _mm_unpackhi_ps(even, odd));
    }
}

void forward64(const RealFftPlan& plan, const float* time, float* bins) noexcept
{
    std::array<Complex8, 4> z;
    for (std::size_t r = 0; r < 4; ++r)
        z[r] = loadSplit(&time[16 * r]);
    transform32(z, plan.rowTwiddles);
    splitRows(z, plan.forwardTable, bins);
}

void inverse64(const RealFftPlan& plan, const float* bins, float* time) noexcept
{
    std::array<Complex8, 4> z;
    for (std::size_t r = 0; r < 4; ++r)
        z[r] = mergedRow(bins, plan.inverseTable, 32, r);
    transform32(z, plan.rowTwiddles);
    for (std::size_t r = 0; r < 4; ++r)
        storeTime(time, 8 * r, z[r], _mm256_set1_ps(1.0F / 32));
}

} // namespace zsp::common
