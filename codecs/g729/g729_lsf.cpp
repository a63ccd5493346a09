// Arc cosines by a grid of 64 cosines and linear interpolation in between. The cosines fall with
// the index, so one walk up the grid finds the intervals of all ten.

#include "codecs/g729/g729_lsf.hpp"

#include "codecs/g729/g729_tables.hpp"
#include "core/entries.hpp"

namespace zsp::g729 {

namespace {

/// Calls frequency(k, p) for each cosine, the last one first: k is the grid point and p = 0.. the
/// way towards the next one, 2^20 for the whole interval.
template <typename Frequency>
void convert(LspIn lsp_Q15, LsfOut lsf, Frequency frequency) noexcept
{
    std::size_t k = kCosine.size() - 1;
    for (std::size_t i = kOrder; i-- > 0;) {
        const std::int16_t x = lsp_Q15[i];
        while (kCosine[k] < x) // kCosine[0] is the greatest word
            --k;
        // Unordered cosines can be far below the point, but the product stays in 32 bits:
        // 65535 * 26887 < 2^31.
        const std::int32_t p = (x - kCosine[k]) * kArcCosineSlope[k];
        lsf[i] = static_cast<std::int16_t>(frequency(static_cast<std::int32_t>(k), p));
    }
}

} // namespace

void lspToLsf(LspIn lsp_Q15, LsfOut lsf_Q13) noexcept
{
    convert(lsp_Q15, lsf_Q13, [](std::int32_t k, std::int32_t p) {
        const auto freq = static_cast<std::int16_t>(k * 512 + (p >> 11)); // of pi, Q15; truncated
        return (freq * 3217) >> 12;                                       // pi in Q10
    });
}

void lspToLsfNorm(LspIn lsp_Q15, LsfOut lsf_Q15) noexcept
{
    convert(lsp_Q15, lsf_Q15,
            [](std::int32_t k, std::int32_t p) { return k * 256 + ((p + 2048) >> 12); });
}

} // namespace zsp::g729

namespace zsp::entry {

ZspStatus zspsLSPToLSF_G729_16s(const std::int16_t* src, std::int16_t* dst)
{
    if (!src || !dst) return zspStsNullPtrErr;

    g729::lspToLsf(g729::LspIn{src, g729::kOrder}, g729::LsfOut{dst, g729::kOrder});
    return zspStsNoErr;
}

ZspStatus zspsLSPToLSF_Norm_G729_16s(const std::int16_t* src, std::int16_t* dst)
{
    if (!src || !dst) return zspStsNullPtrErr;

    g729::lspToLsfNorm(g729::LspIn{src, g729::kOrder}, g729::LsfOut{dst, g729::kOrder});
    return zspStsNoErr;
}

} // namespace zsp::entry
