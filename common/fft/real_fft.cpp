// Real FFT of N points by a complex FFT of M = N/2 points.
//
// Even samples are the real and odd samples the imaginary parts of the complex transform Z; then
//
//   bins[k] = (Z[k] + conj Z[M-k]) / 2 + h[k] (Z[k] - conj Z[M-k]),   h[k] = -i/2 e^(-2 pi i k / N)
//
// separates the two spectra. Backwards the same formula with conj h merges them, bins and Z
// exchanged, into half of Z.
//
// With real and imaginary parts exchanged on the way in and out, the complex transform is the
// inverse one. Transforms of 32 and 64 points stay in registers; longer ones go through the work
// area, and those of at most 16 points are products with a matrix.

#include "common/fft/real_fft.hpp"

#include "common/fft/complex_fft.hpp"
#include "core/avx2.hpp"
#include "core/state.hpp"

#include <algorithm>
#include <array>
#include <cassert>
#include <cmath>
#include <cstddef>
#include <numbers>

namespace zsp::common {

namespace {

inline __m256 reversed(__m256 v) noexcept
{
    return _mm256_permutevar8x32_ps(v, _mm256_setr_epi32(7, 6, 5, 4, 3, 2, 1, 0));
}

/// a/2 + conj b/2 + h (a - conj b): eight values of one spectrum from those of the other, where b
/// are the values at M-k.
inline Complex8 separate(Complex8 a, Complex8 b, Complex8 h) noexcept
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
inline void separateRows(const std::array<Complex8, R>& z, const float* separation,
                         float* bins) noexcept
{
    for (std::size_t r = 0; r < R; ++r)
        storeComplex(&bins[16 * r], separate(z[r], mirrored(z, r), loadRow(&separation[16 * r])));
    // Z[0] = Z[M]: the two spectra's first points, both real
    const __m128 re = _mm256_castps256_ps128(z[0].re), im = _mm256_castps256_ps128(z[0].im);
    bins[1] = 0;
    bins[16 * R] = _mm_cvtss_f32(_mm_sub_ss(re, im));
    bins[16 * R + 1] = 0;
}

/// Row r of the merged spectra, halved, in split order and with its parts exchanged.
inline Complex8 mergedRow(const float* bins, const float* merging, std::size_t half,
                          std::size_t r) noexcept
{
    Complex8 a = loadSplit(&bins[16 * r]);
    Complex8 b = loadSplitReversed(&bins[2 * (half - 8 * r - 7)]);
    if (r == 0) { // the imaginary parts of the first and the last bin do not count
        a.im = _mm256_blend_ps(a.im, _mm256_setzero_ps(), 1);
        b.im = _mm256_blend_ps(b.im, _mm256_setzero_ps(), 1);
    }
    return swapped(separate(a, b, loadRow(&merging[16 * r])));
}

// Transforms of 2 to 16 points: products with the matrix of the transform, whose rows belong to
// inputs and are padded to whole vectors.

constexpr int kMaxMatrixOrder = 4;

constexpr std::size_t paddedTo8(std::size_t count) noexcept
{
    return (count + 7) & ~std::size_t{7};
}

/// Adds in[j] times row j for all j, or for all but the second and the last.
template <std::size_t inputs, std::size_t outputs, bool withoutEnds>
void multiplyMatrix(const float* in, const float* matrix, float* out) noexcept
{
    constexpr std::size_t width = paddedTo8(outputs), vectors = width / 8;
    __m256 even[vectors] = {}, odd[vectors] = {}; // two short chains of additions
    const auto addRow = [in, matrix](std::size_t j, __m256(&sums)[vectors]) {
        for (std::size_t v = 0; v < vectors; ++v)
            sums[v] = _mm256_fmadd_ps(_mm256_set1_ps(in[j]), avx2::load(&matrix[width * j + 8 * v]),
                                      sums[v]);
    };
    for (std::size_t j = 0; j < inputs; j += 2) {
        addRow(j, even);
        if (!withoutEnds || (j > 0 && j + 2 < inputs)) addRow(j + 1, odd);
    }
    alignas(32) float sums[width];
    for (std::size_t v = 0; v < vectors; ++v)
        avx2::store(&sums[8 * v], _mm256_add_ps(even[v], odd[v]));
    std::copy_n(sums, outputs, out);
}

template <std::size_t n>
void forwardShort(const RealFftPlan& plan, const float* time, float* bins) noexcept
{
    multiplyMatrix<n, n + 2, false>(time, plan.separation, bins);
}

/// The imaginary parts of the first and the last bin do not count.
template <std::size_t n>
void inverseShort(const RealFftPlan& plan, const float* bins, float* time) noexcept
{
    multiplyMatrix<n + 2, n, true>(bins, plan.merging, time);
}

// Sizes and tables

std::size_t points(int order) noexcept
{
    return std::size_t{1} << order;
}

/// Floats of each table of a plan.
struct TableSizes {
    std::size_t separation, merging, lanes, columns;

    explicit TableSizes(int order) noexcept
    {
        const std::size_t n = points(order);
        if (order <= kMaxMatrixOrder) { // the matrices forwards and backwards
            separation = n * paddedTo8(n + 2);
            merging = (n + 2) * paddedTo8(n);
            lanes = columns = 0;
        } else {
            separation = merging = lanes = n;
            columns = n / 8;
        }
    }

    std::size_t sum() const noexcept { return separation + merging + lanes + columns; }
};

struct Root {
    double re, im;
};

/// e^(-2 pi i k / n), exact at the quarters.
Root root(std::size_t k, std::size_t n) noexcept
{
    k %= n;
    if (4 * k % n == 0) {
        constexpr Root kQuarters[] = {{1, 0}, {0, -1}, {-1, 0}, {0, 1}};
        return kQuarters[4 * k / n];
    }
    const double angle = 2 * std::numbers::pi * static_cast<double>(k) / static_cast<double>(n);
    return {std::cos(angle), -std::sin(angle)};
}

/// Factors factor(k), k = 0 .. count-1, in vectors of `width` with the real parts first; `order` is
/// that of the lanes.
template <std::size_t width, typename Factor>
void fillVectors(float* table, std::size_t count, const std::array<std::size_t, width>& order,
                 Factor factor) noexcept
{
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t lane = i % width, start = i - lane;
        const Root f = factor(start + order[lane]);
        table[2 * start + lane] = static_cast<float>(f.re);
        table[2 * start + width + lane] = static_cast<float>(f.im);
    }
}

constexpr std::array<std::size_t, 4> kNatural4 = {0, 1, 2, 3};
constexpr std::array<std::size_t, 8> kNatural = {0, 1, 2, 3, 4, 5, 6, 7};
constexpr std::array<std::size_t, 8> kSplit = {0, 1, 4, 5, 2, 3, 6, 7};

void fillMatrices(std::size_t n, float* forward, float* inverse) noexcept
{
    const std::size_t half = n / 2, binsWidth = paddedTo8(n + 2), timeWidth = paddedTo8(n);
    std::fill_n(forward, n * binsWidth, 0.0F);
    std::fill_n(inverse, (n + 2) * timeWidth, 0.0F);
    for (std::size_t k = 0; k <= half; ++k) {
        const double weight = (k == 0 || k == half ? 1.0 : 2.0) / static_cast<double>(n);
        for (std::size_t i = 0; i < n; ++i) {
            const Root w = root(i * k, n);
            forward[binsWidth * i + 2 * k] = static_cast<float>(w.re);
            forward[binsWidth * i + 2 * k + 1] = static_cast<float>(w.im);
            inverse[timeWidth * 2 * k + i] = static_cast<float>(weight * w.re);
            inverse[timeWidth * (2 * k + 1) + i] = static_cast<float>(weight * w.im);
        }
    }
}

/// Both tables of separate().
void fillSeparation(std::size_t n, float* separation, float* merging) noexcept
{
    const auto factor = [n](std::size_t k) {
        const Root w = root(k, n);
        return Root{w.im / 2, -w.re / 2}; // -i/2 w
    };
    fillVectors(separation, n / 2, kNatural, factor);
    fillVectors(merging, n / 2, kSplit, [&](std::size_t k) {
        return Root{factor(k).re, -factor(k).im};
    });
}

void fillTables(int order, float* separation, float* merging, float* lanes, float* columns) noexcept
{
    const std::size_t n = points(order), half = n / 2;
    if (order <= kMaxMatrixOrder) return fillMatrices(n, separation, merging);
    fillSeparation(n, separation, merging);
    if (order == 5) {
        fillVectors(lanes, 16, kNatural4, [](std::size_t i) { return root(i % 4 * (i / 4), 16); });
        return;
    }
    fillVectors(lanes, half, kSplit, [half](std::size_t i) { return root(i % 8 * (i / 8), half); });
    for (std::size_t r = 0; r < half / 8; ++r) {
        columns[2 * r] = static_cast<float>(root(r, half / 8).re);
        columns[2 * r + 1] = static_cast<float>(root(r, half / 8).im);
    }
}

// Whole transforms by order

void forward32(const RealFftPlan& plan, const float* time, float* bins) noexcept
{
    std::array<Complex4, 4> z;
    for (std::size_t r = 0; r < 4; ++r) {
        const __m128 low = _mm_loadu_ps(&time[8 * r]), high = _mm_loadu_ps(&time[8 * r + 4]);
        z[r] = {_mm_shuffle_ps(low, high, 0x88), _mm_shuffle_ps(low, high, 0xdd)};
    }
    transform16(z, plan.lanes);
    const std::array<Complex8, 2> rows = {
        Complex8{_mm256_set_m128(z[1].re, z[0].re), _mm256_set_m128(z[1].im, z[0].im)},
        Complex8{_mm256_set_m128(z[3].re, z[2].re), _mm256_set_m128(z[3].im, z[2].im)}};
    separateRows(rows, plan.separation, bins);
}

void inverse32(const RealFftPlan& plan, const float* bins, float* time) noexcept
{
    std::array<Complex4, 4> z;
    for (std::size_t r = 0; r < 2; ++r) {
        const Complex8 row = mergedRow(bins, plan.merging, 16, r);
        const auto natural = [](__m256 v) {
            return _mm256_castpd_ps(_mm256_permute4x64_pd(_mm256_castps_pd(v), 0xd8));
        };
        const __m256 re = natural(row.re), im = natural(row.im);
        z[2 * r] = {_mm256_castps256_ps128(re), _mm256_castps256_ps128(im)};
        z[2 * r + 1] = {_mm256_extractf128_ps(re, 1), _mm256_extractf128_ps(im, 1)};
    }
    transform16(z, plan.lanes);
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
    transform32(z, plan.lanes);
    separateRows(z, plan.separation, bins);
}

/// Points n .. n+7 of an inverse transform, whose parts are still exchanged.
inline void storeTime(float* time, std::size_t n, Complex8 v, __m256 scale) noexcept
{
    storeComplex(&time[2 * n], {_mm256_mul_ps(v.im, scale), _mm256_mul_ps(v.re, scale)});
}

void inverse64(const RealFftPlan& plan, const float* bins, float* time) noexcept
{
    std::array<Complex8, 4> z;
    for (std::size_t r = 0; r < 4; ++r)
        z[r] = mergedRow(bins, plan.merging, 32, r);
    transform32(z, plan.lanes);
    for (std::size_t r = 0; r < 4; ++r)
        storeTime(time, 8 * r, z[r], _mm256_set1_ps(1.0F / 32));
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

void forwardLong(const RealFftPlan& plan, const float* time, float* bins, float* work) noexcept
{
    const std::size_t half = points(plan.order) / 2, rows = half / 8;
    const Buffers buffers(work, half);
    const float* columns = transformColumns(
        rows, plan.columns, [time](std::size_t r) { return loadSplit(&time[16 * r]); },
        buffers.first, buffers.second);
    float* re = buffers.other(columns);
    float* im = re + half + 8;
    transformRows(rows, columns, plan.lanes, [re, im](std::size_t k, Complex8 v) {
        avx2::store(&re[k], v.re);
        avx2::store(&im[k], v.im);
    });
    re[half] = re[0];
    im[half] = im[0];
    for (std::size_t k = 0; k < half; k += 8) {
        const Complex8 a = {avx2::load(&re[k]), avx2::load(&im[k])};
        const Complex8 b = {reversed(avx2::load(&re[half - 7 - k])),
                            reversed(avx2::load(&im[half - 7 - k]))};
        storeComplex(&bins[2 * k], separate(a, b, loadRow(&plan.separation[2 * k])));
    }
    bins[1] = 0;
    bins[2 * half] = re[0] - im[0];
    bins[2 * half + 1] = 0;
}

void inverseLong(const RealFftPlan& plan, const float* bins, float* time, float* work) noexcept
{
    const std::size_t half = points(plan.order) / 2, rows = half / 8;
    const Buffers buffers(work, half);
    const float* columns = transformColumns(
        rows, plan.columns, [&](std::size_t r) { return mergedRow(bins, plan.merging, half, r); },
        buffers.first, buffers.second);
    const __m256 scale = _mm256_set1_ps(1 / static_cast<float>(half));
    transformRows(rows, columns, plan.lanes,
                  [&](std::size_t n, Complex8 v) { storeTime(time, n, v, scale); });
}

} // namespace

std::int64_t realFftPlanSize(int order) noexcept
{
    // Two alignments, one more for the tables, and the record
    return static_cast<std::int64_t>(3 * kFftAlignment + sizeof(RealFftPlan) +
                                     sizeof(float) * TableSizes(order).sum());
}

std::int64_t realFftWorkSize(int order) noexcept
{
    const std::size_t buffers = order <= 6 ? 0 : 2 * (points(order) + 16);
    return static_cast<std::int64_t>(2 * kFftAlignment + sizeof(float) * buffers);
}

const RealFftPlan* initRealFft(void* storage, int order) noexcept
{
    assert(1 <= order && order <= kMaxFftOrder);
    const TableSizes sizes(order);
    auto* plan = static_cast<RealFftPlan*>(alignUp(storage, kFftAlignment));
    auto* separation = static_cast<float*>(alignUp(plan + 1, kFftAlignment));
    float* merging = separation + sizes.separation;
    float* lanes = merging + sizes.merging;
    float* columns = lanes + sizes.lanes;
    fillTables(order, separation, merging, lanes, columns);
    *plan = {order, separation, merging, lanes, columns};
    return plan;
}

void realFftForward(const RealFftPlan& plan, InF time, OutBins bins, float* work) noexcept
{
    float* out = &bins[0].re;
    switch (plan.order) {
    case 1:
        return forwardShort<2>(plan, time.data(), out);
    case 2:
        return forwardShort<4>(plan, time.data(), out);
    case 3:
        return forwardShort<8>(plan, time.data(), out);
    case 4:
        return forwardShort<16>(plan, time.data(), out);
    case 5:
        return forward32(plan, time.data(), out);
    case 6:
        return forward64(plan, time.data(), out);
    default:
        return forwardLong(plan, time.data(), out, work);
    }
}

void realFftInverse(const RealFftPlan& plan, InBins bins, OutF time, float* work) noexcept
{
    const float* in = &bins[0].re;
    switch (plan.order) {
    case 1:
        return inverseShort<2>(plan, in, time.data());
    case 2:
        return inverseShort<4>(plan, in, time.data());
    case 3:
        return inverseShort<8>(plan, in, time.data());
    case 4:
        return inverseShort<16>(plan, in, time.data());
    case 5:
        return inverse32(plan, in, time.data());
    case 6:
        return inverse64(plan, in, time.data());
    default:
        return inverseLong(plan, in, time.data(), work);
    }
}

} // namespace zsp::common
