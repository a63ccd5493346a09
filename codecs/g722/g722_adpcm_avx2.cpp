// Sub-band ADPCM of ITU-T G.722 with both bands in one vector, the lower band in the lower half.
// The words' operations are saturating instructions; codes and scale factors stay scalar.

#include "codecs/g722/g722_adpcm.hpp"
#include "codecs/g722/g722_quantiser.hpp"
#include "codecs/g722/g722_tables.hpp"
#include "core/avx2.hpp"
#include "core/fixed_point.hpp"

#include <bit>
#include <cassert>

namespace zsp::g722 {

namespace {

/// The predictors of both bands. Single values stand in all eight words of their half.
struct Predictors {
    __m256i b, d;
    __m256i a1, a2, r1, r2, p1, p2, sz, s;
};

/// A pair, its first word in the lower half of the vector and its second in the upper.
__m256i spread(std::uint32_t pair) noexcept
{
    const __m256i words = _mm256_setr_epi64x(0x0100'0100'0100'0100, 0x0100'0100'0100'0100,
                                             0x0302'0302'0302'0302, 0x0302'0302'0302'0302);
    return _mm256_shuffle_epi8(_mm256_set1_epi32(static_cast<int>(pair)), words);
}

__m256i spread(Word low, Word high) noexcept
{
    return spread(static_cast<std::uint16_t>(low) | std::uint32_t{static_cast<std::uint16_t>(high)}
                                                        << 16);
}

/// The first word of each half in all words of it.
__m256i firstWords(__m256i v) noexcept
{
    return _mm256_shuffle_epi8(v, _mm256_set1_epi16(0x0100));
}

/// The first words of both halves as a pair.
std::uint32_t gather(__m256i v) noexcept
{
    const __m128i pairs =
        _mm_unpacklo_epi16(_mm256_castsi256_si128(v), _mm256_extracti128_si256(v, 1));
    return static_cast<std::uint32_t>(_mm_cvtsi128_si32(pairs));
}

Predictors load(const Band& low, const Band& high) noexcept
{
    return {.b = _mm256_set_m128i(avx2::load8(high.b.data()), avx2::load8(low.b.data())),
            .d = _mm256_set_m128i(avx2::load8(high.d.data()), avx2::load8(low.d.data())),
            .a1 = spread(low.a1, high.a1),
            .a2 = spread(low.a2, high.a2),
            .r1 = spread(low.r1, high.r1),
            .r2 = spread(low.r2, high.r2),
            .p1 = spread(low.p1, high.p1),
            .p2 = spread(low.p2, high.p2),
            .sz = spread(low.sz, high.sz),
            .s = spread(low.s, high.s)};
}

void store(const Predictors& v, State& state) noexcept
{
    const auto single = [&state](Word Band::*field, __m256i value) {
        const std::uint32_t pair = gather(value);
        state.low.*field = static_cast<Word>(pair);
        state.high.*field = static_cast<Word>(pair >> 16);
    };
    const __m256i six = _mm256_setr_epi32(-1, -1, -1, 0, -1, -1, -1, 0);
    const __m256i d = _mm256_and_si256(v.d, six); // the seventh is a difference that has left
    avx2::store8(state.low.b.data(), _mm256_castsi256_si128(v.b));
    avx2::store8(state.high.b.data(), _mm256_extracti128_si256(v.b, 1));
    avx2::store8(state.low.d.data(), _mm256_castsi256_si128(d));
    avx2::store8(state.high.d.data(), _mm256_extracti128_si256(d, 1));
    single(&Band::a1, v.a1);
    single(&Band::a2, v.a2);
    single(&Band::r1, v.r1);
    single(&Band::r2, v.r2);
    single(&Band::p1, v.p1);
    single(&Band::p2, v.p2);
    single(&Band::sz, v.sz);
    single(&Band::s, v.s);
}

/// mult(x, 32768 - 2^(15-n)) as x + ((-x) >> n).
template <int n>
__m256i leak(__m256i x) noexcept
{
    const __m256i factor = _mm256_set1_epi16(-(1 << (16 - n)));
    return _mm256_add_epi16(x, _mm256_mulhi_epi16(x, factor));
}

__m256i limit(__m256i x, __m256i low, __m256i high) noexcept
{
    return _mm256_min_epi16(_mm256_max_epi16(x, low), high);
}

/// predict() for both bands.
void predict(Predictors& v, __m256i d) noexcept
{
    const __m256i one = _mm256_set1_epi16(1);
    const __m256i p = _mm256_adds_epi16(d, v.sz);
    const __m256i r = _mm256_adds_epi16(v.s, d);
    // Negative where signs differ, positive where they agree.
    const __m256i agree1 = _mm256_or_si256(_mm256_xor_si256(p, v.p1), one);
    const __m256i agree2 = _mm256_or_si256(_mm256_xor_si256(p, v.p2), one);

    // UPPOL2
    const __m256i twice = _mm256_adds_epi16(v.a1, v.a1);
    const __m256i fourfold = _mm256_adds_epi16(twice, twice);
    const __m256i negated = _mm256_subs_epi16(_mm256_setzero_si256(), fourfold);
    const __m256i w =
        _mm256_blendv_epi8(_mm256_srai_epi16(negated, 7), _mm256_srai_epi16(fourfold, 7),
                           _mm256_srai_epi16(agree1, 15));
    const __m256i step2 = _mm256_sign_epi16(_mm256_set1_epi16(128), agree2);
    v.a2 = limit(_mm256_adds_epi16(_mm256_adds_epi16(w, step2), leak<7>(v.a2)),
                 _mm256_set1_epi16(-12288), _mm256_set1_epi16(12288));

    // UPPOL1
    const __m256i bound = _mm256_sub_epi16(_mm256_set1_epi16(15360), v.a2);
    const __m256i step1 = _mm256_sign_epi16(_mm256_set1_epi16(192), agree1);
    v.a1 = limit(_mm256_adds_epi16(step1, leak<8>(v.a1)),
                 _mm256_sub_epi16(_mm256_setzero_si256(), bound), bound);

    // UPZERO. Words without a coefficient have no gain and stay 0.
    const __m256i gain = _mm256_andnot_si256(
        _mm256_cmpeq_epi16(d, _mm256_setzero_si256()),
        _mm256_setr_epi16(128, 128, 128, 128, 128, 128, 0, 0, 128, 128, 128, 128, 128, 128, 0, 0));
    const __m256i agree = _mm256_or_si256(_mm256_xor_si256(d, v.d), one);
    v.b = _mm256_adds_epi16(_mm256_sign_epi16(gain, agree), leak<8>(v.b));

    // DELAYA
    v.d = _mm256_alignr_epi8(v.d, d, 14);
    v.p2 = v.p1;
    v.p1 = p;
    v.r2 = v.r1;
    v.r1 = r;

    // FILTEZ: the terms one after the other in the lowest word of each half, the sixth first.
    const __m256i term = avx2::mult(_mm256_add_epi16(v.d, v.d), v.b); // |d| <= 10228
    __m256i sum = _mm256_adds_epi16(_mm256_srli_si256(term, 10), _mm256_srli_si256(term, 8));
    sum = _mm256_adds_epi16(sum, _mm256_srli_si256(term, 6));
    sum = _mm256_adds_epi16(sum, _mm256_srli_si256(term, 4));
    sum = _mm256_adds_epi16(sum, _mm256_srli_si256(term, 2));
    sum = _mm256_adds_epi16(sum, term);
    v.sz = firstWords(sum);

    // FILTEP and PREDIC. |a1| <= 27648 and |a2| <= 12288.
    const __m256i sp = _mm256_adds_epi16(avx2::mult(v.a1, _mm256_adds_epi16(v.r1, v.r1)),
                                         avx2::mult(v.a2, _mm256_adds_epi16(v.r2, v.r2)));
    v.s = _mm256_adds_epi16(sp, v.sz);
}

/// Sixteen unsigned words, by which scale factors are multiplied: 16 times a level, so that the
/// upper word of the product is the level times det >> 12.
using Levels = std::array<std::uint16_t, 16>;

__m256i scaledUp(const Levels& levels, __m256i det) noexcept
{
    return _mm256_mulhi_epu16(avx2::load(levels.data()), det);
}

/// The lower band's decision levels. A level of 0 is never above a magnitude: it fills the rest.
constexpr std::array<Levels, 2> kDecisionLevels = [] {
    std::array<Levels, 2> t{};
    for (std::size_t m = 1; m < kDecision6.size(); ++m)
        t[m / 16][m % 16] = static_cast<std::uint16_t>(kDecision6[m] * 16);
    return t;
}();

struct Codes {
    int il;
    int ih;
};

/// QUANTL and QUANTH of a vector with both differences; `det` has both scale factors.
Codes quantise(__m256i e, __m256i det) noexcept
{
    const __m256i mag = _mm256_xor_si256(e, _mm256_srai_epi16(e, 15));
    const __m256i magLow = _mm256_permute2x128_si256(mag, mag, 0);
    const __m256i detLow = _mm256_permute2x128_si256(det, det, 0);
    const __m256i above =
        _mm256_packs_epi16(_mm256_cmpgt_epi16(scaledUp(kDecisionLevels[0], detLow), magLow),
                           _mm256_cmpgt_epi16(scaledUp(kDecisionLevels[1], detLow), magLow));
    const int count = std::popcount(static_cast<unsigned>(_mm256_movemask_epi8(above)));

    // Bytes 0 and 16: the signs; byte 24: a small magnitude in the higher band.
    const __m256i level = _mm256_mulhi_epu16(_mm256_set1_epi16(kDecision2 * 16), det);
    const auto flags = static_cast<unsigned>(
        _mm256_movemask_epi8(_mm256_packs_epi16(e, _mm256_cmpgt_epi16(level, mag))));
    const bool lowNegative = flags % 2 != 0;
    const bool highNegative = (flags >> 16) % 2 != 0;
    const bool highSmall = (flags >> 24) % 2 != 0;

    // quantl()'s step m is 30 less the levels above.
    const int negative = count < 28 ? 4 + count : 34 + count;
    return {.il = lowNegative ? negative : 32 + count,
            .ih = (highNegative ? 0 : 2) + (highSmall ? 1 : 0)};
}

/// The quantiser that adapts the coder, four bits in the lower band and two in the higher one: for
/// each step its output and the decision level that is above it. The last steps have no level.
struct Steps {
    Levels output{}, level{};
    std::array<std::int16_t, 16> bias{}; // makes level the greatest magnitude of the step
};

constexpr Steps kSteps = [] {
    Steps t;
    for (std::size_t i = 0; i < 8; ++i) {
        t.output[i] = static_cast<std::uint16_t>(kOutput4[15 - i] * 16);
        t.output[8 + i] = static_cast<std::uint16_t>(kOutput2[i == 0 ? 3 : 2] * 16);
    }
    t.bias.fill(32767);
    for (std::size_t i = 0; i < 7; ++i) {
        t.level[i] = static_cast<std::uint16_t>(kDecision6[2 + 4 * i] * 16);
        t.bias[i] = -1;
    }
    t.level[8] = kDecision2 * 16;
    t.bias[8] = -1;
    return t;
}();

/// The outputs of INVQAL and INVQAH for both differences, computed directly, without looking up the
/// codes: of the steps whose decision level is not below the difference's magnitude, the one with
/// the smallest output.
__m256i quantisedDifferences(__m256i e, __m256i det) noexcept
{
    const __m256i sign = _mm256_srai_epi16(e, 15);
    const __m256i mag = _mm256_xor_si256(e, sign);
    const __m256i top =
        _mm256_add_epi16(scaledUp(kSteps.level, det), avx2::load(kSteps.bias.data()));

    // Products are rounded down, negative ones therefore away from zero.
    const __m256i dropped = _mm256_mullo_epi16(avx2::load(kSteps.output.data()), det);
    const __m256i whole = _mm256_cmpeq_epi16(dropped, _mm256_setzero_si256());
    const __m256i away = _mm256_andnot_si256(whole, sign);
    const __m256i output = _mm256_sub_epi16(scaledUp(kSteps.output, det), away);

    const __m256i candidates = _mm256_or_si256(output, _mm256_cmpgt_epi16(mag, top));
    const __m128i low = _mm_minpos_epu16(_mm256_castsi256_si128(candidates));
    const __m128i high = _mm_minpos_epu16(_mm256_extracti128_si256(candidates, 1));
    const __m256i d = firstWords(_mm256_set_m128i(high, low));
    return _mm256_sub_epi16(_mm256_xor_si256(d, sign), sign);
}

} // namespace

void encodeAvx2(In16 pairs, Out16 codes, State& state) noexcept
{
    assert(pairs.size() == codes.size() && pairs.size() % 2 == 0);
    State local = state;
    Predictors v = load(local.low, local.high);
    for (std::size_t k = 0; k < pairs.size(); k += 2) {
        const __m256i e = _mm256_subs_epi16(spread(pairs[k], pairs[k + 1]), v.s);
        const __m256i det = spread(local.low.det, local.high.det);
        const auto [il, ih] = quantise(e, det);
        codes[k] = static_cast<Word>(il);
        codes[k + 1] = static_cast<Word>(ih);
        adaptScaleLow(local.low, il);
        adaptScaleHigh(local.high, ih);
        predict(v, quantisedDifferences(e, det));
    }
    store(v, local);
    state = local;
}

void decodeAvx2(In16 codes, Out16 pairs, int mode, State& state) noexcept
{
    assert(pairs.size() == codes.size() && pairs.size() % 2 == 0);
    const OutputQuantiser output = invqbl(mode);
    State local = state;
    Predictors v = load(local.low, local.high);
    for (std::size_t k = 0; k < codes.size(); k += 2) {
        const int il = codes[k] & 63;
        const int ih = codes[k + 1] & 3;
        const Word dl = invqal(il, local.low.det);
        const Word dh = invqah(ih, local.high.det);
        const __m256i d = spread(output(il, local.low.det), dh);
        const std::uint32_t r = gather(
            limit(_mm256_adds_epi16(v.s, d), _mm256_set1_epi16(-16384), _mm256_set1_epi16(16383)));
        pairs[k] = static_cast<Word>(r);
        pairs[k + 1] = static_cast<Word>(r >> 16);
        adaptScaleLow(local.low, il);
        adaptScaleHigh(local.high, ih);
        predict(v, spread(dl, dh));
    }
    store(v, local);
    state = local;
}

} // namespace zsp::g722
