// Pre-emphasis in single precision:
//
//   y[i] = x[i] - factor x[i-1]

#include "common/filter/preemphasis.hpp"

#include "core/avx2.hpp"
#include "core/entries.hpp"

#include <cstddef>

namespace zsp::common {

void preemphasizeScalar(float factor, OutF x, float before) noexcept
{
    for (auto& value : x) {
        const float input = value;
        value = input - factor * before;
        before = input;
    }
}

// From the end to the front, so that every input is read before it is overwritten.
void preemphasizeAvx2(float factor, OutF x, float before) noexcept
{
    const __m256 factors = _mm256_set1_ps(factor);
    std::size_t end = x.size();
    for (; end >= 9; end -= 8) {
        float* const p = &x[end - 8];
        avx2::store(p, _mm256_sub_ps(avx2::load(p), _mm256_mul_ps(factors, avx2::load(p - 1))));
    }
    preemphasizeScalar(factor, x.first(end), before);
}

} // namespace zsp::common

namespace zsp::entry {

ZspStatus zspsPreemphasize_32f_I(float factor, float* srcDst, std::int32_t len, float* memory)
{
    if (!srcDst || !memory) return zspStsNullPtrErr;
    if (len < 1) return zspStsSizeErr;

    const OutF x(srcDst, static_cast<std::size_t>(len));
    const float before = *memory;
    *memory = x.back();
    common::preemphasizeAvx2(factor, x, before);
    return zspStsNoErr;
}

} // namespace zsp::entry
