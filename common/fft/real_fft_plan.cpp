// The tables of the real FFT, and the sizes of plans and work areas.

#include "common/fft/dft.hpp"
#include "common/fft/real_fft_avx2.hpp"
#include "core/state.hpp"

#include <algorithm>
#include <array>
#include <cassert>
#include <cstddef>

namespace zsp::common {

namespace {

std::size_t points(int order) noexcept
{
    return std::size_t{1} << order;
}

/// Floats of each table of a plan.
struct TableSizes {
    std::size_t forward, inverse, rows, columns;

    explicit TableSizes(int order) noexcept
    {
        const std::size_t n = points(order);
        if (order <= kMaxMatrixOrder) {
            forward = n * paddedTo8(n + 2);
            inverse = (n + 2) * paddedTo8(n);
            rows = columns = 0;
        } else {
            forward = inverse = rows = n;
            columns = n / 8;
        }
    }

    std::size_t sum() const noexcept { return forward + inverse + rows + columns; }
};

/// twiddle(k), k = 0 .. count-1, in vectors of `width` with the real parts first; `order` is that
/// of the lanes.
template <std::size_t width, typename Twiddle>
void fillVectors(float* table, std::size_t count, const std::array<std::size_t, width>& order,
                 Twiddle twiddle) noexcept
{
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t lane = i % width, start = i - lane;
        const Root w = twiddle(start + order[lane]);
        table[2 * start + lane] = static_cast<float>(w.re);
        table[2 * start + width + lane] = static_cast<float>(w.im);
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

/// The twiddle factors of split(), h and conj h.
void fillSplitTwiddles(std::size_t n, float* forward, float* inverse) noexcept
{
    const auto h = [n](std::size_t k) {
        const Root w = root(k, n);
        return Root{w.im / 2, -w.re / 2}; // -i/2 w
    };
    fillVectors(forward, n / 2, kNatural, h);
    fillVectors(inverse, n / 2, kSplit, [&](std::size_t k) { return Root{h(k).re, -h(k).im}; });
}

void fillRowTwiddles(int order, float* table) noexcept
{
    const std::size_t half = points(order) / 2;
    if (order == 5)
        fillVectors(table, 16, kNatural4, [](std::size_t i) { return root(i % 4 * (i / 4), 16); });
    else
        fillVectors(table, half, kSplit,
                    [half](std::size_t i) { return root(i % 8 * (i / 8), half); });
}

void fillColumnTwiddles(std::size_t rows, float* table) noexcept
{
    for (std::size_t r = 0; r < rows; ++r) {
        table[2 * r] = static_cast<float>(root(r, rows).re);
        table[2 * r + 1] = static_cast<float>(root(r, rows).im);
    }
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
    const std::size_t buffers = order <= kMaxRegisterOrder ? 0 : 2 * (points(order) + 16);
    return static_cast<std::int64_t>(2 * kFftAlignment + sizeof(float) * buffers);
}

const RealFftPlan* initRealFft(void* storage, int order) noexcept
{
    assert(1 <= order && order <= kMaxFftOrder);
    const TableSizes sizes(order);
    auto* plan = static_cast<RealFftPlan*>(alignUp(storage, kFftAlignment));
    auto* forward = static_cast<float*>(alignUp(plan + 1, kFftAlignment));
    float* inverse = forward + sizes.forward;
    float* rows = inverse + sizes.inverse;
    float* columns = rows + sizes.rows;
    if (order <= kMaxMatrixOrder) {
        fillMatrices(points(order), forward, inverse);
    } else {
        fillSplitTwiddles(points(order), forward, inverse);
        fillRowTwiddles(order, rows);
        if (order > 5) fillColumnTwiddles(points(order) / 16, columns);
    }
    *plan = {order, forward, inverse, rows, columns};
    return plan;
}

} // namespace zsp::common
