// The Levinson-Durbin recursion of ITU-T G.728, sixteen coefficients at a time.
//
// The coefficients stand in memory twice, forwards and backwards, so that both ends of a step meet
// in the same lanes. A step whose results touch the ends of 16 bits goes through the definition,
// which halves in the middle of it; the flag is raised a little too early, never too late.

#include "codecs/g728/g728_blocks.hpp"
#include "core/avx2.hpp"

namespace zsp::g728 {

namespace {

constexpr std::size_t kLanes = 16, kPadded = 64;

/// Fifty coefficients with zeros behind them; backward[kPadded - 1 - m] is forward[m], and zeros
/// follow there too.
struct Coefficients {
    alignas(32) std::array<Word, kPadded> forward{};
    alignas(32) std::array<Word, 2 * kPadded> backward{};

    void set(std::size_t m, Word value) noexcept
    {
        forward[m] = value;
        backward[kPadded - 1 - m] = value;
    }
};

/// The sum of products of 16-bit words, `r` from behind. No word of `r` is -32768.
Wide product(const Word* a, const Word* r, std::size_t blocks) noexcept
{
    __m256i upper = _mm256_setzero_si256(), lower = upper;
    for (std::size_t b = 0; b < blocks; ++b) {
        const __m256i pairs =
            _mm256_madd_epi16(avx2::load(a + kLanes * b), avx2::load(r + kLanes * b));
        upper = _mm256_add_epi32(upper, _mm256_srai_epi32(pairs, 16));
        lower = _mm256_add_epi32(lower, _mm256_and_si256(pairs, _mm256_set1_epi32(0xffff)));
    }
    return avx2::sum32(upper) * Wide{65536} + avx2::sum32(lower);
}

/// a[j] += k * a[i-1-j] with k in Q15. False where a result has no room, or might have none; then
/// nothing has changed.
bool reflectLanes(Coefficients& c, std::size_t i, Word k, std::size_t blocks) noexcept
{
    const __m256i factor = _mm256_set1_epi16(k);
    Word* const backward = &c.backward[kPadded - i];
    __m256i up[4], down[4];
    __m256i isFull = _mm256_setzero_si256();
    for (std::size_t b = 0; b < blocks; ++b) {
        const __m256i x = avx2::load(&c.forward[kLanes * b]), y = avx2::load(backward + kLanes * b);
        up[b] = _mm256_adds_epi16(x, _mm256_mulhrs_epi16(factor, y)); // k is not -32768
        down[b] = _mm256_adds_epi16(y, _mm256_mulhrs_epi16(factor, x));
        const __m256i most = _mm256_cmpeq_epi16(up[b], _mm256_set1_epi16(32767));
        const __m256i least = _mm256_cmpeq_epi16(up[b], _mm256_set1_epi16(-32768));
        isFull = _mm256_or_si256(isFull, _mm256_or_si256(most, least));
    }
    if (!_mm256_testz_si256(isFull, isFull)) return false;
    for (std::size_t b = 0; b < blocks; ++b) {
        avx2::store(&c.forward[kLanes * b], up[b]);
        avx2::store(backward + kLanes * b, down[b]);
    }
    return true;
}

} // namespace

bool levinsonAvx2(std::span<const Word> r, int from, int to, Predictor& p) noexcept
{
    const auto last = static_cast<std::size_t>(to);
    if (std::find(r.begin(), r.end(), Word{-32768}) != r.end())
        return levinsonScalar(r, from, to, p); // two such products do not fit a lane
    Predictor next = p;
    if (from == 0) {
        if (!levinsonScalar(r.first(2), 0, 1, next)) return false;
        from = 1;
    }
    alignas(32) std::array<Word, 2 * kPadded> reversed{}; // reversed[kLong - l] is r[l]
    for (std::size_t l = 0; l <= last; ++l)
        reversed[kLong - l] = r[l];
    Coefficients c;
    for (std::size_t m = 0; m < static_cast<std::size_t>(from); ++m)
        c.set(m, next.a[m]);

    int halved = 15 - next.q;
    for (auto i = static_cast<std::size_t>(from); i < last; ++i) {
        const std::size_t blocks = (i + kLanes - 1) / kLanes;
        const Wide sum = product(c.forward.data(), &reversed[kLong - i], blocks);
        const Long e = rh(r[i + 1] * Wide{65536} + sum * (Wide{2} << halved));
        if (std::abs(e) >= next.alpha) return false;
        const auto size = static_cast<std::uint32_t>(std::abs(e)) << 16; // below 2^31
        const Wide t = Wide{size / static_cast<std::uint32_t>(next.alpha)} << 15;
        const Word k = e > 0 ? static_cast<Word>(-rh(t)) : rh(t);
        const Wide alpha = next.alpha * Wide{65536} + Wide{2} * k * e;
        if (alpha <= 0) return false;
        next.alpha = rh(alpha);
        if (!reflectLanes(c, i, k, blocks)) {
            if (!reflect(std::span(c.forward).first(i), 2 * k, halved)) return false;
            for (std::size_t m = 0; m < i; ++m)
                c.set(m, c.forward[m]);
        }
        const Word newest = rh(t >> halved);
        c.set(i, e > 0 ? static_cast<Word>(-newest) : newest);
    }
    std::copy_n(c.forward.begin(), last, next.a.begin());
    next.q = 15 - halved;
    p = next;
    return true;
}

} // namespace zsp::g728
