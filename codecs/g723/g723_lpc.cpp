// The front end of an encoder of ITU-T G.723.1: high-pass filter (clause 2.3), autocorrelation and
// prediction coefficients (clause 2.4).

#include "codecs/g723/g723.hpp"
#include "codecs/g723/g723_fast.hpp"
#include "core/entries.hpp"

#include <array>

namespace zsp::g723 {

void highPass(std::span<const Word> src, std::span<Word> dst, HighPassState& s) noexcept
{
    for (std::size_t i = 0; i < src.size(); ++i) {
        const Word x = src[i];
        const Long step = fx::l_msu(fx::l_mult(x, 16384), s.last, 16384);
        s.last = x;
        s.sum = fx::l_add(step, mls(s.sum, 32512));
        dst[i] = fx::round_fx(s.sum);
    }
}

void autoCorrScalar(In<180> samples, Out<11> corr, Word& shift) noexcept
{
    std::array<Word, 180> v;
    std::ranges::copy(samples, v.begin());
    const int before = normalise(v);
    for (std::size_t i = 0; i < v.size(); ++i)
        v[i] = fx::mult_r(v[i], kHamming[i]);

    Long own = 0;
    for (const Word x : v)
        own = fx::l_add(own, fx::l_mult(x, x) >> 1);
    own = fx::l_add(own, own >> 10); // white noise correction of 1/1024
    const int n = fx::norm_l(own);
    corr[0] = fx::round_fx(fx::l_shl(own, n));
    if (corr[0] == 0) {
        std::ranges::fill(corr, Word{0});
        shift = 40;
        return;
    }
    for (std::size_t i = 1; i <= kOrder; ++i) {
        Long sum = 0;
        for (std::size_t j = i; j < v.size(); ++j)
            sum = fx::l_add(sum, fx::l_mult(v[j], v[j - i]) >> 1);
        corr[i] = fx::round_fx(mls(fx::l_shl(sum, n), kBinomial[i - 1]));
    }
    shift = static_cast<Word>(n + 2 * before);
}

void autoCorrAvx2(In<180> samples, Out<11> corr, Word& shift) noexcept
{
    std::array<Word, 180> v;
    std::ranges::copy(samples, v.begin());
    const int before = normalise(v);
    alignas(32) std::array<Word, 192 + 16> windowed{}; // zeros behind it
    for (std::size_t i = 0; i < v.size(); ++i)
        windowed[i] = fx::mult_r(v[i], kHamming[i]);
    const std::int64_t exact = exactEnergy<192>(windowed.data());
    const Long own = fx::sat32(exact + (exact >> 10));
    const int n = fx::norm_l(own);
    if (exact > fx::kMax32 || fx::round_fx(fx::l_shl(own, n)) == 0)
        return autoCorrScalar(samples, corr, shift);
    corr[0] = fx::round_fx(fx::l_shl(own, n));
    for (std::size_t i = 1; i <= kOrder; ++i) {
        const Long sum = plainDot<192>(windowed.data(), windowed.data() + i);
        corr[i] = fx::round_fx(mls(fx::l_shl(sum, n), kBinomial[i - 1]));
    }
    shift = static_cast<Word>(n + 2 * before);
}

Prediction levinsonDurbin(In<11> corr, Out<kOrder> lpc_Q13) noexcept
{
    Prediction p{corr[0], 0};
    std::array<Word, kOrder> a{};
    for (std::size_t i = 0; i < kOrder; ++i) {
        Long sum = fx::l_deposit_h(corr[i + 1]) >> 2;
        for (std::size_t j = 0; j < i; ++j)
            sum = fx::l_msu(sum, a[j], corr[i - j]);
        sum = fx::l_shl(sum, 2);
        if (fx::l_abs(sum) >= fx::l_deposit_h(p.error)) {
            p.reflection = fx::kMax16;
            break;
        }
        Word k = div_l(fx::l_abs(sum), p.error);
        if (sum >= 0) k = fx::negate(k);
        if (i == 1) p.reflection = k;
        const std::array<Word, kOrder> last = a;
        a[i] = fx::round_fx(fx::l_deposit_h(fx::negate(k)) >> 2);
        p.error = fx::round_fx(fx::l_add(mls(sum, k), fx::l_deposit_h(p.error)));
        for (std::size_t j = 0; j < i; ++j)
            a[j] = fx::round_fx(fx::l_mac(fx::l_deposit_h(a[j]), k, last[i - 1 - j]));
    }
    std::ranges::copy(a, lpc_Q13.begin());
    return p;
}

} // namespace zsp::g723

namespace zsp::entry {

ZspStatus zspsHighPassFilter_G723_16s(const std::int16_t* src, std::int16_t* dst, std::int32_t len,
                                      std::int32_t* memory)
{
    if (!src || !dst || !memory) return zspStsNullPtrErr;
    if (len < 1) return zspStsSizeErr;

    g723::HighPassState s{memory[0], fx::extract_l(memory[1])};
    const auto n = static_cast<std::size_t>(len);
    g723::highPass({src, n}, {dst, n}, s);
    memory[0] = s.sum;
    memory[1] = s.last;
    return zspStsNoErr;
}

ZspStatus zspsAutoCorr_G723_16s(const std::int16_t* src, std::int16_t* corr, std::int16_t* shift)
{
    if (!src || !corr || !shift) return zspStsNullPtrErr;

    g723::autoCorrAvx2(spanOf<180>(src), spanOf<11>(corr), *shift);
    return zspStsNoErr;
}

ZspStatus zspsLevinsonDurbin_G723_16s(const std::int16_t* corr, std::int16_t* lpc,
                                      std::int16_t* error, std::int16_t* reflection)
{
    if (!corr || !lpc || !error || !reflection) return zspStsNullPtrErr;

    const g723::Prediction p = g723::levinsonDurbin(spanOf<11>(corr), spanOf<10>(lpc));
    *error = p.error;
    *reflection = p.reflection;
    return zspStsNoErr;
}

} // namespace zsp::entry
