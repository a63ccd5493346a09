// Pre-emphasis of the GSM-AMR voice activity detector, option 2. 3GPP TS 26.094 and 26.073.
//
//   y[i] = x[i] + factor x[i-1]

#include "codecs/gsmamr/gsmamr_preemphasis.hpp"

#include "core/avx2.hpp"
#include "core/entries.hpp"

#include <cassert>
#include <cstddef>

namespace zsp::gsmamr {

using fx::Word;

void preEmphasiseScalar(Word factor, In16 src, Out16 dst, Word& memory) noexcept
{
    assert(src.size() == dst.size());
    for (std::size_t i = 0; i < src.size(); ++i) {
        const Word sample = src[i];
        dst[i] = fx::add(sample, fx::mult(factor, memory));
        memory = sample;
    }
}

namespace {

__m256i emphasised(__m256i factor, __m256i samples, __m256i previous) noexcept
{
    __m256i product = avx2::mult(factor, previous);
    // nothing but -32768 squared gives -32768
    product = _mm256_xor_si256(product, _mm256_cmpeq_epi16(product, _mm256_set1_epi16(fx::kMin16)));
    return _mm256_adds_epi16(samples, product);
}

} // namespace

// From the end to the beginning, so that the samples before a block are still there if `dst` is
// `src`.
void preEmphasiseAvx2(Word factor, In16 src, Out16 dst, Word& memory) noexcept
{
    const Word last = src.empty() ? memory : src.back();
    const __m256i vFactor = _mm256_set1_epi16(factor);
    std::size_t i = src.size();
    for (; i > 16; i -= 16)
        avx2::store(&dst[i - 16],
                    emphasised(vFactor, avx2::load(&src[i - 16]), avx2::load(&src[i - 17])));
    if (i == 16) {
        const __m256i samples = avx2::load(src.data());
        const __m256i lower = _mm256_permute2x128_si256(samples, samples, 0x08); // [0 lower]
        const __m256i previous = _mm256_alignr_epi8(samples, lower, 14);
        avx2::store(dst.data(),
                    emphasised(vFactor, samples, _mm256_insert_epi16(previous, memory, 0)));
    } else {
        preEmphasiseScalar(factor, src.first(i), dst.first(i), memory);
    }
    memory = last;
}

} // namespace zsp::gsmamr

namespace zsp::entry {

ZspStatus zspsPreemphasize_GSMAMR_16s(std::int16_t factor, const std::int16_t* src,
                                      std::int16_t* dst, std::int32_t len, std::int16_t* memory)
{
    if (!src || !dst || !memory) return zspStsNullPtrErr;
    if (len < 1) return zspStsSizeErr;

    const auto n = static_cast<std::size_t>(len);
    gsmamr::preEmphasiseAvx2(factor, {src, n}, {dst, n}, *memory);
    return zspStsNoErr;
}

} // namespace zsp::entry
