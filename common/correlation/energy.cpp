// Energy of a vector of words with a saturating accumulator.
//
//   sat32(2 * x[0]^2 + 2 * x[1]^2 + ...)
//
// No term is negative, so saturating after every step and saturating once at the end are the same.

#include "common/correlation/energy.hpp"

#include "core/avx2.hpp"

namespace zsp::common {

fx::Long energyScalar(In16 x) noexcept
{
    fx::Long sum = 0;
    for (const fx::Word w : x)
        sum = fx::l_mac(sum, w, w);
    return sum;
}

// The sums of two squares that vpmaddwd gives are at most 2^31: unsigned 32-bit numbers, which are
// added up in 64 bits.
std::int64_t squareSumAvx2(In16 x) noexcept
{
    const __m256i lowerHalf = _mm256_set1_epi64x(0xffffffff);
    __m256i sums = _mm256_setzero_si256();
    std::size_t i = 0;
    for (; i + 16 <= x.size(); i += 16) {
        const __m256i v = avx2::load(&x[i]);
        const __m256i pairs = _mm256_madd_epi16(v, v);
        sums = _mm256_add_epi64(sums, _mm256_and_si256(pairs, lowerHalf));
        sums = _mm256_add_epi64(sums, _mm256_srli_epi64(pairs, 32));
    }
    std::int64_t tail = 0;
    for (const fx::Word w : x.subspan(i))
        tail += w * w;
    return avx2::sum64(sums) + tail;
}

fx::Long energyAvx2(In16 x) noexcept
{
    return fx::sat32(2 * squareSumAvx2(x));
}

} // namespace zsp::common
