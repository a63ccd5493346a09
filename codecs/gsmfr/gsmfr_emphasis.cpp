// Before the encoder, GSM 06.10, clauses 5.2.1 to 5.2.3: 13-bit samples, a notch at 0 Hz, and a
// high-frequency emphasis.
//
//   so = sample >> 3 << 2,   y[n] = so[n] - so[n-1] + 0.999 y[n-1],   s[n] = y[n] - 0.86 y[n-1]
//
// Behind the decoder, clauses 5.3.5 to 5.3.7: the inverse of the emphasis, and 13 bits again.

#include "codecs/gsmfr/gsmfr_emphasis.hpp"

#include "codecs/gsmfr/gsmfr_tables.hpp"
#include "core/avx2.hpp"
#include "core/entries.hpp"
#include "core/fixed_point.hpp"
#include "core/state.hpp"

#include <algorithm>
#include <array>
#include <cassert>

namespace zsp::gsmfr {

void preprocessScalar(In16 src, Out16 dst, PreprocessState& state) noexcept
{
    assert(src.size() == dst.size());
    for (std::size_t k = 0; k < src.size(); ++k) {
        // downscaling of the input signal
        const auto so = static_cast<fx::Word>(src[k] >> 3 << 2);

        // offset compensation: a long times a word, its upper part msp and its 15 lower bits lsp
        const fx::Word s1 = fx::sub(so, state.z1);
        state.z1 = so;
        fx::Long s2 = s1 * 32768;
        const fx::Long msp = state.lz2 >> 15;
        const auto lsp = static_cast<fx::Word>(state.lz2 - msp * 32768);
        s2 = fx::l_add(s2, fx::mult_r(lsp, kAlpha_Q15));
        state.lz2 = fx::l_add(msp * kAlpha_Q15, s2); // |msp| <= 2^16: the product fits
        const fx::Word sof = fx::sat16(fx::l_add(state.lz2, 16384) >> 15);

        // pre-emphasis
        dst[k] = fx::add(sof, fx::mult_r(state.mp, -kBeta_Q15));
        state.mp = sof;
    }
}

void deemphasisScalar(In16 src, Out16 dst, std::int16_t& msr) noexcept
{
    assert(src.size() == dst.size());
    for (std::size_t k = 0; k < src.size(); ++k) {
        msr = fx::add(src[k], fx::mult_r(msr, kBeta_Q15));
        dst[k] = static_cast<fx::Word>(fx::add(msr, msr) & ~7); // upscaling and truncation
    }
}

namespace {

constexpr std::size_t kBlock = 160;

/// One sample of `a` in the lowest word, nothing else of use.
__m128i word(std::int16_t a) noexcept
{
    return _mm_cvtsi32_si128(a);
}

/// The parts of a product, msp * 32735 and mult_r(lsp, 32735), are one rounded product of 64 bits:
/// msp * 32768 * 32735 has no bits below the point. What a word or a long does not hold ends the
/// block with false; no state that a signal leads to gets there.
bool compensate(In16 steps, Out16 sof, fx::Long& lz2) noexcept
{
    std::int64_t y = lz2;
    std::uint64_t beyond = 0;
    for (std::size_t k = 0; k < steps.size(); ++k) {
        y = std::int64_t{steps[k]} * 32768 + ((y * kAlpha_Q15 + 16384) >> 15);
        const std::int64_t rounded = y + 16384;
        sof[k] = static_cast<fx::Word>(rounded >> 15);
        beyond |= static_cast<std::uint64_t>(rounded + (std::int64_t{1} << 30)) >> 31;
    }
    lz2 = static_cast<fx::Long>(y);
    return beyond == 0;
}

void preprocessBlock(In16 src, Out16 dst, PreprocessState& state) noexcept
{
    alignas(32) std::array<std::int16_t, kBlock + 16> scaled, sof; // element 15: before the first
    alignas(32) std::array<std::int16_t, kBlock> steps;
    const std::size_t n = src.size();
    scaled[15] = state.z1;
    std::copy(src.begin(), src.end(), &scaled[16]);
    for (std::size_t k = 16; k < n + 16; k += 16)
        avx2::store(&scaled[k], _mm256_slli_epi16(_mm256_srai_epi16(avx2::load(&scaled[k]), 3), 2));
    for (std::size_t k = 0; k < n; k += 16)
        avx2::store(&steps[k],
                    _mm256_subs_epi16(avx2::load(&scaled[k + 16]), avx2::load(&scaled[k + 15])));
    fx::Long lz2 = state.lz2;
    if (!compensate({steps.data(), n}, {&sof[16], n}, lz2))
        return preprocessScalar(src, dst, state);

    sof[15] = state.mp;
    const __m256i factor = _mm256_set1_epi16(-kBeta_Q15);
    for (std::size_t k = 0; k < n; k += 16) { // steps serves for the results
        const __m256i last = _mm256_mulhrs_epi16(avx2::load(&sof[k + 15]), factor);
        avx2::store(&steps[k], _mm256_adds_epi16(avx2::load(&sof[k + 16]), last));
    }
    std::copy_n(steps.begin(), n, dst.begin());
    state = {.lz2 = lz2, .z1 = scaled[n + 15], .mp = sof[n + 15]};
}

} // namespace

void preprocessFast(In16 src, Out16 dst, PreprocessState& state) noexcept
{
    for (std::size_t i = 0; i < src.size(); i += kBlock) {
        const std::size_t n = std::min(kBlock, src.size() - i);
        preprocessBlock(src.subspan(i, n), dst.subspan(i, n), state);
    }
}

// The recursion in the lowest words of vectors, whose multiplication rounds and whose addition
// saturates by itself; the factor is not -32768, the one for which vpmulhrsw differs from mult_r.
void deemphasisFast(In16 src, Out16 dst, std::int16_t& msr) noexcept
{
    __m128i last = word(msr);
    const __m128i factor = word(kBeta_Q15);
    for (std::size_t k = 0; k < src.size(); ++k) {
        last = _mm_adds_epi16(word(src[k]), _mm_mulhrs_epi16(last, factor));
        dst[k] = static_cast<fx::Word>(_mm_cvtsi128_si32(_mm_adds_epi16(last, last)) & ~7);
    }
    msr = static_cast<fx::Word>(_mm_cvtsi128_si32(last));
}

} // namespace zsp::gsmfr

namespace zsp::entry {

ZspStatus zspsPreprocess_GSMFR_16s(const std::int16_t* src, std::int16_t* dst, std::int32_t len,
                                   ZspPreprocessState_GSMFR* state)
{
    if (!src || !dst || !state) return zspStsNullPtrErr;
    if (len < 1) return zspStsSizeErr;

    const auto n = static_cast<std::size_t>(len);
    InPlace<gsmfr::PreprocessState> record(state);
    gsmfr::preprocessFast({src, n}, {dst, n}, *record);
    return zspStsNoErr;
}

ZspStatus zspsDeemphasis_GSMFR_16s(const std::int16_t* src, std::int16_t* dst, std::int32_t len,
                                   std::int16_t* memory)
{
    if (!src || !dst || !memory) return zspStsNullPtrErr;
    if (len < 1) return zspStsSizeErr;

    const auto n = static_cast<std::size_t>(len);
    gsmfr::deemphasisFast({src, n}, {dst, n}, *memory);
    return zspStsNoErr;
}

} // namespace zsp::entry
