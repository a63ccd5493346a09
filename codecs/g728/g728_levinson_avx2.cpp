// The Levinson-Durbin recursion of ITU-T G.728, sixteen coefficients at a time.
//
// The coefficients stay in registers twice, forwards and backwards, so that both ends of a step
// meet in the same lanes: x[m] is a[m], y[m] is a[i-1-m]. What an order waits for is the sum of
// products of the one before, its quotient, and little else: the division is a multiplication by a
// reciprocal that is formed meanwhile, and whether the sum has room is seen behind it. An order
// whose results touch the ends of 16 bits goes through the definition, which halves in the middle
// of it; that is noticed a little too early, never too late.

#include "codecs/g728/g728_blocks.hpp"
#include "codecs/g728/g728_lanes.hpp"

namespace zsp::g728 {

namespace {

constexpr std::size_t kLanes = 16, kPadded = 64;

using Padded = std::array<Word, kPadded>;

/// The correlations from behind, reversed[kLong - l] is r[l], with zeros after r[1].
using Reversed = std::array<Word, 2 * kPadded>;

/// A recursion that waits before order i + 1.
struct Ladder {
    std::size_t i;
    alignas(32) Padded a; // zeros behind i coefficients
    Long alpha;
    int halved;
};

enum class Result { done, bad, noRoom };

/// Lanes from `m` on: all ones in the first.
alignas(32) constexpr std::array<Word, 2 * kPadded> kOneLane = [] {
    std::array<Word, 2 * kPadded> lanes{};
    lanes[kPadded] = -1;
    return lanes;
}();

/// floor(x / alpha) is x * reciprocal >> 46 for 0 <= x < 2^31, 0 < alpha < 2^15.
std::uint64_t reciprocalOf(Long alpha) noexcept
{
    const auto d = static_cast<std::uint64_t>(alpha);
    return ((std::uint64_t{1} << 46) + d - 1) / d;
}

/// As many orders as there is room for, up to `to`. With noRoom the order i is still to do.
template <std::size_t blocks>
Result climb(const Word* r, const Reversed& reversed, std::size_t to, Ladder& ladder) noexcept
{
    __m256i x[blocks], y[blocks];
    std::size_t i = ladder.i;
    {
        alignas(32) std::array<Word, kLanes * blocks> backward{};
        for (std::size_t m = 0; m < i; ++m)
            backward[i - 1 - m] = ladder.a[m];
        for (std::size_t b = 0; b < blocks; ++b) {
            x[b] = avx2::load(&ladder.a[kLanes * b]);
            y[b] = avx2::load(&backward[kLanes * b]);
        }
    }
    const int shift = 1 + ladder.halved;
    Long alpha = ladder.alpha;
    std::uint64_t reciprocal = reciprocalOf(alpha);
    Result result = Result::done;
    for (; i < to; ++i) {
        // The sum wraps; its upper part tells when.
        __m256i sum = _mm256_setzero_si256(), upper = sum;
        for (std::size_t b = 0; b < blocks; ++b) {
            const __m256i pairs =
                _mm256_madd_epi16(x[b], avx2::load(&reversed[kLong - i + kLanes * b]));
            sum = _mm256_add_epi32(sum, pairs);
            upper = _mm256_add_epi32(upper, _mm256_srai_epi32(pairs, 16));
        }
        const Wide total = r[i + 1] * Wide{65536} + avx2::sum32(sum) * (Wide{1} << shift);
        const auto e = static_cast<Long>((total + 0x8000) >> 16);
        const Long size = std::abs(e);
        if (std::abs(avx2::sum32(upper)) > 32000) {
            result = Result::noRoom;
            break;
        }
        if (size >= alpha) {
            result = Result::bad;
            break;
        }
        const auto t = static_cast<Long>(static_cast<std::uint64_t>(size) * reciprocal >> 30);
        const auto half = static_cast<Word>((t + 1) >> 1); // below 32768, for size < alpha
        const Word k = e > 0 ? static_cast<Word>(-half) : half;

        const __m256i factor = _mm256_set1_epi16(k);
        __m256i up[blocks], down[blocks];
        __m256i isFull = _mm256_setzero_si256();
        for (std::size_t b = 0; b < blocks; ++b) {
            up[b] = _mm256_adds_epi16(x[b], _mm256_mulhrs_epi16(factor, y[b])); // k is not -32768
            down[b] = _mm256_adds_epi16(y[b], _mm256_mulhrs_epi16(factor, x[b]));
            const __m256i most = _mm256_cmpeq_epi16(up[b], _mm256_set1_epi16(32767));
            const __m256i least = _mm256_cmpeq_epi16(up[b], _mm256_set1_epi16(-32768));
            isFull = _mm256_or_si256(isFull, _mm256_or_si256(most, least));
        }
        if (!_mm256_testz_si256(isFull, isFull)) {
            result = Result::noRoom;
            break;
        }
        alpha = rh(alpha * Wide{65536} + Wide{2} * k * e);
        reciprocal = reciprocalOf(alpha);

        // The newest coefficient goes behind the others in x and before them in y.
        const Word newest = rh(Wide{t} << 15 >> ladder.halved);
        const __m256i fresh = _mm256_set1_epi16(e > 0 ? static_cast<Word>(-newest) : newest);
        __m256i before = fresh;
        for (std::size_t b = 0; b < blocks; ++b) {
            const __m256i isFresh = avx2::load(&kOneLane[kPadded - i + kLanes * b]);
            x[b] = _mm256_or_si256(up[b], _mm256_and_si256(fresh, isFresh));
            y[b] =
                _mm256_alignr_epi8(down[b], _mm256_permute2x128_si256(before, down[b], 0x21), 14);
            before = down[b];
        }
    }
    for (std::size_t b = 0; b < blocks; ++b)
        avx2::store(&ladder.a[kLanes * b], x[b]);
    ladder.i = i;
    ladder.alpha = alpha;
    return result;
}

} // namespace

bool levinsonAvx2(std::span<const Word> r, int from, int to, Predictor& p) noexcept
{
    const auto last = static_cast<std::size_t>(to);
    Predictor next = p;
    if (from == 0 && !levinsonScalar(r.first(2), 0, 1, next)) return false;
    Reversed reversed{};
    for (std::size_t l = 1; l <= last; ++l)
        reversed[kLong - l] = r[l];
    for (int i = std::max(from, 1); i < to;) {
        if (next.alpha <= 0) return false; // nothing is below it
        // Of a least word and another two products do not fit a lane.
        const auto count = static_cast<std::size_t>(i);
        const auto end = next.a.begin() + i;
        if (std::find(next.a.begin(), end, Word{-32768}) != end)
            return levinsonScalar(r, i, to, next) && (p = next, true);
        Ladder ladder{.i = count, .a = {}, .alpha = next.alpha, .halved = 15 - next.q};
        std::copy_n(next.a.begin(), count, ladder.a.begin());
        const std::size_t top = count < kLanes ? std::min(last, kLanes) : last;
        const Result result = count < kLanes ? climb<1>(r.data(), reversed, top, ladder)
                                             : climb<4>(r.data(), reversed, top, ladder);
        if (result == Result::bad) return false;
        std::copy_n(ladder.a.begin(), ladder.i, next.a.begin());
        next.alpha = static_cast<Word>(ladder.alpha);
        i = static_cast<int>(ladder.i);
        if (result == Result::noRoom) {
            const auto words = r.first(ladder.i + 2);
            if (!levinsonScalar(words, i, i + 1, next)) return false;
            ++i;
        }
    }
    p = next;
    return true;
}

bool expandBandwidthAvx2(std::span<const Word> a, int q, std::span<const Word> weights,
                         std::span<Word> dst) noexcept
{
    Padded expanded;
    const std::span<Word> room(expanded.data(), weights.size());
    const __m128i shift = _mm_cvtsi32_si128(16 - q);
    __m256i isOut = _mm256_setzero_si256();
    std::size_t i = 0;
    for (; i + 8 <= weights.size(); i += 8) {
        const __m256i product = products8(&a[i], &weights[i]);
        const __m256i moved = _mm256_sll_epi32(product, shift);
        isOut = _mm256_or_si256(isOut, _mm256_xor_si256(_mm256_sra_epi32(moved, shift), product));
        avx2::store8(&room[i], upperWords(moved));
    }
    if (!_mm256_testz_si256(isOut, isOut) ||
        !expandBandwidthScalar(a.subspan(i), q, weights.subspan(i), room.subspan(i)))
        return false;
    std::copy(room.begin(), room.end(), dst.begin());
    return true;
}

} // namespace zsp::g728
