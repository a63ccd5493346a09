// The long-term predictor of GSM 06.10: lag and gain in clause 5.2.11, prediction in 5.2.12,
//
//   e[k] = d[k] - b dp[k - lag]         b = 0.1, 0.35, 0.65 or 1
//
// and synthesis in 5.2.18 and 5.3.2, out[k] = ep[k] + b dp[k - lag], where 5.2.17 has put pulses
// into every third place of ep.

#include "codecs/gsmfr/gsmfr_longterm.hpp"

#include "codecs/shared/words.hpp"
#include "common/correlation/lag_search.hpp"
#include "core/avx2.hpp"
#include "core/entries.hpp"
#include "core/fixed_point.hpp"

#include <algorithm>
#include <array>
#include <cassert>

namespace zsp::gsmfr {

namespace {

/// The magnitude's headroom that a search takes away so that sums fit: 0 to 6 bits.
int scalingOf(fx::Word dmax) noexcept
{
    return std::max(0, 6 - fx::norm_s(dmax));
}

/// The coded gain of a correlation, twice the sum of products with d itself, and of twice the
/// power, both on the scale of dp >> 3.
int gainOf(fx::Long corr, fx::Long power) noexcept
{
    if (corr <= 0) return 0;
    if (corr >= power) return 3;
    const int shift = fx::norm_l(power);
    const fx::Word r = fx::extract_h(corr << shift), s = fx::extract_h(power << shift);
    int gain = 0;
    while (gain < 3 && r > fx::mult(s, kGainDecision_Q15[static_cast<std::size_t>(gain)]))
        ++gain;
    return gain;
}

/// The 40 samples that a lag points to.
InSegment delayed(InPast dp, int lag) noexcept
{
    return InSegment{dp.data() + kPast - static_cast<std::size_t>(lag), kSegment};
}

fx::Word gainFactor(LongTerm how) noexcept
{
    return kGain_Q15[static_cast<std::size_t>(how.gain)];
}

} // namespace

LongTerm ltpSearchScalar(InSegment d, InPast dp) noexcept
{
    const int scal = scalingOf(codecs::largest(d));

    LongTerm best{.lag = kMinLag, .gain = 0};
    fx::Long most = 0;
    for (int lag = kMinLag; lag <= kMaxLag; ++lag) {
        const InSegment past = delayed(dp, lag);
        fx::Long sum = 0; // |d >> scal| <= 512: nothing saturates
        for (std::size_t k = 0; k < kSegment; ++k)
            sum = fx::l_mac(sum, fx::shr(d[k], scal), past[k]);
        if (sum > most) {
            most = sum;
            best.lag = lag;
        }
    }

    fx::Long power = 0;
    for (const fx::Word x : delayed(dp, best.lag))
        power = fx::l_mac(power, fx::shr(x, 3), fx::shr(x, 3));
    best.gain = gainOf(fx::l_shr(most, 6 - scal), power);
    return best;
}

void longTermPredictScalar(InSegment d, InPast dp, LongTerm how, Segment e) noexcept
{
    const InSegment past = delayed(dp, how.lag);
    for (std::size_t k = 0; k < kSegment; ++k)
        e[k] = fx::sub(d[k], fx::mult_r(gainFactor(how), past[k]));
}

void longTermSynthesisScalar(InPulses xmp, int grid, LongTerm how, InPast dp, Segment out) noexcept
{
    std::array<fx::Word, kSegment> ep{};
    for (std::size_t i = 0; i < kPulses; ++i)
        ep[static_cast<std::size_t>(grid) + 3 * i] = xmp[i];
    const InSegment past = delayed(dp, how.lag);
    for (std::size_t k = 0; k < kSegment; ++k)
        out[k] = fx::add(ep[k], fx::mult_r(gainFactor(how), past[k]));
}

namespace {

/// f of each of a sub-segment's words at the same place of both sources: sixteen, sixteen, eight.
template <typename F>
void forSegment(const std::int16_t* a, const std::int16_t* b, std::int16_t* out, F f) noexcept
{
    for (std::size_t k = 0; k < 32; k += 16)
        avx2::store(out + k, f(avx2::load(a + k), avx2::load(b + k)));
    const __m256i last =
        f(_mm256_castsi128_si256(avx2::load8(a + 32)), _mm256_castsi128_si256(avx2::load8(b + 32)));
    avx2::store8(out + 32, _mm256_castsi256_si128(last));
}

} // namespace

// The common search visits offsets in a block that begins at the largest lag, so downwards.
LongTerm ltpSearchAvx2(InSegment d, InPast dp) noexcept
{
    const __m256i first = avx2::load(&d[0]), second = avx2::load(&d[16]);
    const __m128i third = avx2::load8(&d[32]);
    const int scal = scalingOf(avx2::maxMagnitude(
        _mm256_max_epu16(_mm256_max_epu16(_mm256_abs_epi16(first), _mm256_abs_epi16(second)),
                         _mm256_castsi128_si256(_mm_abs_epi16(third)))));
    alignas(32) std::array<fx::Word, kSegment> wt;
    avx2::store(&wt[0], _mm256_srai_epi16(first, scal));
    avx2::store(&wt[16], _mm256_srai_epi16(second, scal));
    avx2::store8(&wt[32], _mm_srai_epi16(third, scal));
    const auto found = common::lagMaxAvx2(wt, dp, common::Scan::down);
    const int lag = kMaxLag - static_cast<int>(found.offset);

    const std::int16_t* past = delayed(dp, lag).data();
    const __m256i a = _mm256_srai_epi16(avx2::load(past), 3);
    const __m256i b = _mm256_srai_epi16(avx2::load(past + 16), 3);
    const __m128i c = _mm_srai_epi16(avx2::load8(past + 32), 3);
    __m256i squares = _mm256_add_epi32(_mm256_madd_epi16(a, a), _mm256_madd_epi16(b, b));
    squares = _mm256_add_epi32(squares, _mm256_zextsi128_si256(_mm_madd_epi16(c, c)));
    return {.lag = lag, .gain = gainOf(2 * found.corr >> (6 - scal), 2 * avx2::sum32(squares))};
}

void longTermPredictAvx2(InSegment d, InPast dp, LongTerm how, Segment e) noexcept
{
    const __m256i gain = _mm256_set1_epi16(gainFactor(how));
    forSegment(d.data(), delayed(dp, how.lag).data(), e.data(), [gain](__m256i x, __m256i past) {
        return _mm256_subs_epi16(x, _mm256_mulhrs_epi16(gain, past));
    });
}

void longTermSynthesisAvx2(InPulses xmp, int grid, LongTerm how, InPast dp, Segment out) noexcept
{
    alignas(32) std::array<fx::Word, kSegment> ep{};
    for (std::size_t i = 0; i < kPulses; ++i)
        ep[static_cast<std::size_t>(grid) + 3 * i] = xmp[i];
    const __m256i gain = _mm256_set1_epi16(gainFactor(how));
    forSegment(ep.data(), delayed(dp, how.lag).data(), out.data(), [gain](__m256i x, __m256i past) {
        return _mm256_adds_epi16(x, _mm256_mulhrs_epi16(gain, past));
    });
}

} // namespace zsp::gsmfr

namespace zsp::entry {

namespace {

using gsmfr::kPast;
using gsmfr::kSegment;

bool badLongTerm(std::int32_t lag, std::int32_t gain) noexcept
{
    return lag < gsmfr::kMinLag || lag > gsmfr::kMaxLag || gain < 0 || gain > 3;
}

} // namespace

ZspStatus zspsLTPSearch_GSMFR_16s(const std::int16_t* src, const std::int16_t* past,
                                  std::int32_t* lag, std::int32_t* gain)
{
    if (!src || !past || !lag || !gain) return zspStsNullPtrErr;

    const gsmfr::LongTerm found =
        gsmfr::ltpSearchAvx2(spanOf<kSegment>(src), spanOf<kPast>(past - kPast));
    *lag = found.lag;
    *gain = found.gain;
    return zspStsNoErr;
}

ZspStatus zspsLongTermPredict_GSMFR_16s(const std::int16_t* src, const std::int16_t* past,
                                        std::int32_t lag, std::int32_t gain, std::int16_t* dst)
{
    if (!src || !past || !dst) return zspStsNullPtrErr;
    if (badLongTerm(lag, gain)) return zspStsCodecRangeErr;

    gsmfr::longTermPredictAvx2(spanOf<kSegment>(src), spanOf<kPast>(past - kPast),
                               {.lag = lag, .gain = gain}, spanOf<kSegment>(dst));
    return zspStsNoErr;
}

ZspStatus zspsLongTermSynthesis_GSMFR_16s(const std::int16_t* src, std::int32_t grid,
                                          std::int32_t lag, std::int32_t gain, std::int16_t* dst)
{
    if (!src || !dst) return zspStsNullPtrErr;
    if (grid < 0 || grid > 3 || badLongTerm(lag, gain)) return zspStsCodecRangeErr;

    gsmfr::longTermSynthesisAvx2(spanOf<gsmfr::kPulses>(src), grid, {.lag = lag, .gain = gain},
                                 spanOf<kPast>(static_cast<const std::int16_t*>(dst) - kPast),
                                 spanOf<kSegment>(dst));
    return zspStsNoErr;
}

} // namespace zsp::entry
