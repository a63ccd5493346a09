// Real FFT of 2 to 16 points in AVX2: products with the matrix of the transform, whose rows belong
// to inputs and are padded to whole vectors.

#include "common/fft/real_fft_avx2.hpp"
#include "core/avx2.hpp"

#include <algorithm>

namespace zsp::common {

namespace {

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
void forward(const RealFftPlan& plan, const float* time, float* bins) noexcept
{
    multiplyMatrix<n, n + 2, false>(time, plan.forwardTable, bins);
}

/// The imaginary parts of the first and the last bin do not count.
template <std::size_t n>
void inverse(const RealFftPlan& plan, const float* bins, float* time) noexcept
{
    multiplyMatrix<n + 2, n, true>(bins, plan.inverseTable, time);
}

} // namespace

void forwardShort(const RealFftPlan& plan, const float* time, float* bins) noexcept
{
    switch (plan.order) {
    case 1:
        return forward<2>(plan, time, bins);
    case 2:
        return forward<4>(plan, time, bins);
    case 3:
        return forward<8>(plan, time, bins);
    default:
        return forward<16>(plan, time, bins);
    }
}

void inverseShort(const RealFftPlan& plan, const float* bins, float* time) noexcept
{
    switch (plan.order) {
    case 1:
        return inverse<2>(plan, bins, time);
    case 2:
        return inverse<4>(plan, bins, time);
    case 3:
        return inverse<8>(plan, bins, time);
    default:
        return inverse<16>(plan, bins, time);
    }
}

} // namespace zsp::common
