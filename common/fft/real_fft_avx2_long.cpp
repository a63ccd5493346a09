// Real FFT of 128 points and more in AVX2, through the work area.
//
// The complex transform works on rows of eight: point n = 8 r + c stands in lane c of row r. All
// columns are transformed at once, multiplied by e^(-2 pi i c k / M), k the row after that, and the
// rows are transformed eight at a time after a transposition. Rows are in split order until they
// are transformed; tables and the row transform allow for that.

#include "common/fft/real_fft_avx2.hpp"
#include "core/avx2.hpp"
#include "core/state.hpp"

#include <array>
#include <cstddef>
#include <numbers>
#include <utility>

namespace zsp::common {

namespace {

/// Transforms of all columns: R rows from `load(r)` into the one of x and y that is returned, in
/// natural order (Stockham's).
template <typename Load>
float* transformColumns(std::size_t rows, const float* twiddles, Load load, float* x,
                        float* y) noexcept
{
    const auto pass = [&](std::size_t n, std::size_t stride, auto from, float* to) {
        for (std::size_t p = 0; p < n / 4; ++p) {
            // e^(-2 pi i p j / n) for j = 1 .. 3
            const auto root = [&](std::size_t j) {
                const float* w = &twiddles[2 * p * j * stride];
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
void transformRows(std::size_t rows, const float* x, const float* twiddles, Store store) noexcept
{
    for (std::size_t r = 0; r < rows; r += 8) {
        __m256 re[8], im[8];
        for (std::size_t i = 0; i < 8; ++i) {
            const std::size_t at = 16 * (r + i);
            const Complex8 turned = loadRow(&x[at]) * loadRow(&twiddles[at]);
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

/// Two arrays of rows, which are also the parts of a transform with one more point.
struct Buffers {
    Buffers(float* work, std::size_t half) noexcept
        : first(static_cast<float*>(alignUp(work, kFftAlignment))), second(first + 2 * half + 16)
    {
    }

    float* other(const float* one) const noexcept { return one == first ? second : first; }

    float* first;
    float* second;
};

} // namespace

void forwardLong(const RealFftPlan& plan, const float* time, float* bins, float* work) noexcept
{
    const std::size_t half = (std::size_t{1} << plan.order) / 2, rows = half / 8;
    const Buffers buffers(work, half);
    const float* columns = transformColumns(
        rows, plan.columnTwiddles, [time](std::size_t r) { return loadSplit(&time[16 * r]); },
        buffers.first, buffers.second);
    float* re = buffers.other(columns);
    float* im = re + half + 8;
    transformRows(rows, columns, plan.rowTwiddles, [re, im](std::size_t k, Complex8 v) {
        avx2::store(&re[k], v.re);
        avx2::store(&im[k], v.im);
    });
    re[half] = re[0];
    im[half] = im[0];
    for (std::size_t k = 0; k < half; k += 8) {
        const Complex8 a = {avx2::load(&re[k]), avx2::load(&im[k])};
        const Complex8 b = {reversed(avx2::load(&re[half - 7 - k])),
                            reversed(avx2::load(&im[half - 7 - k]))};
        storeComplex(&bins[2 * k], split(a, b, loadRow(&plan.forwardTable[2 * k])));
    }
    bins[1] = 0;
    bins[2 * half] = re[0] - im[0];
    bins[2 * half + 1] = 0;
}

void inverseLong(const RealFftPlan& plan, const float* bins, float* time, float* work) noexcept
{
    const std::size_t half = (std::size_t{1} << plan.order) / 2, rows = half / 8;
    const Buffers buffers(work, half);
    const float* columns = transformColumns(
        rows, plan.columnTwiddles,
        [&](std::size_t r) { return mergedRow(bins, plan.inverseTable, half, r); }, buffers.first,
        buffers.second);
    const __m256 scale = _mm256_set1_ps(1 / static_cast<float>(half));
    transformRows(rows, columns, plan.rowTwiddles,
                  [&](std::size_t n, Complex8 v) { storeTime(time, n, v, scale); });
}

} // namespace zsp::common
