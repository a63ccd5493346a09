// The fast searches of the adaptive codebook of ITU-T G.729: sums of products in vectors, where
// what the factors can reach tells that no step of the definition saturates.

#include "codecs/g729/coder/g729_lagsearch.hpp"
#include "codecs/g729/coder/g729_sums.hpp"
#include "common/math/inv_sqrt.hpp"
#include "core/avx2.hpp"

#include <algorithm>
#include <array>

namespace zsp::g729 {

namespace {

/// Of a subframe's words below this the energy stays within kReach.
constexpr std::int32_t kLoud = 5181;
static_assert(40LL * kLoud * kLoud < kReach);

/// The response in a form that gives eight outputs for two inputs: {h[m], h[m-1]}, for m = -40
/// to 39.
struct PairedResponse {
    alignas(32) std::array<std::int32_t, 2 * kSubframe> pairs{};

    explicit PairedResponse(In<kSubframe> h) noexcept
    {
        for (std::size_t m = 0; m < kSubframe; ++m)
            pairs[kSubframe + m] = (m > 0 ? h[m - 1] : 0) * 65536 + (h[m] & 0xffff);
    }
};

} // namespace

void convolveAvx2(In<kSubframe> x, In<kSubframe> h, Out<kSubframe> y) noexcept
{
    if (magnitudes(h) * largestOf(x) >= kReach) return convolveScalar(x, h, y);
    const PairedResponse response(h);
    __m256i sums[5] = {};
    for (std::size_t i = 0; i < kSubframe; i += 2) {
        const __m256i two = _mm256_set1_epi32(x[i + 1] * 65536 + (x[i] & 0xffff));
        for (std::size_t k = i / 8; k < 5; ++k)
            sums[k] = _mm256_add_epi32(
                sums[k],
                _mm256_madd_epi16(two, avx2::load(&response.pairs[kSubframe + 8 * k - i])));
    }
    for (auto& sum : sums)
        sum = _mm256_srai_epi32(sum, 12);
    avx2::store(&y[0], avx2::packInOrder(sums[0], sums[1]));
    avx2::store(&y[16], avx2::packInOrder(sums[2], sums[3]));
    avx2::store8(&y[32], _mm256_castsi256_si128(avx2::packInOrder(sums[4], sums[4])));
}

namespace {

/// normalisedCorrelationsScalar() with sums and steps in vectors.
void normalisedCorrelationsAvx2(In<kSubframe> target, In<kSubframe> h, int first, std::size_t count,
                                const Word* e, std::array<Word, kLagCorrelations>& corr) noexcept
{
    // One word in front, which the next vector's shift brings in.
    alignas(32) std::array<Word, 64> room{};
    const auto filtered = std::span(room).subspan<1, kSubframe>();
    convolveAvx2(spanOf<kSubframe>(e - first), h, filtered);
    const std::int64_t targetReach = magnitudes(target);
    const auto energyOf = [&](std::int32_t most) {
        return most <= kLoud ? 2 * plainDot(filtered.data(), filtered.data())
                             : celp::energy(filtered);
    };
    int shift = 0;
    std::int32_t most = largestOf(filtered);
    if (energyOf(most) > 67108864) {
        shift = 2;
        for (Word& v : filtered)
            v = static_cast<Word>(v >> shift);
    }
    __m256i response[5];
    for (std::size_t k = 0; k < 5; ++k)
        response[k] = _mm256_cvtepi16_epi32(avx2::load8(&h[8 * k]));
    const __m128i down = _mm_cvtsi32_si128(12 + shift);

    for (std::size_t k = 0; k < count; ++k) {
        most = largestOf(filtered);
        const Long root = common::invSqrt(energyOf(most));
        const Long sum = targetReach * most < kReach ? 2 * plainDot(target.data(), filtered.data())
                                                     : celp::dot(target, filtered.data());
        corr[k] =
            fx::extract_h(fx::l_shl(celp::mpy_32(fx::l_extract(sum), fx::l_extract(root)), 16));
        if (k + 1 == count) break;
        const Word next = *(e - (first + static_cast<int>(k) + 1));
        const __m256i x = _mm256_set1_epi32(next & 0xffff);
        __m256i step[5];
        for (std::size_t j = 0; j < 5; ++j)
            step[j] = _mm256_sra_epi32(_mm256_madd_epi16(x, response[j]), down);
        const __m256i a =
            _mm256_adds_epi16(avx2::packInOrder(step[0], step[1]), avx2::load(&room[0]));
        const __m256i b =
            _mm256_adds_epi16(avx2::packInOrder(step[2], step[3]), avx2::load(&room[16]));
        const __m128i c = _mm_adds_epi16(
            _mm256_castsi256_si128(avx2::packInOrder(step[4], step[4])), avx2::load8(&room[32]));
        avx2::store(&filtered[0], a);
        avx2::store(&filtered[16], b);
        avx2::store8(&filtered[32], c);
        filtered[0] = fx::shr(next, shift);
    }
}

} // namespace

Lag adaptiveSearchAvx2(In<kSubframe> target, In<kSubframe> response, int first, int last,
                       bool isFirst, Excitation excitation) noexcept
{
    return searchLag(normalisedCorrelationsAvx2, target, response, first, last, isFirst,
                     excitation);
}

Lag adaptiveSearchAAvx2(In<kSubframe> correlation, int first, int last, bool isFirst,
                        Excitation excitation) noexcept
{
    return searchLagA(
        [](In<kSubframe> x, const Word* y) { return fastDot(x, spanOf<kSubframe>(y), 0).value; },
        correlation, first, last, isFirst, excitation);
}

} // namespace zsp::g729
