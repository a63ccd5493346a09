// The long-term post-filter of ITU-T G.729 with sums in vectors. Words are scaled to 13 bits, for
// which no sum of products of the definition saturates but those with the long filter's output.

#include "codecs/g729/decoder/g729_longterm.hpp"
#include "codecs/g729/decoder/g729_vectors.hpp"

namespace zsp::g729 {

namespace {

/// |z| <= 2^12, and magnitudes of a short filter's taps sum to 39084 at most, so |y| <= 4886: twice
/// the squares of 40 are below 2^31.
static_assert([] {
    for (const auto& h : kShortInterpolation) {
        int sum = 0;
        for (const int tap : h)
            sum += tap < 0 ? -tap : tap;
        if (sum > 39084) return false;
    }
    return std::int64_t{2} * 40 * 4886 * 4886 < std::int64_t{1} << 31;
}());
/// |Z| <= 8561 of a long filter: the squares of 40 fit 32 bits without a sign.
static_assert(std::int64_t{40} * 8561 * 8561 < std::int64_t{1} << 32);

std::int32_t pairOf(Word first, Word second) noexcept
{
    return second * 65536 + (first & 0xffff);
}

struct Vectors {
    static int scale(PostResidual residual, Word* dst) noexcept
    {
        const __m256i most = _mm256_set1_epi16(fx::kMax16);
        __m256i bits = _mm256_setzero_si256();
        for (std::size_t i = 0; i < residual.size(); i += 16)
            bits = _mm256_or_si256(
                bits, _mm256_min_epu16(_mm256_abs_epi16(avx2::load(&residual[i])), most));
        __m128i b = _mm_or_si128(_mm256_castsi256_si128(bits), _mm256_extracti128_si256(bits, 1));
        b = _mm_or_si128(b, _mm_srli_si128(b, 8));
        b = _mm_or_si128(b, _mm_srli_si128(b, 4));
        b = _mm_or_si128(b, _mm_srli_si128(b, 2));
        const int shift = 3 - fx::norm_s(static_cast<Word>(_mm_extract_epi16(b, 0)));
        const __m128i right = _mm_cvtsi32_si128(std::max(shift, 0));
        const __m128i left = _mm_cvtsi32_si128(std::max(-shift, 0));
        for (std::size_t i = 0; i < residual.size(); i += 16)
            avx2::store(dst + i,
                        _mm256_sll_epi16(_mm256_sra_epi16(avx2::load(&residual[i]), right), left));
        return shift;
    }

    /// Of up to |Z|; only the whole saturates, as squares add up.
    static Long energy(const Word* x) noexcept
    {
        const auto sum = static_cast<std::uint32_t>(dot40(x, x));
        return fx::sat32(2 * std::int64_t{sum});
    }
    static Long cross(const Word* x, const Word* y) noexcept { return 2 * dot40(x, y); }
    /// By Cauchy and Schwarz no partial sum is larger than the root of both energies' product.
    static Long longCross(const Word* x, const Word* y) noexcept
    {
        const std::int64_t ex = static_cast<std::uint32_t>(dot40(x, x));
        const std::int64_t ey = static_cast<std::uint32_t>(dot40(y, y));
        if ((ex >> 2) * (ey >> 2) >= std::int64_t{1} << 55) return celp::dot({x, kSubframe}, y);
        return cross(x, y);
    }

    /// Sixteen outputs of a filter of four taps, of which two stand in a pair.
    struct Taps4 {
        __m256i low01, high01, low23, high23;

        explicit Taps4(const Word* newest) noexcept
        {
            const __m256i v0 = avx2::load(newest), v1 = avx2::load(newest - 1);
            const __m256i v2 = avx2::load(newest - 2), v3 = avx2::load(newest - 3);
            low01 = _mm256_unpacklo_epi16(v0, v1);
            high01 = _mm256_unpackhi_epi16(v0, v1);
            low23 = _mm256_unpacklo_epi16(v2, v3);
            high23 = _mm256_unpackhi_epi16(v2, v3);
        }
        __m256i outputs(const std::array<Word, 4>& h) const noexcept
        {
            const __m256i h01 = _mm256_set1_epi32(pairOf(h[0], h[1]));
            const __m256i h23 = _mm256_set1_epi32(pairOf(h[2], h[3]));
            return roundPairs(
                _mm256_add_epi32(_mm256_madd_epi16(low01, h01), _mm256_madd_epi16(low23, h23)),
                _mm256_add_epi32(_mm256_madd_epi16(high01, h01), _mm256_madd_epi16(high23, h23)));
        }
    };

    static void shortFilter(const std::array<Word, 4>& h, const Word* newest, Word* y) noexcept
    {
        for (std::size_t n = 0; n < 48; n += 16)
            avx2::store(y + n, Taps4(newest + n).outputs(h));
    }

    static void longFilter(const std::array<Word, 16>& h, const Word* newest, Word* y) noexcept
    {
        for (std::size_t n = 0; n < 48; n += 16) {
            __m256i low = _mm256_setzero_si256(), high = low;
            for (std::size_t i = 0; i < 16; i += 2) {
                const __m256i v0 = avx2::load(newest + n - i), v1 = avx2::load(newest + n - i - 1);
                const __m256i pair = _mm256_set1_epi32(pairOf(h[i], h[i + 1]));
                low = _mm256_add_epi32(low, _mm256_madd_epi16(_mm256_unpacklo_epi16(v0, v1), pair));
                high =
                    _mm256_add_epi32(high, _mm256_madd_epi16(_mm256_unpackhi_epi16(v0, v1), pair));
            }
            avx2::store(y + n, roundPairs(low, high));
        }
    }

    static void allPhases(const Word* now, const Word* newest, longterm::Phases& phases) noexcept
    {
        const std::array<Taps4, 3> past = {Taps4(newest), Taps4(newest + 16), Taps4(newest + 32)};
        // The sub-frame from its place, and from one place later for the last 40 outputs; what is
        // beyond it is 0.
        const __m256i firstHalf = _mm256_set_m128i(_mm_setzero_si128(), _mm_set1_epi16(-1));
        const __m256i now2 = _mm256_zextsi128_si256(avx2::load8(now + 32));
        alignas(32) std::array<Word, 48> moved{};
        std::copy_n(now, kSubframe, &moved[1]);
        __m256i sums[24]; // energies, crosses, crosses of what is one later
        std::array<std::array<Word, 2>, longterm::kPhases> ends;
        sums[7] = sums[15] = sums[23] = _mm256_setzero_si256();
        for (std::size_t p = 0; p < longterm::kPhases; ++p) {
            const __m256i y0 = past[0].outputs(kShortInterpolation[p]);
            const __m256i y1 = past[1].outputs(kShortInterpolation[p]);
            const __m256i y2 = past[2].outputs(kShortInterpolation[p]);
            const __m256i inside = _mm256_and_si256(y2, firstHalf);
            sums[p] = sumOf3(y0, y0, y1, y1, inside, inside);
            sums[8 + p] = sumOf3(y0, avx2::load(now), y1, avx2::load(now + 16), y2, now2);
            sums[16 + p] = sumOf3(y0, avx2::load(&moved[0]), y1, avx2::load(&moved[16]), y2,
                                  avx2::load(&moved[32]));
            ends[p] = {static_cast<Word>(_mm256_extract_epi16(y0, 0)),
                       static_cast<Word>(_mm256_extract_epi16(y2, 8))};
        }
        alignas(32) std::array<Long, 24> totals;
        for (std::size_t k = 0; k < 24; k += 8)
            avx2::store(&totals[k], sumEach(&sums[k]));
        for (std::size_t p = 0; p < longterm::kPhases; ++p) {
            const auto [first, last] = ends[p];
            const Long energy = 2 * totals[p];
            phases[p] = {first,
                         last,
                         {energy, energy + 2 * (last * last - first * first)},
                         {2 * totals[8 + p], 2 * totals[16 + p]}};
        }
    }

    static void mix(Word gain_Q15, const Word* r, const Word* y, Out<kSubframe> dst) noexcept
    {
        const __m256i gains =
            _mm256_set1_epi32(pairOf(gain_Q15, static_cast<Word>(32768 - gain_Q15)));
        for (std::size_t n = 0; n < kSubframe; n += 8)
            avx2::store8(&dst[n], mixPairs<15>(avx2::load8(r + n), avx2::load8(y + n), gains));
    }
};

} // namespace

Word longTermPostFilterAvx2(Word lag, PostResidual residual, Out<kSubframe> dst) noexcept
{
    return longterm::longTermPostFilter<Vectors>(lag, residual, dst);
}

} // namespace zsp::g729
