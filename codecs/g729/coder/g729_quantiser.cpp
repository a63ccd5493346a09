// The LSP quantiser of ITU-T G.729, clause 3.2.4: two predictors, a first stage of ten and a second
// of five and five frequencies.

#include "codecs/g729/coder/g729_searches.hpp"
#include "codecs/g729/g729_lsf.hpp"
#include "codecs/g729/tables/g729_lsp_tables.hpp"
#include "core/avx2.hpp"
#include "core/entries.hpp"

#include <algorithm>
#include <array>
#include <cstdlib>

namespace zsp::g729 {

namespace {

constexpr std::size_t kPart = kOrder / 2; // frequencies of a half of the second stage

struct Choice {
    std::size_t first, low, high;
    Long distance;
    LsfVector vector;
};

struct Definition {
    static std::size_t first(const LsfVector& target) noexcept { return lsfNearestScalar(target); }
    static std::size_t second(const LsfVector& rest, const LsfVector& weights,
                              std::size_t from) noexcept
    {
        return lsfNearestPartScalar(rest, weights, from);
    }
};

/// Both stages for one predictor; `search` has the two searches.
template <typename Search>
Choice quantise(const LsfVector& target, const LsfVector& weights, std::size_t predictor) noexcept
{
    Choice c{};
    c.first = Search::first(target);
    const LsfVector& base = kLspBook1[c.first];
    LsfVector rest;
    for (std::size_t j = 0; j < kOrder; ++j)
        rest[j] = fx::sub(target[j], base[j]);

    c.low = Search::second(rest, weights, 0);
    for (std::size_t j = 0; j < kPart; ++j)
        c.vector[j] = fx::add(base[j], kLspBook2[c.low][j]);
    keepApart(c.vector, 10, 1, kPart - 1);
    c.high = Search::second(rest, weights, kPart);
    for (std::size_t j = kPart; j < kOrder; ++j)
        c.vector[j] = fx::add(base[j], kLspBook2[c.high][j]);
    keepApart(c.vector, 10, kPart);
    keepApart(c.vector, 5);

    for (std::size_t j = 0; j < kOrder; ++j) {
        const Word error =
            fx::mult(fx::sub(c.vector[j], target[j]), kLspPredictorRest[predictor][j]);
        const Word weighted = fx::extract_h(fx::l_shl(fx::l_mult(weights[j], error), 4));
        c.distance = fx::l_mac(c.distance, weighted, error);
    }
    return c;
}

template <typename Search>
LsfCode quantiseBest(In<kOrder> lsf_Q13, Out<kLsfMemory> memory, Out<kOrder> quantised_Q13) noexcept
{
    LsfVector weights, target;
    lsfWeights(lsf_Q13, weights);
    std::array<Choice, 2> choices;
    for (std::size_t p = 0; p < choices.size(); ++p) {
        extractTarget(lsf_Q13, kLspPredictor[p], kLspPredictorInverse[p], memory, target);
        choices[p] = quantise<Search>(target, weights, p);
    }
    const std::size_t best = fx::l_sub(choices[1].distance, choices[0].distance) < 0 ? 1 : 0;
    const Choice& c = choices[best];

    LsfVector v;
    for (std::size_t j = 0; j < kOrder; ++j)
        v[j] = fx::add(kLspBook1[c.first][j], kLspBook2[j < kPart ? c.low : c.high][j]);
    keepApart(v, 10);
    keepApart(v, 5);
    composeLsf(v, kLspPredictor[best], kLspPredictorRest[best], memory, quantised_Q13);
    return {static_cast<Word>(best * 128 + c.first), static_cast<Word>(c.low * 32 + c.high)};
}

} // namespace

std::size_t lsfNearestScalar(const LsfVector& target) noexcept
{
    std::size_t best = 0;
    Long least = fx::kMax32;
    for (std::size_t i = 0; i < kLspBook1.size(); ++i) {
        Long d = 0;
        for (std::size_t j = 0; j < kOrder; ++j) {
            const Word error = fx::sub(target[j], kLspBook1[i][j]);
            d = fx::l_mac(d, error, error);
        }
        if (d < least) {
            least = d;
            best = i;
        }
    }
    return best;
}

std::size_t lsfNearestPartScalar(const LsfVector& rest, const LsfVector& weights,
                                 std::size_t from) noexcept
{
    std::size_t best = 0;
    Long least = fx::kMax32;
    for (std::size_t i = 0; i < kLspBook2.size(); ++i) {
        Long d = 0;
        for (std::size_t j = from; j < from + kPart; ++j) {
            const Word error = fx::sub(rest[j], kLspBook2[i][j]);
            d = fx::l_mac(d, fx::mult(weights[j], error), error);
        }
        if (d < least) {
            least = d;
            best = i;
        }
    }
    return best;
}

LsfCode quantiseLsfScalar(In<kOrder> lsf_Q13, Out<kLsfMemory> memory,
                          Out<kOrder> quantised_Q13) noexcept
{
    return quantiseBest<Definition>(lsf_Q13, memory, quantised_Q13);
}

namespace {

/// Words of two neighbouring elements of eight vectors each.
template <std::size_t vectors, std::size_t pairs, typename Book>
constexpr auto paired(const Book& book, std::size_t from, std::size_t elements)
{
    std::array<std::array<std::array<Word, 16>, pairs>, vectors / 8> t{};
    for (std::size_t i = 0; i < vectors; ++i)
        for (std::size_t j = 0; j < elements; ++j)
            t[i / 8][j / 2][2 * (i % 8) + j % 2] = book[i][from + j];
    return t;
}

alignas(32) constexpr auto kPairs1 = paired<128, 5>(kLspBook1, 0, kOrder);
alignas(32) constexpr std::array kPairs2 = {paired<32, 3>(kLspBook2, 0, kPart),
                                            paired<32, 3>(kLspBook2, kPart, kPart)};

__m256i pairOf(Word a, Word b) noexcept
{
    return _mm256_set1_epi32(b * 65536 + (a & 0xffff));
}

/// The first of the smallest of eight distances for each of some groups.
class Nearest {
  public:
    void take(__m256i distances, std::size_t group) noexcept
    {
        const __m256i less = _mm256_cmpgt_epi32(least_, distances);
        least_ = _mm256_min_epi32(least_, distances);
        group_ = _mm256_blendv_epi8(group_, _mm256_set1_epi32(static_cast<int>(group)), less);
    }
    std::size_t index() const noexcept
    {
        const __m256i least = _mm256_set1_epi32(avx2::min32(least_));
        const __m256i lanes = _mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7);
        const __m256i index = _mm256_add_epi32(_mm256_slli_epi32(group_, 3), lanes);
        const __m256i isOther =
            _mm256_andnot_si256(_mm256_cmpeq_epi32(least_, least), _mm256_set1_epi32(0x7fff));
        return static_cast<std::size_t>(avx2::min32(_mm256_or_si256(index, isOther)));
    }

  private:
    __m256i least_ = _mm256_set1_epi32(fx::kMax32), group_ = _mm256_setzero_si256();
};

__m256i clamped(__m256i x, int limit) noexcept
{
    const auto word = static_cast<short>(limit);
    return _mm256_max_epi16(_mm256_min_epi16(x, _mm256_set1_epi16(word)),
                            _mm256_set1_epi16(static_cast<short>(-word)));
}

/// Errors are limited to where sums stay below 2^30, which makes distances smaller but no vector
/// nearer than one whose errors are all within: if the one found is such a vector, it is the first
/// of the nearest.
constexpr int kLargest1 = 10362, kLargest2 = 14654;
static_assert(10LL * kLargest1 * kLargest1 < 1 << 30 && 5LL * kLargest2 * kLargest2 < 1 << 30);

bool isWithin(const Word* x, const Word* y, std::size_t n, int limit) noexcept
{
    for (std::size_t j = 0; j < n; ++j)
        if (std::abs(x[j] - y[j]) > limit) return false;
    return true;
}

struct Fast {
    static std::size_t first(const LsfVector& target) noexcept { return lsfNearestAvx2(target); }
    static std::size_t second(const LsfVector& rest, const LsfVector& weights,
                              std::size_t from) noexcept
    {
        return lsfNearestPartAvx2(rest, weights, from);
    }
};

} // namespace

std::size_t lsfNearestAvx2(const LsfVector& target) noexcept
{
    __m256i wanted[5];
    for (std::size_t p = 0; p < 5; ++p)
        wanted[p] = pairOf(target[2 * p], target[2 * p + 1]);
    Nearest nearest;
    for (std::size_t g = 0; g < kPairs1.size(); ++g) {
        __m256i sum = _mm256_setzero_si256();
        for (std::size_t p = 0; p < 5; ++p) {
            const __m256i error =
                clamped(_mm256_subs_epi16(wanted[p], avx2::load(kPairs1[g][p].data())), kLargest1);
            sum = _mm256_add_epi32(sum, _mm256_madd_epi16(error, error));
        }
        nearest.take(sum, g);
    }
    const std::size_t index = nearest.index();
    if (!isWithin(target.data(), kLspBook1[index].data(), kOrder, kLargest1))
        return lsfNearestScalar(target);
    return index;
}

std::size_t lsfNearestPartAvx2(const LsfVector& rest, const LsfVector& weights,
                               std::size_t from) noexcept
{
    const Word* x = &rest[from];
    const Word* w = &weights[from];
    const __m256i wanted[3] = {pairOf(x[0], x[1]), pairOf(x[2], x[3]), pairOf(x[4], 0)};
    const __m256i weight[3] = {pairOf(w[0], w[1]), pairOf(w[2], w[3]), pairOf(w[4], 0)};
    const auto& book = kPairs2[from / kPart];
    Nearest nearest;
    for (std::size_t g = 0; g < book.size(); ++g) {
        __m256i sum = _mm256_setzero_si256();
        for (std::size_t p = 0; p < 3; ++p) {
            const __m256i error =
                clamped(_mm256_subs_epi16(wanted[p], avx2::load(book[g][p].data())), kLargest2);
            sum = _mm256_add_epi32(sum, _mm256_madd_epi16(avx2::mult(weight[p], error), error));
        }
        nearest.take(sum, g);
    }
    const std::size_t index = nearest.index();
    if (!isWithin(x, &kLspBook2[index][from], kPart, kLargest2))
        return lsfNearestPartScalar(rest, weights, from);
    return index;
}

LsfCode quantiseLsfAvx2(In<kOrder> lsf_Q13, Out<kLsfMemory> memory,
                        Out<kOrder> quantised_Q13) noexcept
{
    return quantiseBest<Fast>(lsf_Q13, memory, quantised_Q13);
}

} // namespace zsp::g729

namespace zsp::entry {

ZspStatus zspsLSPQuant_G729_16s(const std::int16_t* lsp, std::int16_t* memory, std::int16_t* dst,
                                std::int16_t* fields)
{
    if (!lsp || !memory || !dst || !fields) return zspStsNullPtrErr;

    g729::LsfVector lsf, quantised;
    g729::lspToLsfAvx2(spanOf<g729::kOrder>(lsp), lsf);
    const g729::LsfCode code =
        g729::quantiseLsfAvx2(lsf, spanOf<g729::kLsfMemory>(memory), quantised);
    g729::lsfToLsp(quantised, spanOf<g729::kOrder>(dst));
    fields[0] = code.first;
    fields[1] = code.second;
    return zspStsNoErr;
}

} // namespace zsp::entry
