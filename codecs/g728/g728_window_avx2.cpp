// The hybrid windows of ITU-T G.728: samples and lags eight at a time.
//
//   lane l of a sum: [w[n] w[n+1]] x [w[n+l] w[n+l+1]], n in steps of two

#include "codecs/g728/g728_blocks.hpp"
#include "codecs/g728/g728_lanes.hpp"

namespace zsp::g728 {

namespace {

constexpr std::size_t kLanes = 8;
constexpr std::size_t kRoom = (kMostLags + kLanes - 1) / kLanes * kLanes;

/// Sums of the products of words first..first+count-1 with those `lag` and up to seven more behind.
/// They wrap. `pairs` has zeros behind the last word.
template <std::size_t n>
__m256i products(const std::array<std::int32_t, n>& pairs, std::size_t first, std::size_t count,
                 std::size_t lag) noexcept
{
    __m256i sum = _mm256_setzero_si256();
    for (std::size_t i = first; i + 1 < first + count; i += 2)
        sum = _mm256_add_epi32(
            sum, _mm256_madd_epi16(_mm256_set1_epi32(pairs[i]), avx2::load(&pairs[i + lag])));
    if (count % 2 != 0) {
        const std::size_t last = first + count - 1;
        sum = _mm256_add_epi32(sum, _mm256_madd_epi16(_mm256_set1_epi32(pairs[last] & 0xffff),
                                                      avx2::load(&pairs[last + lag])));
    }
    return sum;
}

/// Shifts to the left and saturates; a negative shift goes to the right.
__m256i scaled(__m256i lanes, int shift) noexcept
{
    if (shift < 0) return _mm256_sra_epi32(lanes, _mm_cvtsi32_si128(-shift));
    const __m128i count = _mm_cvtsi32_si128(shift);
    const __m256i moved = _mm256_sll_epi32(lanes, count);
    const __m256i hadRoom = _mm256_cmpeq_epi32(_mm256_sra_epi32(moved, count), lanes);
    const __m256i limit =
        _mm256_xor_si256(_mm256_srai_epi32(lanes, 31), _mm256_set1_epi32(fx::kMax32));
    return _mm256_blendv_epi8(limit, moved, hadRoom);
}

/// A sum of two parts, each shifted to the right.
__m256i together(__m256i a, int aShift, __m256i b, int bShift) noexcept
{
    return _mm256_add_epi32(_mm256_sra_epi32(a, _mm_cvtsi32_si128(aShift)),
                            _mm256_sra_epi32(b, _mm_cvtsi32_si128(bShift)));
}

/// Up to this sum at lag 0 all sums of up to 35 products of words of 14 bits fit a lane: no sum is
/// larger than the root of lag 0's times 35 * 2^26.
constexpr std::uint32_t kMostAtLag0 = 1'960'000'000;
static_assert(kMostAtLag0 * (35LL << 26) < 1LL << 62);

} // namespace

int applyWindowAvx2(const WindowShape& shape, std::span<const Word> src, std::span<const Word> q,
                    std::span<Word> windowed) noexcept
{
    const auto one = [&](std::size_t i, int shift) {
        windowed[i] = rh(shifted(Wide{src[i]} * shape.window[i], shift));
    };
    if (q.empty()) {
        const int n = vectorNrm(src, 15);
        std::size_t i = 0;
        for (; i + kLanes <= src.size(); i += kLanes)
            avx2::store8(&windowed[i], upperWords(scaled(products8(&src[i], &shape.window[i]), n)));
        for (; i < src.size(); ++i)
            one(i, -n);
        return n;
    }
    const int least = *std::min_element(q.begin(), q.end());
    std::size_t i = 0;
    for (; i + kLanes <= src.size(); i += kVector) { // what is written too much is overwritten
        const __m256i twice = _mm256_slli_epi32(products8(&src[i], &shape.window[i]), 1);
        const __m128i count = _mm_cvtsi32_si128(q[i / kVector] - least);
        avx2::store8(&windowed[i], upperWords(_mm256_sra_epi32(twice, count)));
    }
    for (; i < src.size(); ++i)
        one(i, q[i / kVector] - least - 1);
    return least;
}

bool correlateAvx2(const WindowShape& shape, std::span<const Word> windowed, int windowedQ,
                   std::span<Word> recursion, int& recursionQ, std::span<Word> r) noexcept
{
    // What a coder windows has 14 bits at most.
    const bool isSmall = std::all_of(windowed.begin(), windowed.end(),
                                     [](Word w) { return -8192 <= w && w <= 8192; });
    std::array<Word, kMostWindow + kLanes> words{};
    std::copy(windowed.begin(), windowed.end(), words.begin());
    const auto pairs = neighbours(words);
    alignas(32) std::array<std::int32_t, kRoom> entering, fresh;
    for (std::size_t lag = 0; lag < r.size(); lag += kLanes) {
        avx2::store(&entering[lag], products(pairs, shape.fresh, shape.entering, lag));
        avx2::store(&fresh[lag], products(pairs, 0, shape.fresh, lag));
    }
    if (!isSmall || static_cast<std::uint32_t>(fresh[0]) > kMostAtLag0)
        return correlateScalar(shape, windowed, windowedQ, recursion, recursionQ, r);

    std::array<Word, kRoom> old{}, next, correlation;
    std::copy(recursion.begin(), recursion.end(), old.begin());
    const LagShifts s =
        renewLag0(shape, windowedQ, entering[0], fresh[0], recursion[0], recursionQ, r[0]);
    const __m256i kept = _mm256_set1_epi32(static_cast<Long>(keptOf(shape)));
    alignas(32) std::array<std::int32_t, kLanes> last{};
    for (std::size_t l = 0; l < r.size(); l += kLanes) {
        const __m256i before =
            _mm256_mullo_epi32(_mm256_cvtepi16_epi32(avx2::load8(&old[l])), kept);
        __m256i a = together(before, s.old, avx2::load(&entering[l]), s.entering);
        avx2::store8(&next[l], upperWords(scaled(a, s.recursion)));
        a = together(_mm256_slli_epi32(_mm256_cvtepi16_epi32(avx2::load8(&next[l])), 16), s.total,
                     avx2::load(&fresh[l]), s.fresh);
        a = scaled(a, s.correlation);
        avx2::store8(&correlation[l], upperWords(a));
        avx2::store(last.data(), a);
    }
    next[0] = recursion[0];
    correlation[0] = r[0];
    std::copy_n(next.begin(), r.size(), recursion.begin());
    std::copy_n(correlation.begin(), r.size(), r.begin());
    return last[(r.size() - 1) % kLanes] != 0;
}

} // namespace zsp::g728
