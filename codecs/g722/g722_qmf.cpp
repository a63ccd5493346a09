// Quadrature-mirror filters of ITU-T G.722, 24 taps h (doubled here) over a line w of the last 24
// samples, the oldest first:
//
//   even = sum of h[2i] w[2i],  odd = sum of h[2i+1] w[2i+1]
//   analysis:   xL = limit((odd + even) >> 15),  xH = limit((odd - even) >> 15)       15 bits
//   synthesis:  w takes in rL + rH, then rL - rH; out = sat16(odd >> 12), sat16(even >> 12)
//
// |even| and |odd| are at most 12964 * 32768, so neither they nor their sum leave 32 bits.

#include "codecs/g722/g722_qmf.hpp"

#include "codecs/g722/g722_tables.hpp"
#include "core/avx2.hpp"
#include "core/entries.hpp"
#include "core/fixed_point.hpp"

#include <algorithm>
#include <array>
#include <cassert>

namespace zsp::g722 {

namespace {

struct Sums {
    std::int32_t even = 0;
    std::int32_t odd = 0;
};

/// Shifts two samples into the line and filters it.
Sums filter(DelayLine line, std::int16_t earlier, std::int16_t later) noexcept
{
    std::copy(line.begin() + 2, line.end(), line.begin());
    line[22] = earlier;
    line[23] = later;
    Sums sums;
    for (std::size_t i = 0; i < line.size(); i += 2) {
        sums.even += kQmf[i] * line[i];
        sums.odd += kQmf[i + 1] * line[i + 1];
    }
    return sums;
}

std::int16_t limit15(std::int32_t x) noexcept
{
    return static_cast<std::int16_t>(std::clamp(x, -16384, 16383));
}

} // namespace

void analyseScalar(In16 samples, Out16 pairs, DelayLine line) noexcept
{
    assert(samples.size() == pairs.size() && samples.size() % 2 == 0);
    for (std::size_t k = 0; k < samples.size(); k += 2) {
        const Sums sums = filter(line, samples[k], samples[k + 1]);
        pairs[k] = limit15((sums.odd + sums.even) >> 15);
        pairs[k + 1] = limit15((sums.odd - sums.even) >> 15);
    }
}

void synthesiseScalar(In16 pairs, Out16 samples, DelayLine line) noexcept
{
    assert(samples.size() == pairs.size() && samples.size() % 2 == 0);
    for (std::size_t k = 0; k < pairs.size(); k += 2) {
        const std::int16_t rl = pairs[k], rh = pairs[k + 1];
        const Sums sums = filter(line, fx::add(rl, rh), fx::sub(rl, rh));
        samples[k] = fx::sat16(sums.odd >> 12);
        samples[k + 1] = fx::sat16(sums.even >> 12);
    }
}

// The fast version has two filters over neighbouring pairs of samples, whose taps come in pairs as
// well: vpmaddwd multiplies one pair of taps with eight pairs of samples, for eight results.

namespace {

struct Bank {
    std::array<std::int32_t, 12> first, second; // pairs of taps, that of the older sample below
    int shift;
    std::int16_t bound; // results are -bound-1..bound
    bool takesBands;    // the line holds sums and differences of its input
};

/// The taps of even and odd index times the given signs.
constexpr std::array<std::int32_t, 12> taps(int even, int odd) noexcept
{
    std::array<std::int32_t, 12> t{};
    for (std::size_t i = 0; i < t.size(); ++i)
        t[i] = odd * kQmf[2 * i + 1] * 65536 + ((even * kQmf[2 * i]) & 0xffff);
    return t;
}

constexpr Bank kTransmit = {
    .first = taps(1, 1), .second = taps(-1, 1), .shift = 15, .bound = 16383, .takesBands = false};
constexpr Bank kReceive = {
    .first = taps(0, 1), .second = taps(1, 0), .shift = 12, .bound = 32767, .takesBands = true};

/// Eight pairs (rL, rH) to (rL + rH, rL - rH).
__m256i sumsAndDifferences(__m256i pairs) noexcept
{
    const __m256i low = _mm256_blend_epi16(pairs, _mm256_slli_epi32(pairs, 16), 0xaa);
    const __m256i high = _mm256_blend_epi16(_mm256_srli_epi32(pairs, 16), pairs, 0xaa);
    return _mm256_blend_epi16(_mm256_adds_epi16(low, high), _mm256_subs_epi16(low, high), 0xaa);
}

/// Eight pairs of results; the last of the first pair's 24 samples are x[24] and x[25].
template <const Bank& bank>
__m256i filter8(const std::int16_t* x) noexcept
{
    __m256i first = _mm256_setzero_si256(), second = _mm256_setzero_si256();
    for (std::size_t i = 0; i < 12; ++i) {
        const __m256i samples = avx2::load(x + 2 + 2 * i);
        const __m256i one = _mm256_madd_epi16(samples, _mm256_set1_epi32(bank.first[i]));
        const __m256i two = _mm256_madd_epi16(samples, _mm256_set1_epi32(bank.second[i]));
        first = _mm256_add_epi32(first, one);
        second = _mm256_add_epi32(second, two);
    }
    // [f0 f1 f2 f3 s0 s1 s2 s3] in each half, to [f0 s0 f1 s1 ...]
    const __m256i apart = _mm256_packs_epi32(_mm256_srai_epi32(first, bank.shift),
                                             _mm256_srai_epi32(second, bank.shift));
    const __m256i order = _mm256_broadcastsi128_si256(
        _mm_setr_epi8(0, 1, 8, 9, 2, 3, 10, 11, 4, 5, 12, 13, 6, 7, 14, 15));
    const __m256i pairs = _mm256_shuffle_epi8(apart, order);
    return _mm256_max_epi16(_mm256_min_epi16(pairs, _mm256_set1_epi16(bank.bound)),
                            _mm256_set1_epi16(static_cast<std::int16_t>(-bank.bound - 1)));
}

/// Block by block through a copy that begins with the line. The last block is rounded up to whole
/// vectors; results beyond its end are not stored.
template <const Bank& bank>
void filterAvx2(In16 src, Out16 dst, DelayLine line) noexcept
{
    constexpr std::size_t kLine = line.size(), kBlock = 256;
    alignas(32) std::array<std::int16_t, kLine + kBlock> x{};
    alignas(32) std::array<std::int16_t, kBlock> y;
    std::copy(line.begin(), line.end(), x.begin());
    for (std::size_t i = 0; i < src.size(); i += kBlock) {
        const std::size_t n = std::min(kBlock, src.size() - i);
        std::copy_n(&src[i], n, &x[kLine]);
        for (std::size_t k = 0; bank.takesBands && k < n; k += 16)
            avx2::store(&x[kLine + k], sumsAndDifferences(avx2::load(&x[kLine + k])));
        for (std::size_t k = 0; k < n; k += 16)
            avx2::store(&y[k], filter8<bank>(&x[k]));
        std::copy_n(y.data(), n, &dst[i]);
        std::copy_n(&x[n], kLine, x.data());
    }
    std::copy_n(x.data(), kLine, line.begin());
}

} // namespace

void analyseAvx2(In16 samples, Out16 pairs, DelayLine line) noexcept
{
    filterAvx2<kTransmit>(samples, pairs, line);
}

void synthesiseAvx2(In16 pairs, Out16 samples, DelayLine line) noexcept
{
    filterAvx2<kReceive>(pairs, samples, line);
}

} // namespace zsp::g722

namespace zsp::entry {

ZspStatus zspsQMFEncode_G722_16s(const std::int16_t* src, std::int16_t* dst, std::int32_t len,
                                 std::int16_t* delayLine)
{
    if (!src || !dst || !delayLine) return zspStsNullPtrErr;
    if (len < 1 || len % 2 != 0) return zspStsSizeErr;

    const auto n = static_cast<std::size_t>(len);
    g722::analyseAvx2({src, n}, {dst, n}, g722::DelayLine{delayLine, 24});
    return zspStsNoErr;
}

ZspStatus zspsQMFDecode_G722_16s(const std::int16_t* src, std::int16_t* dst, std::int32_t len,
                                 std::int16_t* delayLine)
{
    if (!src || !dst || !delayLine) return zspStsNullPtrErr;
    if (len < 1 || len % 2 != 0) return zspStsSizeErr;

    const auto n = static_cast<std::size_t>(len);
    g722::synthesiseAvx2({src, n}, {dst, n}, g722::DelayLine{delayLine, 24});
    return zspStsNoErr;
}

} // namespace zsp::entry
