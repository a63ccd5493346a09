// 128-point real FFT of the GSM-AMR voice activity detector, option 2. 3GPP TS 26.094 and 26.073.
//
//   X[k] = 1/64 sum x[n] e^(-2 pi i n k / 128)
//
// The FFT takes the samples as 64 complex values, transforms those in six stages that each halve,
// and separates the spectra of the even and the odd samples.

#include "codecs/gsmamr/gsmamr_vad2_fft.hpp"

#include "core/entries.hpp"

namespace zsp::gsmamr {

using fx::Long;
using fx::Word;

namespace {

void reverseBits(FftBlock block) noexcept
{
    for (std::size_t i = 0; i < kPoints; ++i) {
        std::size_t reversed = 0;
        for (std::size_t bit = 1; bit < kPoints; bit *= 2)
            reversed = 2 * reversed + ((i & bit) != 0 ? 1 : 0);
        if (i >= reversed) continue;
        const Complex z = at(block, i);
        put(block, i, at(block, reversed));
        put(block, reversed, z);
    }
}

/// a, b = (a + w b) / 2, (a - w b) / 2
void butterfly(Complex& a, Complex& b, Twiddle w) noexcept
{
    const Word re = fx::round_fx(fx::l_msu(fx::l_mult(b.re, w.c), b.im, w.s));
    const Word im = fx::round_fx(fx::l_mac(fx::l_mult(b.im, w.c), b.re, w.s));
    b = {fx::shr(fx::sub(a.re, re), 1), fx::shr(fx::sub(a.im, im), 1)};
    a = {fx::shr(fx::add(a.re, re), 1), fx::shr(fx::add(a.im, im), 1)};
}

/// Bins i and 64 - i of the real signal from those of the complex one.
void separate(FftBlock block, std::size_t i) noexcept
{
    const std::size_t j = kPoints - i;
    const Complex zi = at(block, i);
    const Complex zj = at(block, j);
    const Long p = fx::l_deposit_h(fx::add(zi.re, zj.re));
    const Long q = fx::l_deposit_h(fx::sub(zi.im, zj.im));
    const Word u = fx::add(zi.im, zj.im);
    const Word v = fx::sub(zj.re, zi.re);
    const auto halved = [](Long x) { return fx::round_fx(fx::l_shr(x, 1)); };

    const Twiddle wi = kTwiddles_Q15[i];
    put(block, i,
        {halved(fx::l_msu(fx::l_mac(p, u, wi.c), v, wi.s)),
         halved(fx::l_mac(fx::l_mac(q, v, wi.c), u, wi.s))});
    const Twiddle wj = kTwiddles_Q15[j];
    put(block, j,
        {halved(fx::l_mac(fx::l_mac(p, u, wj.c), v, wj.s)),
         halved(fx::l_mac(fx::l_msu(fx::l_negate(q), v, wj.c), u, wj.s))});
}

} // namespace

void fftScalar(FftBlock block) noexcept
{
    reverseBits(block);
    for (std::size_t half = 1; half < kPoints; half *= 2) {
        for (std::size_t i = 0; i < kPoints; ++i) {
            if ((i & half) != 0) continue;
            Complex a = at(block, i);
            Complex b = at(block, i + half);
            butterfly(a, b, kTwiddles_Q15[i % half * (kPoints / half)]);
            put(block, i, a);
            put(block, i + half, b);
        }
    }
    endBins(block);
    for (std::size_t i = 1; i <= kPoints / 2; ++i)
        separate(block, i);
}

} // namespace zsp::gsmamr

namespace zsp::entry {

ZspStatus zspsFFTFwd_RToPerm_GSMAMR_16s_I(std::int16_t* srcDst)
{
    if (!srcDst) return zspStsNullPtrErr;

    gsmamr::fftAvx2(gsmamr::FftBlock{srcDst, gsmamr::kFftLength});
    return zspStsNoErr;
}

} // namespace zsp::entry
