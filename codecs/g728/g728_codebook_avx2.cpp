// The codebook search of ITU-T G.728, eight shapes at a time.

#include "codecs/g728/g728_blocks.hpp"
#include "codecs/g728/g728_tables.hpp"
#include "core/avx2.hpp"

#include <cstdlib>

namespace zsp::g728 {

namespace {

constexpr std::size_t kLanes = 8;

/// Elements j and j + 1 of all shapes, as the words of a lane.
struct ShapePairs {
    std::array<std::array<std::int32_t, kShapes>, kVector - 1> at;
};
constexpr ShapePairs kPairs = [] {
    ShapePairs pairs{};
    for (std::size_t shape = 0; shape < kShapes; ++shape)
        for (std::size_t j = 0; j + 1 < kVector; ++j) {
            const Word* y = &kShape[shape * kVector + j];
            pairs.at[j][shape] = static_cast<std::uint16_t>(y[0]) | y[1] * 65536;
        }
    return pairs;
}();

/// Products of a shape with any words fit 32 bits.
constexpr bool productsFit() noexcept
{
    for (std::size_t shape = 0; shape < kShapes; ++shape) {
        std::int64_t sum = 0;
        for (std::size_t j = 0; j < kVector; ++j) {
            const Long y = kShape[shape * kVector + j];
            sum += y < 0 ? -y : y;
        }
        if (sum * 32768 > fx::kMax32) return false;
    }
    return true;
}
static_assert(productsFit());

/// Five squares of up to this fit 32 bits without sign.
constexpr Long kMostFiltered = 29308;
static_assert(kVector * Wide{kMostFiltered} * kMostFiltered <= UINT32_MAX);
static_assert(kVector * Wide{kMostFiltered + 1} * (kMostFiltered + 1) > UINT32_MAX);

/// Two words in every lane.
__m256i both(Word lower, Word upper) noexcept
{
    return _mm256_set1_epi32(static_cast<std::uint16_t>(lower) | upper * 65536);
}

/// Eight shapes from `shape` on, elements j and j + 1, with two words.
__m256i times(std::size_t j, std::size_t shape, __m256i words) noexcept
{
    return _mm256_madd_epi16(avx2::load(&kPairs.at[j][shape]), words);
}

} // namespace

void shapeEnergiesAvx2(In<kVector> h, Energies energies) noexcept
{
    const __m256i h01 = both(h[0], h[1]), h23 = both(h[2], h[3]);
    const __m256i h0 = both(0, h[0]), h2 = both(0, h[2]), h4 = both(0, h[4]);
    __m256i largest = _mm256_setzero_si256();
    for (std::size_t shape = 0; shape < kShapes; shape += kLanes) {
        const __m256i filtered[kVector] = {
            times(3, shape, h0), times(3, shape, h01),
            _mm256_add_epi32(times(2, shape, h01), times(3, shape, h2)),
            _mm256_add_epi32(times(1, shape, h01), times(3, shape, h23)),
            _mm256_add_epi32(_mm256_add_epi32(times(0, shape, h01), times(2, shape, h23)),
                             times(3, shape, h4))};
        __m256i sum = _mm256_setzero_si256(); // without sign
        for (const __m256i f : filtered) {
            const __m256i c = _mm256_srai_epi32(f, 14);
            largest = _mm256_max_epi32(largest, _mm256_abs_epi32(c));
            sum = _mm256_add_epi32(sum, _mm256_mullo_epi32(c, c));
        }
        avx2::store(&energies[shape], _mm256_srli_epi32(sum, 15));
    }
    if (avx2::max32(largest) > kMostFiltered) shapeEnergiesScalar(h, energies);
}

int searchAvx2(In<kVector> u, EnergiesIn energies) noexcept
{
    // Of larger energies than a coder has, the products leave 32 bits.
    __m256i isOut = _mm256_setzero_si256();
    for (std::size_t shape = 0; shape < kShapes; shape += kLanes) {
        const __m256i e = avx2::load(&energies[shape]);
        isOut =
            _mm256_or_si256(isOut, _mm256_or_si256(_mm256_cmpgt_epi32(e, _mm256_set1_epi32(120000)),
                                                   _mm256_cmpgt_epi32(_mm256_setzero_si256(), e)));
    }
    if (!_mm256_testz_si256(isOut, isOut)) return searchScalar(u, energies);

    const auto byGain = [](const std::array<Word, 8>& t) {
        return _mm256_setr_epi32(t[0], t[1], t[2], t[3], t[4], t[5], t[6], t[7]);
    };
    const __m256i squared = byGain(kGainSquared), twice = byGain(kGainTwice);
    const __m256i u01 = both(u[0], u[1]), u23 = both(u[2], u[3]), u4 = both(0, u[4]);
    const __m256i zero = _mm256_setzero_si256();
    __m256i best = _mm256_set1_epi32(fx::kMax32), bestIndex = zero;
    __m256i index = _mm256_setr_epi32(0, 8, 16, 24, 32, 40, 48, 56);
    for (std::size_t shape = 0; shape < kShapes; shape += kLanes) {
        const __m256i energy = avx2::load(&energies[shape]);
        const __m256i c = _mm256_add_epi32(
            _mm256_add_epi32(times(0, shape, u01), times(2, shape, u23)), times(3, shape, u4));
        const __m256i size = _mm256_abs_epi32(c);
        const auto above = [&](Word boundary) { // -1 where a larger gain is better
            return _mm256_cmpgt_epi32(size,
                                      _mm256_mullo_epi32(energy, _mm256_set1_epi32(boundary)));
        };
        const __m256i gain = _mm256_abs_epi32(
            _mm256_add_epi32(_mm256_add_epi32(above(kGainBoundary[0]), above(kGainBoundary[1])),
                             above(kGainBoundary[2])));
        const __m256i match =
            _mm256_min_epi32(_mm256_srli_epi32(size, 14), _mm256_set1_epi32(32767));
        const __m256i distortion =
            _mm256_sub_epi32(_mm256_mullo_epi32(_mm256_permutevar8x32_epi32(squared, gain), energy),
                             _mm256_mullo_epi32(_mm256_permutevar8x32_epi32(twice, gain), match));
        const __m256i sign = _mm256_andnot_si256(_mm256_cmpgt_epi32(c, zero), _mm256_set1_epi32(4));
        const __m256i isBetter = _mm256_cmpgt_epi32(best, distortion);
        best = _mm256_min_epi32(best, distortion);
        bestIndex = _mm256_blendv_epi8(
            bestIndex, _mm256_add_epi32(index, _mm256_add_epi32(gain, sign)), isBetter);
        index = _mm256_add_epi32(index, _mm256_set1_epi32(8 * kLanes));
    }
    // Of equal lanes the first shape.
    const __m256i isBest = _mm256_cmpeq_epi32(best, _mm256_set1_epi32(avx2::min32(best)));
    return avx2::min32(_mm256_blendv_epi8(_mm256_set1_epi32(fx::kMax32), bestIndex, isBest));
}

} // namespace zsp::g728
