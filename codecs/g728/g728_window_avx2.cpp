// The correlations of the G.728 hybrid windows, eight lags at a time.
//
//   lane l of a sum: [w[n] w[n+1]] x [w[n+l] w[n+l+1]], n in steps of two

#include "codecs/g728/g728_blocks.hpp"
#include "core/avx2.hpp"

namespace zsp::g728 {

namespace {

constexpr std::size_t kLanes = 8;
/// Pairs whose products fit a lane together: 30 products of words of 14 bits.
constexpr std::size_t kMostPairs = 15;

/// Neighbouring words, zeros behind the last.
using Pairs = std::array<std::int32_t, kMostWindow + 3 * kLanes>;

Pairs pairsOf(std::span<const Word> windowed) noexcept
{
    std::array<Word, kMostWindow + 3 * kLanes + 1> words{};
    std::copy(windowed.begin(), windowed.end(), words.begin());
    Pairs pairs;
    for (std::size_t i = 0; i < pairs.size(); ++i)
        pairs[i] = static_cast<std::uint16_t>(words[i]) | words[i + 1] * 65536;
    return pairs;
}

/// Adds to eight sums the products of words first..first+count-1 with those `lag` and more behind.
void addProducts(const Pairs& pairs, std::size_t first, std::size_t count, std::size_t lag,
                 std::int64_t* sums) noexcept
{
    while (count > 0) {
        const std::size_t some = std::min(count, 2 * kMostPairs);
        __m256i acc = _mm256_setzero_si256();
        for (std::size_t n = first; n < first + some; n += 2) {
            // Of an odd number the last pair has one word.
            const std::int32_t pair = n + 1 < first + some ? pairs[n] : pairs[n] & 0xffff;
            acc = _mm256_add_epi32(
                acc, _mm256_madd_epi16(_mm256_set1_epi32(pair), avx2::load(&pairs[n + lag])));
        }
        alignas(32) std::int32_t lanes[kLanes];
        avx2::store(lanes, acc);
        for (std::size_t l = 0; l < kLanes; ++l)
            sums[l] += lanes[l];
        first += some;
        count -= some;
    }
}

} // namespace

bool correlateAvx2(const WindowShape& shape, std::span<const Word> windowed, int windowedQ,
                   std::span<Word> recursion, int& recursionQ, std::span<Word> r) noexcept
{
    // What a coder windows has 14 bits at most.
    const bool isSmall = std::all_of(windowed.begin(), windowed.end(),
                                     [](Word w) { return -8192 <= w && w <= 8192; });
    if (!isSmall) return correlateScalar(shape, windowed, windowedQ, recursion, recursionQ, r);

    const Pairs pairs = pairsOf(windowed);
    constexpr std::size_t kRoom = (kMostLags + kLanes - 1) / kLanes * kLanes;
    std::array<Wide, kRoom> entering{}, fresh{};
    for (std::size_t lag = 0; lag < r.size(); lag += kLanes) {
        addProducts(pairs, shape.fresh, shape.entering, lag, &entering[lag]);
        addProducts(pairs, 0, shape.fresh, lag, &fresh[lag]);
    }
    WindowSums sums;
    std::copy_n(entering.begin(), r.size(), sums.entering.begin());
    std::copy_n(fresh.begin(), r.size(), sums.fresh.begin());
    return renewCorrelation(shape, windowedQ, sums, recursion, recursionQ, r);
}

} // namespace zsp::g728
